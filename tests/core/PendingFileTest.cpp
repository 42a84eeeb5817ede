// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "core/Paths.h"
#include "core/PendingFile.h"
#include "support/FullDisk.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::exists;
using test::readFile;
using test::TempFolder;
using test::writeFile;

TEST(PendingFileTest, TheTemporaryFileLiesInTheTargetsFolderUnderARecognisableName) {
  const PendingFile pending("/some/where/x.exm");
  EXPECT_EQ(getfPath(pending.path()), "/some/where/");
  EXPECT_TRUE(fileName(pending.path()).starts_with(PendingFile::kTemporaryPrefix));
  EXPECT_TRUE(pending.path().ends_with(".tmp"));
  EXPECT_EQ(pending.target(), "/some/where/x.exm");
  EXPECT_EQ(getfPath(PendingFile("x.exm").path()), "");
}

TEST(PendingFileTest, EveryTemporaryNameIsAnother) {
  std::set<std::string> names;
  for (int i = 0; i < 1000; ++i) names.insert(PendingFile("x").path());
  EXPECT_EQ(names.size(), 1000u);
}

TEST(PendingFileTest, CommitReplacesAnOldFile) {
  const TempFolder folder;
  writeFile(folder.file("x"), "old");
  std::string temporary;
  {
    PendingFile pending(folder.file("x"));
    temporary = pending.path();
    writeFile(temporary, "new");
    EXPECT_EQ(readFile(folder.file("x")), "old");
    EXPECT_TRUE(pending.commit().ok());
  }
  EXPECT_EQ(readFile(folder.file("x")), "new");
  EXPECT_FALSE(exists(temporary));
}

TEST(PendingFileTest, WithoutCommitTheTemporaryFileIsRemovedAndTheOldOneStays) {
  const TempFolder folder;
  writeFile(folder.file("x"), "old");
  std::string temporary;
  {
    const PendingFile pending(folder.file("x"));
    temporary = pending.path();
    writeFile(temporary, "half");
  }
  EXPECT_FALSE(exists(temporary));
  EXPECT_EQ(readFile(folder.file("x")), "old");
}

TEST(PendingFileTest, ACommitThatFailsSaysWhyAndRemovesTheTemporaryFile) {
  const TempFolder folder;
  std::filesystem::create_directory(folder.file("x"));
  std::string temporary;
  {
    PendingFile pending(folder.file("x"));
    temporary = pending.path();
    writeFile(temporary, "new");
    const Status status = pending.commit();
    EXPECT_EQ(status.code(), StatusCode::kWriteFailed);
    EXPECT_EQ(status.file(), folder.file("x"));
  }
  EXPECT_FALSE(exists(temporary));
}

TEST(PendingFileTest, CreateMakesAnEmptyFileThatNobodyElseHas) {
  const TempFolder folder;
  PendingFile pending(folder.file("x"));
  const std::string first = pending.path();
  writeFile(first, "of somebody else");
  ASSERT_TRUE(pending.create().ok());
  EXPECT_NE(pending.path(), first);
  EXPECT_EQ(readFile(pending.path()), "");
  EXPECT_EQ(readFile(first), "of somebody else");
}

TEST(PendingFileTest, ATooLongNameIsRefusedBeforeAnythingIsWrittenAndBothLengthsAreTold) {
  const TempFolder folder;
  PendingFile pending(folder.file(std::string(256, 'n')));
  const Status status = pending.create();
  EXPECT_EQ(status.code(), StatusCode::kWriteFailed);
  EXPECT_NE(status.message().find("256"), std::string::npos) << status.message();
  EXPECT_NE(status.message().find("255"), std::string::npos) << status.message();
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(PendingFileTest, TwoWritersOfOneTargetDoNotDisturbEachOther) {
  const TempFolder folder;
  PendingFile first(folder.file("x"));
  PendingFile second(folder.file("x"));
  writeFile(first.path(), "first");
  writeFile(second.path(), "second");
  EXPECT_TRUE(first.commit().ok());
  EXPECT_EQ(readFile(folder.file("x")), "first");
  EXPECT_TRUE(second.commit().ok());
  EXPECT_EQ(readFile(folder.file("x")), "second");
}

TEST(PendingFileTest, WriteWholeFileWritesTheContentAsItStands) {
  const TempFolder folder;
  const std::string content("1\n\0\r\n", 5);
  EXPECT_TRUE(writeWholeFile(folder.file("x"), content).ok());
  EXPECT_EQ(readFile(folder.file("x")), content);
  EXPECT_TRUE(writeWholeFile(folder.file("empty"), "").ok());
  EXPECT_EQ(readFile(folder.file("empty")), "");
}

TEST(PendingFileTest, WriteWholeFileOnAFullDiskKeepsTheOldContent) {
  const TempFolder folder;
  writeFile(folder.file("x"), "old");
  Status status;
  {
    const test::FullDisk full(8);
    status = writeWholeFile(folder.file("x"), "more than eight bytes");
  }
  EXPECT_EQ(status.code(), StatusCode::kWriteFailed);
  EXPECT_EQ(readFile(folder.file("x")), "old");
}

}  // namespace
}  // namespace lumo
