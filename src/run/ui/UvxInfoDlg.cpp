// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/ui/UvxInfoDlg.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFile>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include "core/Paths.h"
#include "io/AUVXFile.h"
#include "io/UvxStatistics.h"
#include "io/UvxSummary.h"

namespace lumo {

UvxInfoDlg::UvxInfoDlg(const std::string& path, const std::string& text, QWidget* parent) : QDialog(parent) {
  setWindowTitle("UVX Info - " + QFile::decodeName(fileName(path).c_str()));
  auto* const view = new QPlainTextEdit(QString::fromStdString(text));
  view->setObjectName("uvxText");
  view->setReadOnly(true);
  view->setLineWrapMode(QPlainTextEdit::NoWrap);
  const QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  view->setFont(font);
  // Tab leaves the text: there is nothing to type.
  view->setTabChangesFocus(true);
  const QFontMetrics metrics(font);
  view->setMinimumSize(metrics.averageCharWidth() * 60, metrics.lineSpacing() * 8);

  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(view);
  layout->addWidget(buttons);
  resize(metrics.averageCharWidth() * 116, metrics.lineSpacing() * 24);
}

Status UVXView(const std::string& path, QWidget* parent) {
  AUVXFile file;
  if (file.Open(path, AFile::kRead) == 0) return file.status();
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const std::string text = uvxSummary(path, file, countGroups(file));
  QApplication::restoreOverrideCursor();
  if (Status intact = file.intact(); !intact.ok()) return intact;
  file.Close();
  UvxInfoDlg(path, text, parent).exec();
  return {};
}

}  // namespace lumo
