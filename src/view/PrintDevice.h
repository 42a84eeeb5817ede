// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

class QCPPainter;
class QPaintDevice;
class QPainter;

namespace lumo {

/// What windows are printed on: a page of paper, a PDF page or an image in memory, ready to be drawn on for
/// as long as this object lives.
class PrintDevice {
 public:
  /// `device` must outlive this object; nothing else may draw on it meanwhile.
  explicit PrintDevice(QPaintDevice& device);
  PrintDevice(const PrintDevice&) = delete;
  PrintDevice& operator=(const PrintDevice&) = delete;
  ~PrintDevice();

  /// False when the device cannot be drawn on, e.g. because its file cannot be written.
  [[nodiscard]] bool isActive() const;
  /// True for what has pixels of its own (a window, an image), false for paper and for vector files.
  [[nodiscard]] bool isDisplay() const;
  /// Draws in the device's pixels.
  [[nodiscard]] QPainter& painter();
  /// The same painter as the plots know it.
  [[nodiscard]] QCPPainter& plotPainter() { return *painter_; }
  /// Ends the drawing; returns false when the device reports that something went wrong.
  bool finish();

 private:
  std::unique_ptr<QCPPainter> painter_;
};

}  // namespace lumo
