// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>
#include <QSizeF>
#include <functional>

namespace lumo {

class PrintDevice;

/// The printer's abort test: true when the user wants no more of the print-out. May be empty, which is never.
/// A window that takes long to draw calls it now and then and stops when it says so.
using PrintAbort = std::function<bool()>;

/// What a window is told when it is printed.
struct PrintFlags {
  int page = 0;  ///< which of its pages, from 0
  PrintAbort isAborted;

  [[nodiscard]] bool aborted() const { return isAborted && isAborted(); }
};

/// Something that can stand on paper: what an APrintOut prints.
class APrintable {
 public:
  virtual ~APrintable() = default;

  /// Size whose proportions the picture keeps; it is enlarged or made smaller to fit the paper. An empty
  /// size takes the whole area.
  [[nodiscard]] virtual QSizeF printedSize() const = 0;
  /// Pages needed where each gives an area of this size, in points of 1/72 inch.
  [[nodiscard]] virtual int pages(const QSizeF& /*area*/) const { return 1; }
  /// Draws everything there is to print, not what the screen happens to show, into a rectangle of the
  /// device's pixels.
  virtual void PrintWindow(PrintDevice& device, const QRect& rectangle, const PrintFlags& flags) = 0;
};

}  // namespace lumo
