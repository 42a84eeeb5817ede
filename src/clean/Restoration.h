// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>

#include "core/AMatrix.h"
#include "core/TMinMax.h"
#include "io/AMapHeader.h"

namespace lumo {

/// The restoring beam of a map of rows x columns pixels, sampled at the map's pixel steps: the Gaussian of
/// the header's two full widths and position angle, of peak 1, so that a component of flux c becomes a peak
/// of height c.
///
/// Its half sizes are at most rows - 1 and columns - 1, since more would never fall on the map. Widths of 0
/// or unset, and a map of one row or column, which has no pixel step, give a beam of zeros.
[[nodiscard]] std::unique_ptr<AMatrix<float>> makeRestoringBeam(const AMapHeader& header,
                                                                const TMinMax& range, std::uint32_t rows,
                                                                std::uint32_t columns);

/// The components convolved with the beam: for every component other than 0 (NaN included), row by row, the
/// beam times its value is added with the beam's middle (rows / 2, columns / 2) on its pixel and cut off at
/// the map's edges. Each sum is formed in double and stored as float. Costs components x beam pixels.
[[nodiscard]] AMatrix<float> restoreComponents(const AMatrix<float>& components, const AMatrix<float>& beam);

/// restored += residual, pixel by pixel in single precision. Both of one size.
void addResidual(AMatrix<float>& restored, const AMatrix<float>& residual);

}  // namespace lumo
