// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>

#include "core/Units.h"

namespace lumo {

/// A two-dimensional function used as gridding kernel (arguments in wavelengths, widths of a kernel in cells
/// times the cell size) or as uv taper (arguments and widths in wavelengths).
///
/// Widths are full widths at half maximum. A width of 0 means unbounded in that direction: the function is
/// constant along it and the half-width of support is 0. With rho^2 = x^2/wx^2 + y^2/wy^2 the shapes are
/// given at the classes.
class AB3DFunc {
 public:
  AB3DFunc(double widthX, double widthY) : widthX_(widthX), widthY_(widthY) {}
  virtual ~AB3DFunc() = default;

  /// Half-width of support in x and in y: where a gridding kernel is cut. Tapers are never cut.
  [[nodiscard]] virtual double halfWidthX() const = 0;
  [[nodiscard]] virtual double halfWidthY() const = 0;
  [[nodiscard]] virtual double value(double x, double y) const = 0;

  [[nodiscard]] double widthX() const { return widthX_; }
  [[nodiscard]] double widthY() const { return widthY_; }
  /// The terms of rho^2 = termX + termY, for whoever visits a whole row of cells.
  [[nodiscard]] double termX(double x) const { return widthX_ == 0.0 ? 0.0 : x * x / (widthX_ * widthX_); }
  [[nodiscard]] double termY(double y) const { return widthY_ == 0.0 ? 0.0 : y * y / (widthY_ * widthY_); }

 protected:
  [[nodiscard]] double rhoSquared(double x, double y) const { return termX(x) + termY(y); }

 private:
  double widthX_;
  double widthY_;
};

/// 1 for -w/2 <= x < w/2 and the same in y, else 0.
class APillBox3DFunc : public AB3DFunc {
 public:
  using AB3DFunc::AB3DFunc;
  [[nodiscard]] double halfWidthX() const override { return widthX() / 2; }
  [[nodiscard]] double halfWidthY() const override { return widthY() / 2; }
  [[nodiscard]] double value(double x, double y) const override {
    return inside(x, widthX()) && inside(y, widthY()) ? 1.0 : 0.0;
  }

 private:
  static bool inside(double x, double width) { return width == 0.0 || (-width / 2 <= x && x < width / 2); }
};

/// exp(-4 ln 2 rho^2); cut at one full width.
class AGauss3DFunc : public AB3DFunc {
 public:
  using AB3DFunc::AB3DFunc;
  [[nodiscard]] double halfWidthX() const override { return widthX(); }
  [[nodiscard]] double halfWidthY() const override { return widthY(); }
  [[nodiscard]] double value(double x, double y) const override { return ofRhoSquared(rhoSquared(x, y)); }
  [[nodiscard]] static double ofRhoSquared(double rhoSquared) {
    constexpr double kFourLn2 = 2.772588722239781;
    return std::exp(-kFourLn2 * rhoSquared);
  }
};

/// 1 / (1 + 4 rho^2); cut at two full widths.
class ALorentz3DFunc : public AB3DFunc {
 public:
  using AB3DFunc::AB3DFunc;
  [[nodiscard]] double halfWidthX() const override { return 2 * widthX(); }
  [[nodiscard]] double halfWidthY() const override { return 2 * widthY(); }
  [[nodiscard]] double value(double x, double y) const override { return ofRhoSquared(rhoSquared(x, y)); }
  [[nodiscard]] static double ofRhoSquared(double rhoSquared) { return 1.0 / (1.0 + 4.0 * rhoSquared); }
};

/// max(0, 1 - rho), a cone.
class AHat3DFunc : public AB3DFunc {
 public:
  using AB3DFunc::AB3DFunc;
  [[nodiscard]] double halfWidthX() const override { return widthX(); }
  [[nodiscard]] double halfWidthY() const override { return widthY(); }
  [[nodiscard]] double value(double x, double y) const override { return ofRhoSquared(rhoSquared(x, y)); }
  [[nodiscard]] static double ofRhoSquared(double rhoSquared) {
    const double cone = 1.0 - std::sqrt(rhoSquared);
    return cone > 0.0 ? cone : 0.0;
  }
};

/// (1 - tanh((rho - p3) / p4)) / 2: flat inside rho = p3 with an edge of width p4; p4 = 0 is a step at p3.
class ATH3DFunc : public AB3DFunc {
 public:
  ATH3DFunc(double widthX, double widthY, double parameter3, double parameter4)
      : AB3DFunc(widthX, widthY), parameter3_(parameter3), parameter4_(parameter4) {}
  [[nodiscard]] double halfWidthX() const override { return widthX(); }
  [[nodiscard]] double halfWidthY() const override { return widthY(); }
  [[nodiscard]] double value(double x, double y) const override {
    const double rho = std::sqrt(rhoSquared(x, y));
    if (parameter4_ == 0.0) return rho < parameter3_ ? 1.0 : (rho == parameter3_ ? 0.5 : 0.0);
    return 0.5 * (1.0 - std::tanh((rho - parameter3_) / parameter4_));
  }

 private:
  double parameter3_;
  double parameter4_;
};

}  // namespace lumo
