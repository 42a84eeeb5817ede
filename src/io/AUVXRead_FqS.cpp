// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/AUVXRead_FqS.h"

#include <cmath>

namespace lumo {

AUVXRead_FqS::AUVXRead_FqS(AUVXFile* file, std::int32_t sourceId, int freqSelId, ProgressBar* readingBar)
    : file_(file),
      source_(static_cast<std::int16_t>(sourceId)),
      freqSel_(static_cast<std::int8_t>(freqSelId)),
      progress_(readingBar, static_cast<double>(file->groupCount())) {}

int AUVXRead_FqS::GetUVGVis(AUVXGroup& group, AUVXVisibility& visibility, int& flag) {
  while (next_ < file_->groupCount()) {
    file_->SeekUVGroup(next_++);
    progress_.SetPos(static_cast<double>(next_));
    if ((next_ - released_) * file_->groupBytes() >= MappedFile::kResidentBytes) {
      // The group just reached is still in use.
      file_->releaseBefore(released_ = next_ - 1);
    }
    group.load(*file_);
    const UvxRecord& record = group.record();
    if (record.source != source_ || record.freqSel != freqSel_) continue;
    if (!std::isfinite(record.u) || !std::isfinite(record.v)) continue;
    flag = record.flag;
    return visibility.load(*file_);
  }
  return 0;
}

}  // namespace lumo
