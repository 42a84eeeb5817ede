// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QPlainTextEdit;

namespace lumo {

class Log;

/// The log as text, newest line last, growing while it is open. Only one may be open on a log.
class CLogDlg : public QDialog {
  Q_OBJECT

 public:
  /// `log` must outlive the dialog.
  explicit CLogDlg(Log& log, QWidget* parent = nullptr);
  ~CLogDlg() override;

 private:
  void showNewest();

  Log& log_;
  QPlainTextEdit* text_;
};

}  // namespace lumo
