// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "imaging/SelectionIndex.h"
#include "imaging/TestFile.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

/// Six groups whose selections are 1 -3 1 1 -3 1.
class SelectionIndexTest : public testing::Test {
 protected:
  SelectionIndexTest() {
    test::TestFile file({1e9});
    file.addSelection(-3, {2e9});
    for (const int id : {1, -3, 1, 1, -3, 1})
      file.add(1, 2, {{1, 0, 1}}).record.freqSel = static_cast<std::int8_t>(id);
    test::writeTestFile(file, folder_.file("a.uvx"));
    EXPECT_EQ(file_.Open(folder_.file("a.uvx"), AFile::kRead), 1);
  }
  test::TempFolder folder_;
  AUVXFile file_;
  SelectionIndex index_;
};

TEST_F(SelectionIndexTest, GivesTheSelectionOfEachGroup) {
  EXPECT_TRUE(index_.empty());
  index_.read(file_, nullptr);
  ASSERT_FALSE(index_.empty());
  EXPECT_EQ(index_[0], 1);
  EXPECT_EQ(index_[1], -3);
  EXPECT_EQ(index_[4], -3);
  EXPECT_EQ(index_[5], 1);
  index_.clear();
  EXPECT_TRUE(index_.empty());
}

TEST_F(SelectionIndexTest, FindsASelectionInAStretchWithoutItsEnd) {
  index_.read(file_, nullptr);
  EXPECT_TRUE(index_.holds(0, 2, {-3}));
  EXPECT_FALSE(index_.holds(0, 1, {-3}));
  EXPECT_FALSE(index_.holds(2, 4, {-3}));
  EXPECT_TRUE(index_.holds(4, 5, {-3}));
  EXPECT_FALSE(index_.holds(0, 6, {2}));
  EXPECT_TRUE(index_.holds(0, 1, {-3, 1}));
  EXPECT_FALSE(index_.holds(0, 6, {2, 3}));
  EXPECT_FALSE(index_.holds(0, 6, {}));
}

TEST_F(SelectionIndexTest, IsEmptyWhenCancelled) {
  const CancelFlag cancel{1};
  index_.read(file_, &cancel);
  EXPECT_TRUE(index_.empty());
}

}  // namespace
}  // namespace lumo
