// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/ui/AMeanSigmaTblDlg.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "analysis/SpectraText.h"
#include "core/PendingFile.h"
#include "view/OutputDialogs.h"

namespace lumo {

AMeanSigmaTblDlg::AMeanSigmaTblDlg(MeanSigmaTable table, QWidget* parent)
    : QDialog(parent), table_(new AMeanSigmaTbl(this)) {
  setWindowTitle(tr("Mean and RMS"));
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  setSizeGripEnabled(true);
  table_->setObjectName("table");
  table_->setData(std::move(table));

  auto* const print = new QPushButton(tr("&Print..."));
  auto* const csv = new QPushButton(tr("Save as &CSV..."));
  auto* const done = new QPushButton(tr("&Done"));
  done->setDefault(true);
  connect(print, &QPushButton::clicked, this, [this] { printWithDialog(this, windowTitle(), *table_); });
  connect(csv, &QPushButton::clicked, this, &AMeanSigmaTblDlg::saveAsCsv);
  connect(done, &QPushButton::clicked, this, &QDialog::accept);
  auto* const buttons = new QHBoxLayout;
  buttons->addWidget(print);
  buttons->addWidget(csv);
  buttons->addStretch();
  buttons->addWidget(done);

  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(table_, 1);
  layout->addLayout(buttons);
  constexpr int kCharactersWide = 104;
  constexpr int kLinesHigh = 28;
  resize(fontMetrics().averageCharWidth() * kCharactersWide, fontMetrics().height() * kLinesHigh);
}

Status AMeanSigmaTblDlg::saveCsv(const std::string& path) const {
  return writeWholeFile(path, tableCsv(table_->table()));
}

void AMeanSigmaTblDlg::saveAsCsv() {
  saveWithDialog(this, tr("Save as CSV"), {tr("Comma-separated values (*.csv)")},
                 [this](const std::string& path) { return saveCsv(path); });
}

}  // namespace lumo
