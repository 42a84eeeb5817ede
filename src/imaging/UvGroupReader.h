// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "core/Status.h"
#include "imaging/UvPlaneData.h"
#include "io/AUVXFile.h"
#include "io/AUVXPosIndex.h"

namespace lumo {

/// What the uv plane needs of a visibility group.
struct UvGroup {
  float u = 0.0F;  ///< as stored, seconds of light travel
  float v = 0.0F;
  std::uint32_t band = 0;  ///< index for UvBands
};

/// The frequencies at which the groups of each file's frequency selections are drawn. They are worked out
/// when asked for: a table may promise more channels than memory holds.
class UvBands {
 public:
  /// `data` must outlive this object.
  explicit UvBands(const UvPlaneData& data);

  /// Index of a frequency selection (row `row` of the table of file `file`); both must exist.
  [[nodiscard]] std::uint32_t index(std::int32_t file, std::int32_t row) const {
    return first_[static_cast<std::size_t>(file)] + static_cast<std::uint32_t>(row);
  }
  /// How many groups to take between two looks at whether to go on: some 65 536 points of those groups that
  /// have the most, but at least one group.
  [[nodiscard]] std::uint64_t groupsAtOnce() const { return groupsAtOnce_; }
  /// Calls visit(frequency in Hz) for every channel of every IF, channels inner.
  template <typename Visit>
  void forEachFrequency(std::uint32_t band, Visit visit) const {
    const auto& [table, row] = rows_[band];
    for (int ifIndex = 0; ifIndex < table->GetIFs(); ++ifIndex)
      for (int channel = 0; channel < table->GetChannels(); ++channel)
        visit(table->GetFreq(channel, ifIndex, row));
  }

 private:
  struct Row {
    const AUVXFqTbl* table;
    int row;
  };
  std::vector<std::uint32_t> first_;  ///< of each file
  std::vector<Row> rows_;
  std::uint64_t groupsAtOnce_ = 0;
};

/// Reads the groups that belong to a selection, file after file in list order: unflagged, of the file's
/// source, with finite u and v and a frequency selection whose bit is set. Ends at the first file that does
/// not open. Memory does not grow with the files.
class UvGroupReader {
 public:
  /// Where reading may go on later: before group `group` of file `file`.
  struct Place {
    std::int32_t file = 0;
    std::uint64_t group = 0;
  };

  /// `data` and `bands` must outlive the reader.
  UvGroupReader(const UvPlaneData& data, const UvBands& bands) : UvGroupReader(data, bands, Place()) {}
  UvGroupReader(const UvPlaneData& data, const UvBands& bands, Place from);

  /// Replaces `groups` by the next ones, after looking at no more than `most` records. Returns false when
  /// there are none left to look at.
  bool next(std::vector<UvGroup>& groups, std::uint64_t most);
  /// What next() will look at next.
  [[nodiscard]] Place place() const { return {file_, group_}; }
  /// Share of the list that was read, 0..1, files counting alike.
  [[nodiscard]] double share() const;
  /// Why reading ended before the end of the list; ok otherwise.
  [[nodiscard]] const Status& status() const { return status_; }

 private:
  bool openNext();
  void closeFile();
  void take(std::vector<UvGroup>& groups);

  const UvPlaneData& data_;
  const UvBands& bands_;
  std::int32_t file_;
  std::uint64_t group_;
  std::uint64_t released_ = 0;
  AUVXFile open_;
  std::optional<AUVXPosIndex> index_;  ///< set while a file is open
  Status status_;
};

}  // namespace lumo
