// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <string>
#include <vector>

#include "clean/CleanObserver.h"

namespace lumo {

class ALineGraph;
class AMultiAxisDlgWnd;

/// How a CLEAN goes on, as two graphs over the iterations side by side: the total flux, and the residual at
/// the pixel that each iteration chose, on a logarithmic axis, of term 0 and of all terms together.
class CleanGraphs final : public QWidget {
  Q_OBJECT

 public:
  /// `mapUnit`: unit of the maps as their header has it, e.g. "Jy/Beam", or empty.
  explicit CleanGraphs(const std::string& mapUnit, QWidget* parent = nullptr);

  /// Shows the lines of a CleanRecord. A part that the user has zoomed into stays.
  void showRecord(const std::vector<CleanProgress>& lines);

  /// Low and wide.
  [[nodiscard]] QSize sizeHint() const override;

  [[nodiscard]] AMultiAxisDlgWnd& fluxWindow() const { return *fluxWindow_; }
  [[nodiscard]] AMultiAxisDlgWnd& residualWindow() const { return *residualWindow_; }

 private:
  std::string mapUnit_;
  AMultiAxisDlgWnd* fluxWindow_;  // these two belong to Qt as children of this widget, the graphs to them
  AMultiAxisDlgWnd* residualWindow_;
  ALineGraph* flux_;
  ALineGraph* residual_;
  ALineGraph* joint_;
};

}  // namespace lumo
