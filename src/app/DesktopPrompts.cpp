// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DesktopPrompts.h"

#include <QFileDialog>
#include <QMessageBox>

namespace lumo {

void DesktopPrompts::showMessage(QWidget* parent, const QString& text) {
  QMessageBox box(QMessageBox::Warning, "Lumo", text, QMessageBox::Ok, parent);
  // Names of files are shown as they stand, whatever they look like.
  box.setTextFormat(Qt::PlainText);
  box.exec();
}

bool DesktopPrompts::confirm(QWidget* parent, const QString& text) {
  QMessageBox box(QMessageBox::Question, "Lumo", text, QMessageBox::Yes | QMessageBox::No, parent);
  box.setTextFormat(Qt::PlainText);
  box.setDefaultButton(QMessageBox::No);
  return box.exec() == QMessageBox::Yes;
}

QStringList DesktopPrompts::chooseFiles(QWidget* parent, const QString& folder) {
  // What is shown of a filter ends before its last parenthesis, which holds what it means.
  QFileDialog dialog(parent, "Add UVX files", folder, "ZEL file (*.UVX) (*.uvx *.UVX);;All files (*.*) (*)");
  dialog.setOption(QFileDialog::HideNameFilterDetails);
  dialog.setFileMode(QFileDialog::ExistingFiles);
  dialog.setDefaultSuffix("uvx");
  dialog.selectFile("*.uvx");
  return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles() : QStringList();
}

QStringList DesktopPrompts::chooseMaps(QWidget* parent, const QString& folder) {
  QFileDialog dialog(parent, "Add maps", folder,
                     "ZEL map file (*.exm,*.amap) (*.exm *.amap);;All files (*.*) (*)");
  dialog.setOption(QFileDialog::HideNameFilterDetails);
  dialog.setFileMode(QFileDialog::ExistingFiles);
  dialog.setDefaultSuffix("exm");
  return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles() : QStringList();
}

QString DesktopPrompts::chooseFolder(QWidget* parent, const QString& folder) {
  return QFileDialog::getExistingDirectory(parent, "Select work folder", folder);
}

QString DesktopPrompts::chooseImportFolder(QWidget* parent, const QString& folder) {
  return QFileDialog::getExistingDirectory(parent, "Select folder for the imported files", folder);
}

}  // namespace lumo
