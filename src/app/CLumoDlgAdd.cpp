// SPDX-License-Identifier: GPL-3.0-or-later
// What happens from "Add...", or files dropped on the window, to the files in the list.
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QMimeData>
#include <QPushButton>
#include <QTimer>
#include <QUrl>
#include <string>
#include <vector>

#include "app/CLumoDlg.h"
#include "app/DesktopImport.h"
#include "app/Prompts.h"
#include "view/StatusLabel.h"

namespace lumo {

namespace {

/// The files and folders on this machine among what is dragged.
QStringList draggedPaths(const QDropEvent& event) {
  QStringList paths;
  for (const QUrl& url : event.mimeData()->urls())
    if (url.isLocalFile()) paths += url.toLocalFile();
  return paths;
}

}  // namespace

void CLumoDlg::addFiles() {
  const QString folder = QFile::decodeName(parameters_.folder.c_str());
  addPaths(prompts_.chooseFiles(this, list_.hasFiles() ? folder : QString()));
}

void CLumoDlg::dragEnterEvent(QDragEnterEvent* event) {
  if (!running_ && !draggedPaths(*event).isEmpty()) event->acceptProposedAction();
}

void CLumoDlg::dropEvent(QDropEvent* event) {
  const QStringList paths = draggedPaths(*event);
  event->acceptProposedAction();
  // Later: the program that the files come from waits until this function returns.
  QTimer::singleShot(0, this, [this, paths] {
    if (!running_) guarded([this, paths] { addPaths(paths); });
  });
}

void CLumoDlg::addPaths(const QStringList& names) {
  std::vector<std::string> paths;
  for (const QString& name : names) paths.push_back(QFile::encodeName(name).toStdString());
  if (paths.empty()) return;
  controls_.status->setText("");
  DesktopImport import(*this, prompts_, log_);
  if (import.offer(paths, parameters_.folder)) runImport(import);
  for (const Status& failure : list_.AddFiles(import.files())) tell("Not added", failure);
  showFiles();
}

void CLumoDlg::runImport(DesktopImport& import) {
  Status status;
  work("An import", [&](const RunIndicators& indicators) { status = import.run(indicators); });
  controls_.status->setText("");
  // Enter must not start a run now.
  controls_.add->setFocus();
  if (status.code() == StatusCode::kCancelled) {
    log_.add("The import was cancelled");
    controls_.status->setText("Cancelled");
  } else {
    tell("Not imported", status);
  }
}

}  // namespace lumo
