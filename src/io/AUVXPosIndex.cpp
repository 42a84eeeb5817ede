// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/AUVXPosIndex.h"

namespace lumo {

AUVXPosIndex::AUVXPosIndex(const AUVXFile& file, std::int32_t sourceId, ProgressBar* bar, std::uint64_t first)
    : file_(file),
      source_(static_cast<std::int16_t>(sourceId)),
      next_(first),
      end_(file.groupCount()),
      progress_(bar, static_cast<double>(file.groupCount())) {}

int AUVXPosIndex::GetIndex(std::uint64_t& position) {
  while (next_ < end_ && next_ < file_.groupCount()) {
    const std::uint64_t candidate = next_++;
    progress_.SetPos(static_cast<double>(next_));
    if (UvxRecord::load(file_.groupAt(candidate)).source != source_) continue;
    position = candidate;
    return 1;
  }
  return 0;
}

}  // namespace lumo
