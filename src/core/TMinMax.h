// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lumo {

/// Ranges of a map or graph: horizontal axis, vertical axis, values. For maps x and y are arcseconds of the
/// centres of the first and last column (x to the east) and row (y to the north). A range whose minimum is
/// above its maximum is unset.
struct TMinMax {
  static constexpr double kUnsetMin = 1e38;
  static constexpr double kUnsetMax = -1e38;

  double xMin = kUnsetMin;
  double xMax = kUnsetMax;
  double yMin = kUnsetMin;
  double yMax = kUnsetMax;
  double vMin = kUnsetMin;
  double vMax = kUnsetMax;

  bool operator==(const TMinMax&) const = default;
};

}  // namespace lumo
