// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace lumo {

/// What the user chooses for the CLEAN. Any value is accepted; the run parameters check their ranges.
struct CleanParameters {
  /// Number of iterations; there is no other stopping rule. 0 or less does none.
  std::int32_t iterations = 1000;
  /// Loop gain: the part of the solution at the peak that one iteration takes away.
  double gain = 0.1;
  /// Keeps the sum of the components of term 0 at or above 0 at every pixel.
  bool nonNegative = false;
  /// Lets the gain rise from `gain` to 1 around iteration 7000, see loopGain().
  bool variableGain = false;
};

/// Gain of iteration n = 1, 2, ...: the constant gain g, or with the variable gain
/// min(1, atan(n - 7000) (1 - g) / pi + 0.5 + 0.5 g), which passes (1 + g) / 2 at iteration 7000 however many
/// iterations are asked for.
[[nodiscard]] double loopGain(const CleanParameters& parameters, std::int64_t n);

}  // namespace lumo
