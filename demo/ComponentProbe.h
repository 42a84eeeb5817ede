// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "core/AMatrix.h"
#include "core/TMinMax.h"

namespace lumo {

/// Places of a map's pixels: x to the east, y to the north, arcseconds.
class MapPlane {
 public:
  /// Both stay with the caller. `range` gives the centres of the outermost pixels; the map needs at least two
  /// rows and two columns (usable() is false otherwise).
  MapPlane(const AMatrix<float>& map, const TMinMax& range);

  [[nodiscard]] bool usable() const;
  [[nodiscard]] double x(double column) const { return range_.xMin + column * stepX(); }
  [[nodiscard]] double y(double row) const { return range_.yMin + row * stepY(); }
  [[nodiscard]] double stepX() const { return (range_.xMax - range_.xMin) / (map_.columns() - 1); }
  [[nodiscard]] double stepY() const { return (range_.yMax - range_.yMin) / (map_.rows() - 1); }
  /// The pixel whose centre is nearest to a place; NaN outside of the map.
  [[nodiscard]] double nearest(double x, double y) const;
  [[nodiscard]] const AMatrix<float>& map() const { return map_; }

 private:
  const AMatrix<float>& map_;
  const TMinMax& range_;
};

/// A peak between the pixels.
struct FittedPeak {
  double value = 0;
  double x = 0;  ///< arcseconds
  double y = 0;  ///< arcseconds
};

/// The highest pixel within `radius` arcseconds of a place, refined by the two-dimensional parabola that fits
/// its 3 × 3 neighbourhood best. The parabola goes through logarithms where all nine pixels are positive (a
/// Gaussian peak then comes out exactly), through the values otherwise. None when no finite pixel lies there;
/// the pixel as it stands when the parabola has no maximum within a pixel, at the map's edge or beside a NaN.
[[nodiscard]] std::optional<FittedPeak> fitPeak(const MapPlane& plane, double x, double y, double radius);

/// An elliptical Gaussian: full widths at half maximum in arcseconds, position angle in degrees, north
/// through east.
struct GaussianShape {
  double major = 0;
  double minor = 0;
  double pa = 0;

  /// The full widths at half maximum of its product of convolution with another one.
  [[nodiscard]] GaussianShape convolved(const GaussianShape& other) const;
  /// Integral of the Gaussian of height 1, in square arcseconds.
  [[nodiscard]] double area() const;
};

/// Flux density of a source of the given (convolved) shape: the finite pixels whose centres lie inside the
/// ellipse of semi-axes 1.25 full widths about (x, y), added up, divided by the beam's area in pixels and by
/// the share of a Gaussian that lies in there, 1 - 2^(-4 · 1.25²). None when no finite pixel lies inside.
[[nodiscard]] std::optional<double> sumFlux(const MapPlane& plane, double x, double y,
                                            const GaussianShape& shape, const GaussianShape& beam);

}  // namespace lumo
