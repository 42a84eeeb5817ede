// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "view/PanelView.h"

namespace lumo {
namespace {

/// A sky map of 40 by 20 arcseconds in a panel of 200 by 200 pixels: five pixels an arcsecond.
PanelView skyView() {
  PanelView view;
  view.setDirections(-1, 1);
  view.setSquare(true);
  view.setFull({-20.0, 20.0, -10.0, 10.0});
  view.setPanelSize(200.0, 200.0);
  return view;
}

TEST(PanelViewTest, FittingKeepsUnitsSquareAndEverythingInView) {
  const PanelView view = skyView();
  EXPECT_DOUBLE_EQ(view.pixelsPerX(), 5.0);
  EXPECT_DOUBLE_EQ(view.pixelsPerY(), 5.0);
  EXPECT_EQ(view.visible(), (PlotRect{-20.0, 20.0, -20.0, 20.0}));
}

TEST(PanelViewTest, WithoutSquareUnitsThePanelIsFilled) {
  PanelView view = skyView();
  view.setSquare(false);
  EXPECT_DOUBLE_EQ(view.pixelsPerX(), 5.0);
  EXPECT_DOUBLE_EQ(view.pixelsPerY(), 10.0);
}

TEST(PanelViewTest, EastIsLeftAndNorthIsUp) {
  const PanelView view = skyView();
  const PlotPoint pixel = view.toPixel({20.0, 10.0});
  EXPECT_DOUBLE_EQ(pixel.x, 0.0);
  EXPECT_DOUBLE_EQ(pixel.y, 50.0);
}

TEST(PanelViewTest, OtherDirectionsTurnThePicture) {
  PanelView view = skyView();
  view.setDirections(1, -1);
  const PlotPoint pixel = view.toPixel({20.0, 10.0});
  EXPECT_DOUBLE_EQ(pixel.x, 200.0);
  EXPECT_DOUBLE_EQ(pixel.y, 150.0);
}

TEST(PanelViewTest, PixelsAndPlotPositionsAreInverse) {
  PanelView view = skyView();
  view.zoomAbout({30.0, 40.0}, 3.0);
  const PlotPoint there = view.toPixel(view.toPlot({17.0, 91.0}));
  EXPECT_NEAR(there.x, 17.0, 1e-10);  // rounding of numbers of a few hundred
  EXPECT_NEAR(there.y, 91.0, 1e-10);
}

TEST(PanelViewTest, APlotThatGrowsStaysFittedOrKeepsThePartShown) {
  PanelView view = skyView();
  view.growFull({-40.0, 40.0, -10.0, 10.0});
  EXPECT_EQ(view.visible(), (PlotRect{-40.0, 40.0, -40.0, 40.0}));
  view.zoomAbout({30.0, 40.0}, 3.0);
  const PlotRect part = view.visible();
  view.growFull({-80.0, 80.0, -10.0, 10.0});
  EXPECT_EQ(view.visible(), part);
  view.fit();
  EXPECT_EQ(view.visible(), (PlotRect{-80.0, 80.0, -80.0, 80.0}));
}

TEST(PanelViewTest, ZoomingKeepsWhatIsUnderTheCursor) {
  PanelView view = skyView();
  const PlotPoint before = view.toPlot({30.0, 160.0});
  view.zoomAbout({30.0, 160.0}, 2.0);
  const PlotPoint after = view.toPlot({30.0, 160.0});
  EXPECT_NEAR(after.x, before.x, 1e-12);
  EXPECT_NEAR(after.y, before.y, 1e-12);
  EXPECT_DOUBLE_EQ(view.pixelsPerX(), 10.0);
  EXPECT_FALSE(view.fitted());
}

TEST(PanelViewTest, ZoomStopsAtItsBounds) {
  PanelView view = skyView();
  view.zoomAbout({100.0, 100.0}, 1e9);
  EXPECT_NEAR(view.pixelsPerX(), 5.0 * PanelView::kDeepestZoom, 1e-6);
  view.zoomAbout({100.0, 100.0}, 1e-20);
  EXPECT_NEAR(view.pixelsPerX(), 5.0 / PanelView::kWidestZoom, 1e-12);
}

TEST(PanelViewTest, AZoomByNothingChangesNothing) {
  PanelView view = skyView();
  view.zoomAbout({100.0, 100.0}, 0.0);
  EXPECT_TRUE(view.fitted());
}

TEST(PanelViewTest, PanningMovesThePictureWithTheHand) {
  PanelView view = skyView();
  view.pan(50.0, 25.0);
  // What was in the middle is now 50 pixels further right and 25 further down.
  const PlotPoint pixel = view.toPixel({0.0, 0.0});
  EXPECT_NEAR(pixel.x, 150.0, 1e-12);
  EXPECT_NEAR(pixel.y, 125.0, 1e-12);
}

TEST(PanelViewTest, PanningKeepsTheCentreOnThePlot) {
  PanelView view = skyView();
  view.pan(1e6, -1e6);
  const PlotPoint centre = view.toPlot({100.0, 100.0});
  EXPECT_DOUBLE_EQ(centre.x, 20.0);
  EXPECT_DOUBLE_EQ(centre.y, -10.0);
}

TEST(PanelViewTest, AFittedViewFollowsThePanelSize) {
  PanelView view = skyView();
  view.setPanelSize(400.0, 100.0);
  EXPECT_DOUBLE_EQ(view.pixelsPerX(), 5.0);
  view.setPanelSize(80.0, 100.0);
  EXPECT_DOUBLE_EQ(view.pixelsPerX(), 2.0);
}

TEST(PanelViewTest, AZoomedViewKeepsItsScaleWhenThePanelGrows) {
  PanelView view = skyView();
  view.zoomAbout({100.0, 100.0}, 2.0);
  view.setPanelSize(400.0, 300.0);
  EXPECT_DOUBLE_EQ(view.pixelsPerX(), 10.0);
  view.fit();
  EXPECT_DOUBLE_EQ(view.pixelsPerX(), 10.0);  // 400 pixels for 40 arcseconds
  EXPECT_TRUE(view.fitted());
}

TEST(PanelViewTest, APlotWithoutExtentStillHasAScale) {
  PanelView view;
  view.setFull({3.0, 3.0, 5.0, 5.0});
  view.setPanelSize(0.0, 0.0);
  EXPECT_DOUBLE_EQ(view.pixelsPerX(), 1.0);
}

}  // namespace
}  // namespace lumo
