// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/SpectralGridSet.h"

namespace lumo {

/// PackHermitianRow of Fft.h with its factors computed once for all rows, and vectors of them at a time: the
/// same operations on each value in the same order, so the same bits with every instruction set.
class HermitianPacker {
 public:
  HermitianPacker(std::int64_t n, int direction);

  /// @param row    x[0..N], of which x[N] is replaced by what PackHermitianRow makes of it.
  /// @param packed becomes the other N values.
  void pack(Complex* row, Complex* packed) const;

 private:
  std::int64_t n_;
  // As they meet the real and the imaginary parts: each twice, the second with alternating signs.
  std::vector<double> alpha_;
  std::vector<double> beta_;
};

}  // namespace lumo
