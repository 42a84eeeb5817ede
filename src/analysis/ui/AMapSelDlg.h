// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <string>

#include "analysis/AreaSettings.h"
#include "analysis/MapSelector.h"
#include "core/Status.h"

class QCheckBox;
class QListWidget;
class QPushButton;
class QVBoxLayout;

namespace lumo {

class MapPrompts;

/// What the map selector keeps from one opening to the next.
struct MapSelection {
  MapSelector maps;
  AreaSettings settings;  ///< the point count has no meaning here: there is a point for each map
};

/// The map selector: a list of map files, the areas that are measured on all of them, and the ways to their
/// table and to the graph of their power laws.
class AMapSelDlg : public QDialog {
  Q_OBJECT

 public:
  /// `prompts` and `selection` must outlive the dialog. `folder`, with its separator: where the choice of
  /// files begins, and where the graph leaves its diagnostic file.
  AMapSelDlg(MapPrompts& prompts, MapSelection& selection, std::string folder, QWidget* parent = nullptr);

 private:
  [[nodiscard]] QVBoxLayout* makeButtons();
  QPushButton* addButton(QVBoxLayout& column, const char* text, const char* name, const QString& tip);
  void addMaps();
  void deleteMap();
  void selectAreas();
  void showTable();
  void showGraph();

  void showPaths(int current);
  void enable();
  /// False, with a message, when a map cannot be measured.
  [[nodiscard]] bool measure(MapMeasurement& measurement);

  MapPrompts& prompts_;
  MapSelection& selection_;
  std::string folder_;
  QListWidget* list_;  // these belong to Qt as children of the dialog
  QPushButton *add_, *delete_, *selectAreas_, *table_, *graph_;
  QCheckBox* invert_;
};

}  // namespace lumo
