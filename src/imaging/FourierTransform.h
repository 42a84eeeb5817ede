// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/AMatrix.h"
#include "core/Progress.h"
#include "imaging/SpectralGridSet.h"

namespace lumo {

/// How a grid is transformed: exponent sign (−1 in all uses) and a factor for each of the two passes.
struct TransformSettings {
  int direction = -1;
  double columnScale = 1.0;
  double rowScale = 1.0;
};

/// Turns one half-plane uv grid into an image with the phase centre in the middle.
///
/// @param grid   rows = 2·Ny by columns = Nx+1, row Ny is v = 0, column 0 is u = 0. Consumed: empty
/// afterwards.
/// @param image  becomes rows × 2·columns doubles; the first 2·Nx columns hold the image, the last two are
/// left
///               over. It is the unnormalised transform with negative exponents of the Hermitian-extended
///               grid; the zero-lag value lies at (R/2, C/2) with R = 2^e(rows), C = 2^e(2·columns), e the
///               exponent rule of Fft.h. A pass whose length that rule refuses leaves its data untransformed.
/// @return 1, or 0 when cancelled (grid and image are then of no use).
///
/// The transforms themselves are FFTW's; each pass agrees with Fft1D and PackHermitianRow to
/// (8 + length) · 2^-52 of the largest value (the plain passes sum up their twiddle angles, which drift by
/// half a unit in the last place a step), and with itself to the bit from run to run on one machine (plans
/// are estimated, never measured).
int fourierTransformGrid(AMatrix<Complex>& grid, AMatrix<double>& image, const TransformSettings& settings,
                         const RunIndicators& indicators);

}  // namespace lumo
