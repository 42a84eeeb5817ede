// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/ABitMatrix.h"
#include "core/AMatrix.h"
#include "core/TMinMax.h"
#include "io/AMapHeader.h"

namespace lumo {

/// What the pixels of an area add up to.
struct MaskedStatistics {
  double sum = 0.0;        ///< of the values, in the map's unit
  double deviation = 0.0;  ///< root mean square about the mean, divided by the square root of two
};

/// Sum and deviation of the masked pixels whose value is finite and not zero, in double, two passes.
///
/// The count of pixels runs on from the first pass, for the mean, into the second, so the deviation is
/// sqrt(sum (v - mean)^2 / (2 count)): 1 and 3 deviate by 0.7071. Results are compared over the years; the
/// rule stays. No usable pixel gives 0 for both.
[[nodiscard]] MaskedStatistics maskedStatistics(const AMatrix<float>& map, const ABitMatrix& mask);

/// Pixels in the area of the restoring beam, pi bmaj bmin / (4 ln 2) over the area of a pixel: divides a sum
/// in Jy per beam into Jy. NaN where the header has no beam, and not a usable number where the map has one
/// row or column.
[[nodiscard]] double beamPixels(const AMapHeader& header, const TMinMax& range, const AMatrix<float>& map);

}  // namespace lumo
