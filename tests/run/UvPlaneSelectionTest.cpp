// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "RunSample.h"
#include "run/UvPlaneSelection.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

TEST(UvPlaneSelectionTest, HasTheFilesTheirChosenRowsAndTheExtentsOfTheSurvey) {
  const test::TempFolder folder;
  test::UvxSample sample;
  sample.selections = {{1, {1e9}}, {2, {2e9}}};
  sample.points = {{3e-6, -7e-6}};
  test::writeUvx(folder.file("a.uvx"), sample);
  test::writeUvx(folder.file("b.uvx"), sample);
  UvxFileList list;
  ASSERT_EQ(list.AddFile(folder.file("a.uvx")), 1);
  ASSERT_EQ(list.AddFile(folder.file("b.uvx")), 1);
  ASSERT_EQ(list.changeCell(1), 1);  // the second selection of the first file
  ASSERT_EQ(list.changeCell(3), 1);  // and of the second
  const UvPlaneData data = uvPlaneSelection(list);
  ASSERT_EQ(data.names.count(), 2);
  EXPECT_EQ(data.names[1], folder.file("b.uvx"));
  EXPECT_TRUE(data.isSelected(1, 0));
  EXPECT_FALSE(data.isSelected(1, 1));
  EXPECT_EQ(data.sources[0], 5);
  EXPECT_EQ(data.minHz, 1e9);
  EXPECT_EQ(data.maxHz, 1e9);
  // u and v are stored in single precision.
  EXPECT_EQ(data.uExtent, 1e9 * static_cast<double>(3e-6F));
  EXPECT_EQ(data.vExtent, 1e9 * static_cast<double>(7e-6F));
}

}  // namespace
}  // namespace lumo
