// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/AFile.h"
#include "core/MappedFile.h"
#include "io/UvxTables.h"

namespace lumo {

/// An open UVX visibility file (layout: docs/formats.md), read through a memory map.
///
/// Open() trusts nothing: magic, version, checksums, counts, the agreement of shape, stride and tables, and
/// that every region lies inside the file are checked before anything is allocated. A file that fails is not
/// opened and status() says why. What the groups hold is not checked here.
class AUVXFile : public AFile {
 public:
  /// `mode` must be kRead. Returns 1, or 0 with the reason in status().
  int Open(const std::string& name, int mode) override;
  int Close() override;

  /// The bytes of the first table of that name ("SU", "FQ", "ST", "AN", "HI"), empty optional if there is
  /// none.
  [[nodiscard]] std::optional<std::span<const std::uint8_t>> GetTable(std::string_view name) const;

  [[nodiscard]] const UvxShape& shape() const { return shape_; }
  [[nodiscard]] std::uint64_t groupCount() const { return groupCount_; }
  [[nodiscard]] std::uint32_t groupBytes() const { return groupBytes_; }
  /// Of the whole file.
  [[nodiscard]] std::uint64_t bytes() const { return map_.size(); }
  /// Byte of the file at which group 0 begins.
  [[nodiscard]] std::uint64_t groupOffset() const { return groupOffset_; }

  /// Moves to the group at a position (an index 0..groupCount()-1). Returns 0 outside.
  int SeekUVGroup(std::uint64_t position);
  /// First byte of the current group: 26-byte record, then the visibilities. Valid until Close().
  [[nodiscard]] const std::uint8_t* group() const { return group_; }
  /// First byte of a group by index (not checked).
  [[nodiscard]] const std::uint8_t* groupAt(std::uint64_t index) const {
    return map_.data() + groupOffset_ + index * groupBytes_;
  }
  /// Copies the groups begin .. end − 1, which must exist, to `bytes`, which has groupBytes() for each.
  /// kReadFailed when the system gives none, kBadFormat when the file has become shorter. Several threads may
  /// do so at once.
  [[nodiscard]] Status copyGroups(std::uint64_t begin, std::uint64_t end, std::uint8_t* bytes) const {
    return map_.readAt(groupOffset_ + begin * groupBytes_, bytes,
                       static_cast<std::size_t>((end - begin) * groupBytes_));
  }
  /// Tells the system that the groups before `index` are not needed for now, so that a sequential pass stays
  /// small in memory.
  void releaseBefore(std::uint64_t index) const;

  /// Whether what was read so far was the file's; kReadFailed when it was cut short or its disk failed
  /// meanwhile. Such bytes read as zeros, so a pass asks this before its results are used.
  [[nodiscard]] Status intact() const { return map_.check(); }

  // Header values; AUVXHeader hands them out under the names of the survey.
  [[nodiscard]] double uMin() const { return uMin_; }
  [[nodiscard]] double uMax() const { return uMax_; }
  [[nodiscard]] double vMin() const { return vMin_; }
  [[nodiscard]] double vMax() const { return vMax_; }
  [[nodiscard]] const std::string& unit() const { return unit_; }

  /// One entry of the table directory.
  struct TableEntry {
    std::string name;
    std::uint64_t offset = 0;
    std::uint64_t bytes = 0;
    std::uint32_t rows = 0;
  };
  [[nodiscard]] const std::vector<TableEntry>& tables() const { return tables_; }

 private:
  [[nodiscard]] Status readAll();
  [[nodiscard]] Status readHeader();
  [[nodiscard]] Status readDirectory(std::uint64_t offset, std::uint32_t count);
  [[nodiscard]] Status checkTables() const;

  MappedFile map_;
  UvxShape shape_;
  std::uint64_t groupCount_ = 0;
  std::uint64_t groupOffset_ = 0;
  std::uint32_t groupBytes_ = 0;
  double uMin_ = 0, uMax_ = 0, vMin_ = 0, vMax_ = 0;
  std::string unit_;
  std::vector<TableEntry> tables_;
  const std::uint8_t* group_ = nullptr;
};

}  // namespace lumo
