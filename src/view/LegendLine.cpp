// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/LegendLine.h"

#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>

namespace lumo {

namespace {

constexpr double kLegendFont = 1.1;          // of the frame's font height
constexpr double kSmallestLegendFont = 0.7;  // where the window is narrow

}  // namespace

void drawLegendLine(QPainter& painter, const QRectF& place, double fontHeight, const QColor& colour,
                    const QString& text) {
  painter.save();
  painter.setPen(colour);
  QFont font = painter.font();
  font.setPixelSize(qRound(kLegendFont * fontHeight));
  const double width = QFontMetricsF(font).horizontalAdvance(text);
  if (width > place.width()) {
    const double smaller = std::max(kLegendFont * place.width() / width, kSmallestLegendFont);
    font.setPixelSize(std::max(1, static_cast<int>(smaller * fontHeight)));
  }
  painter.setFont(font);
  painter.drawText(place, Qt::AlignHCenter | Qt::AlignTop | Qt::TextSingleLine,
                   QFontMetricsF(font).elidedText(text, Qt::ElideMiddle, place.width()));
  painter.restore();
}

}  // namespace lumo
