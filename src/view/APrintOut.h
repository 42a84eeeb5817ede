// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <string>

#include "core/Status.h"
#include "view/APrintable.h"

class QPagedPaintDevice;

namespace lumo {

/// A window on paper: its pages, each with the title above it.
///
///     APrintOut out("UV-Plane", window);
///     APrinter(this).Printing(out);                  // asks for the printer
///     out.printToPdf("/data/uv.pdf");                // or without asking
class APrintOut {
 public:
  /// `window` must outlive the print-out.
  APrintOut(QString title, APrintable& window);

  [[nodiscard]] const QString& title() const { return title_; }
  /// Prints all pages on the device, within its margins, each as large as fits. kCancelled when `isAborted`
  /// said so, kWriteFailed when the device could not be drawn on.
  [[nodiscard]] Status print(QPagedPaintDevice& device, const PrintAbort& isAborted = {}) const;
  /// Prints on A4 pages of a PDF file, upright or lying as suits the window. An old file is replaced only by
  /// a complete new one.
  [[nodiscard]] Status printToPdf(const std::string& path, const PrintAbort& isAborted = {}) const;

 private:
  QString title_;
  APrintable& window_;
};

}  // namespace lumo
