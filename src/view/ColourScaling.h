// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "core/AMatrix.h"
#include "view/ScalePrefix.h"

namespace lumo {

enum class ScalingKind { kLinear, kSquareRoot, kLogarithmic };

inline constexpr std::array kScalingKinds{ScalingKind::kLinear, ScalingKind::kSquareRoot,
                                          ScalingKind::kLogarithmic};

/// Its name on screen, e.g. "Square root".
[[nodiscard]] std::string_view scalingName(ScalingKind kind);

/// The values that get the first and the last colour.
struct ValueLimits {
  double low = 0.0;
  double high = 0.0;

  bool operator==(const ValueLimits&) const = default;
};

/// Shares of the finite pixels, in percent, offered as limits.
inline constexpr std::array kLimitPercents{100.0, 99.9, 99.5, 99.0, 95.0};

/// Limits that hold the central `percent` of the finite pixels: as many are left out below as above (order
/// statistics, no interpolation). 100 gives minimum and maximum; (0, 0) where no pixel is finite. O(pixels).
[[nodiscard]] ValueLimits percentileLimits(const AMatrix<float>& map, double percent);

/// Places values on the colour table: s = (value - low) / (high - low), then
/// linear t = s, square root t = sqrt(s), logarithmic t = log(1 + 1000 s) / log(1 + 1000).
/// The logarithm in this form also takes maps with negative pixels.
class ColourScaling {
 public:
  ColourScaling() = default;
  ColourScaling(ScalingKind kind, const ValueLimits& limits) : kind_(kind), limits_(limits) {}

  [[nodiscard]] ScalingKind kind() const { return kind_; }
  [[nodiscard]] const ValueLimits& limits() const { return limits_; }
  /// Position 0..1 of a value, clamped; NaN for NaN. Where the limits coincide (a constant map), values below
  /// get 0, equal ones 0.5 and those above 1.
  [[nodiscard]] double position(double value) const;
  /// The value at position `t` of 0..1.
  [[nodiscard]] double value(double t) const;

 private:
  ScalingKind kind_ = ScalingKind::kLinear;
  ValueLimits limits_;
};

/// One number beside the colour scale.
struct ScaleTick {
  double position = 0.0;  ///< 0..1 along the scale
  std::string label;
};

/// Numbers for a colour scale, divided by the prefix's factor: round values for the linear scaling, evenly
/// spaced positions with three digits for the others; one tick in the middle where the limits coincide.
[[nodiscard]] std::vector<ScaleTick> colourScaleTicks(const ColourScaling& scaling,
                                                      const ScalePrefix& prefix);

}  // namespace lumo
