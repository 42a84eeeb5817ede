// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include "analysis/ui/MapPrompts.h"

namespace lumo {

/// What the main dialog asks a person in windows of their own. Every call is modal above `parent`.
class Prompts : public MapPrompts {
 public:
  /// A question with Yes and No.
  virtual bool confirm(QWidget* parent, const QString& text) = 0;
  /// Visibility files that are there, none when the choice was given up. `folder` is where to begin.
  virtual QStringList chooseFiles(QWidget* parent, const QString& folder) = 0;
  /// A folder, empty when the choice was given up.
  virtual QString chooseFolder(QWidget* parent, const QString& folder) = 0;
  /// The same, for what an import writes.
  virtual QString chooseImportFolder(QWidget* parent, const QString& folder) = 0;
};

}  // namespace lumo
