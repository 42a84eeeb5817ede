// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "imaging/ABMakeParameters.h"

namespace lumo {

/// Geometry of the half-plane uv grid that a parameter block describes. Lengths in wavelengths.
struct GridGeometry {
  explicit GridGeometry(const ABMakeParameters& parameters)
      : nx(parameters.halfSizeX),
        ny(parameters.halfSizeY),
        rows(2 * ny),
        columns(nx + 1),
        uMax(parameters.uvLimitU * parameters.uvScaleU),
        vMax(parameters.uvLimitV * parameters.uvScaleV),
        du(2 * uMax / (2 * nx)),
        dv(2 * vMax / (2 * ny)),
        perDu(1 / du),
        perDv(1 / dv) {}

  /// u of a column; column 0 is u = 0.
  [[nodiscard]] double u(std::int32_t column) const { return column * du; }
  /// v of a row; row ny is v = 0.
  [[nodiscard]] double v(std::int32_t row) const { return row * dv - vMax; }

  std::int32_t nx, ny;
  std::int32_t rows, columns;
  double uMax, vMax;
  double du, dv;
  double perDu, perDv;
};

}  // namespace lumo
