// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lumo {

/// A position: in a plot's own values or in logical pixels of its panel (from the left, from the top).
struct PlotPoint {
  double x = 0.0;
  double y = 0.0;
};

/// A rectangle in a plot's own values.
struct PlotRect {
  double xMin = 0.0;
  double xMax = 1.0;
  double yMin = 0.0;
  double yMax = 1.0;

  [[nodiscard]] double width() const { return xMax - xMin; }
  [[nodiscard]] double height() const { return yMax - yMin; }
  bool operator==(const PlotRect&) const = default;
};

/// Which part of a plot its panel shows, and how that changes when the user zooms and pans. Knows no window.
///
/// While everything is shown ("fitted"), a change of the panel's size keeps everything in view; otherwise it
/// keeps the centre and the scale.
class PanelView {
 public:
  /// The furthest that the wheel and the keys go, as a multiple of the scale that fits everything.
  static constexpr double kDeepestZoom = 1e4;
  static constexpr double kWidestZoom = 4.0;

  /// `x` -1: values grow from right to left, 1: from left to right. `y` 1: upwards, -1: downwards.
  void setDirections(int x, int y);
  /// With `square` one unit of x is as long on screen as one of y.
  void setSquare(bool square);
  /// Everything there is to see; fits it. A width or height that is not positive counts as 1.
  void setFull(const PlotRect& full);
  /// The same for a plot that has grown: a part that is shown stays.
  void growFull(const PlotRect& full);
  /// Size of the panel in logical pixels; sizes below 1 count as 1.
  void setPanelSize(double width, double height);

  /// Shows everything.
  void fit();
  /// Enlarges by `factor` (> 1 comes closer); what is at `pixel` stays there.
  void zoomAbout(const PlotPoint& pixel, double factor);
  /// Moves the picture by so many pixels to the right and down. The panel's centre stays on the plot.
  void pan(double right, double down);

  [[nodiscard]] PlotRect visible() const;
  [[nodiscard]] bool fitted() const { return fitted_; }
  [[nodiscard]] int xDirection() const { return xDirection_; }
  [[nodiscard]] int yDirection() const { return yDirection_; }
  [[nodiscard]] double panelWidth() const { return panelWidth_; }
  [[nodiscard]] double panelHeight() const { return panelHeight_; }
  [[nodiscard]] double pixelsPerX() const { return 1.0 / perPixelX_; }
  [[nodiscard]] double pixelsPerY() const { return 1.0 / perPixelY_; }
  [[nodiscard]] PlotPoint toPlot(const PlotPoint& pixel) const;
  [[nodiscard]] PlotPoint toPixel(const PlotPoint& point) const;

 private:
  [[nodiscard]] PlotPoint fittingScale() const;

  PlotRect full_;
  PlotPoint centre_{0.5, 0.5};
  double perPixelX_ = 1.0;  // plot units per logical pixel
  double perPixelY_ = 1.0;
  double panelWidth_ = 1.0;
  double panelHeight_ = 1.0;
  int xDirection_ = 1;
  int yDirection_ = 1;
  bool square_ = false;
  bool fitted_ = true;
};

}  // namespace lumo
