// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace lumo::test {

/// What a process holds at one moment.
struct Holding {
  std::int64_t heapBytes = 0;      ///< allocated and not freed, to the byte under the address sanitizer
  std::int64_t residentBytes = 0;  ///< of memory, with what the allocator keeps for later
  int descriptors = 0;             ///< open files
  int threads = 0;
};

[[nodiscard]] Holding currentHolding();

/// A straight line through evenly spaced values.
struct Trend {
  double perStep = 0.0;  ///< slope
  double error = 0.0;    ///< its standard error from the scatter about the line
};

/// The least-squares line; of fewer than three values nothing is known, and the error is infinite.
[[nodiscard]] Trend trendOf(const std::vector<double>& values);

/// Whether values that should stay where they are grow: judged by their second half, when every cache has
/// filled, they do when the slope is more than `allowance` and more than five times its standard error above
/// 0. The slope is that of the smallest values of ten steps each: memory that is held for a while comes and
/// goes above a floor, and only a leak raises that floor.
[[nodiscard]] bool grows(const std::vector<double>& values, double allowance);

}  // namespace lumo::test
