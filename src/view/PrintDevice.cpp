// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/PrintDevice.h"

#include <qcustomplot.h>

namespace lumo {

PrintDevice::PrintDevice(QPaintDevice& device) : painter_(std::make_unique<QCPPainter>()) {
  painter_->setMode(QCPPainter::pmNoCaching);
  painter_->setMode(QCPPainter::pmNonCosmetic);
  if (!painter_->begin(&device)) return;
  painter_->setMode(QCPPainter::pmVectorized, !isDisplay());
}

PrintDevice::~PrintDevice() = default;

bool PrintDevice::isActive() const {
  return painter_->isActive();
}

bool PrintDevice::isDisplay() const {
  if (!isActive()) return false;
  const int type = painter_->device()->devType();
  return type == QInternal::Image || type == QInternal::Pixmap || type == QInternal::Widget;
}

QPainter& PrintDevice::painter() {
  return *painter_;
}

bool PrintDevice::finish() {
  return painter_->isActive() && painter_->end();
}

}  // namespace lumo
