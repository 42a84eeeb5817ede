// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include "clean/CleanViewModel.h"
#include "view/LumoAxisWnd.h"

namespace lumo {

/// The modal dialog "CLEAN view": the restored map of term 0 on the left, its residual on the right.
/// "Continue" accepts it; "Stop", the close box and Escape reject it.
class LumoClnShowDlg final : public QDialog {
  Q_OBJECT

 public:
  /// Takes copies of both maps for its pictures.
  explicit LumoClnShowDlg(const CleanViewModel& model, QWidget* parent = nullptr);

  [[nodiscard]] LumoAxisWnd& restoredWindow() const { return *restored_; }
  [[nodiscard]] LumoAxisWnd& residualWindow() const { return *residual_; }

 private:
  LumoAxisWnd* restored_;
  LumoAxisWnd* residual_;
};

}  // namespace lumo
