// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppIcon.h"

#include <QByteArray>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace lumo {

namespace {

QPixmap draw(QSvgRenderer& picture, int side) {
  QPixmap pixmap(side, side);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  picture.render(&painter);
  return pixmap;
}

}  // namespace

QIcon appIcon() {
  QSvgRenderer picture(QByteArray::fromRawData(kAppIconSvg, static_cast<qsizetype>(kAppIconSvgSize)));
  QIcon icon;
  for (const int side : {16, 24, 32, 48, 64, 128, 256}) icon.addPixmap(draw(picture, side));
  return icon;
}

}  // namespace lumo
