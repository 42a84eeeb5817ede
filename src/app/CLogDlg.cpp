// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CLogDlg.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/Log.h"

namespace lumo {

CLogDlg::CLogDlg(Log& log, QWidget* parent) : QDialog(parent), log_(log), text_(new QPlainTextEdit) {
  setWindowTitle("Log - Lumo");
  text_->setObjectName("logText");
  text_->setAccessibleName("Log");
  text_->setReadOnly(true);
  text_->setTabChangesFocus(true);
  text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  text_->setMaximumBlockCount(static_cast<int>(Log::kMaxLines));
  for (const Log::Line& line : log_.lines()) text_->appendPlainText(QString::fromStdString(line.format()));
  log_.setListener([this] { showNewest(); });

  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  QPushButton* const copy = buttons->addButton("Copy all", QDialogButtonBox::ActionRole);
  copy->setToolTip("Puts the whole log on the clipboard");
  connect(copy, &QPushButton::clicked, this, [this] {
    text_->selectAll();
    text_->copy();
  });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(text_);
  layout->addWidget(buttons);
  resize(fontMetrics().averageCharWidth() * 130, fontMetrics().lineSpacing() * 18);
}

CLogDlg::~CLogDlg() {
  log_.setListener(nullptr);
}

void CLogDlg::showNewest() {
  text_->appendPlainText(QString::fromStdString(log_.lines().back().format()));
}

}  // namespace lumo
