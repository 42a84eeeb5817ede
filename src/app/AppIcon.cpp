// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppIcon.h"

#include <QPainter>
#include <QPixmap>
#include <QRadialGradient>

namespace lumo {

namespace {

/// A glow, in units of the icon's side.
void drawSource(QPainter& painter, QPointF centre, double radius, const QColor& colour) {
  QRadialGradient glow(centre, radius);
  glow.setColorAt(0, Qt::white);
  glow.setColorAt(0.3, colour);
  glow.setColorAt(1, QColor(colour.red(), colour.green(), colour.blue(), 0));
  painter.setPen(Qt::NoPen);
  painter.setBrush(glow);
  painter.drawEllipse(centre, radius, radius);
}

QPixmap draw(int side) {
  QPixmap pixmap(side, side);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(side, side);
  QLinearGradient sky(0, 0, 0, 1);
  sky.setColorAt(0, QColor(24, 32, 72));
  sky.setColorAt(1, QColor(52, 40, 104));
  painter.setPen(Qt::NoPen);
  painter.setBrush(sky);
  painter.drawRoundedRect(QRectF(0.03, 0.03, 0.94, 0.94), 0.2, 0.2);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(QColor(150, 180, 255, 110), 0.035));
  painter.drawEllipse(QPointF(0.42, 0.56), 0.33, 0.33);
  drawSource(painter, {0.42, 0.56}, 0.26, QColor(255, 176, 64));
  drawSource(painter, {0.74, 0.27}, 0.14, QColor(96, 190, 255));
  return pixmap;
}

}  // namespace

QIcon appIcon() {
  QIcon icon;
  for (const int side : {16, 24, 32, 48, 64, 128, 256}) icon.addPixmap(draw(side));
  return icon;
}

}  // namespace lumo
