// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "analysis/AreaList.h"
#include "analysis/SpectrumCurve.h"

namespace lumo {

/// What the area dialog asks for, and what its next opening starts with.
struct AreaSettings {
  AreaList areas;
  int pointCount = 8;  ///< number of frequency points, 1 or more
  int invertColors = 0;
  int xScaleMode = kLogarithmicScale;
  int yScaleMode = kLogarithmicScale;
};

}  // namespace lumo
