// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <limits>

#include "view/ColourTable.h"

namespace lumo {
namespace {

TEST(ColourTableTest, GreyRunsFromBlackToWhite) {
  const ColourTable table(ColourMap::kGrey);
  EXPECT_EQ(table.colour(0.0), 0xff000000U);
  EXPECT_EQ(table.colour(1.0), 0xffffffffU);
  // The middle of 1024 entries lies half an entry from one half: 127 or 128 of 255.
  EXPECT_NEAR(static_cast<double>(table.colour(0.5) & 0xffU), 127.5, 0.5);
}

TEST(ColourTableTest, InvertedGreyRunsFromWhiteToBlack) {
  const ColourTable table(ColourMap::kInvertedGrey);
  EXPECT_EQ(table.colour(0.0), 0xffffffffU);
  EXPECT_EQ(table.colour(1.0), 0xff000000U);
}

TEST(ColourTableTest, ColdIsBlueAndWarmIsRed) {
  const ColourTable table(ColourMap::kCoolWarm);
  EXPECT_GT(table.colour(0.0) & 0xffU, (table.colour(0.0) >> 16) & 0xffU);
  EXPECT_LT(table.colour(1.0) & 0xffU, (table.colour(1.0) >> 16) & 0xffU);
}

TEST(ColourTableTest, PositionsOutsideGetTheOutermostColours) {
  const ColourTable table(ColourMap::kHeat);
  EXPECT_EQ(table.colour(-3.0), table.colour(0.0));
  EXPECT_EQ(table.colour(7.0), table.colour(1.0));
}

TEST(ColourTableTest, NanHasAColourThatNoValueHas) {
  for (const ColourMap map : kColourMaps) {
    const ColourTable table(map);
    EXPECT_EQ(table.colour(std::numeric_limits<double>::quiet_NaN()), table.nanColour());
    for (int i = 0; i < ColourTable::kSize; ++i) {
      ASSERT_NE(table.colour(i / (ColourTable::kSize - 1.0)), table.nanColour()) << colourMapName(map) << i;
    }
  }
}

TEST(ColourTableTest, InfernoGetsBrighterAllTheWay) {
  const ColourTable table(ColourMap::kInferno);
  double before = -1.0;
  for (int i = 0; i <= 20; ++i) {
    const auto colour = table.colour(i / 20.0);
    const double luminance =
        0.2126 * ((colour >> 16) & 0xffU) + 0.7152 * ((colour >> 8) & 0xffU) + 0.0722 * (colour & 0xffU);
    EXPECT_GT(luminance, before) << i;
    before = luminance;
  }
}

TEST(ColourTableTest, EveryMapHasAName) {
  for (const ColourMap map : kColourMaps) EXPECT_FALSE(colourMapName(map).empty());
}

}  // namespace
}  // namespace lumo
