// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Prompts.h"

namespace lumo {

/// Prompts with the desktop's message boxes and file dialogs.
class DesktopPrompts : public Prompts {
 public:
  void showMessage(QWidget* parent, const QString& text) override;
  bool confirm(QWidget* parent, const QString& text) override;
  QStringList chooseFiles(QWidget* parent, const QString& folder) override;
  QStringList chooseMaps(QWidget* parent, const QString& folder) override;
  QString chooseFolder(QWidget* parent, const QString& folder) override;
  QString chooseImportFolder(QWidget* parent, const QString& folder) override;
};

}  // namespace lumo
