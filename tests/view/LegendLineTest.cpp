// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <cmath>

#include "view/LegendLine.h"

namespace lumo {
namespace {

constexpr double kFontHeight = 20.0;
constexpr int kFullSize = 22;   // 1.1 of it
constexpr int kLeastSize = 14;  // 0.7 of it
const QString kText = "Reference freq: 1500[MHz], Reference intensity: 0.4903828202809252973";

QFont sized(int pixels) {
  QFont font;
  font.setPixelSize(pixels);
  return font;
}

double widthAt(int pixels) {
  return QFontMetricsF(sized(pixels)).horizontalAdvance(kText);
}

/// What `draw` paints into a place of this width.
template <typename Draw>
QImage painted(double width, const Draw& draw) {
  QImage image(static_cast<int>(std::ceil(width)) + 2, 40, QImage::Format_RGB32);
  image.fill(Qt::white);
  QPainter painter(&image);
  painter.setPen(Qt::blue);
  draw(painter, QRectF(1.0, 4.0, width, 30.0));
  return image;
}

QImage legendOf(double width) {
  return painted(width, [](QPainter& painter, const QRectF& place) {
    drawLegendLine(painter, place, kFontHeight, Qt::blue, kText);
  });
}

QImage textOf(double width, int pixels, const QString& text) {
  return painted(width, [&](QPainter& painter, const QRectF& place) {
    painter.setFont(sized(pixels));
    painter.drawText(place, Qt::AlignHCenter | Qt::AlignTop | Qt::TextSingleLine, text);
  });
}

TEST(LegendLineTest, WhereThereIsRoomItHasItsFullSize) {
  const double width = widthAt(kFullSize) + 1.0;
  EXPECT_EQ(legendOf(width), textOf(width, kFullSize, kText));
  EXPECT_EQ(legendLineWidth(QFont(), kFontHeight, kText), widthAt(kFullSize));
}

TEST(LegendLineTest, InANarrowPlaceItIsAsSmallAsItMustBeAndWhole) {
  for (int pixels = kFullSize - 1; pixels >= kLeastSize; --pixels) {
    const double width = widthAt(pixels) + 0.5;
    ASSERT_LT(width, widthAt(pixels + 1));
    EXPECT_EQ(legendOf(width), textOf(width, pixels, kText)) << pixels;
  }
}

TEST(LegendLineTest, TheMiddleIsLeftOutWhereTheSmallestSizeDoesNotFit) {
  const double width = 0.8 * widthAt(kLeastSize);
  const QString cut = QFontMetricsF(sized(kLeastSize)).elidedText(kText, Qt::ElideMiddle, width);
  ASSERT_NE(cut, kText);
  EXPECT_EQ(legendOf(width), textOf(width, kLeastSize, cut));
}

}  // namespace
}  // namespace lumo
