// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

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

/// A graph against frequency in the frame that the settings ask for, without curves yet.
[[nodiscard]] inline SpectrumGraph emptyGraph(const AreaSettings& settings, const std::string& fluxTitle) {
  return {scaledTitle("Frequency [%sHz]", settings.xScaleMode),
          scaledTitle(fluxTitle, settings.yScaleMode),
          settings.xScaleMode,
          settings.yScaleMode,
          settings.invertColors,
          {}};
}

}  // namespace lumo
