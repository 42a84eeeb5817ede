// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "analysis/AreaSettings.h"
#include "analysis/ui/AAreaSelectDlg.h"
#include "core/AMatrix.h"

class QCheckBox;
class QComboBox;
class QLineEdit;

namespace lumo {

/// The modal dialog in which areas are marked on a map and the graph or table of them is set up: number of
/// frequency points, scale of the axes, inversion of the colours.
class ASelAreaDlg final : public AAreaSelectDlg {
  Q_OBJECT

 public:
  /// Takes copies of everything. `range` holds the map's coordinates in arcseconds.
  ASelAreaDlg(const AMatrix<float>& map, const AMapHeader& header, const TMinMax& range,
              const AreaSettings& settings, QWidget* parent = nullptr);

  /// What "OK" confirmed; until then, and after "Cancel", what the constructor was given.
  [[nodiscard]] AreaSettings settings() const { return settings_; }

 protected:
  /// Refuses, with a message, a number of points outside 1..ResultsPresenter::kMostPoints.
  void accept() override;

 private:
  void addControls();

  AreaSettings settings_;
  ATrackerArrayInAxis* trackers_;  // these belong to Qt as children of the dialog
  QLineEdit* pointCount_;
  QComboBox* xScale_;
  QComboBox* yScale_;
  QCheckBox* invertColors_;
};

}  // namespace lumo
