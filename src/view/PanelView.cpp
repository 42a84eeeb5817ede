// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/PanelView.h"

#include <algorithm>
#include <cmath>

namespace lumo {

void PanelView::setDirections(int x, int y) {
  xDirection_ = x < 0 ? -1 : 1;
  yDirection_ = y < 0 ? -1 : 1;
}

void PanelView::setSquare(bool square) {
  square_ = square;
  fit();
}

void PanelView::setFull(const PlotRect& full) {
  fitted_ = true;
  growFull(full);
}

void PanelView::growFull(const PlotRect& full) {
  full_ = full;
  if (!(full_.width() > 0.0)) full_.xMax = full_.xMin + 1.0;
  if (!(full_.height() > 0.0)) full_.yMax = full_.yMin + 1.0;
  if (fitted_) fit();
}

void PanelView::setPanelSize(double width, double height) {
  panelWidth_ = std::max(width, 1.0);
  panelHeight_ = std::max(height, 1.0);
  if (fitted_) fit();
}

PlotPoint PanelView::fittingScale() const {
  PlotPoint scale{full_.width() / panelWidth_, full_.height() / panelHeight_};
  if (square_) scale.x = scale.y = std::max(scale.x, scale.y);
  return scale;
}

void PanelView::fit() {
  const PlotPoint scale = fittingScale();
  perPixelX_ = scale.x;
  perPixelY_ = scale.y;
  centre_ = {(full_.xMin + full_.xMax) / 2.0, (full_.yMin + full_.yMax) / 2.0};
  fitted_ = true;
}

void PanelView::zoomAbout(const PlotPoint& pixel, double factor) {
  if (!(factor > 0.0)) return;
  const PlotPoint fixed = toPlot(pixel);
  const double fittingX = fittingScale().x;
  const double wanted = std::clamp(perPixelX_ / factor, fittingX / kDeepestZoom, fittingX * kWidestZoom);
  const double change = wanted / perPixelX_;
  perPixelX_ *= change;
  perPixelY_ *= change;
  const PlotPoint there = toPlot(pixel);
  centre_.x += fixed.x - there.x;
  centre_.y += fixed.y - there.y;
  fitted_ = false;
}

void PanelView::pan(double right, double down) {
  centre_.x = std::clamp(centre_.x - xDirection_ * right * perPixelX_, full_.xMin, full_.xMax);
  centre_.y = std::clamp(centre_.y + yDirection_ * down * perPixelY_, full_.yMin, full_.yMax);
  fitted_ = false;
}

PlotRect PanelView::visible() const {
  const double halfX = perPixelX_ * panelWidth_ / 2.0;
  const double halfY = perPixelY_ * panelHeight_ / 2.0;
  return {centre_.x - halfX, centre_.x + halfX, centre_.y - halfY, centre_.y + halfY};
}

PlotPoint PanelView::toPlot(const PlotPoint& pixel) const {
  return {centre_.x + xDirection_ * (pixel.x - panelWidth_ / 2.0) * perPixelX_,
          centre_.y - yDirection_ * (pixel.y - panelHeight_ / 2.0) * perPixelY_};
}

PlotPoint PanelView::toPixel(const PlotPoint& point) const {
  return {panelWidth_ / 2.0 + xDirection_ * (point.x - centre_.x) / perPixelX_,
          panelHeight_ / 2.0 - yDirection_ * (point.y - centre_.y) / perPixelY_};
}

}  // namespace lumo
