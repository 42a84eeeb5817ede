// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>

#include "analysis/ARPTrackerArray.h"
#include "view/AAxisWnd.h"
#include "view/PanelTool.h"

namespace lumo {

/// The areas of a map as the user sees and marks them in a plot window: drawn over the map, edited with the
/// mouse and the keys.
///
/// Keys: Del removes, Ctrl+Z and Ctrl+Shift+Z (or Ctrl+Y) go back and forth, arrows move the selected area by
/// a pixel of the map (with Shift by ten), Page Up and Page Down select, Enter closes a polygon, Backspace
/// takes its last vertex back, Escape gives up; S, M, R, E, C and P choose the tool.
class ATrackerArrayInAxis final : public QObject, public ARPTrackerArray, public PanelTool {
  Q_OBJECT

 public:
  explicit ATrackerArrayInAxis(AreaList areas = {}, QObject* parent = nullptr);
  ~ATrackerArrayInAxis() override;

  /// Draws the areas in a window whose axis has a map, and, with `editable`, lets the user edit them. Once
  /// only. A plot taken away from the window or the window itself may go before this object.
  void attach(AAxisWnd& window, bool editable);

  void EndWorking() override;
  void setTool(AreaTool tool);
  void undo();
  void redo();
  void remove();
  /// False, and nothing done, where there are more areas than an AreaEditor takes.
  bool replaceAll(AreaList areas);

  bool press(const PanelPointer& pointer) override;
  bool move(const PanelPointer& pointer) override;
  void release(const PanelPointer& pointer) override;
  bool doubleClick(const PanelPointer& pointer) override;
  bool key(const QKeyEvent& event) override;

 signals:
  /// Areas, selection or tool are others now.
  void changed();

 private:
  [[nodiscard]] AreaPointer areaPointer(const PanelPointer& pointer) const;
  bool nudge(int key, bool far);
  bool command(const QKeyEvent& event);
  bool chooseTool(int key);
  /// Draws and tells after a change.
  void show();
  void showCursor(const AreaPointer& pointer);

  QPointer<AAxisWnd> window_;
  AreaPoint cell_{1.0, 1.0};
};

}  // namespace lumo
