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
    frame.setNameOX("Frequency [%sHz] (log scale)");
    frame.setNameOY("Flux Density [%sJy]");
  }
  QImage show(const PlotRect& extent, int legendLines = 1) {
    frame.addGraph(std::make_unique<test::CurveSample>(extent, "", legendLines));
    panel.setFrame(&frame);
    return test::shown(panel, kSize);
  }
  static QVector<QString> tickNumbers(const QCPAxis& axis) {
    QVector<double> ticks;
    QVector<QString> labels;
    axis.ticker()->generate(axis.range(), QLocale::c(), 'g', 6, ticks, nullptr, &labels);
    return labels;
  }

  AMSD2DAxisMulti frame{AxisScale::kLogarithmic, AxisScale::kLinear};
  CurvePanel panel{nullptr};
};

TEST_F(CurvePanelTest, TheAxesSayWhereTheCurvesAreDrawn) {
  (void)show({1e8, 1e10, 0.0, 0.004});
  panel.view().zoomAbout({50.0, 70.0}, 2.5);
  panel.replot();
  const QRect rect = panel.panelRect();
  for (const double freq : {2e8, 1.4e9, 7e9}) {
    // Rounding of numbers of a few hundred.
    EXPECT_NEAR(panel.xAxis->coordToPixel(freq), rect.left() + frame.RPXtoGPX(freq, panel.view()), 1e-9);
  }
  EXPECT_NEAR(panel.yAxis->coordToPixel(0.001), rect.top() + frame.RPYtoGPY(0.001, panel.view()), 1e-9);
}

TEST_F(CurvePanelTest, EachAxisHasAPrefixOfItsOwn) {
  (void)show({1e8, 1e10, 0.0, 0.004});
  EXPECT_EQ(panel.xAxis->label(), "Frequency [GHz] (log scale)");
  EXPECT_EQ(panel.yAxis->label(), "Flux Density [mJy]");
  EXPECT_TRUE(tickNumbers(*panel.yAxis).contains("4"));
}

TEST_F(CurvePanelTest, LogarithmicAxisHasItsNumbersAtDecades) {
  (void)show({1e8, 1e10, 0.0, 0.004});
  EXPECT_EQ(tickNumbers(*panel.xAxis), QVector<QString>({"0.1", "0.2", "0.5", "1", "2", "5", "10"}));
}

TEST_F(CurvePanelTest, DeepZoomIntoALogarithmicAxisStillHasNumbers) {
  (void)show({1e8, 1e10, 0.0, 0.004});
  panel.view().zoomAbout({300.0, 200.0}, 500.0);
  panel.replot();
  EXPECT_GE(tickNumbers(*panel.xAxis).size(), 2);
}

TEST_F(CurvePanelTest, NameWithoutAPlaceForThePrefixHasPlainNumbers) {
  frame.setNameOY("FLUX ~[Jy]");
  (void)show({1e8, 1e10, 0.0, 0.004});
  EXPECT_EQ(panel.yAxis->label(), "FLUX ~[Jy]");
  EXPECT_TRUE(tickNumbers(*panel.yAxis).contains("0.004"))
      << tickNumbers(*panel.yAxis).join(' ').toStdString();
}

TEST_F(CurvePanelTest, CurvesFillThePanelAndLegendsStandAboveIt) {
  const QImage image = show({1e8, 1e10, 0.0, 0.004}, 2);
  const QRect rect = panel.panelRect();
  EXPECT_EQ(image.pixelColor(rect.center()), QColor(Qt::red));
  const QColor above = image.pixelColor(rect.center().x(), static_cast<int>(frame.legendPitch()));
  EXPECT_EQ(above, QColor(Qt::blue));
  EXPECT_GE(rect.top(), 2.0 * frame.legendPitch() + frame.legendDrop());
}

TEST_F(CurvePanelTest, VeryManyLegendsLeaveThePlotMostOfTheRoom) {
  for (int i = 0; i < 99; ++i)
    frame.addGraph(std::make_unique<test::CurveSample>(PlotRect{1e8, 1e10, 0.0, 0.004}));
  (void)show({1e8, 1e10, 0.0, 0.004});
  EXPECT_GT(panel.panelRect().height(), kSize.height() / 2 - 40);
}

TEST_F(CurvePanelTest, InvertedColoursHaveABlackBackground) {
  EXPECT_EQ(show({1e8, 1e10, 0.0, 0.004}).pixelColor(2, kSize.height() - 2), QColor(Qt::white));
  frame.setInverted(true);
  panel.refresh();
  EXPECT_EQ(test::shown(panel, kSize).pixelColor(2, kSize.height() - 2), QColor(Qt::black));
}

TEST_F(CurvePanelTest, WithoutAFrameItIsEmptyButAlive) {
  panel.setFrame(nullptr);
  EXPECT_FALSE(test::shown(panel, {200, 150}).isNull());
}

TEST_F(CurvePanelTest, FrameOfEnormousRangeIsDrawn) {
  EXPECT_FALSE(show({1e-300, 1e300, -1e300, 1e300}).isNull());
  panel.view().zoomAbout({100.0, 100.0}, 1e-3);
  panel.replot();
  EXPECT_FALSE(test::shown(panel, kSize).isNull());
}

}  // namespace
}  // namespace lumo
