// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/LimitsDlg.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <cmath>

#include "core/TextForm.h"

namespace lumo {

LimitsDlg::LimitsDlg(const ValueLimits& limits, QWidget* parent)
    : QDialog(parent),
      limits_(limits),
      low_(new QLineEdit(QString::fromStdString(valToStr(limits.low)), this)),
      high_(new QLineEdit(QString::fromStdString(valToStr(limits.high)), this)) {
  setWindowTitle(tr("Colour limits"));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  ok_ = buttons->button(QDialogButtonBox::Ok);
  auto* rows = new QFormLayout(this);
  rows->addRow(tr("Lowest value: "), low_);
  rows->addRow(tr("Highest value: "), high_);
  rows->addRow(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(low_, &QLineEdit::textChanged, this, &LimitsDlg::check);
  connect(high_, &QLineEdit::textChanged, this, &LimitsDlg::check);
  check();
}

void LimitsDlg::check() {
  ValueLimits typed;
  const bool usable = parseDouble(low_->text().trimmed().toStdString(), typed.low) &&
                      parseDouble(high_->text().trimmed().toStdString(), typed.high) &&
                      std::isfinite(typed.high - typed.low) && typed.low < typed.high;
  if (usable) limits_ = typed;
  ok_->setEnabled(usable);
}

}  // namespace lumo
