// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/MapView.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/TextForm.h"
#include "view/SkyText.h"

namespace lumo {
namespace {

/// Pixel numbers where the record gives no coordinates.
void completeAxis(double& low, double& high, std::uint32_t count) {
  if (std::isfinite(high - low) && low <= high && (count < 2 || low < high)) return;
  low = 0.0;
  high = count > 0 ? count - 1.0 : 0.0;
}

/// Pixel that holds `place`, counted in cells from the outer edge of the first one; -1 outside.
std::int64_t pixelOf(double place, std::uint32_t count) {
  return place >= 0.0 && place < count ? static_cast<std::int64_t>(place) : -1;
}

std::string signedText(double value, int decimals) {
  const std::string text = fixedText(value, decimals);
  return text.front() == '-' ? text : '+' + text;
}

}  // namespace

void MapView::setMap(std::shared_ptr<const AMatrix<float>> map, const TMinMax& range) {
  map_ = std::move(map);
  range_ = range;
  completeAxis(range_.xMin, range_.xMax, map_->columns());
  completeAxis(range_.yMin, range_.yMax, map_->rows());
  const bool manyX = map_->columns() > 1;
  const bool manyY = map_->rows() > 1;
  if (manyX) cellX_ = (range_.xMax - range_.xMin) / (map_->columns() - 1);
  if (manyY) cellY_ = (range_.yMax - range_.yMin) / (map_->rows() - 1);
  // A single row or column has no spacing of its own; its pixels are taken as square.
  if (!manyX) cellX_ = manyY ? cellY_ : 1.0;
  if (!manyY) cellY_ = cellX_;
}

PlotRect MapView::edges() const {
  return {range_.xMin - cellX_ / 2.0, range_.xMax + cellX_ / 2.0, range_.yMin - cellY_ / 2.0,
          range_.yMax + cellY_ / 2.0};
}

std::optional<MapPixel> MapView::pixelAt(double x, double y) const {
  const auto column = pixelOf((x - range_.xMin) / cellX_ + 0.5, map_->columns());
  const auto row = pixelOf((y - range_.yMin) / cellY_ + 0.5, map_->rows());
  if (row < 0 || column < 0) return std::nullopt;
  return MapPixel{static_cast<std::uint32_t>(row), static_cast<std::uint32_t>(column)};
}

MapReadOut MapView::readOut(double x, double y) const {
  MapReadOut text;
  const int decimals = arcsecDecimals(std::min(cellX_, cellY_));
  if (centre_) {
    if (const auto sky = skyAtOffset(*centre_, x, y)) {
      // A second of time is fifteen seconds of arc.
      text.sky = raText(sky->raDeg, decimals + 1) + ' ' + decText(sky->decDeg, decimals);
    } else {
      text.sky = "beyond the horizon";
    }
  }
  text.offset = "x " + signedText(x, decimals) + " as, y " + signedText(y, decimals) + " as";
  if (const auto pixel = pixelAt(x, y)) {
    text.pixel = "row " + std::to_string(pixel->row) + ", column " + std::to_string(pixel->column);
    const float value = (*map_)(pixel->row, pixel->column);
    text.value = std::isnan(value) ? "no value" : nValToStr(value, 5);
    if (!std::isnan(value) && !unit_.empty()) text.value += ' ' + unit_;
  }
  return text;
}

}  // namespace lumo
