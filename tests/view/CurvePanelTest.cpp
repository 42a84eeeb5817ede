// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "CurveSample.h"
#include "Mouse.h"
#include "view/CurvePanel.h"

namespace lumo {
namespace {

constexpr QSize kSize(640, 480);

class CurvePanelTest : public testing::Test {
 protected:
  CurvePanelTest() {
    frame_.setNameOX("Frequency [%sHz] (log scale)");
    frame_.setNameOY("Flux Density [%sJy]");
  }
  QImage show(const PlotRect& extent, int legendLines = 1) {
    frame_.addGraph(std::make_unique<test::CurveSample>(extent, "", legendLines));
    panel_.setFrame(&frame_);
    return test::shown(panel_, kSize);
  }
  static QVector<QString> tickNumbers(const QCPAxis& axis) {
    QVector<double> ticks;
    QVector<QString> labels;
    axis.ticker()->generate(axis.range(), QLocale::c(), 'g', 6, ticks, nullptr, &labels);
    return labels;
  }

  AMSD2DAxisMulti frame_{AxisScale::kLogarithmic, AxisScale::kLinear};
  CurvePanel panel_{nullptr};
};

TEST_F(CurvePanelTest, TheAxesSayWhereTheCurvesAreDrawn) {
  (void)show({1e8, 1e10, 0.0, 0.004});
  panel_.view().zoomAbout({50.0, 70.0}, 2.5);
  panel_.replot();
  const QRect rect = panel_.panelRect();
  for (const double freq : {2e8, 1.4e9, 7e9}) {
    // Rounding of numbers of a few hundred.
    EXPECT_NEAR(panel_.xAxis->coordToPixel(freq), rect.left() + frame_.RPXtoGPX(freq, panel_.view()), 1e-9);
  }
  EXPECT_NEAR(panel_.yAxis->coordToPixel(0.001), rect.top() + frame_.RPYtoGPY(0.001, panel_.view()), 1e-9);
}

TEST_F(CurvePanelTest, EachAxisHasAPrefixOfItsOwn) {
  (void)show({1e8, 1e10, 0.0, 0.004});
  EXPECT_EQ(panel_.xAxis->label(), "Frequency [GHz] (log scale)");
  EXPECT_EQ(panel_.yAxis->label(), "Flux Density [mJy]");
  EXPECT_TRUE(tickNumbers(*panel_.yAxis).contains("4"));
}

TEST_F(CurvePanelTest, LogarithmicAxisHasItsNumbersAtDecades) {
  (void)show({1e8, 1e10, 0.0, 0.004});
  EXPECT_EQ(tickNumbers(*panel_.xAxis), QVector<QString>({"0.1", "0.2", "0.5", "1", "2", "5", "10"}));
}

TEST_F(CurvePanelTest, DeepZoomIntoALogarithmicAxisStillHasNumbers) {
  (void)show({1e8, 1e10, 0.0, 0.004});
  panel_.view().zoomAbout({300.0, 200.0}, 500.0);
  panel_.replot();
  EXPECT_GE(tickNumbers(*panel_.xAxis).size(), 2);
}

TEST_F(CurvePanelTest, NameWithoutAPlaceForThePrefixHasPlainNumbers) {
  frame_.setNameOY("FLUX ~[Jy]");
  (void)show({1e8, 1e10, 0.0, 0.004});
  EXPECT_EQ(panel_.yAxis->label(), "FLUX ~[Jy]");
  EXPECT_TRUE(tickNumbers(*panel_.yAxis).contains("0.004"))
      << tickNumbers(*panel_.yAxis).join(' ').toStdString();
}

TEST_F(CurvePanelTest, CurvesFillThePanelAndLegendsStandAboveIt) {
  const QImage image = show({1e8, 1e10, 0.0, 0.004}, 2);
  const QRect rect = panel_.panelRect();
  EXPECT_EQ(image.pixelColor(rect.center()), QColor(Qt::red));
  const QColor above = image.pixelColor(rect.center().x(), static_cast<int>(frame_.legendPitch()));
  EXPECT_EQ(above, QColor(Qt::blue));
  EXPECT_GE(rect.top(), 2.0 * frame_.legendPitch() + frame_.legendDrop());
}

TEST_F(CurvePanelTest, VeryManyLegendsLeaveThePlotMostOfTheRoom) {
  for (int i = 0; i < 99; ++i)
    frame_.addGraph(std::make_unique<test::CurveSample>(PlotRect{1e8, 1e10, 0.0, 0.004}));
  (void)show({1e8, 1e10, 0.0, 0.004});
  EXPECT_GT(panel_.panelRect().height(), kSize.height() / 2 - 40);
}

TEST_F(CurvePanelTest, InvertedColoursHaveABlackBackground) {
  EXPECT_EQ(show({1e8, 1e10, 0.0, 0.004}).pixelColor(2, kSize.height() - 2), QColor(Qt::white));
  frame_.setInverted(true);
  panel_.refresh();
  EXPECT_EQ(test::shown(panel_, kSize).pixelColor(2, kSize.height() - 2), QColor(Qt::black));
}

TEST_F(CurvePanelTest, WithoutAFrameItIsEmptyButAlive) {
  panel_.setFrame(nullptr);
  EXPECT_FALSE(test::shown(panel_, {200, 150}).isNull());
}

TEST_F(CurvePanelTest, FrameOfEnormousRangeIsDrawn) {
  EXPECT_FALSE(show({1e-300, 1e300, -1e300, 1e300}).isNull());
  panel_.view().zoomAbout({100.0, 100.0}, 1e-3);
  panel_.replot();
  EXPECT_FALSE(test::shown(panel_, kSize).isNull());
}

}  // namespace
}  // namespace lumo
