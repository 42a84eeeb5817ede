// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QString>
#include <QTimer>
#include <memory>
#include <optional>

#include "analysis/RegionFile.h"
#include "core/TMinMax.h"
#include "io/AMapHeader.h"
#include "view/LumoAxisWnd.h"

class QDialogButtonBox;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace lumo {

class ATrackerArrayInAxis;

/// A modal dialog in which areas are marked on a map: the tools, the map, a line about the selected area,
/// buttons for region files, "OK" and "Cancel". Derived dialogs add controls between map and buttons.
class AAreaSelectDlg : public QDialog {
  Q_OBJECT

 public:
  explicit AAreaSelectDlg(QWidget* parent = nullptr);

  /// Shows the map of `axis` and the areas of `trackers` on it, once only. The areas can be edited with a
  /// non-zero `editable`. The dialog takes the axis over; `trackers` must stay, or be a child of the dialog.
  void SetParameters(std::unique_ptr<A2_3DAxis> axis, ATrackerArrayInAxis* trackers, int editable);
  /// What the map on the axis is, for the line about an area and for region files. `range` as fillMask()
  /// takes it. After SetParameters(); without it, region files are not to be had.
  void setMapInfo(const AMapHeader& header, const TMinMax& range);

  [[nodiscard]] LumoAxisWnd& mapWindow() const { return *map_; }
  /// The line about the selected area.
  [[nodiscard]] QString areaText() const;

 protected:
  [[nodiscard]] QVBoxLayout& controls() const { return *controls_; }
  void accept() override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void addFileButtons();
  void enableSaving();
  void showArea();
  void loadRegions();
  void saveRegions(RegionSystem system);

  LumoAxisWnd* map_;  // these belong to Qt as children of the dialog
  QVBoxLayout* top_;
  QVBoxLayout* controls_;
  QLabel* areaLine_;
  QPushButton* load_;
  QPushButton* save_;
  QAction* saveSky_ = nullptr;
  QDialogButtonBox* buttons_;
  ATrackerArrayInAxis* trackers_ = nullptr;
  bool editable_ = false;
  QTimer areaTimer_;
  AMapHeader header_;
  TMinMax range_;
  double pixelsPerBeam_ = 0.0;
  std::optional<RegionFrame> frame_;
};

}  // namespace lumo
