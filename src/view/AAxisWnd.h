// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QPointF>
#include <QWidget>
#include <memory>
#include <string>

#include "core/Status.h"
#include "view/A2_3DAxis.h"
#include "view/APrintable.h"
#include "view/PanelNavigation.h"
#include "view/PanelView.h"

class QLabel;
class QMenu;
class QMouseEvent;
class QWheelEvent;

namespace lumo {

class ColourTools;
class PanelTool;
class PlotPanel;
struct PanelPointer;

/// A window that shows an axis with its graphs: ticks with scale prefixes, colour scale, a read-out of what
/// the cursor points at, and above the plot buttons for colours, scaling, limits and "Save picture...".
///
/// Mouse: the wheel zooms about the cursor, dragging with the left or middle button moves the picture, a
/// double click shows everything, the right button opens the context menu. Keys: arrows move, + and - zoom,
/// Home shows everything, Ctrl+C copies. Everything happens on the user-interface thread.
class AAxisWnd : public QWidget, public APrintable {
  Q_OBJECT

 public:
  /// `parent` owns the window as Qt has it.
  explicit AAxisWnd(QWidget* parent = nullptr);
  ~AAxisWnd() override;

  /// Takes the axis over and shows everything on it; null empties the window.
  void SetAxis(std::unique_ptr<A2_3DAxis> axis);
  /// The axis shown, null if none; call refresh() after a change to it or its graphs.
  [[nodiscard]] A2_3DAxis* axis() const { return axis_.get(); }
  /// Draws the axis and its graphs anew; the part shown stays.
  void refresh();
  /// The same when nothing but the graphs' own drawing has changed; cheaper.
  void redraw();

  /// What the mouse and the keys do besides; null for nothing. Not owned, and must stay until another one is
  /// set or the window is gone.
  void setTool(PanelTool* tool) { tool_ = tool; }
  /// The cursor's shape over the panel.
  void setPanelCursor(const QCursor& cursor);

  /// Shows everything.
  void fit();
  /// Enlarges by `factor` about the middle of the panel.
  void zoom(double factor);
  /// What part is shown, in panel pixels and the axis's values.
  [[nodiscard]] const PanelView& view() const;
  /// The panel between the axes, in this window's logical pixels.
  [[nodiscard]] QRect panelRect() const;
  /// The lines that the read-out shows at present.
  [[nodiscard]] QString readOutText() const;

  /// The plot without the buttons and the read-out, `scale` pixels for each logical one.
  [[nodiscard]] QImage picture(double scale) const;
  /// Puts the plot on the clipboard as an image, in the screen's resolution.
  void copyToClipboard() const;
  /// Writes the plot to a file whose extension says how: .png (twice the screen's size), .pdf or .svg.
  [[nodiscard]] Status exportPicture(const std::string& path) const;

  // APrintable: the plot without the buttons and the read-out, in vector form.
  [[nodiscard]] QSizeF printedSize() const override;
  void PrintWindow(PrintDevice& device, const QRect& rectangle, const PrintFlags& flags) override;

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  /// Fills the context menu, which is empty; the base class offers copying, saving and showing everything.
  virtual void fillContextMenu(QMenu& menu);

  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void press(const QMouseEvent& event);
  void move(const QMouseEvent& event);
  void wheel(const QWheelEvent& event);
  void showReadOut(const QPointF& panelPosition);
  void savePicture();
  [[nodiscard]] PanelPointer pointerAt(const QMouseEvent& event) const;
  /// True when the tool has taken the event.
  bool toolTakes(const QMouseEvent& event);

  std::unique_ptr<A2_3DAxis> axis_;
  ColourTools* tools_;  // these three belong to Qt as children of this window
  PlotPanel* panel_;
  QLabel* readOut_;
  PanelTool* tool_ = nullptr;
  PanelNavigation navigation_;
};

}  // namespace lumo
