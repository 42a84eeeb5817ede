// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace lumo {

/// An SI prefix: a number divided by `factor` is written before `symbol` and the unit.
struct ScalePrefix {
  std::string symbol;   ///< UTF-8: "", "k", "M", "m", "µ", ...
  double factor = 1.0;  ///< a power of 1000
};

/// The prefix for numbers up to `largest` in absolute value: the one nearest to none that leaves the largest
/// number within [1, 10000), so 1800 stays 1800, 0.05 becomes 50 m and 1.4e9 becomes 1400 M. No prefix for 0
/// and for values that are not finite; the outermost ones (q and Q, 1e-30 and 1e30) go on beyond the range.
[[nodiscard]] ScalePrefix scalePrefixFor(double largest);

/// Puts the prefix in place of the first "%s" of a title such as "Right ascent [%sas]"; a title without one
/// is returned unchanged.
[[nodiscard]] std::string axisTitle(std::string_view pattern, const ScalePrefix& prefix);

}  // namespace lumo
