// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "clean/A3DBFunc.h"

namespace lumo {

/// The pill box of the family. Only its transform differs from the base; its widths describe it and enter
/// none of the values.
class A3DPillBoxFunc final : public A3DBFunc {
 public:
  A3DPillBoxFunc(double widthX, double widthY) : widthX_(widthX), widthY_(widthY) {}

  [[nodiscard]] double widthX() const { return widthX_; }
  [[nodiscard]] double widthY() const { return widthY_; }
  /// (sin u / u) (sin v / v), but 1 as soon as either argument is 0.
  [[nodiscard]] double FourierValue(double u, double v) const override;

 private:
  double widthX_;
  double widthY_;
};

}  // namespace lumo
