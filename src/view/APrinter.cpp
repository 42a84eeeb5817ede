// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/APrinter.h"

#include <QPrintDialog>
#include <QPrinter>
#include <QProgressDialog>

#include "view/APrintOut.h"

namespace lumo {

/// The window that offers to cancel. It appears only when printing takes longer than half a second.
class PrintProgress {
 public:
  PrintProgress(const QString& title, QWidget* parent)
      : dialog_(QProgressDialog::tr("Printing..."), QProgressDialog::tr("Cancel"), 0, kSteps, parent) {
    dialog_.setWindowTitle(title);
    dialog_.setWindowModality(Qt::WindowModal);
    dialog_.setMinimumDuration(500);
    dialog_.setAutoReset(false);
    dialog_.setValue(0);
  }

  bool cancelled() {
    // A modal progress dialog handles events when its value changes. How much is left is not known, so it
    // comes closer to the end and never reaches it.
    step_ += (kSteps - 1 - step_) / 50;
    dialog_.setValue(step_ - (alternate_ = !alternate_));
    return dialog_.wasCanceled();
  }

 private:
  static constexpr int kSteps = 1000;
  QProgressDialog dialog_;
  int step_ = 1;
  bool alternate_ = false;
};

APrinter::APrinter(QWidget* parent) : parent_(parent) {}

APrinter::~APrinter() = default;

PrintAbort APrinter::GetAPrinterAbort() {
  return [this] { return progress_ != nullptr && progress_->cancelled(); };
}

Status APrinter::Printing(const APrintOut& printOut) {
  printer_ = std::make_unique<QPrinter>(QPrinter::HighResolution);
  printer_->setDocName(printOut.title());
  QPrintDialog dialog(printer_.get(), parent_);
  dialog.setWindowTitle(printOut.title());
  if (dialog.exec() != QDialog::Accepted) return {StatusCode::kCancelled, "nothing was printed"};
  progress_ = std::make_unique<PrintProgress>(printOut.title(), parent_);
  const Status status = printOut.print(*printer_, GetAPrinterAbort());
  if (status.code() == StatusCode::kCancelled) printer_->abort();
  progress_.reset();
  return status;
}

}  // namespace lumo
