// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <cstdint>
#include <string>

#include "core/AArray.h"
#include "core/ABitArray.h"
#include "core/AObjArray.h"
#include "io/AUVXFqTbl.h"

namespace lumo {

/// A position in the uv plane, wavelengths.
struct UvPoint {
  double u = 0.0;
  double v = 0.0;
};

/// A rectangle of the uv plane with its border, wavelengths.
struct UvRange {
  double uMin = -1.0;
  double uMax = 1.0;
  double vMin = -1.0;
  double vMax = 1.0;

  /// Both bounds inclusive; false for a point that is not finite.
  [[nodiscard]] bool contains(const UvPoint& point) const {
    return uMin <= point.u && point.u <= uMax && vMin <= point.v && point.v <= vMax &&
           std::isfinite(point.u) && std::isfinite(point.v);
  }
  /// The smallest range about the origin, the same in every quadrant, that holds this one: where a point lies
  /// inside, so does its mirror.
  [[nodiscard]] UvRange mirrored() const;
  bool operator==(const UvRange&) const = default;
};

/// What a picture of the uv plane takes from a selection of data: the first four arrays are parallel, one
/// entry for each file. A copyable value.
struct UvPlaneData {
  AObjArray<std::string> names;     ///< full paths
  AObjArray<AUVXFqTbl> tables;      ///< frequency table, built for the file's one source
  AObjArray<ABitArray> selections;  ///< one bit per frequency selection; set = drawn
  AArray<std::int32_t> sources;     ///< ID of the file's one source
  double minHz = 0.0;               ///< lowest and highest frequency of the selection
  double maxHz = 0.0;
  double uExtent = 0.0;  ///< the largest |u| and |v| at the highest frequency, wavelengths
  double vExtent = 0.0;

  /// Everything there is to draw: a square about the origin, 5 % larger than the larger extent. Without an
  /// extent (nothing is selected) -1..1.
  [[nodiscard]] UvRange range() const;
  /// True when row `row` of file `file` is drawn; a mask or table that is missing or short counts as clear.
  [[nodiscard]] bool isSelected(std::int32_t file, std::int32_t row) const;
};

}  // namespace lumo
