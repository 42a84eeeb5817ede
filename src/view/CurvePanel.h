// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <qcustomplot.h>

#include "view/AMSD2DAxisMulti.h"
#include "view/PanelView.h"

namespace lumo {

class ScaleTicker;
class LegendRows;

/// The drawing inside an AMultiAxisDlgWnd: two axes, linear or logarithmic, curves between them and their
/// legend above.
class CurvePanel : public QCustomPlot {
 public:
  explicit CurvePanel(QWidget* parent);

  /// Shows everything in `frame`, which must stay until another one (or null) is set.
  void setFrame(const AMSD2DAxisMulti* frame);
  /// Takes over changed names, colours and curves; the part shown stays.
  void refresh();
  /// The same, and shows everything: for changed scales and curves of another extent.
  void showEverything();
  /// Takes over curves that have grown: all of them where all was shown, else the part shown stays.
  void followCurves();
  /// Draws at the next opportunity; for changes of view() alone.
  void redraw();

  /// The part shown, in axis coordinates.
  [[nodiscard]] PanelView& view() { return view_; }
  [[nodiscard]] const PanelView& view() const { return view_; }
  /// The panel between the axes in logical pixels.
  [[nodiscard]] QRect panelRect() const;
  [[nodiscard]] const AMSD2DAxisMulti* frame() const { return frame_; }

  /// Draws everything on a device of this widget's logical size.
  void drawOn(QPaintDevice& device);
  /// Draws everything into a rectangle of the painter's pixels.
  void drawInto(QCPPainter& painter, const QRect& rectangle);

 protected:
  /// The part shown depends on the panel's size, the panel's size on the widths of the tick numbers, and
  /// those on the part shown.
  void updateLayout() override;

 private:
  void showColours();
  void showRanges();
  static void showAxis(QCPAxis& axis, ScaleTicker& ticker, AxisScale scale, double low, double high,
                       const std::string& name);

  const AMSD2DAxisMulti* frame_ = nullptr;
  PanelView view_;
  QSharedPointer<ScaleTicker> xTicker_;
  QSharedPointer<ScaleTicker> yTicker_;
  LegendRows* legend_;  // belongs to the plot layout
};

}  // namespace lumo
