// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/ui/AUVPLaneWnd.h"

#include <QImage>
#include <QPainter>
#include <QScopeGuard>

#include "imaging/ui/AUVPGraph.h"
#include "view/PrintDevice.h"

namespace lumo {

namespace {

constexpr int kLongestSide = 4096;

QImage bitmapFor(const QRect& rectangle) {
  const QSize most(kLongestSide, kLongestSide);
  const bool fits = rectangle.width() <= kLongestSide && rectangle.height() <= kLongestSide;
  return {fits ? rectangle.size() : rectangle.size().scaled(most, Qt::KeepAspectRatio), QImage::Format_RGB32};
}

void setPrinterAbort(const A2_3DAxis* axis, const PrintAbort& isAborted) {
  if (axis == nullptr) return;
  for (const auto& graph : axis->graphs())
    if (auto* const coverage = dynamic_cast<AUVPGraph*>(graph.get())) coverage->setPrinterAbort(isAborted);
}

}  // namespace

void AUVPLaneWnd::PrintWindow(PrintDevice& device, const QRect& rectangle, const PrintFlags& flags) {
  setPrinterAbort(axis(), flags.isAborted);
  const auto end = qScopeGuard([this] { setPrinterAbort(axis(), {}); });
  QImage bitmap = device.isDisplay() ? QImage() : bitmapFor(rectangle);
  if (bitmap.isNull()) {
    AAxisWnd::PrintWindow(device, rectangle, flags);
  } else {
    bitmap.fill(Qt::white);
    PrintDevice memory(bitmap);
    AAxisWnd::PrintWindow(memory, QRect(QPoint(), bitmap.size()), flags);
    memory.finish();
    device.painter().drawImage(rectangle, bitmap);
  }
}

}  // namespace lumo
