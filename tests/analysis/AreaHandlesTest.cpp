// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "analysis/AreaHandles.h"
#include "core/Units.h"

namespace lumo {
namespace {

// A few roundings of numbers of the order of a hundred.
constexpr double kRounding = 1e-12;

void expectPoint(const AreaPoint& found, double x, double y) {
  EXPECT_NEAR(found.x, x, kRounding);
  EXPECT_NEAR(found.y, y, kRounding);
}

AreaHandle boxHandle(const AreaShape& area, int x, int y) {
  for (const AreaHandle& handle : areaHandles(area, 1.0))
    if (handle.kind == HandleKind::kBox && handle.x == x && handle.y == y) return handle;
  ADD_FAILURE() << "no handle " << x << "," << y;
  return {};
}

AreaHandle handleOf(const AreaShape& area, HandleKind kind, std::size_t vertex = 0, double reach = 1.0) {
  for (const AreaHandle& handle : areaHandles(area, reach))
    if (handle.kind == kind && handle.vertex == vertex) return handle;
  ADD_FAILURE() << "no such handle";
  return {};
}

AreaShape square() {
  return AreaShape::polygon({{0, 0}, {4, 0}, {4, 4}, {0, 4}});
}

TEST(AreaHandlesTest, RectangleHasItsHandlesOnHalfItsSizesAndAnEllipseOnItsSemiAxes) {
  expectPoint(boxHandle(AreaShape::rectangle({1, 2}, 8, 4), 1, -1).at, 5, 0);
  expectPoint(boxHandle(AreaShape::ellipse({1, 2}, 8, 4), 1, -1).at, 9, -2);
  expectPoint(boxHandle(AreaShape::rectangle({1, 2}, 8, 4, 90), 1, 0).at, 1, 6);
  EXPECT_EQ(areaHandles(AreaShape::rectangle({1, 2}, 8, 4), 1.0).size(), 9U);
}

TEST(AreaHandlesTest, QuarterTurnsAreExact) {
  const std::vector<AreaPoint> corners{{3, 0}, {3, 4}, {-1, 4}, {-1, 0}};
  EXPECT_EQ(areaOutline(AreaShape::rectangle({1, 2}, 4, 4, 90)), corners);
  EXPECT_EQ(boxHandle(AreaShape::rectangle({1, 2}, 8, 4, -270), 1, 0).at, (AreaPoint{1, 6}));
  const std::vector<AreaPoint> turned{{4, 4}, {0, 4}, {0, 0}, {4, 0}};
  EXPECT_EQ(turnedArea(square(), 180).vertices, turned);
}

TEST(AreaHandlesTest, TheHandleForTurningStandsOutsideTheUpperSide) {
  expectPoint(handleOf(AreaShape::rectangle({1, 2}, 8, 4), HandleKind::kRotate, 0, 3.0).at, 1, 7);
  expectPoint(handleOf(AreaShape::rectangle({1, 2}, 8, 4, 90), HandleKind::kRotate, 0, 3.0).at, -4, 2);
  expectPoint(handleOf(square(), HandleKind::kRotate, 0, 3.0).at, 2, 7);
}

TEST(AreaHandlesTest, PulledSideLeavesTheOppositeOneWhereItIs) {
  const AreaShape area = AreaShape::rectangle({0, 0}, 10, 6);
  const AreaShape pulled = pulledArea(area, boxHandle(area, 1, 0), {5, 0}, {9, 3});
  expectPoint(pulled.centre, 2, 0);
  EXPECT_DOUBLE_EQ(pulled.sizeX, 14);
  EXPECT_DOUBLE_EQ(pulled.sizeY, 6);
}

TEST(AreaHandlesTest, PulledCornerOfATurnedRectangleLeavesTheOppositeCorner) {
  const AreaShape area = AreaShape::rectangle({3, -2}, 10, 6, 35);
  const AreaPoint fixed = boxHandle(area, -1, -1).at;
  const AreaPoint from = boxHandle(area, 1, 1).at;
  const AreaPoint to{from.x + 2.5, from.y + 1.5};
  const AreaShape pulled = pulledArea(area, boxHandle(area, 1, 1), from, to);
  expectPoint(boxHandle(pulled, -1, -1).at, fixed.x, fixed.y);
  expectPoint(boxHandle(pulled, 1, 1).at, to.x, to.y);
  EXPECT_DOUBLE_EQ(pulled.rotation, 35);
}

TEST(AreaHandlesTest, PulledEllipseKeepsItsOtherEnd) {
  const AreaShape area = AreaShape::ellipse({0, 0}, 5, 3);
  const AreaShape pulled = pulledArea(area, boxHandle(area, 0, -1), {0, -3}, {1, -5});
  expectPoint(pulled.centre, 0, -1);
  EXPECT_DOUBLE_EQ(pulled.sizeX, 5);
  EXPECT_DOUBLE_EQ(pulled.sizeY, 4);
}

TEST(AreaHandlesTest, PullingThroughTheOppositeSideTurnsTheAreaOver) {
  const AreaShape area = AreaShape::rectangle({0, 0}, 10, 6);
  const AreaShape pulled = pulledArea(area, boxHandle(area, 1, 0), {5, 0}, {-9, 0});
  expectPoint(pulled.centre, -7, 0);
  EXPECT_DOUBLE_EQ(pulled.sizeX, 4);
}

TEST(AreaHandlesTest, NoSizeIsLost) {
  const AreaShape area = AreaShape::rectangle({0, 0}, 10, 6);
  EXPECT_EQ(pulledArea(area, boxHandle(area, 1, 0), {5, 0}, {-5, 0}), area);
  const AreaShape circle = AreaShape::circle({1, 1}, 2);
  EXPECT_EQ(pulledArea(circle, handleOf(circle, HandleKind::kRadius), {3, 1}, {1, 1}).sizeX, 2.0);
}

TEST(AreaHandlesTest, AHandleTakenBesideItsMiddleDoesNotJump) {
  const AreaShape area = AreaShape::rectangle({0, 0}, 10, 6);
  EXPECT_EQ(pulledArea(area, boxHandle(area, 1, 1), {5.3, 2.8}, {5.3, 2.8}), area);
  EXPECT_DOUBLE_EQ(pulledArea(area, boxHandle(area, 1, 1), {5.3, 2.8}, {6.3, 2.8}).sizeX, 11);
}

TEST(AreaHandlesTest, PulledCircleKeepsItsCentre) {
  const AreaShape area = AreaShape::circle({1, 2}, 5);
  const AreaShape pulled = pulledArea(area, handleOf(area, HandleKind::kRadius), {6, 2}, {4, 6});
  expectPoint(pulled.centre, 1, 2);
  EXPECT_DOUBLE_EQ(pulled.sizeX, 5.0);
  EXPECT_DOUBLE_EQ(pulledArea(area, handleOf(area, HandleKind::kRadius), {6, 2}, {1, 9}).sizeX, 7.0);
}

TEST(AreaHandlesTest, TurningGoesFromEastTowardsNorth) {
  const AreaShape area = AreaShape::ellipse({1, 1}, 5, 2, 10);
  const AreaHandle turn = handleOf(area, HandleKind::kRotate);
  // The pointer goes from the north of the centre to the west of it: a quarter turn.
  EXPECT_NEAR(pulledArea(area, turn, {1, 9}, {-7, 1}).rotation, 100, kRounding);
  EXPECT_NEAR(pulledArea(area, turn, {1, 9}, {9, 1}).rotation, -80, kRounding);
  EXPECT_EQ(turnedArea(AreaShape::circle({1, 1}, 5), 30), AreaShape::circle({1, 1}, 5));
}

TEST(AreaHandlesTest, APolygonTurnsAboutTheMiddleOfItsBox) {
  const AreaShape turned = turnedArea(AreaShape::polygon({{0, 0}, {6, 0}, {6, 2}}), 90);
  expectPoint(turned.vertices[0], 4, -2);
  expectPoint(turned.vertices[1], 4, 4);
  expectPoint(turned.vertices[2], 2, 4);
}

TEST(AreaHandlesTest, VerticesMoveAndTheMiddleOfASideBecomesOne) {
  const AreaShape moved = pulledArea(square(), handleOf(square(), HandleKind::kVertex, 2), {4, 4}, {5, 7});
  EXPECT_EQ(moved.vertices, (std::vector<AreaPoint>{{0, 0}, {4, 0}, {5, 7}, {0, 4}}));
  const AreaHandle last = handleOf(square(), HandleKind::kInsert, 4);
  expectPoint(last.at, 0, 2);
  const AreaShape more = pulledArea(square(), last, {0, 2}, {-3, 2});
  EXPECT_EQ(more.vertices, (std::vector<AreaPoint>{{0, 0}, {4, 0}, {4, 4}, {0, 4}, {-3, 2}}));
}

TEST(AreaHandlesTest, MovingMovesEverything) {
  EXPECT_EQ(movedArea(AreaShape::rectangle({1, 2}, 3, 4, 5), {10, -1}),
            AreaShape::rectangle({11, 1}, 3, 4, 5));
  EXPECT_EQ(movedArea(square(), {1, 2}), AreaShape::polygon({{1, 2}, {5, 2}, {5, 6}, {1, 6}}));
}

TEST(AreaHandlesTest, OutlinesLieOnTheEdgeOfTheArea) {
  for (const AreaShape& area : {AreaShape::circle({3, 4}, 5), AreaShape::ellipse({3, 4}, 5, 2, 40),
                                AreaShape::rectangle({3, 4}, 5, 2, 40)}) {
    const std::vector<AreaPoint> outline = areaOutline(area);
    ASSERT_GE(outline.size(), 4U);
    for (const AreaPoint& corner : outline) {
      const auto scaled = [&](double by) {
        return AreaPoint{3 + by * (corner.x - 3), 4 + by * (corner.y - 4)};
      };
      EXPECT_TRUE(area.contains(scaled(1 - 1e-9)));
      EXPECT_FALSE(area.contains(scaled(1 + 1e-9)));
    }
  }
}

TEST(AreaHandlesTest, NearestPlaceOfALineIsOnItsClosingSideToo) {
  const OutlinePlace place = nearestPlace(square().vertices, {-1.5, 3});
  EXPECT_EQ(place.side, 3U);
  EXPECT_DOUBLE_EQ(place.distance, 1.5);
  expectPoint(place.at, 0, 3);
  EXPECT_DOUBLE_EQ(nearestPlace(square().vertices, {7, 8}).distance, 5.0);
  EXPECT_DOUBLE_EQ(nearestPlace({{1, 1}}, {4, 5}).distance, 5.0);
}

}  // namespace
}  // namespace lumo
