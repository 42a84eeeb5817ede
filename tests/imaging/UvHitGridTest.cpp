// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "imaging/UvHitGrid.h"

namespace lumo {
namespace {

/// 20 by 10 pixels, each one wavelength, u to the left and v upwards.
UvFrame wideFrame() {
  UvFrame frame;
  frame.visible = {-10.0, 10.0, -5.0, 5.0};
  frame.width = 20;
  frame.height = 10;
  return frame;
}

TEST(UvHitGridTest, PointAndMirrorFallOnOppositePixelsWithUToTheLeftAndVUpwards) {
  UvHitGrid grid(wideFrame());
  grid.add({3.5, 1.5});
  EXPECT_EQ(grid(3, 6), 1U);   // 6.5 from the left edge at u = 10, 3.5 below the top at v = 5
  EXPECT_EQ(grid(6, 13), 1U);  // the mirror (-3.5, -1.5)
  EXPECT_EQ(grid.crosses(), 2U);
}

TEST(UvHitGridTest, DirectionsTurnThePicture) {
  UvFrame frame = wideFrame();
  frame.uDirection = 1;
  frame.vDirection = -1;
  UvHitGrid grid(frame);
  grid.add({3.5, 1.5});
  EXPECT_EQ(grid(6, 13), 1U);
  EXPECT_EQ(grid(3, 6), 1U);
}

TEST(UvHitGridTest, PointsOnTheBorderCountToThePixelInside) {
  UvHitGrid grid(wideFrame());
  grid.add({10.0, 5.0});
  EXPECT_EQ(grid(0, 0), 1U);
  EXPECT_EQ(grid(9, 19), 1U);
}

TEST(UvHitGridTest, OfAPairOnlyWhatLiesInTheFrameCounts) {
  UvFrame frame = wideFrame();
  frame.visible = {0.0, 10.0, 0.0, 5.0};
  UvHitGrid grid(frame);
  grid.add({2.25, 1.25});    // its mirror is outside
  grid.add({-2.25, -1.25});  // this one is outside, its mirror is not
  EXPECT_EQ(grid.crosses(), 2U);
  EXPECT_EQ(grid(7, 15), 2U);
  EXPECT_EQ(grid.largest(), 2U);
}

TEST(UvHitGridTest, PixelsAreCountedFromTheUpperLeftCornerOfAFrameOffTheMiddle) {
  UvFrame frame;
  frame.visible = {-100.0, 60.0, -30.0, 50.0};
  frame.width = 320;
  frame.height = 240;
  UvHitGrid grid(frame);
  grid.add({55.25, 35.1});  // 4.75 at 2 pixels each from the left, 14.9 at 3 each from the top
  EXPECT_EQ(grid(44, 9), 1U);
  EXPECT_EQ(grid.crosses(), 1U);  // the mirror lies below the frame
}

TEST(UvHitGridTest, AFrameOfAnySizeIsCutToWhatMemoryHolds) {
  UvFrame frame = wideFrame();
  frame.width = 0;
  frame.height = 1 << 30;
  const UvHitGrid grid(frame);
  EXPECT_EQ(grid.frame().width, 1);
  EXPECT_EQ(grid.frame().height, UvHitGrid::kMostPixels);
}

TEST(UvMarkSizeTest, AFewPointsAreCrossesOfSixteenPixels) {
  EXPECT_EQ(uvMarkSize(0, 360000), 16);
  EXPECT_EQ(uvMarkSize(1, 360000), 16);
  EXPECT_EQ(uvMarkSize(1125, 360000), 16);  // 1125 crosses of 32 pixels are a tenth of the picture
}

TEST(UvMarkSizeTest, CrossesNeverCoverMoreThanATenthOfThePictureAndEndAsDots) {
  int last = 16;
  for (std::size_t occupied = 1; occupied <= 360000; occupied += 97) {
    const int size = uvMarkSize(occupied, 360000);
    EXPECT_LE(size, last);
    if (size > 1) {
      EXPECT_LE(2.0 * size * static_cast<double>(occupied), 36000.0);
    }
    last = size;
  }
  EXPECT_EQ(last, 1);
}

TEST(UvMarkSizeTest, IsTheSameOnPaperAsOnTheScreen) {
  UvFrame screen;
  screen.visible = {-50.0, 50.0, -50.0, 50.0};
  screen.width = screen.height = 100;
  UvFrame paper = screen;
  paper.width = paper.height = 400;
  paper.pixelsPerUnit = 4;
  UvHitGrid coarse(screen);
  UvHitGrid fine(paper);
  for (int i = 0; i < 45; ++i) {
    coarse.add({i + 0.5, 0.3 * i});
    fine.add({i + 0.5, 0.3 * i});
  }
  // 90 marks on 10000 places: 1000 / 180 = 5.
  EXPECT_EQ(coarse.markSize(), 5);
  EXPECT_EQ(fine.markSize(), 5);
}

}  // namespace
}  // namespace lumo
