// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include "clean/CleanViewModel.h"
#include "view/LumoAxisWnd.h"

namespace lumo {

class CleanGraphs;

/// The modal dialog "CLEAN view": the restored map of term 0 on the left, its residual on the right, and
/// below, where "Convergence" is checked, how flux and residual went on over the iterations.
/// "Continue" accepts it; "Stop", the close box and Escape reject it.
class LumoClnShowDlg final : public QDialog {
  Q_OBJECT

 public:
  /// Shows both maps where they are: they must outlive the dialog. `showsGraphs`: whether "Convergence" is
  /// checked at first.
  explicit LumoClnShowDlg(const CleanViewModel& model, QWidget* parent = nullptr, bool showsGraphs = true);

  [[nodiscard]] LumoAxisWnd& restoredWindow() const { return *restored_; }
  [[nodiscard]] LumoAxisWnd& residualWindow() const { return *residual_; }
  [[nodiscard]] CleanGraphs& graphs() const { return *graphs_; }

 private:
  LumoAxisWnd* restored_;
  LumoAxisWnd* residual_;
  CleanGraphs* graphs_;
};

}  // namespace lumo
