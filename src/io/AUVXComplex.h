// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>

namespace lumo {

/// A complex visibility with its weight, three floats as a UVX file stores them. A weight <= 0 (or one that
/// is not finite) marks a rejected visibility.
class AUVXComplex {
 public:
  AUVXComplex() = default;
  AUVXComplex(double re, double im, double weight)
      : re_(static_cast<float>(re)), im_(static_cast<float>(im)), weight_(static_cast<float>(weight)) {}

  [[nodiscard]] float Re() const { return re_; }
  [[nodiscard]] float Im() const { return im_; }
  [[nodiscard]] float Weight() const { return weight_; }
  /// True when all three numbers are finite and the weight is above 0: everything else is rejected data.
  [[nodiscard]] bool isUsable() const {
    // Without branches: the answer may look random where data are flagged here and there.
    return (int{std::isfinite(re_)} & int{std::isfinite(im_)} & int{std::isfinite(weight_)} &
            int{weight_ > 0}) != 0;
  }

 private:
  float re_ = 0;
  float im_ = 0;
  float weight_ = 0;
};

static_assert(sizeof(AUVXComplex) == 12);

}  // namespace lumo
