// SPDX-License-Identifier: GPL-3.0-or-later
// The main window with all visibility files of a folder, for tools/load.sh: prints how long a person waits
// for it.
//
//   lumo_load_list FOLDER
#include <QAbstractItemModel>
#include <QApplication>
#include <QDir>
#include <QListView>
#include <QMouseEvent>
#include <QPushButton>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <vector>

#include "app/CLumoDlg.h"
#include "app/Prompts.h"
#include "core/Log.h"
#include "core/PhaseTimer.h"

namespace lumo {
namespace {

/// Chooses the files and says nothing.
class FolderPrompts : public Prompts {
 public:
  explicit FolderPrompts(QStringList files) : files_(std::move(files)) {}
  void showMessage(QWidget* /*parent*/, const QString& /*text*/) override {}
  bool confirm(QWidget* /*parent*/, const QString& /*text*/) override { return false; }
  QStringList chooseFiles(QWidget* /*parent*/, const QString& /*folder*/) override { return files_; }
  QStringList chooseMaps(QWidget* /*parent*/, const QString& /*folder*/) override { return {}; }
  QString chooseFolder(QWidget* /*parent*/, const QString& /*folder*/) override { return {}; }
  QString chooseImportFolder(QWidget* /*parent*/, const QString& /*folder*/) override { return {}; }

 private:
  QStringList files_;
};

void clickRow(QListView& list, int row) {
  const QModelIndex index = list.model()->index(row, 0);
  list.scrollTo(index);
  const QPointF at(list.visualRect(index).center());
  for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
    QMouseEvent event(type, at, list.viewport()->mapToGlobal(at), Qt::LeftButton,
                      type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(list.viewport(), &event);
  }
}

template <typename Work>
double secondsOf(Work work) {
  const Stopwatch watch;
  work();
  QApplication::processEvents();
  return watch.seconds();
}

int measure(const QString& folder) {
  QStringList files;
  for (const QFileInfo& file : QDir(folder).entryInfoList({"*.uvx"}, QDir::Files, QDir::Name))
    files += file.filePath();
  const QTemporaryDir store;
  FolderPrompts prompts(files);
  Log log;
  const std::string home = QFile::encodeName(store.path()).toStdString() + "/";

  CLumoDlg dialog(prompts, log, home);
  dialog.OnInitDialog();
  dialog.show();
  QApplication::processEvents();
  const double add = secondsOf([&] { dialog.findChild<QPushButton*>("add")->click(); });
  auto& table = *dialog.findChild<QListView*>("idTable");
  const int rows = table.model()->rowCount();
  std::vector<double> checks;
  for (int i = 0; i < 11; ++i) {
    const int selected = dialog.files().frequencies().number;
    checks.push_back(secondsOf([&] { clickRow(table, i * (rows - 1) / 10); }));
    if (dialog.files().frequencies().number == selected) return 1;  // the click did nothing
  }
  std::sort(checks.begin(), checks.end());
  const double close = secondsOf([&] { dialog.reject(); });
  double start = 0;
  CLumoDlg next(prompts, log, home);
  start = secondsOf([&] {
    next.OnInitDialog();
    next.show();
  });
  if (next.files().inputs().count() != files.size()) return 1;
  std::printf(
      "{\"files\": %d, \"rows\": %d, \"add\": %.6f, \"check\": %.6f, \"close\": %.6f, \"start\": %.6f}\n",
      static_cast<int>(files.size()), rows, add, checks[checks.size() / 2], close, start);
  return 0;
}

}  // namespace
}  // namespace lumo

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  if (argc != 2) return 2;
  return lumo::measure(QString::fromLocal8Bit(argv[1]));
}
