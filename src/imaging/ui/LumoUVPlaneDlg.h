// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "imaging/ImagerHandOver.h"
#include "imaging/UvPlaneData.h"

class QLabel;

namespace lumo {

class AUVPGraph;
class AUVPLaneWnd;

/// The dialog "UV-Plane": the coverage of the selected data, to look at, to print, and to hand to the
/// external imager.
///
///     LumoUVPlaneDlg dialog(this);
///     dialog.SetData(names, tables, selections, sources, minHz, maxHz, uExtent, vExtent);
///     dialog.exec();
///
/// The files are read on a thread while the dialog is open; closing it ends that at once.
class LumoUVPlaneDlg final : public QDialog {
  Q_OBJECT

 public:
  explicit LumoUVPlaneDlg(QWidget* parent = nullptr);
  ~LumoUVPlaneDlg() override;

  /// Takes copies of the four parallel arrays; frequencies in Hz, extents in wavelengths. To be called before
  /// the dialog is shown.
  void SetData(const AObjArray<std::string>& names, const AObjArray<AUVXFqTbl>& tables,
               const AObjArray<ABitArray>& selections, const AArray<std::int32_t>& sources, double minHz,
               double maxHz, double uExtent, double vExtent);
  void SetData(UvPlaneData selection) { data_ = std::move(selection); }
  /// Puts the plot on its axis and begins to read. Happens by itself when the dialog is shown.
  void OnInitDialog();
  /// "Transmit to ZEL Imager": leaves the hand-over file in the program's folder and tells the imager. No
  /// failure is shown; lastHandOver() has it for the log.
  void TransmitToImager();

  /// The folder of the imager and its hand-over files, with its separator; the program's own unless set.
  void setImagerFolder(const std::string& folder) { imagerFolder_ = folder; }
  [[nodiscard]] const HandOver& lastHandOver() const { return handOver_; }
  [[nodiscard]] AUVPLaneWnd& plot() const { return *plot_; }

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void print();
  void showProgress();
  [[nodiscard]] const AUVPGraph* graph() const;

  UvPlaneData data_;
  AUVPLaneWnd* plot_;  // these belong to Qt as children of this window
  QLabel* progress_;
  std::string imagerFolder_;
  HandOver handOver_;
  bool isInitialised_ = false;
};

}  // namespace lumo
