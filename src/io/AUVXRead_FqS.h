// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "core/Progress.h"
#include "io/AUVXFile.h"
#include "io/AUVXGroup.h"
#include "io/AUVXVisibility.h"

namespace lumo {

/// Sequential reader of all groups of one source and one frequency selection. Groups whose u or v is not
/// finite are passed over. Its memory does not grow with the file: groups that were read are given back.
class AUVXRead_FqS {
 public:
  /// `file` must stay open; `readingBar` (may be null) shows the share of the file's groups passed.
  AUVXRead_FqS(AUVXFile* file, std::int32_t sourceId, int freqSelId, ProgressBar* readingBar);

  /// The next group and its visibilities; `flag` becomes the group's flag byte. Returns 0 at the end.
  int GetUVGVis(AUVXGroup& group, AUVXVisibility& visibility, int& flag);

 private:
  AUVXFile* file_;
  std::int16_t source_;
  std::int8_t freqSel_;
  std::uint64_t next_ = 0;
  std::uint64_t released_ = 0;
  AProgress progress_;
};

}  // namespace lumo
