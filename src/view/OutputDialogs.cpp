// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/OutputDialogs.h"

#include <QFile>
#include <QFileDialog>
#include <QMessageBox>

#include "view/APrintOut.h"
#include "view/APrinter.h"

namespace lumo {
namespace {

void showFailure(QWidget* parent, const Status& status) {
  if (status.ok() || status.code() == StatusCode::kCancelled) return;
  QMessageBox::warning(parent, parent->window()->windowTitle(), QString::fromStdString(status.text()));
}

}  // namespace

void saveWithDialog(QWidget* parent, const QString& title, const QStringList& filters,
                    const std::function<Status(const std::string&)>& save) {
  QFileDialog dialog(parent, title);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setNameFilters(filters);
  // With the suffix known to the dialog, its question before overwriting is about the file that is written.
  const auto followFilter = [&dialog](const QString& filter) {
    dialog.setDefaultSuffix(filter.section("*.", 1).section(')', 0, 0));
  };
  followFilter(dialog.selectedNameFilter());
  QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, followFilter);
  if (dialog.exec() != QDialog::Accepted) return;
  showFailure(parent, save(QFile::encodeName(dialog.selectedFiles().value(0)).toStdString()));
}

void printWithDialog(QWidget* parent, const QString& title, APrintable& window) {
  showFailure(parent, APrinter(parent).Printing(APrintOut(title, window)));
}

QStringList pictureFilters() {
  return {QObject::tr("PNG picture (*.png)"), QObject::tr("PDF document (*.pdf)"),
          QObject::tr("SVG drawing (*.svg)")};
}

}  // namespace lumo
