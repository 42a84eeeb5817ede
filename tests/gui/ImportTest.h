// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QListWidget>
#include <QMimeData>
#include <QUrl>
#include <string>
#include <vector>

#include "gui/MainDialogFixture.h"

namespace lumo::test {

/// A main dialog that gets what is not yet a UVX file.
class ImportTest : public MainDialogTest {
 protected:
  [[nodiscard]] std::vector<std::string> listed() {
    const auto& list = get<QListWidget>("files");
    std::vector<std::string> paths;
    paths.reserve(static_cast<std::size_t>(list.count()));
    for (int i = 0; i < list.count(); ++i) paths.push_back(list.item(i)->text().toStdString());
    return paths;
  }
  /// Drags files and folders over the window and lets go.
  void drop(const std::vector<std::string>& paths) {
    QList<QUrl> urls;
    for (const std::string& path : paths) urls += QUrl::fromLocalFile(QString::fromStdString(path));
    QMimeData data;
    data.setUrls(urls);
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(dialog_.get(), &enter);
    ASSERT_TRUE(enter.isAccepted());
    QDropEvent let(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(dialog_.get(), &let);
    QApplication::processEvents();
  }
};

}  // namespace lumo::test
