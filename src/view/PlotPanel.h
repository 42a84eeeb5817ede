// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <qcustomplot.h>

#include "view/A2_3DAxis.h"
#include "view/PanelView.h"

namespace lumo {

class PrefixTicker;

/// The drawing inside an AAxisWnd: axes, graphs and colour scale. The only place that knows how axes are
/// drawn.
class PlotPanel : public QCustomPlot {
 public:
  explicit PlotPanel(QWidget* parent);

  /// Shows everything on `axis`, which must stay until another one (or null) is set.
  void setAxis(const A2_3DAxis* axis);
  /// Takes over changed names, graphs and colours.
  void refresh();
  /// Draws at the next opportunity; for changes of view() alone.
  void redraw();

  [[nodiscard]] PanelView& view() { return view_; }
  [[nodiscard]] const PanelView& view() const { return view_; }
  /// The panel between the axes in logical pixels.
  [[nodiscard]] QRect panelRect() const;
  [[nodiscard]] const A2_3DAxis* axis() const { return axis_; }

  // While a picture that is kept is drawn, refresh() and redraw() are put off until it is done.

  /// Draws everything on a device of this widget's logical size.
  void drawOn(QPaintDevice& device);
  /// Draws everything into a rectangle of a device's pixels.
  void drawInto(QCPPainter& painter, const QRect& rectangle);

 protected:
  /// The part shown depends on the panel's size, the panel's size on the widths of the tick numbers, and
  /// those on the part shown.
  void updateLayout() override;

 private:
  void showRanges();
  void showColourScale();
  /// True while a picture is kept: the screen is drawn afterwards.
  bool putOff();
  template <typename Drawing>
  void keep(Drawing drawing);

  const A2_3DAxis* axis_ = nullptr;
  PanelView view_;
  bool isKeeping_ = false;  ///< a picture that is kept is being drawn
  bool keepsNext_ = false;  ///< the graphs are drawn for it next, not for the screen
  bool isPutOff_ = false;
  QSharedPointer<PrefixTicker> xTicker_;
  QSharedPointer<PrefixTicker> yTicker_;
  QCPColorScale* colourScale_;  // belongs to the plot layout
};

}  // namespace lumo
