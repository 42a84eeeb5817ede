// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

#include "analysis/AreaShape.h"
#include "core/AMatrix.h"
#include "core/TMinMax.h"
#include "io/AMapHeader.h"

namespace lumo {

/// What one area holds, to be told while it is marked.
struct AreaSummary {
  std::uint64_t pixels = 0;  ///< whose centres lie in the area
  std::uint64_t usable = 0;  ///< those with a finite value
  double sum = 0.0;          ///< of the finite values, in the map's unit
  double maximum = 0.0;      ///< of the finite values; NaN without one
};

/// `range` as fillMask() takes it. The sum is that of MaskedStatistics.
[[nodiscard]] AreaSummary summarise(const AreaShape& area, const AMatrix<float>& map, const TMinMax& range);

/// "345 pixels, sum 1.234 Jy/Beam, flux density 0.1234 Jy, maximum 0.045 Jy/Beam", with four digits.
/// @param pixelsPerBeam  of beamPixels(); without a usable one, or in a map of another unit than Jy per beam,
///                       the flux density is left out.
[[nodiscard]] std::string summaryText(const AreaSummary& summary, const AMapHeader& header,
                                      double pixelsPerBeam);

}  // namespace lumo
