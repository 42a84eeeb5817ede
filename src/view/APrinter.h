// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "core/Status.h"
#include "view/APrintable.h"

class QPrinter;
class QWidget;

namespace lumo {

class APrintOut;
class PrintProgress;

/// The application's printer. Use on the user-interface thread.
class APrinter {
 public:
  /// Windows stand before `parent`.
  explicit APrinter(QWidget* parent);
  APrinter(const APrinter&) = delete;
  APrinter& operator=(const APrinter&) = delete;
  ~APrinter();

  /// Asks for printer, paper and pages, and prints, with a window to cancel when it takes a while. kCancelled
  /// when the user changed his mind, kWriteFailed when the printer failed.
  [[nodiscard]] Status Printing(const APrintOut& printOut);
  /// True once the user has pressed "Cancel". Lets the event loop turn now and then, so that he can.
  [[nodiscard]] PrintAbort GetAPrinterAbort();

 private:
  QWidget* parent_;
  std::unique_ptr<QPrinter> printer_;
  std::unique_ptr<PrintProgress> progress_;
};

}  // namespace lumo
