// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

class QWidget;

namespace lumo {

/// What the main dialog asks a person in windows of their own. Every call is modal above `parent`.
class Prompts {
 public:
  virtual ~Prompts() = default;
  /// A message with one button.
  virtual void showMessage(QWidget* parent, const QString& text) = 0;
  /// A question with Yes and No.
  virtual bool confirm(QWidget* parent, const QString& text) = 0;
  /// Visibility files that are there, none when the choice was given up. `folder` is where to begin.
  virtual QStringList chooseFiles(QWidget* parent, const QString& folder) = 0;
  /// A folder, empty when the choice was given up.
  virtual QString chooseFolder(QWidget* parent, const QString& folder) = 0;
};

}  // namespace lumo
