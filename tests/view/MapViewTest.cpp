// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <limits>

#include "view/MapView.h"

namespace lumo {
namespace {

/// Four rows from -1.5 to 1.5 arcseconds and five columns from -2 to 2; pixel (r, c) is 10 r + c.
MapView smallMap() {
  AMatrix<float> map(4, 5);
  for (std::uint32_t row = 0; row < 4; ++row)
    for (std::uint32_t column = 0; column < 5; ++column)
      map(row, column) = static_cast<float>(10 * row + column);
  MapView view;
  view.setMap(std::make_shared<AMatrix<float>>(map), {-2.0, 2.0, -1.5, 1.5, 0.0, 34.0});
  return view;
}

TEST(MapViewTest, CellsLieBetweenTheOutermostCentres) {
  EXPECT_DOUBLE_EQ(smallMap().cellX(), 1.0);
  EXPECT_DOUBLE_EQ(smallMap().cellY(), 1.0);
  EXPECT_EQ(smallMap().edges(), (PlotRect{-2.5, 2.5, -2.0, 2.0}));
}

TEST(MapViewTest, APixelReachesHalfACellFromItsCentre) {
  const MapView view = smallMap();
  EXPECT_EQ(view.pixelAt(0.0, -1.5), (MapPixel{0, 2}));
  EXPECT_EQ(view.pixelAt(0.49, -1.01), (MapPixel{0, 2}));
  EXPECT_EQ(view.pixelAt(0.51, -0.99), (MapPixel{1, 3}));
}

TEST(MapViewTest, TheNorthEasternCornerIsTheLastPixel) {
  EXPECT_EQ(smallMap().pixelAt(2.0, 1.5), (MapPixel{3, 4}));
  EXPECT_EQ(smallMap().pixelAt(-2.5, -2.0), (MapPixel{0, 0}));
}

TEST(MapViewTest, OffTheMapThereIsNoPixel) {
  EXPECT_FALSE(smallMap().pixelAt(2.51, 0.0));
  EXPECT_FALSE(smallMap().pixelAt(0.0, -2.01));
  EXPECT_FALSE(smallMap().pixelAt(std::numeric_limits<double>::quiet_NaN(), 0.0));
  EXPECT_FALSE(smallMap().pixelAt(1e300, 0.0));
  EXPECT_FALSE(MapView().pixelAt(0.0, 0.0));
}

TEST(MapViewTest, ReadOutNamesOffsetPixelAndValue) {
  MapView view = smallMap();
  view.setUnit("Jy/beam");
  const MapReadOut text = view.readOut(1.2, -0.4);
  EXPECT_EQ(text.offset, "x +1.2 as, y -0.4 as");
  EXPECT_EQ(text.pixel, "row 1, column 3");
  EXPECT_EQ(text.value, "13 Jy/beam");
  EXPECT_EQ(text.sky, "");
}

TEST(MapViewTest, ReadOutGivesTheSkyPositionInTheCellsPrecision) {
  MapView view = smallMap();
  view.setSkyCentre(SkyPosition{30.0, 60.0});
  // At 60 degrees 1.5 arcseconds east are 3 of right ascension, 0.2 seconds of time.
  EXPECT_EQ(view.readOut(1.5, 1.0).sky, "02:00:00.20 +60:00:01.0");
}

TEST(MapViewTest, ReadOutSaysWhenThePositionIsBeyondTheHorizon) {
  MapView view = smallMap();
  view.setSkyCentre(SkyPosition{30.0, 60.0});
  EXPECT_EQ(view.readOut(3e5, 0.0).sky, "beyond the horizon");
}

TEST(MapViewTest, APixelWithoutAValueReadsSo) {
  AMatrix<float> map(1, 1);
  map(0, 0) = std::numeric_limits<float>::quiet_NaN();
  MapView view;
  view.setUnit("Jy");
  view.setMap(std::make_shared<AMatrix<float>>(map), {0.0, 0.0, 0.0, 0.0, 0.0, 0.0});
  EXPECT_EQ(view.readOut(0.0, 0.0).value, "no value");
}

TEST(MapViewTest, OffTheMapOnlyTheOffsetIsRead) {
  const MapReadOut text = smallMap().readOut(7.0, 0.0);
  EXPECT_EQ(text.offset, "x +7.0 as, y +0.0 as");
  EXPECT_EQ(text.pixel, "");
  EXPECT_EQ(text.value, "");
}

TEST(MapViewTest, AnUnsetRangeCountsPixels) {
  MapView view;
  view.setMap(std::make_shared<AMatrix<float>>(3, 4), {});
  EXPECT_EQ(view.edges(), (PlotRect{-0.5, 3.5, -0.5, 2.5}));
}

TEST(MapViewTest, ASingleRowHasSquarePixels) {
  MapView view;
  view.setMap(std::make_shared<AMatrix<float>>(1, 3), {-2.0, 2.0, 5.0, 5.0, 0.0, 0.0});
  EXPECT_DOUBLE_EQ(view.cellY(), 2.0);
  EXPECT_EQ(view.edges(), (PlotRect{-3.0, 3.0, 4.0, 6.0}));
}

}  // namespace
}  // namespace lumo
