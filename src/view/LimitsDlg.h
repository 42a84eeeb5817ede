// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include "view/ColourScaling.h"

class QLineEdit;
class QPushButton;

namespace lumo {

/// Asks for the values of the first and the last colour.
class LimitsDlg : public QDialog {
  Q_OBJECT

 public:
  LimitsDlg(const ValueLimits& limits, QWidget* parent);

  /// What stands in the fields when the dialog was accepted: finite numbers, the lower one first.
  [[nodiscard]] ValueLimits limits() const { return limits_; }

 private:
  void check();

  ValueLimits limits_;
  QLineEdit* low_;  // these belong to Qt as children of the dialog
  QLineEdit* high_;
  QPushButton* ok_;
};

}  // namespace lumo
