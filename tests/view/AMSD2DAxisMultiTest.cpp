// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "CurveSample.h"

namespace lumo {
namespace {

PanelView viewOf(const AMSD2DAxisMulti& frame, double width, double height) {
  PanelView view;
  view.setPanelSize(width, height);
  view.setFull(frame.extent());
  return view;
}

TEST(AMSD2DAxisMultiTest, ExtentHoldsEveryCurveInAxisCoordinates) {
  AMSD2DAxisMulti frame(AxisScale::kLogarithmic, AxisScale::kLinear);
  frame.addGraph(std::make_unique<test::CurveSample>(PlotRect{1e8, 1e9, 2.0, 3.0}));
  frame.addGraph(std::make_unique<test::CurveSample>(PlotRect{1e9, 1e10, -1.0, 2.5}));
  EXPECT_EQ(frame.extent(), (PlotRect{8.0, 10.0, -1.0, 3.0}));
  frame.setScales(AxisScale::kLinear, AxisScale::kLinear);
  EXPECT_EQ(frame.extent(), (PlotRect{1e8, 1e10, -1.0, 3.0}));
}

TEST(AMSD2DAxisMultiTest, CurvesWithoutAnExtentDoNotCount) {
  AMSD2DAxisMulti frame(AxisScale::kLinear, AxisScale::kLinear);
  EXPECT_EQ(frame.extent(), (PlotRect{0.0, 1.0, 0.0, 1.0}));
  frame.addGraph(std::make_unique<test::CurveSample>(PlotRect{1e38, -1e38, 1e38, -1e38}));
  EXPECT_EQ(frame.extent(), (PlotRect{0.0, 1.0, 0.0, 1.0}));
  frame.addGraph(std::make_unique<test::CurveSample>(PlotRect{4.0, 5.0, std::nan(""), 7.0}));
  EXPECT_EQ(frame.extent(), (PlotRect{4.0, 5.0, 0.0, 1.0}));
}

TEST(AMSD2DAxisMultiTest, SingleCoordinateLiesInTheMiddle) {
  AMSD2DAxisMulti frame(AxisScale::kLinear, AxisScale::kLinear);
  frame.addGraph(std::make_unique<test::CurveSample>(PlotRect{1e9, 1e9, 0.0, 0.0}));
  const PanelView view = viewOf(frame, 200.0, 100.0);
  EXPECT_NEAR(frame.RPXtoGPX(1e9, view), 100.0, 1e-6);
  EXPECT_NEAR(frame.RPXtoGPX(1.05e9, view), 200.0, 1e-6);
  EXPECT_NEAR(frame.RPYtoGPY(0.0, view), 50.0, 1e-6);
}

TEST(AMSD2DAxisMultiTest, ValuesHaveTheirPlaceOnEitherScale) {
  AMSD2DAxisMulti frame(AxisScale::kLogarithmic, AxisScale::kLinear);
  frame.addGraph(std::make_unique<test::CurveSample>(PlotRect{1e8, 1e10, 0.0, 4.0}));
  const PanelView view = viewOf(frame, 200.0, 100.0);
  EXPECT_DOUBLE_EQ(frame.RPXtoGPX(1e9, view), 100.0);  // the middle of two decades
  EXPECT_DOUBLE_EQ(frame.RPXtoGPX(1e10, view), 200.0);
  EXPECT_DOUBLE_EQ(frame.RPYtoGPY(1.0, view), 75.0);  // upwards
  EXPECT_FALSE(std::isfinite(frame.RPXtoGPX(0.0, view)));
  EXPECT_FALSE(std::isfinite(frame.RPXtoGPX(-1.0, view)));
}

TEST(AMSD2DAxisMultiTest, InversionSwapsBackgroundAndLines) {
  using Slot = AMSD2DAxisMulti::Slot;
  AMSD2DAxisMulti frame(AxisScale::kLinear, AxisScale::kLinear);
  EXPECT_EQ(frame.colour(Slot::kBackground), QColor(Qt::white));
  EXPECT_EQ(frame.colour(Slot::kAxes), QColor(Qt::black));
  frame.setInverted(true);
  EXPECT_EQ(frame.colour(Slot::kBackground), QColor(Qt::black));
  EXPECT_EQ(frame.colour(Slot::kAxes), QColor(Qt::white));
}

TEST(AMSD2DAxisMultiTest, EightCurvesHaveColoursOfTheirOwnThatStandOutOnTheBackground) {
  AMSD2DAxisMulti frame(AxisScale::kLinear, AxisScale::kLinear);
  for (const bool inverted : {false, true}) {
    frame.setInverted(inverted);
    std::set<QRgb> seen;
    for (int number = 1; number <= 8; ++number) {
      const QColor colour = frame.curveColour(number);
      seen.insert(colour.rgb());
      const int background = frame.colour(AMSD2DAxisMulti::Slot::kBackground).lightness();
      EXPECT_GT(std::abs(colour.lightness() - background), 80) << number;
    }
    EXPECT_EQ(seen.size(), 8U);
    EXPECT_EQ(frame.curveColour(9), frame.curveColour(1));
    EXPECT_EQ(frame.colour(AMSD2DAxisMulti::Slot::kCurve), frame.curveColour(1));
  }
}

TEST(AMSD2DAxisMultiTest, ReadOutNamesTheValuesAndWhatACurveSays) {
  AMSD2DAxisMulti frame(AxisScale::kLogarithmic, AxisScale::kLinear);
  frame.setNameOX("Frequency [%sHz] (log scale)");
  frame.setNameOY("Flux Density [%sJy]");
  frame.addGraph(std::make_unique<test::CurveSample>(PlotRect{1e8, 1e10, 0.0, 0.004}));
  const PanelView view = viewOf(frame, 200.0, 100.0);
  EXPECT_EQ(frame.readOut({100.0, 50.0}, view), "Frequency [MHz]: 1000   Flux Density [mJy]: 2\n");
  frame.addGraph(std::make_unique<test::CurveSample>(PlotRect{1e8, 1e10, 0.0, 0.004}, "a point"));
  EXPECT_EQ(frame.readOut({100.0, 50.0}, view), "Frequency [MHz]: 1000   Flux Density [mJy]: 2\na point");
}

TEST(AMSD2DAxisMultiTest, NameWithoutAPlaceForThePrefixGivesPlainNumbers) {
  EXPECT_EQ(namedValue("FLUX ~[Jy]", 0.002), "FLUX ~[Jy]: 0.002");
  EXPECT_EQ(namedValue("counts", 12000.0), "counts: 12000");
}

}  // namespace
}  // namespace lumo
