// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "analysis/MapSelector.h"
#include "cli/AreaOptions.h"
#include "core/Status.h"

namespace lumo {

/// Areas of several maps and the power laws through them.
struct MapFitting {
  AreaList areas;  ///< as they lie on the first map
  MapFits fits;
  std::string unit;                ///< of the maps
  std::vector<std::string> notes;  ///< for standard error: what a reader of the numbers should know
};

/// Measures the areas of a region file on maps and fits them. The file is read for each map anew: image
/// coordinates are pixels of each map, sky coordinates the same sky on all. An area that covers no usable
/// pixel of a map has no flux density there and no power law (NaN), with a note.
/// Fails when a map cannot be read or has no frequency, when a map is given twice (kInvalidValue without a
/// file), when units differ, and when all maps lie at one frequency.
[[nodiscard]] Status fitMapFiles(const std::vector<std::string>& maps, const AreaOptions& options,
                                 MapFitting& fitting);

}  // namespace lumo
