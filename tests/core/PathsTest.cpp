// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "core/Paths.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

TEST(PathsTest, TheFolderOfAPathKeepsItsTrailingSeparator) {
  EXPECT_EQ(getfPath("/data/run/x.uvx"), "/data/run/");
  EXPECT_EQ(getfPath("run/x.uvx"), "run/");
  EXPECT_EQ(getfPath("/x.uvx"), "/");
  EXPECT_EQ(getfPath("/data/run/"), "/data/run/");
}

TEST(PathsTest, ANameAloneHasNoFolder) {
  EXPECT_EQ(getfPath("x.uvx"), "");
  EXPECT_EQ(getfPath(""), "");
}

TEST(PathsTest, TheFileNameIsWhatFollowsTheLastSeparator) {
  EXPECT_EQ(fileName("/data/MFS^cln0.exm"), "MFS^cln0.exm");
  EXPECT_EQ(fileName("x.uvx"), "x.uvx");
  EXPECT_EQ(fileName("/data/"), "");
}

TEST(PathsTest, FolderAndNameTogetherAreThePath) {
  for (const std::string path : {"/a/b c/d[1]^.x", "d", "/", "", "//x", "a//b"})
    EXPECT_EQ(getfPath(path) + fileName(path), path);
}

TEST(PathsTest, ASeparatorIsAppendedUnlessThereIsOne) {
  EXPECT_EQ(withSeparator("/data"), "/data/");
  EXPECT_EQ(withSeparator("/data/"), "/data/");
  EXPECT_EQ(withSeparator("/"), "/");
  EXPECT_EQ(withSeparator("0"), "0/");
}

TEST(PathsTest, AnEmptyFolderStaysEmptySoThatItDoesNotBecomeTheRoot) {
  EXPECT_EQ(withSeparator(""), "");
}

TEST(PathsTest, TheFolderOfTheExecutableHoldsThisTestProgram) {
  const std::string folder = getExePath();
  ASSERT_FALSE(folder.empty());
  EXPECT_EQ(folder.back(), kDirSeparator);
  EXPECT_TRUE(test::exists(folder + "lumo_core_tests"));
}

}  // namespace
}  // namespace lumo
