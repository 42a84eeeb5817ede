// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/LegendLine.h"

#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>

namespace lumo {

namespace {

constexpr double kLegendFont = 1.1;          // of the frame's font height
constexpr double kSmallestLegendFont = 0.7;  // where the window is narrow

QFont sized(QFont font, int pixels) {
  font.setPixelSize(std::max(pixels, 1));
  return font;
}

double widthOf(const QFont& font, const QString& text) {
  return QFontMetricsF(font).horizontalAdvance(text);
}

/// The largest font in which the text fits, or the smallest one allowed.
QFont fontFor(const QFont& family, double fontHeight, const QString& text, double width) {
  int pixels = qRound(kLegendFont * fontHeight);
  const int smallest = qRound(kSmallestLegendFont * fontHeight);
  while (pixels > smallest && widthOf(sized(family, pixels), text) > width) --pixels;
  return sized(family, pixels);
}

}  // namespace

double legendLineWidth(const QFont& font, double fontHeight, const QString& text) {
  return widthOf(sized(font, qRound(kLegendFont * fontHeight)), text);
}

void drawLegendLine(QPainter& painter, const QRectF& place, double fontHeight, const QColor& colour,
                    const QString& text) {
  painter.save();
  painter.setPen(colour);
  const QFont font = fontFor(painter.font(), fontHeight, text, place.width());
  painter.setFont(font);
  painter.drawText(place, Qt::AlignHCenter | Qt::AlignTop | Qt::TextSingleLine,
                   QFontMetricsF(font).elidedText(text, Qt::ElideMiddle, place.width()));
  painter.restore();
}

}  // namespace lumo
