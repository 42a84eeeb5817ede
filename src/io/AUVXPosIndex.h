// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "core/Progress.h"
#include "io/AUVXFile.h"

namespace lumo {

/// Index of the positions of one source's groups, for AUVXFile::SeekUVGroup. Positions are found as they are
/// asked for; nothing is stored.
class AUVXPosIndex {
 public:
  /// `file` must stay open; `bar` may be null. Positions below `first` are left out.
  AUVXPosIndex(const AUVXFile& file, std::int32_t sourceId, ProgressBar* bar, std::uint64_t first = 0);

  /// Lets GetIndex end before this position, until the limit is set anew: for reading in portions.
  void limit(std::uint64_t end) { end_ = end; }
  /// The next position; returns 0 at the end.
  int GetIndex(std::uint64_t& position);

 private:
  const AUVXFile& file_;
  std::int16_t source_;
  std::uint64_t next_;
  std::uint64_t end_;
  AProgress progress_;
};

}  // namespace lumo
