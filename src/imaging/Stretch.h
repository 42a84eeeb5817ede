// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/Progress.h"
#include "imaging/SelectionIndex.h"
#include "io/AStokesMix.h"
#include "io/AUVXFile.h"

namespace lumo {

/// What shares a pass over a file: IFs first .. first+ifs−1 of each of some frequency selections.
struct IfBatch {
  std::int32_t sourceId = 0;
  AStokesMix mix;
  int first = 0;
  std::size_t ifs = 0;
  std::vector<std::int8_t> selections;    ///< IDs, each once
  std::vector<double> frequencies;        ///< [selection][IF], of the IFs' first channels, Hz
  const SelectionIndex* index = nullptr;  ///< of the file's groups; null where every group is looked at
  [[nodiscard]] std::size_t count() const { return frequencies.size(); }
};

/// The usable records of some successive groups of a file, reduced to channel means.
struct Stretch {
  /// Groups at most.
  static constexpr std::size_t kCapacity = 256;

  /// One IF: the mean of each record's usable channels, rounded to single precision; weight 0 where there is
  /// none.
  struct Means {
    // A cache line longer than needed: otherwise the same record of many IFs would fall into a few sets of
    // the cache.
    static constexpr std::size_t kPadded = kCapacity + 16;
    float re[kPadded];
    float im[kPadded];
    float weight[kPadded];
  };
  static_assert(sizeof(Means) == 3 * sizeof(Means::re));

  std::size_t records = 0;
  // What lies behind the last record is read and made no use of.
  double u[kCapacity] = {};  ///< seconds of light travel
  double v[kCapacity] = {};
  std::uint8_t selection[kCapacity] = {};  ///< index in the batch's list
  std::vector<Means> ifs;
};

/// Reads stretches of one source and a batch's frequency selections, leaving out flagged groups and those
/// whose u or v is not finite, and averages the channels of the batch's IFs (sums in double). Reads every
/// byte once and in order; several threads may read different stretches.
class StretchReader {
 public:
  /// Where a thread keeps bytes of the file while it reads a stretch.
  using Room = std::vector<std::uint8_t>;
  /// Bytes of a room: beside a stretch's means they stay in the second-level cache.
  static constexpr std::size_t kRoomBytes = std::size_t{128} << 10;
  /// Whether `ifs` of a file's IFs are read by copying groups: that is faster than pages that the system maps
  /// one by one, unless most of the bytes are not needed or a group is larger than a room.
  [[nodiscard]] static bool copies(std::size_t ifs, std::size_t fileIfs, std::uint64_t groupBytes) {
    return groupBytes <= kRoomBytes && 2 * ifs >= fileIfs;
  }

  /// The references must outlive the reader; `file` must stay open.
  StretchReader(const AUVXFile& file, const IfBatch& batch, const CancelFlag* cancel);

  /// Reads the groups begin .. end − 1, at most Stretch::kCapacity, averaging the first `ifs` IFs of the
  /// batch, for which `stretch` has room. Returns false as soon as it meets a group of the source and the
  /// selections with the cancel flag set.
  /// `room` is the calling thread's own.
  [[nodiscard]] bool read(std::uint64_t begin, std::uint64_t end, std::size_t ifs, Stretch& stretch,
                          Room& room) const;
  /// Whether stretches are read by copying; otherwise through the file's map.
  [[nodiscard]] bool copies() const { return copies_; }
  /// Leaves out all selections but the first `count` of the batch from now on.
  void keepSelections(std::size_t count);

 private:
  static constexpr std::int16_t kNotMeant = -1;

  [[nodiscard]] std::int16_t selectionOf(std::int8_t id) const {
    return selections_[static_cast<std::uint8_t>(id)];
  }
  [[nodiscard]] bool isMeant(std::uint64_t group) const {
    return batch_.index == nullptr || selectionOf((*batch_.index)[group]) != kNotMeant;
  }
  [[nodiscard]] const std::uint8_t* groups(std::uint64_t begin, std::uint64_t end, Room& room) const;
  [[nodiscard]] bool take(std::uint64_t begin, std::uint64_t end, std::size_t ifs, Stretch& stretch,
                          Room& room) const;
  void average(const std::uint8_t* const* values, std::size_t first, std::size_t ifs, Stretch& stretch) const;
  template <bool kTwoProducts>
  void averageRecord(const std::uint8_t* values, std::size_t record, std::size_t ifs, Stretch& stretch) const;

  const AUVXFile& file_;
  const IfBatch& batch_;
  const CancelFlag* cancel_;
  std::array<std::int16_t, 256> selections_;  ///< index in the batch's list, by the byte of the ID
  std::size_t channels_;
  std::size_t channelBytes_;
  bool single_;  ///< one channel of one product, which needs no averaging
  bool copies_;
  std::uint64_t atOnce_;  ///< groups
};

}  // namespace lumo
