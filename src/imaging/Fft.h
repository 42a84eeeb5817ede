// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <complex>
#include <cstdint>

#include "imaging/SpectralGridSet.h"

namespace lumo {

// The plain radix-2 transform. It defines which lengths are transformed at all, and it is what the fast
// transform of FourierTransform.h is tested against.

/// Exponent e of a length: trunc(ln(n) · 1.4426950408889634) in double precision. The product rounds to just
/// below the whole number for n = 8, 64, 128, 4096, 8192 and 16384, so e is one too small there. The rule
/// sizes transforms, quadrant swaps and saved maps alike and is part of how the maps are defined. n >= 1.
[[nodiscard]] int transformExponent(std::int64_t n);

/// True for the lengths that are transformed: n >= 2 with 2^e = n, that is 2, 4, 16, 32, 256, 512, 1024, 2048
/// (and some powers above 16384).
[[nodiscard]] bool isTransformLength(std::int64_t n);

/// In-place complex transform of n elements, decimation in time: X[k] = s Σ x[t] e^(direction·2πi·k·t/n) with
/// s = scale when direction < 1, else 1/(n·scale). Returns 1; 0 (data untouched) when n is refused.
int Fft1D(Complex* data, std::int64_t n, int direction, double scale);

/// Prepares a row x[0..N] (a Hermitian half-spectrum, N a power of two) so that Fft1D of length N over
/// x[0..N−1] with direction −1 leaves the 2N real samples y[t] = Σ_{k<2N} H[k] e^(−iπkt/N) interleaved.
/// An imaginary part b in x[0] adds −b to even and +b to odd samples, one c in x[N] adds −c to every sample.
void PackHermitianRow(Complex* row, std::int64_t n, int direction);

/// What PackHermitianRow makes of x[k] and x[N − k], with alpha = (1 − cos φ) / 2 and beta = −sin φ / 2 of
/// the angle φ = π/2 + direction·πk/N. For k = N/2 the two are one element, which becomes `low`.
struct HermitianPair {
  HermitianPair(const Complex& x, const Complex& y, double alpha, double beta);
  Complex low;   ///< element k
  Complex high;  ///< element N − k
};

}  // namespace lumo
