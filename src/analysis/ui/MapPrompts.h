// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

class QWidget;

namespace lumo {

/// What the map selector asks a person in windows of their own. Every call is modal above `parent`.
class MapPrompts {
 public:
  virtual ~MapPrompts() = default;
  /// A message with one button.
  virtual void showMessage(QWidget* parent, const QString& text) = 0;
  /// Map files that are there, none when the choice was given up. `folder` is where to begin.
  virtual QStringList chooseMaps(QWidget* parent, const QString& folder) = 0;
};

}  // namespace lumo
