// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/ScalePrefix.h"

#include <array>
#include <cmath>

namespace lumo {
namespace {

constexpr int kOutermost = 10;  // powers of 1000 on either side of none
constexpr std::array<const char*, 2 * kOutermost + 1> kSymbols{
    "q", "r", "y", "z", "a", "f", "p", "n", "µ", "m", "", "k", "M", "G", "T", "P", "E", "Z", "Y", "R", "Q"};

}  // namespace

ScalePrefix scalePrefixFor(double largest) {
  const double size = std::abs(largest);
  if (!std::isfinite(size) || size == 0.0) return {};
  int power = 0;
  while (power < kOutermost && size / std::pow(1000.0, power) >= 10000.0) ++power;
  while (power > -kOutermost && size / std::pow(1000.0, power) < 1.0) --power;
  const int symbol = power + kOutermost;
  return {kSymbols[static_cast<std::size_t>(symbol)], std::pow(1000.0, power)};
}

std::string axisTitle(std::string_view pattern, const ScalePrefix& prefix) {
  std::string title(pattern);
  const auto place = title.find("%s");
  if (place != std::string::npos) title.replace(place, 2, prefix.symbol);
  return title;
}

}  // namespace lumo
