// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <string>

#include "core/Status.h"

class QWidget;

namespace lumo {

class APrintable;

/// Asks for a file name and lets `save` write there; shows a failure as a message. `filters` are lines such
/// as "PNG picture (*.png)": the suffix of the one chosen is added to a name without one. Nothing happens
/// when the user changes his mind.
void saveWithDialog(QWidget* parent, const QString& title, const QStringList& filters,
                    const std::function<Status(const std::string&)>& save);

/// Asks for the printer and prints `window` under a title; shows a failure as a message.
void printWithDialog(QWidget* parent, const QString& title, APrintable& window);

/// The filters of exportPicture().
[[nodiscard]] QStringList pictureFilters();

}  // namespace lumo
