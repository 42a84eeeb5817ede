// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QPointF>
#include <QWidget>
#include <memory>
#include <string>

#include "core/Status.h"
#include "view/AMSD2DAxisMulti.h"
#include "view/APrintable.h"
#include "view/PanelNavigation.h"

class QLabel;

namespace lumo {

class CurvePanel;

/// A window that shows a frame with its curves: legends above, ticks with scale prefixes, and below a
/// read-out of what the cursor points at.
///
/// Mouse: the wheel zooms about the cursor, dragging with the left or middle button moves the picture, a
/// double click shows everything, the right button opens a context menu with the same, copying and saving.
/// Keys: arrows move, + and - zoom, Home shows everything, Ctrl+C copies. Everything happens on the
/// user-interface thread.
class AMultiAxisDlgWnd : public QWidget, public APrintable {
  Q_OBJECT

 public:
  explicit AMultiAxisDlgWnd(QWidget* parent = nullptr);
  ~AMultiAxisDlgWnd() override;

  /// Takes the frame over, gives it this window's font height and shows everything in it; null empties the
  /// window.
  void SetAxis(std::unique_ptr<AMSD2DAxisMulti> frame);
  /// The frame shown, null if none; call refresh() after a change to it or its curves.
  [[nodiscard]] AMSD2DAxisMulti* frame() const { return frame_.get(); }
  /// Draws the frame and its curves anew; the part shown stays.
  void refresh();
  /// Draws curves that have grown: all of them where all was shown, else the part shown stays.
  void followCurves();
  /// Draws the frame and its curves anew for another pair of scales, which shows everything.
  void setScales(AxisScale xScale, AxisScale yScale);

  /// Shows everything.
  void fit();
  /// Enlarges by `factor` about the middle of the panel.
  void zoom(double factor);
  /// What part is shown, in panel pixels and axis coordinates.
  [[nodiscard]] const PanelView& view() const;
  /// The panel between the axes, in this window's logical pixels.
  [[nodiscard]] QRect panelRect() const;
  /// The lines that the read-out shows at present.
  [[nodiscard]] QString readOutText() const;

  /// The plot without the read-out, `scale` pixels for each logical one.
  [[nodiscard]] QImage picture(double scale) const;
  /// Puts the plot on the clipboard as an image, in the screen's resolution.
  void copyToClipboard() const;
  /// Writes the plot to a file whose extension says how: .png (twice the screen's size), .pdf or .svg.
  [[nodiscard]] Status exportPicture(const std::string& path) const;
  /// Asks for a file name and writes the plot there.
  void savePicture();

  // APrintable: the plot without the read-out, in vector form.
  [[nodiscard]] QSizeF printedSize() const override;
  void PrintWindow(PrintDevice& device, const QRect& rectangle, const PrintFlags& flags) override;

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  bool handleMouse(QEvent& event);
  void showReadOut(const QPointF& panelPosition);

  std::unique_ptr<AMSD2DAxisMulti> frame_;
  CurvePanel* panel_;  // these two belong to Qt as children of this window
  QLabel* readOut_;
  PanelNavigation navigation_;
};

}  // namespace lumo
