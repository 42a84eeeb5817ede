// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <complex>
#include <cstdint>

#include "core/AMatrix.h"
#include "core/AObjArray.h"

namespace lumo {

using Complex = std::complex<double>;

/// The uv grids of one run: grid k holds the sum over the data of f^k times the gridded quantity, where
/// f = ν/ν0 − 1. Each is (2·Ny) × (Nx+1): row r is v = r·dv − Vmax, column c is u = c·du, so only the
/// half-plane u >= 0 is kept. Beam grids are real in content.
struct SpectralGridSet {
  AObjArray<AMatrix<Complex>> beams;  ///< 2·order−1
  AObjArray<AMatrix<Complex>> dirty;  ///< order

  /// Memory of a set of this size.
  [[nodiscard]] static std::uint64_t bytes(std::int32_t order, std::uint32_t rows, std::uint32_t columns) {
    return static_cast<std::uint64_t>(3 * order - 1) * rows * columns * sizeof(Complex);
  }
  /// Sizes the set and zeroes it.
  void resize(std::int32_t order, std::uint32_t rows, std::uint32_t columns) {
    beams = AObjArray<AMatrix<Complex>>(2 * order - 1);
    dirty = AObjArray<AMatrix<Complex>>(order);
    for (auto& grid : beams) grid.resize(rows, columns);
    for (auto& grid : dirty) grid.resize(rows, columns);
  }
};

}  // namespace lumo
