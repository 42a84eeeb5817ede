// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "analysis/AreaEditor.h"
#include "analysis/RegionFile.h"

namespace lumo {
namespace {

/// An editor under a mouse of ten screen pixels an arcsecond.
class AreaEditorTest : public testing::Test {
 protected:
  static constexpr double kPixel = 0.1;

  static AreaPointer at(double x, double y) { return {{x, y}, kPixel}; }
  void drag(AreaPoint from, AreaPoint to) {
    editor_.press(at(from.x, from.y));
    editor_.move(at((from.x + to.x) / 2, (from.y + to.y) / 2));
    editor_.release(at(to.x, to.y));
  }
  void click(double x, double y) {
    editor_.move(at(x, y));
    editor_.press(at(x, y));
    editor_.release(at(x, y));
  }
  void add(const AreaShape& shape) {
    AreaList areas = editor_.areas();
    areas.add(shape);
    editor_ = AreaEditor(areas);
  }
  [[nodiscard]] const std::vector<AreaShape>& shapes() const { return editor_.areas().shapes(); }

  AreaEditor editor_;
};

TEST_F(AreaEditorTest, StrokesDrawTheShapeOfTheTool) {
  editor_.setTool(AreaTool::kRectangle);
  drag({2, 1}, {6, 9});
  editor_.setTool(AreaTool::kEllipse);
  drag({-2, 1}, {-10, 5});
  editor_.setTool(AreaTool::kCircle);
  drag({0, 0}, {3, -4});
  ASSERT_EQ(shapes().size(), 3U);
  EXPECT_EQ(shapes()[0], AreaShape::rectangle({4, 5}, 4, 8));
  EXPECT_EQ(shapes()[1], AreaShape::ellipse({-6, 3}, 4, 2));
  EXPECT_EQ(shapes()[2], AreaShape::circle({0, 0}, 5));
  EXPECT_EQ(editor_.selected(), 2U);
}

TEST_F(AreaEditorTest, AClickWithADrawingToolSelectsAndDrawsNothing) {
  add(AreaShape::circle({10, 10}, 3));
  editor_.setTool(AreaTool::kRectangle);
  click(11, 10);
  EXPECT_EQ(editor_.selected(), 0U);
  drag({0, 0}, {0.2, 0.2});  // three screen pixels
  EXPECT_EQ(shapes().size(), 1U);
  EXPECT_FALSE(editor_.selected());
  EXPECT_FALSE(editor_.canUndo());
}

TEST_F(AreaEditorTest, AStrokeWithoutHeightDrawsNothing) {
  editor_.setTool(AreaTool::kRectangle);
  drag({0, 0}, {5, 0});
  EXPECT_TRUE(shapes().empty());
  EXPECT_FALSE(editor_.busy());
}

TEST_F(AreaEditorTest, WhatIsBeingDrawnFollowsThePointer) {
  editor_.setTool(AreaTool::kCircle);
  editor_.press(at(0, 0));
  editor_.move(at(3, 4));
  ASSERT_TRUE(editor_.draft());
  EXPECT_EQ(editor_.draft()->sizeX, 5.0);
  editor_.move(at(6, 8));
  EXPECT_EQ(editor_.draft()->sizeX, 10.0);
  EXPECT_TRUE(shapes().empty());
}

TEST_F(AreaEditorTest, APolygonIsClosedByADoubleClickOrItsFirstVertex) {
  editor_.setTool(AreaTool::kPolygon);
  for (const AreaPoint& vertex : {AreaPoint{0, 0}, {5, 0}, {5, 4}}) click(vertex.x, vertex.y);
  EXPECT_TRUE(editor_.doubleClick(at(5, 4)));
  editor_.release(at(5, 4));
  for (const AreaPoint& vertex : {AreaPoint{10, 0}, {15, 0}, {15, 4}, {10.3, 0.3}}) click(vertex.x, vertex.y);
  ASSERT_EQ(shapes().size(), 2U);
  EXPECT_EQ(shapes()[0], AreaShape::polygon({{0, 0}, {5, 0}, {5, 4}}));
  EXPECT_EQ(shapes()[1], AreaShape::polygon({{10, 0}, {15, 0}, {15, 4}}));
  EXPECT_FALSE(editor_.busy());
}

TEST_F(AreaEditorTest, AStrokeDrawsTheFirstSideOfAPolygon) {
  editor_.setTool(AreaTool::kPolygon);
  drag({0, 0}, {5, 0});
  click(5, 4);
  EXPECT_TRUE(editor_.closePolygon());
  EXPECT_EQ(shapes()[0], AreaShape::polygon({{0, 0}, {5, 0}, {5, 4}}));
}

TEST_F(AreaEditorTest, TwoVerticesCloseNoPolygon) {
  editor_.setTool(AreaTool::kPolygon);
  click(0, 0);
  click(5, 0);
  EXPECT_FALSE(editor_.closePolygon());
  EXPECT_TRUE(editor_.doubleClick(at(5, 0)));
  EXPECT_TRUE(editor_.busy());
  EXPECT_TRUE(shapes().empty());
}

TEST_F(AreaEditorTest, VerticesOfAPolygonUnderWayAreTakenBackOneByOne) {
  editor_.setTool(AreaTool::kPolygon);
  for (const AreaPoint& vertex : {AreaPoint{0, 0}, {5, 0}, {5, 4}, {9, 9}}) click(vertex.x, vertex.y);
  EXPECT_TRUE(editor_.takeBackVertex());
  EXPECT_TRUE(editor_.closePolygon());
  EXPECT_EQ(shapes()[0], AreaShape::polygon({{0, 0}, {5, 0}, {5, 4}}));
  click(20, 20);
  EXPECT_TRUE(editor_.takeBackVertex());
  EXPECT_FALSE(editor_.busy());
  EXPECT_FALSE(editor_.takeBackVertex());
}

TEST_F(AreaEditorTest, GivingUpLeavesNoTrace) {
  add(AreaShape::circle({10, 10}, 3));
  editor_.setTool(AreaTool::kPolygon);
  click(0, 0);
  click(5, 0);
  EXPECT_TRUE(editor_.abandon());
  EXPECT_FALSE(editor_.busy());
  editor_.setTool(AreaTool::kSelect);
  editor_.press(at(10, 10));
  editor_.move(at(14, 14));
  EXPECT_EQ(shapes()[0].centre, (AreaPoint{14, 14}));
  EXPECT_TRUE(editor_.abandon());
  editor_.release(at(14, 14));
  EXPECT_EQ(shapes()[0].centre, (AreaPoint{10, 10}));
  EXPECT_FALSE(editor_.canUndo());
  EXPECT_TRUE(editor_.abandon());  // what is selected
  EXPECT_FALSE(editor_.abandon());
}

TEST_F(AreaEditorTest, AnotherToolGivesUpThePolygonUnderWay) {
  editor_.setTool(AreaTool::kPolygon);
  click(0, 0);
  editor_.setTool(AreaTool::kCircle);
  EXPECT_FALSE(editor_.busy());
}

TEST_F(AreaEditorTest, OfNestedAreasTheSmallestIsSelected) {
  add(AreaShape::circle({0, 0}, 2));
  add(AreaShape::rectangle({0, 0}, 30, 30));
  click(1, 0);
  EXPECT_EQ(editor_.selected(), 0U);
  click(8, 0);
  EXPECT_EQ(editor_.selected(), 1U);
}

TEST_F(AreaEditorTest, APressBesideEveryAreaUnselectsAndMovesTheMap) {
  add(AreaShape::circle({0, 0}, 2));
  EXPECT_TRUE(editor_.press(at(0, 0)));
  editor_.release(at(0, 0));
  EXPECT_FALSE(editor_.press(at(20, 0)));
  EXPECT_FALSE(editor_.selected());
  EXPECT_FALSE(editor_.doubleClick(at(20, 0)));
}

TEST_F(AreaEditorTest, TheToolForTheMapTouchesNoArea) {
  add(AreaShape::circle({0, 0}, 2));
  editor_.setTool(AreaTool::kMoveMap);
  EXPECT_FALSE(editor_.press(at(0, 0)));
  EXPECT_FALSE(editor_.doubleClick(at(0, 0)));
  EXPECT_FALSE(editor_.hit(at(0, 0)).area);
}

TEST_F(AreaEditorTest, HandlesAreTakenWithinAFewScreenPixelsWhateverTheZoom) {
  add(AreaShape::rectangle({0, 0}, 20, 10));
  click(0, 0);
  const auto taken = [this](double away, double pixel) {
    return editor_.hit({{10 + away, 0}, pixel}).handle.has_value();
  };
  EXPECT_TRUE(taken(0.69, 0.1));
  EXPECT_FALSE(taken(0.71, 0.1));
  EXPECT_TRUE(taken(0.069, 0.01));
  EXPECT_FALSE(taken(0.071, 0.01));
}

TEST_F(AreaEditorTest, HandlesOfTheSelectedAreaWorkWithADrawingTool) {
  add(AreaShape::rectangle({0, 0}, 20, 10));
  click(0, 0);
  editor_.setTool(AreaTool::kCircle);
  drag({10, 0}, {12, 0});
  ASSERT_EQ(shapes().size(), 1U);
  EXPECT_DOUBLE_EQ(shapes()[0].sizeX, 22);
  drag({0, 0}, {0, 2});  // the middle is no handle: draws
  EXPECT_EQ(shapes().size(), 2U);
}

TEST_F(AreaEditorTest, AStrokeIsOneStepBack) {
  add(AreaShape::circle({0, 0}, 2));
  editor_.press(at(0, 0));
  for (int i = 1; i <= 20; ++i) editor_.move(at(i, 0));
  editor_.release(at(20, 0));
  EXPECT_EQ(shapes()[0].centre, (AreaPoint{20, 0}));
  EXPECT_TRUE(editor_.undo());
  EXPECT_EQ(shapes()[0].centre, (AreaPoint{0, 0}));
  EXPECT_FALSE(editor_.undo());
}

TEST_F(AreaEditorTest, EveryChangeCanBeUndoneAndRedone) {
  editor_.setTool(AreaTool::kRectangle);
  std::vector<std::vector<AreaShape>> states{shapes()};
  const auto note = [&] { states.push_back(shapes()); };
  drag({0, 0}, {10, 6});
  note();
  editor_.nudge({1, 0});
  note();
  editor_.setTool(AreaTool::kPolygon);
  for (const AreaPoint& vertex : {AreaPoint{20, 0}, {25, 0}, {25, 4}, {20, 4}}) click(vertex.x, vertex.y);
  editor_.closePolygon();
  note();
  editor_.setTool(AreaTool::kSelect);
  editor_.doubleClick(at(22, 0));
  note();
  editor_.remove();  // the vertex
  note();
  editor_.remove();
  note();
  editor_.replaceAll(AreaList({AreaShape::circle({1, 1}, 1)}));
  note();
  for (std::size_t i = states.size() - 1; i-- > 0;) {
    EXPECT_TRUE(editor_.undo());
    EXPECT_EQ(shapes(), states[i]) << i;
  }
  EXPECT_FALSE(editor_.canUndo());
  for (std::size_t i = 1; i < states.size(); ++i) {
    EXPECT_TRUE(editor_.redo());
    EXPECT_EQ(shapes(), states[i]) << i;
  }
  EXPECT_FALSE(editor_.canRedo());
}

TEST_F(AreaEditorTest, ANewChangeEndsTheWayForward) {
  editor_.setTool(AreaTool::kCircle);
  drag({0, 0}, {5, 0});
  editor_.undo();
  EXPECT_TRUE(editor_.canRedo());
  drag({0, 0}, {0, 3});
  EXPECT_FALSE(editor_.redo());
  EXPECT_EQ(shapes().size(), 1U);
}

TEST_F(AreaEditorTest, TheWayBackIsBounded) {
  add(AreaShape::circle({0, 0}, 2));
  editor_.select(0);
  for (std::size_t i = 0; i < AreaEditor::kMostSteps + 10; ++i) editor_.nudge({1, 0});
  std::size_t steps = 0;
  while (editor_.undo()) ++steps;
  EXPECT_EQ(steps, AreaEditor::kMostSteps);
  EXPECT_EQ(shapes()[0].centre.x, 10.0);
}

TEST_F(AreaEditorTest, NoMoreAreasAreTakenThanARegionFileHolds) {
  std::vector<AreaShape> many(kMostRegions - 1, AreaShape::circle({100, 100}, 1));
  ASSERT_TRUE(editor_.replaceAll(AreaList(many)));
  EXPECT_FALSE(editor_.isFull());
  editor_.setTool(AreaTool::kCircle);
  drag({0, 0}, {5, 0});
  EXPECT_TRUE(editor_.isFull());
  EXPECT_EQ(shapes().size(), kMostRegions);
  for (const AreaTool tool :
       {AreaTool::kRectangle, AreaTool::kEllipse, AreaTool::kCircle, AreaTool::kPolygon}) {
    editor_.setTool(tool);
    drag({30, 0}, {40, 10});
    click(35, 30);
    EXPECT_FALSE(editor_.busy());
    EXPECT_EQ(shapes().size(), kMostRegions);
  }
  click(1, 1);  // into the circle
  EXPECT_EQ(editor_.selected(), kMostRegions - 1);
  many.resize(kMostRegions + 1);
  EXPECT_FALSE(editor_.replaceAll(AreaList(many)));
  EXPECT_EQ(shapes().size(), kMostRegions);
}

TEST_F(AreaEditorTest, ASelectionThatUndoTakesAwayIsForgotten) {
  editor_.setTool(AreaTool::kCircle);
  drag({0, 0}, {5, 0});
  ASSERT_EQ(editor_.selected(), 0U);
  editor_.undo();
  EXPECT_FALSE(editor_.selected());
  EXPECT_FALSE(editor_.remove());
  EXPECT_FALSE(editor_.nudge({1, 0}));
}

TEST_F(AreaEditorTest, RemovingAVertexOfATriangleRemovesTheTriangle) {
  add(AreaShape::polygon({{0, 0}, {10, 0}, {10, 10}, {0, 10}}));
  click(5, 3);
  click(10, 10);
  EXPECT_EQ(editor_.currentVertex(), 2U);
  EXPECT_TRUE(editor_.remove());
  EXPECT_EQ(shapes()[0], AreaShape::polygon({{0, 0}, {10, 0}, {0, 10}}));
  click(10, 0);
  EXPECT_EQ(editor_.currentVertex(), 1U);
  EXPECT_TRUE(editor_.remove());
  EXPECT_TRUE(shapes().empty());
}

TEST_F(AreaEditorTest, ADoubleClickOnAVertexRemovesItButNotThatOfATriangle) {
  add(AreaShape::polygon({{0, 0}, {10, 0}, {10, 10}, {0, 10}}));
  click(5, 3);
  EXPECT_TRUE(editor_.doubleClick(at(0, 10)));
  EXPECT_EQ(shapes()[0].vertices.size(), 3U);
  EXPECT_TRUE(editor_.doubleClick(at(10, 10)));
  EXPECT_EQ(shapes()[0].vertices.size(), 3U);
}

TEST_F(AreaEditorTest, SelectingGoesRoundByTheNumbers) {
  for (int i = 0; i < 3; ++i) add(AreaShape::circle({10.0 * i, 0}, 2));
  editor_.selectNext(true);
  EXPECT_EQ(editor_.selected(), 0U);
  editor_.selectNext(false);
  EXPECT_EQ(editor_.selected(), 2U);
  editor_.selectNext(true);
  EXPECT_EQ(editor_.selected(), 0U);
  editor_.selectNext(true);
  EXPECT_EQ(editor_.selected(), 1U);
  AreaEditor empty;
  empty.selectNext(true);
  EXPECT_FALSE(empty.selected());
}

}  // namespace
}  // namespace lumo
