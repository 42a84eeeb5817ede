// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "core/AMatrix.h"
#include "core/SkyProjection.h"
#include "core/TMinMax.h"
#include "view/PanelView.h"

namespace lumo {

/// The restoring beam drawn in the corner of a map.
struct BeamEllipse {
  double majorArcsec = 0.0;  ///< full width at half maximum
  double minorArcsec = 0.0;  ///< full width at half maximum
  double paDeg = 0.0;        ///< of the major axis, from north through east
};

/// A pixel of a map, as the matrix counts: from 0, row to the north, column to the east.
struct MapPixel {
  std::uint32_t row = 0;
  std::uint32_t column = 0;

  bool operator==(const MapPixel&) const = default;
};

/// What the cursor points at, as text; a part that is not known is empty.
struct MapReadOut {
  std::string sky;     ///< "12:30:49.42 +12:23:28.0"
  std::string offset;  ///< "x +12.3 as, y -3.2 as"
  std::string pixel;   ///< "row 5, column 7"
  std::string value;   ///< "0.0123 Jy/beam", "no value" for NaN
};

/// A map with its coordinates, and what a position on it means. Knows no window.
class MapView {
 public:
  /// `range`: as in TMinMax, arcseconds of the centres of the outermost pixels. Where x or y is unset or not
  /// finite, pixel numbers stand in for that axis.
  /// `map` is not null.
  void setMap(std::shared_ptr<const AMatrix<float>> map, const TMinMax& range);
  void setUnit(std::string unit) { unit_ = std::move(unit); }
  void setBeam(const std::optional<BeamEllipse>& beam) { beam_ = beam; }
  /// The direction of x = y = 0.
  void setSkyCentre(const std::optional<SkyPosition>& centre) { centre_ = centre; }

  [[nodiscard]] const AMatrix<float>& map() const { return *map_; }
  [[nodiscard]] const TMinMax& range() const { return range_; }
  [[nodiscard]] const std::string& unit() const { return unit_; }
  [[nodiscard]] const std::optional<BeamEllipse>& beam() const { return beam_; }
  /// Distance of neighbouring pixel centres, > 0.
  [[nodiscard]] double cellX() const { return cellX_; }
  [[nodiscard]] double cellY() const { return cellY_; }
  /// The map with its outer pixels whole: half a cell beyond their centres.
  [[nodiscard]] PlotRect edges() const;
  /// The pixel whose area holds the position; nothing outside the map.
  [[nodiscard]] std::optional<MapPixel> pixelAt(double x, double y) const;
  /// Texts for a position in arcseconds; sky position and offsets are known off the map as well.
  [[nodiscard]] MapReadOut readOut(double x, double y) const;

 private:
  std::shared_ptr<const AMatrix<float>> map_ = std::make_shared<const AMatrix<float>>();
  TMinMax range_;
  std::string unit_;
  std::optional<BeamEllipse> beam_;
  std::optional<SkyPosition> centre_;
  double cellX_ = 1.0;
  double cellY_ = 1.0;
};

}  // namespace lumo
