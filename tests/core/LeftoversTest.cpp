// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "core/AFile.h"
#include "core/Leftovers.h"
#include "core/PendingFile.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::TempFolder;
using test::writeFile;
using testing::UnorderedElementsAre;

constexpr const char* kLeftover = ".lumo-0123456789abcdef.tmp";

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    names.push_back(entry.path().filename());
  return names;
}

TEST(LeftoversTest, ATemporaryFileThatNobodyWritesIsRemoved) {
  const TempFolder folder;
  writeFile(folder.file(kLeftover), "half");
  EXPECT_EQ(removeLeftovers(folder.path()), 1);
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(LeftoversTest, OtherNamesFoldersAndLinksStay) {
  const TempFolder folder;
  const std::vector<std::string> others = {".lumo-0123456789abcdef.tmp2", ".lumo-0123456789abcde.tmp",
                                           ".lumo-0123456789ABCDEF.tmp",  "lumo-0123456789abcdef.tmp",
                                           ".lumo-0123456789abcdeg.tmp",  ".lumo-.tmp"};
  for (const std::string& name : others) writeFile(folder.file(name), "of somebody else");
  std::filesystem::create_directory(folder.file(".lumo-1111111111111111.tmp"));
  std::filesystem::create_symlink(folder.file(others[0]), folder.file(".lumo-2222222222222222.tmp"));
  const auto before = namesIn(folder.path());
  EXPECT_EQ(removeLeftovers(folder.path()), 0);
  EXPECT_EQ(namesIn(folder.path()), before);
}

TEST(LeftoversTest, FilesOfFoldersBelowStay) {
  const TempFolder folder;
  std::filesystem::create_directory(folder.file("below"));
  writeFile(folder.file(std::string("below/") + kLeftover), "half");
  EXPECT_EQ(removeLeftovers(folder.path()), 0);
}

TEST(LeftoversTest, AFolderThatIsNotThereHasNone) {
  EXPECT_EQ(removeLeftovers("/nowhere/at/all/"), 0);
}

TEST(LeftoversTest, WhatIsBeingWrittenStays) {
  const TempFolder folder;
  AFile file;
  ASSERT_EQ(file.Open(folder.file("x"), AFile::kCreate), 1);
  PendingFile created(folder.file("y"));
  ASSERT_TRUE(created.create().ok());
  EXPECT_EQ(removeLeftovers(folder.path()), 0);
  ASSERT_EQ(file.Write("whole", 5), 1);
  EXPECT_EQ(file.Close(), 1);
  EXPECT_TRUE(created.commit().ok());
  EXPECT_THAT(namesIn(folder.path()), UnorderedElementsAre("x", "y"));
}

TEST(LeftoversTest, WhatAProcessWritesStaysUntilItIsKilled) {
  const TempFolder folder;
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  const pid_t writer = ::fork();
  if (writer == 0) {
    AFile file;
    const bool open = file.Open(folder.file("x"), AFile::kCreate) != 0 && file.Write("half", 4) != 0;
    [[maybe_unused]] const auto told = ::write(ready[1], open ? "y" : "n", 1);
    for (;;) ::pause();
  }
  char answer = 'n';
  ASSERT_EQ(::read(ready[0], &answer, 1), 1);
  EXPECT_EQ(answer, 'y');
  EXPECT_EQ(removeLeftovers(folder.path()), 0);
  EXPECT_EQ(namesIn(folder.path()).size(), 1u);
  ::kill(writer, SIGKILL);
  ::waitpid(writer, nullptr, 0);
  EXPECT_EQ(removeLeftovers(folder.path()), 1);
  ::close(ready[0]);
  ::close(ready[1]);
}

TEST(LeftoversTest, WritingATextFileCleansItsFolder) {
  const TempFolder folder;
  writeFile(folder.file(kLeftover), "half");
  ASSERT_TRUE(writeWholeFile(folder.file("x"), "text").ok());
  EXPECT_THAT(namesIn(folder.path()), UnorderedElementsAre("x"));
}

}  // namespace
}  // namespace lumo
