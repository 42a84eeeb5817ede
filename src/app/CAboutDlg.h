// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

namespace lumo {

/// The About box: icon, version, what the program is for, licence.
class CAboutDlg : public QDialog {
  Q_OBJECT

 public:
  explicit CAboutDlg(QWidget* parent = nullptr);
};

}  // namespace lumo
