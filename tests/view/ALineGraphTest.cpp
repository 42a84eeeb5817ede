// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <cmath>
#include <limits>

#include "view/ALineGraph.h"

namespace lumo {
namespace {

using testing::HasSubstr;

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

class ALineGraphTest : public testing::Test {
 protected:
  ALineGraphTest() {
    frame_.setNameOX("Iteration");
    frame_.setNameOY("Residual [%sJy]");
  }
  ALineGraph& add(std::vector<double> x, std::vector<double> y) {
    auto& graph = frame_.addGraph(std::make_unique<ALineGraph>(frame_, 1, "Term 0"));
    graph.setData(std::move(x), std::move(y));
    view_.setFull(frame_.extent());
    view_.setPanelSize(200.0, 100.0);
    return graph;
  }
  QImage drawn() {
    QImage image(200, 100, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    for (const auto& graph : frame_.graphs()) graph->draw({painter, view_});
    return image;
  }

  AMSD2DAxisMulti frame_{AxisScale::kLinear, AxisScale::kLogarithmic};
  PanelView view_;
};

TEST_F(ALineGraphTest, TheExtentHoldsThePointsThatHaveAPlaceOnTheAxes) {
  const ALineGraph& graph = add({1, 2, 3, 4, 5}, {10.0, 0.1, 0.0, -7.0, kNothing});
  EXPECT_EQ(graph.extent(), (PlotRect{1.0, 2.0, 0.1, 10.0}));
}

TEST_F(ALineGraphTest, WithoutPointsTheFrameIsTheEmptyOne) {
  add({}, {});
  EXPECT_EQ(frame_.extent().xMin, 0.0);
  EXPECT_EQ(frame_.extent().xMax, 1.0);
  EXPECT_EQ(drawn().pixelColor(100, 50), QColor(Qt::white));
  EXPECT_EQ(frame_.graphs()[0]->readOutAt({100.0, 50.0}, view_), "");
}

TEST_F(ALineGraphTest, TheLineRunsThroughThePointsOfALogarithmicAxis) {
  add({0, 10}, {1.0, 100.0});
  const QImage image = drawn();
  // A straight line from corner to corner: the middle is the decade between, and the other corners are empty.
  EXPECT_LT(image.pixelColor(100, 50).lightness(), 200);
  EXPECT_LT(image.pixelColor(50, 75).lightness(), 200);
  EXPECT_EQ(image.pixelColor(20, 20), QColor(Qt::white));
  EXPECT_EQ(image.pixelColor(180, 80), QColor(Qt::white));
}

TEST_F(ALineGraphTest, ASinglePointIsADot) {
  add({1}, {1.0});
  const QImage image = drawn();
  EXPECT_LT(image.pixelColor(100, 50).lightness(), 200);
  EXPECT_EQ(image.pixelColor(110, 50), QColor(Qt::white));
  EXPECT_EQ(image.pixelColor(90, 50), QColor(Qt::white));
}

TEST_F(ALineGraphTest, AValueWithoutAPlaceBreaksTheLine) {
  add({0, 1, 2, 3, 4}, {10.0, 10.0, 0.0, 10.0, 10.0});
  const QImage image = drawn();
  EXPECT_LT(image.pixelColor(20, 50).lightness(), 200);
  EXPECT_EQ(image.pixelColor(100, 50), QColor(Qt::white));
  EXPECT_LT(image.pixelColor(180, 50).lightness(), 200);
}

TEST_F(ALineGraphTest, ReadOutTellsTheNearestPointOfTheLineUnderTheCursor) {
  const ALineGraph& graph = add({0, 10, 20}, {1.0, 0.1, 0.01});
  // 1, 0.1 and 0.01 lie at 0, 50 and 100 pixels from the top.
  const std::string text = graph.readOutAt({105.0, 47.0}, view_);
  EXPECT_THAT(text, HasSubstr("Term 0:"));
  EXPECT_THAT(text, HasSubstr("Iteration: 10"));
  EXPECT_THAT(text, HasSubstr("Residual [mJy]: 100"));
  EXPECT_EQ(graph.readOutAt({105.0, 5.0}, view_), "") << "far from the line";
  EXPECT_THAT(graph.readOutAt({200.0, 99.0}, view_), HasSubstr("Iteration: 20"));
}

TEST_F(ALineGraphTest, TheLegendIsOneLineInTheColourOfTheCurve) {
  ALineGraph& graph = add({0, 1}, {1.0, 2.0});
  graph.setLegend("peak");
  EXPECT_EQ(graph.legendLines(), 1);
  QImage image(200, 40, QImage::Format_RGB32);
  image.fill(Qt::white);
  {
    QPainter painter(&image);
    painter.setRenderHint(QPainter::TextAntialiasing, false);
    graph.drawLegend(painter, QRectF(0, 0, 200, 40));
  }
  bool found = false;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) {
      const QColor colour = image.pixelColor(x, y);
      // Blue, as the first curve is: letters are smoothed towards white.
      found = found || (colour.blue() > colour.red() + 60);
    }
  EXPECT_TRUE(found);
}

}  // namespace
}  // namespace lumo
