// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "RunSample.h"
#include "run/FrequencyIdTable.h"
#include "run/UvxFileList.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::TempFolder;
using test::UvxSample;
using test::writeUvx;

TEST(FrequencyIdTableTest, HasARowForEverySelectionOfEveryFile) {
  const TempFolder folder;
  UvxSample sample;
  sample.selections = {{1, {1.4e9}}, {2, {1.5e9}}};
  writeUvx(folder.file("a.uvx"), sample);
  sample.selections = {{7, {1.6e9}}, {3, {1.7e9}}};
  writeUvx(folder.file("b.uvx"), sample);
  UvxFileList files;
  ASSERT_EQ(files.AddFile(folder.file("a.uvx")), 1);
  ASSERT_EQ(files.AddFile(folder.file("b.uvx")), 1);
  const FrequencyIdTable& table = files.idTable();
  ASSERT_EQ(table.rowCount(), 4);
  EXPECT_EQ(table.rowText(0), "File 1,  Fq. ID 1");
  EXPECT_EQ(table.rowText(1), "File 1,  Fq. ID 2");
  EXPECT_EQ(table.rowText(2), "File 2,  Fq. ID 7");
  EXPECT_EQ(table.rowText(3), "File 2,  Fq. ID 3");
}

TEST(FrequencyIdTableTest, ShowsACheckImageForSelectedAndUnselectedRows) {
  const TempFolder folder;
  UvxSample sample;
  sample.selections = {{1, {1.4e9}}, {2, {1.5e9}}};
  writeUvx(folder.file("a.uvx"), sample);
  UvxFileList files;
  ASSERT_EQ(files.AddFile(folder.file("a.uvx")), 1);
  EXPECT_EQ(files.idTable().checkImage(1), 10);
  ASSERT_EQ(files.changeCell(1), 1);
  EXPECT_EQ(files.idTable().checkImage(0), 10);
  EXPECT_EQ(files.idTable().checkImage(1), 11);
  EXPECT_EQ(files.idTable().rowCount(), 2) << "unselected rows stay";
  ASSERT_EQ(files.changeCell(1), 1);
  EXPECT_EQ(files.idTable().checkImage(1), 10);
}

TEST(FrequencyIdTableTest, ATableOfOneRowCannotBeToggled) {
  const TempFolder folder;
  writeUvx(folder.file("a.uvx"), UvxSample());
  UvxFileList files;
  ASSERT_EQ(files.AddFile(folder.file("a.uvx")), 1);
  EXPECT_FALSE(files.idTable().canToggle(0));
  EXPECT_EQ(files.changeCell(0), 0);
  EXPECT_EQ(files.idTable().checkImage(0), 12);
  EXPECT_EQ(files.frequencies().number, 1);
  files.setSelected(0, 0, false);
  EXPECT_EQ(files.idTable().checkImage(0), 13);
}

TEST(FrequencyIdTableTest, RowsOutsideCannotBeToggled) {
  const TempFolder folder;
  UvxSample sample;
  sample.selections = {{1, {1.4e9}}, {2, {1.5e9}}};
  writeUvx(folder.file("a.uvx"), sample);
  UvxFileList files;
  EXPECT_EQ(files.changeCell(0), 0);
  ASSERT_EQ(files.AddFile(folder.file("a.uvx")), 1);
  EXPECT_EQ(files.changeCell(-1), 0);
  EXPECT_EQ(files.changeCell(2), 0);
}

TEST(FrequencyIdTableTest, FindsTheCellOfEveryRowAmongManyFilesAndEmptyMasks) {
  VisibilityInputs inputs;
  inputs.selections = AObjArray<ABitArray>(2000);
  std::int64_t rows = 0;
  for (std::int32_t i = 0; i < 2000; ++i) {
    inputs.selections[i] = ABitArray(i % 3 == 0 ? 0 : i % 67);
    rows += inputs.selections[i].count();
  }
  FrequencyIdTable table(inputs);
  table.rebuild();
  ASSERT_EQ(table.rowCount(), rows);
  std::int64_t row = 0;
  for (std::int32_t i = 0; i < 2000; ++i)
    for (std::int32_t bit = 0; bit < inputs.selections[i].count(); ++bit, ++row) {
      const FrequencyIdTable::Cell cell = table.cellAt(row);
      ASSERT_EQ(cell.file, i) << row;
      ASSERT_EQ(cell.selection, bit) << row;
    }
}

TEST(FrequencyIdTableTest, BitsWithoutASelectionHaveRowsWithoutAnId) {
  const TempFolder folder;
  writeUvx(folder.file("a.uvx"), UvxSample());
  UvxFileList files;
  ASSERT_EQ(files.AddFile(folder.file("a.uvx")), 1);
  AObjArray<ABitArray> masks(2);
  masks[0] = ABitArray(2);
  masks[1] = ABitArray(1);
  files.replaceSelections(masks);
  ASSERT_EQ(files.idTable().rowCount(), 3);
  EXPECT_EQ(files.idTable().rowText(0), "File 1,  Fq. ID 1");
  EXPECT_EQ(files.idTable().rowText(1), "File 1,  Fq. ID ?");
  EXPECT_EQ(files.idTable().rowText(2), "File 2,  Fq. ID ?");
  EXPECT_EQ(files.changeCell(2), 1);
}

}  // namespace
}  // namespace lumo
