// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>

namespace lumo {

/// How an axis lays out its values. The numbers are those of the scale modes.
enum class AxisScale { kLogarithmic = 0, kLinear = 1 };

/// Where `value` lies on an axis, in units that are equally long all along it: the value itself or its
/// decimal logarithm. Not finite for values that have no place on a logarithmic axis.
[[nodiscard]] inline double axisCoordinate(double value, AxisScale scale) {
  return scale == AxisScale::kLogarithmic ? std::log10(value) : value;
}

/// The value at a coordinate.
[[nodiscard]] inline double axisValue(double coordinate, AxisScale scale) {
  return scale == AxisScale::kLogarithmic ? std::pow(10.0, coordinate) : coordinate;
}

}  // namespace lumo
