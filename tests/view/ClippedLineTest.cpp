// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <limits>

#include "view/ClippedLine.h"

namespace lumo {
namespace {

const QRectF kArea(0.0, 0.0, 10.0, 10.0);

TEST(ClippedLineTest, LineInsideStaysOnePart) {
  const auto parts = clippedLine({{1, 1}, {5, 2}, {9, 9}}, kArea);
  ASSERT_EQ(parts.size(), 1U);
  EXPECT_EQ(parts[0], QPolygonF({{1, 1}, {5, 2}, {9, 9}}));
}

TEST(ClippedLineTest, WhatReachesOutIsCutAtTheEdge) {
  const auto parts = clippedLine({{-10, 5}, {30, 5}}, kArea);
  ASSERT_EQ(parts.size(), 1U);
  EXPECT_EQ(parts[0], QPolygonF(QList<QPointF>{{0, 5}, {10, 5}}));
}

TEST(ClippedLineTest, CutKeepsTheSlope) {
  const auto parts = clippedLine({{5, 5}, {5e8, 1e9}}, kArea);
  ASSERT_EQ(parts.size(), 1U);
  // One to the right for two down, but for rounding of a step of 1e9.
  EXPECT_NEAR(parts[0].last().x(), 7.5, 1e-6);
  EXPECT_NEAR(parts[0].last().y(), 10.0, 1e-6);
}

TEST(ClippedLineTest, LineThatLeavesAndComesBackHasTwoParts) {
  EXPECT_EQ(clippedLine({{2, 5}, {2, -5}, {8, -5}, {8, 5}}, kArea).size(), 2U);
}

TEST(ClippedLineTest, PointThatIsNotFiniteBreaksTheLine) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(clippedLine({{1, 1}, {2, 2}, {3, nan}, {4, 4}, {5, 5}, {inf, 6}, {7, 7}, {8, 8}}, kArea).size(),
            3U);
}

TEST(ClippedLineTest, NothingIsLeftOfALineOutside) {
  EXPECT_TRUE(clippedLine({{-5, 20}, {20, 20}}, kArea).empty());
  EXPECT_TRUE(clippedLine({{-5, 4}, {4, -6}}, kArea).empty());  // past the corner
  EXPECT_TRUE(clippedLine({{5, 5}}, kArea).empty());
}

}  // namespace
}  // namespace lumo
