// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/LogTicks.h"

#include <cmath>

namespace lumo {
namespace {

constexpr int kMostNumbers = 12;
constexpr double kFewDecades = 3.0;

bool isNumbered(int multiple, int decade, double decades, int decadeStep) {
  if (multiple == 1) return decade % decadeStep == 0;
  // A little less than three, so that rounding does not decide about the frame of exactly three.
  return decades < kFewDecades - 1e-9 && (multiple == 2 || multiple == 5);
}

}  // namespace

LogTicks logTicks(double min, double max) {
  if (!(min > 0.0) || !(max > min) || !std::isfinite(max)) return {};
  const double decades = std::log10(max / min);
  const int first = static_cast<int>(std::floor(std::log10(min)));
  const int last = static_cast<int>(std::ceil(std::log10(max)));
  const int decadeStep = 1 + (last - first) / kMostNumbers;
  // Powers of ten are not exact: the ends of a frame of whole decades must keep theirs.
  const double lowest = min * (1.0 - 1e-9);
  const double highest = max * (1.0 + 1e-9);
  LogTicks ticks;
  for (int decade = first; decade <= last; ++decade) {
    for (int multiple = 1; multiple < 10; ++multiple) {
      const double value = multiple * std::pow(10.0, decade);
      if (value < lowest || value > highest) continue;
      if (isNumbered(multiple, decade, decades, decadeStep)) {
        ticks.major.push_back(value);
      } else if (decadeStep == 1 || multiple == 1) {
        ticks.minor.push_back(value);
      }
    }
  }
  if (ticks.major.size() < 2) return {};
  return ticks;
}

}  // namespace lumo
