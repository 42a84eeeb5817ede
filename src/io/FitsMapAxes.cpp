// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/FitsMapAxes.h"

#include <array>
#include <cmath>
#include <optional>
#include <utility>

#include "core/TextForm.h"
#include "core/Units.h"

namespace lumo {

namespace {

constexpr double kArcsecPerDegree = 3600.0;

enum class AxisRole { kOther, kLongitude, kLatitude };

std::string axisType(const FitsCards& cards, int axis) {
  std::string type = cards.text(axisKey("CTYPE", axis)).value_or("");
  for (char& c : type)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return type;
}

// "RA---SIN" and "RA" alike name the coordinate in front of the hyphens.
AxisRole axisRole(const std::string& type) {
  const std::string name = type.substr(0, type.find('-'));
  if (name == "RA" || name == "GLON" || name == "ELON") return AxisRole::kLongitude;
  if (name == "DEC" || name == "GLAT" || name == "ELAT") return AxisRole::kLatitude;
  return AxisRole::kOther;
}

// The two pixel axes of the plane in FITS order, and which world coordinate each is labelled with.
struct Plane {
  std::array<int, 2> axes{};
  bool celestial = false;
  bool longitudeFirst = true;
};

Status refuse(std::string sentence) {
  return {StatusCode::kUnsupported, std::move(sentence)};
}

Status findPlane(const FitsCards& cards, const ImageShape& shape, Plane& plane) {
  const int count = static_cast<int>(shape.lengths.size());
  int longitude = 0;
  int latitude = 0;
  for (int axis = 1; axis <= count; ++axis) {
    const AxisRole role = axisRole(axisType(cards, axis));
    if (role == AxisRole::kLongitude && longitude == 0) longitude = axis;
    if (role == AxisRole::kLatitude && latitude == 0) latitude = axis;
  }
  if ((longitude == 0) != (latitude == 0))
    return refuse("is not a map of the sky: it has only one of the axes right ascension and declination");
  plane.celestial = longitude != 0;
  if (!plane.celestial) {
    longitude = 1;
    latitude = 2;
  }
  plane.longitudeFirst = longitude < latitude;
  plane.axes = plane.longitudeFirst ? std::array{longitude, latitude} : std::array{latitude, longitude};
  for (int axis = 1; axis <= count; ++axis) {
    const std::int64_t length = shape.lengths[static_cast<std::size_t>(axis - 1)];
    if (axis != longitude && axis != latitude && length != 1)
      return refuse("is a cube of " + toStr(length) + " planes along axis " + toStr(axis) +
                    "; a map has one plane");
  }
  return {};
}

using Matrix2 = std::array<std::array<double, 2>, 2>;

// Linear part of the transformation, from pixel steps along the plane's axes (second index) to world units of
// the same axes (first index).
Matrix2 pixelMatrix(const FitsCards& cards, const Plane& plane) {
  const auto element = [&](const std::string& stem, int i, int j) {
    const std::string row = toStr(plane.axes[static_cast<std::size_t>(i)]);
    const std::string column = toStr(plane.axes[static_cast<std::size_t>(j)]);
    const auto value = cards.number(stem + row + "_" + column);
    // The draft standard's PC001002, still found in the archives. Plane axes have one digit where it does.
    return value || stem != "PC" ? value : cards.number("PC00" + row + "00" + column);
  };
  const bool hasCd = element("CD", 0, 0) || element("CD", 0, 1) || element("CD", 1, 0) || element("CD", 1, 1);
  const bool hasPc = element("PC", 0, 0) || element("PC", 0, 1) || element("PC", 1, 0) || element("PC", 1, 1);
  std::array<double, 2> step{};
  Matrix2 matrix{};
  for (int i = 0; i < 2; ++i)
    step[static_cast<std::size_t>(i)] =
        cards.number(axisKey("CDELT", plane.axes[static_cast<std::size_t>(i)])).value_or(1.0);
  for (int i = 0; i < 2; ++i) {
    for (int j = 0; j < 2; ++j) {
      double& cell = matrix[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
      const double unity = i == j ? 1.0 : 0.0;
      if (hasCd)
        cell = element("CD", i, j).value_or(0.0);
      else
        cell = step[static_cast<std::size_t>(i)] * (hasPc ? element("PC", i, j).value_or(unity) : unity);
    }
  }
  const int latitude = plane.axes[plane.longitudeFirst ? 1 : 0];
  const double rotation = cards.number(axisKey("CROTA", latitude)).value_or(0.0) * kRadianPerDegree;
  if (hasCd || hasPc || rotation == 0.0) return matrix;
  // Greisen & Calabretta 2002, eq. 187-189, longitude first.
  const double sine = plane.longitudeFirst ? std::sin(rotation) : -std::sin(rotation);
  matrix[0] = {step[0] * std::cos(rotation), -step[1] * sine};
  matrix[1] = {step[0] * sine, step[1] * std::cos(rotation)};
  return matrix;
}

// An image that says nothing about its coordinates: one arcsecond a pixel, east left, about the middle.
void layOutPlain(const FitsCards& cards, const ImageShape& shape, MapLayout& layout) {
  const auto middle = [&](int axis) {
    const double length = static_cast<double>(shape.lengths[static_cast<std::size_t>(axis - 1)]);
    return cards.number(axisKey("CRPIX", axis)).value_or(std::floor(length / 2) + 1.0);
  };
  layout.x = {middle(1), -1.0};
  layout.y = {middle(2), 1.0};
  layout.scaled = false;
}

bool saysScale(const FitsCards& cards) {
  return cards.has("CDELT1") || cards.has("CDELT2") || cards.has("CD1_1") || cards.has("CD2_2");
}

Status layOutSky(const FitsCards& cards, const ImageShape& shape, const Plane& plane, MapLayout& layout) {
  Matrix2 matrix = pixelMatrix(cards, plane);
  for (std::size_t i = 0; i < 2; ++i) {
    const auto unit = degreesPerUnit(cards, plane.axes[i]);
    if (!unit)
      return refuse(axisKey("CUNIT", plane.axes[i]) + " is not an angle; a map's axes are in degrees");
    for (double& cell : matrix[i]) cell *= *unit * kArcsecPerDegree;
  }
  const auto length = [&](std::size_t i) {
    return static_cast<double>(shape.lengths[static_cast<std::size_t>(plane.axes[i] - 1)]);
  };
  // What stays below half a pixel across the whole image is rounding of the header, not a rotation.
  const auto negligible = [&](std::size_t i, std::size_t j, std::size_t main) {
    return std::abs(matrix[i][j]) * length(j) <= 0.5 * std::abs(matrix[i][main]);
  };
  const bool straight = negligible(0, 1, 0) && negligible(1, 0, 1);
  const bool crossed = negligible(0, 0, 1) && negligible(1, 1, 0);
  if (!straight && !crossed)
    return refuse("is rotated or sheared against north; only images with north along an axis are read");
  // World axis 0 runs along pixel axis 0 when straight, along pixel axis 1 when crossed.
  const std::size_t alongFirst = straight ? 0 : 1;
  const std::size_t longitude = plane.longitudeFirst ? 0 : 1;
  const std::size_t xPixels = longitude == 0 ? alongFirst : 1 - alongFirst;
  layout.fastIsX = xPixels == 0;
  layout.xAxis = plane.axes[xPixels];
  layout.yAxis = plane.axes[1 - xPixels];
  const auto reference = [&](int axis) { return cards.number(axisKey("CRPIX", axis)).value_or(0.0); };
  layout.x = {reference(layout.xAxis), matrix[longitude][xPixels]};
  layout.y = {reference(layout.yAxis), matrix[1 - longitude][1 - xPixels]};
  return {};
}

// Bounds that keep every coordinate of the map a usable number.
bool usable(const PixelAxis& axis) {
  constexpr double kLargest = 1e31;
  const double step = std::abs(axis.step);
  return step > 0 && step < kLargest && std::abs(axis.reference) < kLargest;
}

}  // namespace

std::optional<double> degreesPerUnit(const FitsCards& cards, int axis) {
  std::string unit;
  for (const char c : cards.text(axisKey("CUNIT", axis)).value_or(""))
    unit += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  if (unit.empty() || unit.starts_with("deg")) return 1.0;
  if (unit == "arcsec") return 1.0 / kArcsecPerDegree;
  if (unit == "arcmin") return 1.0 / 60.0;
  if (unit == "mas") return 1.0 / kArcsecPerDegree / 1000.0;
  if (unit == "rad") return kDegreePerRadian;
  return std::nullopt;
}

Status findLayout(const FitsCards& cards, const ImageShape& shape, MapLayout& layout) {
  layout = MapLayout();
  if (shape.lengths.size() < 2)
    return refuse("has " + toStr(static_cast<std::int64_t>(shape.lengths.size())) +
                  " axes in its primary HDU; a map has two or more");
  Plane plane;
  if (Status found = findPlane(cards, shape, plane); !found.ok()) return found;
  const bool angles = degreesPerUnit(cards, 1) && degreesPerUnit(cards, 2);
  if (plane.celestial || (saysScale(cards) && angles)) {
    if (Status placed = layOutSky(cards, shape, plane, layout); !placed.ok()) return placed;
  } else {
    layOutPlain(cards, shape, layout);
  }
  constexpr double kHalfTurn = 180.0;
  const double pole = cards.number("LONPOLE").value_or(kHalfTurn);
  if (plane.celestial && std::abs(std::remainder(pole - kHalfTurn, 2 * kHalfTurn)) > 1e-6)
    return refuse("is rotated against north (LONPOLE is " + valToStr(pole) + ", expected 180)");
  if (!usable(layout.x) || !usable(layout.y))
    return {StatusCode::kBadFormat, "has no usable pixel size (CDELT " + valToStr(layout.x.step) + " and " +
                                        valToStr(layout.y.step) + " arcseconds)"};
  layout.equatorial = plane.celestial && axisType(cards, plane.axes[plane.longitudeFirst ? 0 : 1])[0] == 'R';
  layout.mirrorX = layout.x.step < 0;
  layout.mirrorY = layout.y.step < 0;
  layout.columns = static_cast<std::uint32_t>(shape.lengths[static_cast<std::size_t>(layout.xAxis - 1)]);
  layout.rows = static_cast<std::uint32_t>(shape.lengths[static_cast<std::size_t>(layout.yAxis - 1)]);
  return {};
}

}  // namespace lumo
