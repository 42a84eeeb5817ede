// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

namespace lumo {

/// Where a logarithmic axis has its ticks, in the axis's values, ascending.
struct LogTicks {
  std::vector<double> major;  ///< with numbers
  std::vector<double> minor;  ///< without
};

/// The ticks within [min, max]. Over three decades and more the numbers stand at powers of ten, or at every
/// second, third, ... one where there are more than a dozen; below that also at twice and five times a power
/// of ten. Minor ticks are at the other multiples, or at the other powers of ten.
///
/// None where that leaves fewer than two numbers: so little of a decade is told apart better by equal steps.
/// None either unless 0 < min < max and both are finite.
[[nodiscard]] LogTicks logTicks(double min, double max);

}  // namespace lumo
