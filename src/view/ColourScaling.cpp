// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/ColourScaling.h"

#include <algorithm>
#include <cmath>

#include "core/TextForm.h"

namespace lumo {
namespace {

constexpr double kLogDepth = 1000.0;

/// 1, 2 or 5 times a power of ten, giving about five steps in `range` > 0.
double roundStep(double range) {
  const double raw = range / 5.0;
  const double power = std::pow(10.0, std::floor(std::log10(raw)));
  const double mantissa = raw / power;
  return power * (mantissa < 1.5 ? 1.0 : mantissa < 3.5 ? 2.0 : mantissa < 7.5 ? 5.0 : 10.0);
}

/// Significant digits that tell numbers up to `largest` apart in steps of `step`.
int digitsFor(double largest, double step) {
  return std::clamp(static_cast<int>(std::ceil(std::log10(std::max(largest / step, 1.0)))) + 1, 3, 15);
}

}  // namespace

std::string_view scalingName(ScalingKind kind) {
  switch (kind) {
    case ScalingKind::kLinear:
      return "Linear";
    case ScalingKind::kSquareRoot:
      return "Square root";
    case ScalingKind::kLogarithmic:
      return "Logarithmic";
  }
  return "";
}

ValueLimits percentileLimits(const AMatrix<float>& map, double percent) {
  std::vector<float> values;
  values.reserve(map.size());
  std::copy_if(map.data(), map.data() + map.size(), std::back_inserter(values),
               [](float value) { return std::isfinite(value); });
  if (values.empty()) return {};
  constexpr double kRounding = 1e-9;  // 0.1 % of 1000 pixels is one pixel, whatever 100 - 99.9 rounds to
  const double leftOut =
      (100.0 - std::clamp(percent, 0.0, 100.0)) / 200.0 * static_cast<double>(values.size());
  const auto cut = std::min(static_cast<std::size_t>(leftOut + kRounding), (values.size() - 1) / 2);
  const auto low = values.begin() + static_cast<std::ptrdiff_t>(cut);
  const auto high = values.end() - 1 - static_cast<std::ptrdiff_t>(cut);
  std::nth_element(values.begin(), low, values.end());
  const double lowest = *low;
  std::nth_element(low, high, values.end());
  return {lowest, *high};
}

double ColourScaling::position(double value) const {
  if (std::isnan(value)) return value;
  if (!(limits_.high > limits_.low)) {
    return value < limits_.low ? 0.0 : value > limits_.low ? 1.0 : 0.5;
  }
  const double share = std::clamp((value - limits_.low) / (limits_.high - limits_.low), 0.0, 1.0);
  switch (kind_) {
    case ScalingKind::kLinear:
      return share;
    case ScalingKind::kSquareRoot:
      return std::sqrt(share);
    case ScalingKind::kLogarithmic:
      return std::log1p(kLogDepth * share) / std::log1p(kLogDepth);
  }
  return share;
}

double ColourScaling::value(double t) const {
  double share = std::clamp(t, 0.0, 1.0);
  if (kind_ == ScalingKind::kSquareRoot) share *= share;
  if (kind_ == ScalingKind::kLogarithmic) share = std::expm1(share * std::log1p(kLogDepth)) / kLogDepth;
  return limits_.low + share * (limits_.high - limits_.low);
}

std::vector<ScaleTick> colourScaleTicks(const ColourScaling& scaling, const ScalePrefix& prefix) {
  const auto [low, high] = scaling.limits();
  const double range = high - low;
  if (!std::isfinite(range)) return {};
  const double largest = std::max(std::abs(low), std::abs(high));
  // A range in the last digits of the numbers has no round values in between.
  if (!(range > largest * 1e-13)) return {{0.5, nValToStr(low / prefix.factor, 4)}};

  std::vector<ScaleTick> ticks;
  if (scaling.kind() != ScalingKind::kLinear) {
    constexpr int kSteps = 5;
    for (int i = 0; i <= kSteps; ++i) {
      const double t = static_cast<double>(i) / kSteps;
      ticks.push_back({t, nValToStr(scaling.value(t) / prefix.factor, 3)});
    }
    return ticks;
  }
  const double step = roundStep(range);
  const double tolerance = range * 1e-9;
  const double first = std::ceil((low - tolerance) / step);
  for (int i = 0; i < 20; ++i) {
    const double value = (first + i) * step;
    if (value > high + tolerance) break;
    // + 0.0 turns a negative zero into zero.
    ticks.push_back({std::clamp((value - low) / range, 0.0, 1.0),
                     nValToStr(value / prefix.factor + 0.0, digitsFor(largest, step))});
  }
  return ticks;
}

}  // namespace lumo
