// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "AnalysisSample.h"
#include "analysis/ARPTrackerArray.h"

namespace lumo {
namespace {

int bits(const ABitMatrix& mask) {
  int count = 0;
  for (std::uint32_t row = 0; row < mask.rows(); ++row)
    for (std::uint32_t column = 0; column < mask.columns(); ++column) count += mask(row, column);
  return count;
}

TEST(ARPTrackerArrayTest, FillMatrixForItemSetsThePixelsOfThatAreaAndLeavesTheOthers) {
  const ARPTrackerArray trackers(
      AreaList({AreaShape::rectangle({0, 0}, 0.4, 0.2), AreaShape::rectangle({1.0, 0.125}, 1.1, 0.3)}));
  ABitMatrix mask(test::kRows, test::kColumns);
  EXPECT_EQ(trackers.FillMatrixForItem(0, mask, test::kRows, test::kColumns, test::sampleRange()), 1);
  EXPECT_EQ(bits(mask), 1);
  EXPECT_NE(mask(4, 8), 0);
  EXPECT_EQ(trackers.FillMatrixForItem(1, mask, test::kRows, test::kColumns, test::sampleRange()), 1);
  EXPECT_EQ(bits(mask), 7);
}

TEST(ARPTrackerArrayTest, AnAreaThatIsNotThereAndAMaskOfAnotherSizeChangeNothing) {
  const ARPTrackerArray trackers(AreaList({AreaShape::circle({0, 0}, 9)}));
  ABitMatrix mask(test::kRows, test::kColumns);
  EXPECT_EQ(trackers.FillMatrixForItem(1, mask, test::kRows, test::kColumns, test::sampleRange()), 0);
  EXPECT_EQ(trackers.FillMatrixForItem(0, mask, test::kRows + 1, test::kColumns, test::sampleRange()), 0);
  EXPECT_EQ(bits(mask), 0);
}

TEST(ARPTrackerArrayTest, EndWorkingKeepsAPolygonAndUndoesAnUnfinishedStroke) {
  ARPTrackerArray trackers;
  AreaEditor& editor = trackers.editor();
  editor.setTool(AreaTool::kPolygon);
  for (const AreaPoint& vertex : {AreaPoint{0, 0}, {5, 0}, {5, 4}}) {
    editor.press({vertex, 0.1});
    editor.release({vertex, 0.1});
  }
  trackers.EndWorking();
  ASSERT_EQ(trackers.areas().shapes().size(), 1U);
  EXPECT_EQ(trackers.areas().shapes()[0], AreaShape::polygon({{0, 0}, {5, 0}, {5, 4}}));
  editor.setTool(AreaTool::kCircle);
  editor.press({{20, 20}, 0.1});
  editor.move({{25, 20}, 0.1});
  trackers.EndWorking();
  EXPECT_FALSE(editor.busy());
  EXPECT_EQ(trackers.areas().shapes().size(), 1U);
  EXPECT_EQ(editor.selected(), 0U);
}

}  // namespace
}  // namespace lumo
