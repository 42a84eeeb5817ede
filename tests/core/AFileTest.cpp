// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/AFile.h"
#include "support/FullDisk.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::exists;
using test::readFile;
using test::TempFolder;
using test::writeFile;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::vector<std::string> namesIn(const TempFolder& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
    names.push_back(entry.path().filename().string());
  return names;
}

int create(const std::string& name, const std::string& content) {
  AFile file;
  return file.Open(name, AFile::kCreate) != 0 && file.Write(content.data(), content.size()) != 0
             ? file.Close()
             : 0;
}

TEST(AFileTest, WhatWasWrittenReadsBack) {
  const TempFolder folder;
  const std::string content("a\0b\r\n\xFF", 6);
  ASSERT_EQ(create(folder.file("x.bin"), content), 1);
  AFile file;
  ASSERT_EQ(file.Open(folder.file("x.bin"), AFile::kRead), 1);
  EXPECT_EQ(file.remaining(), 6u);
  std::string read(6, ' ');
  EXPECT_EQ(file.Read(read.data(), 4), 1);
  EXPECT_EQ(file.remaining(), 2u);
  EXPECT_EQ(file.Read(read.data() + 4, 2), 1);
  EXPECT_EQ(read, content);
  EXPECT_EQ(file.remaining(), 0u);
  EXPECT_EQ(file.Close(), 1);
}

TEST(AFileTest, ReadingMoreThanIsLeftFailsAndSaysSo) {
  const TempFolder folder;
  writeFile(folder.file("x.bin"), "abc");
  AFile file;
  ASSERT_EQ(file.Open(folder.file("x.bin"), AFile::kRead), 1);
  char bytes[8];
  EXPECT_EQ(file.Read(bytes, 4), 0);
  EXPECT_EQ(file.status().code(), StatusCode::kBadFormat);
  EXPECT_EQ(file.status().file(), folder.file("x.bin"));
}

TEST(AFileTest, ReadingOrWritingNothingSucceedsOnAnOpenFile) {
  const TempFolder folder;
  AFile file;
  ASSERT_EQ(file.Open(folder.file("x.bin"), AFile::kCreate), 1);
  EXPECT_EQ(file.Write(nullptr, 0), 1);
  ASSERT_EQ(file.Close(), 1);
  ASSERT_EQ(file.Open(folder.file("x.bin"), AFile::kRead), 1);
  EXPECT_EQ(file.Read(nullptr, 0), 1);
}

TEST(AFileTest, AMissingFileIsNotFound) {
  const TempFolder folder;
  AFile file;
  EXPECT_EQ(file.Open(folder.file("none.bin"), AFile::kRead), 0);
  EXPECT_EQ(file.status().code(), StatusCode::kNotFound);
  EXPECT_EQ(file.Open("", AFile::kRead), 0);
}

TEST(AFileTest, AFolderOrANamedPipeIsNotOpenedAndNothingWaits) {
  const TempFolder folder;
  AFile file;
  EXPECT_EQ(file.Open(folder.path(), AFile::kRead), 0);
  EXPECT_EQ(file.status().code(), StatusCode::kReadFailed);
  ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
  EXPECT_EQ(file.Open(folder.file("pipe"), AFile::kRead), 0);
  EXPECT_EQ(file.Open("/dev/zero", AFile::kRead), 0);
}

TEST(AFileTest, AFileOpenForOneDirectionRefusesTheOther) {
  const TempFolder folder;
  char byte = 'x';
  AFile file;
  EXPECT_EQ(file.Read(&byte, 1), 0);
  EXPECT_EQ(file.Write(&byte, 1), 0);
  ASSERT_EQ(file.Open(folder.file("x.bin"), AFile::kCreate), 1);
  EXPECT_EQ(file.Read(&byte, 1), 0);
  EXPECT_EQ(file.status().code(), StatusCode::kReadFailed);
  ASSERT_EQ(file.Close(), 1);
  ASSERT_EQ(file.Open(folder.file("x.bin"), AFile::kRead), 1);
  EXPECT_EQ(file.Write(&byte, 1), 0);
  EXPECT_EQ(file.status().code(), StatusCode::kWriteFailed);
}

TEST(AFileTest, RewindGoesBackToTheFirstByteOfACreatedFile) {
  const TempFolder folder;
  AFile file;
  ASSERT_EQ(file.Open(folder.file("x.bin"), AFile::kCreate), 1);
  ASSERT_EQ(file.Write("abcdef", 6), 1);
  ASSERT_EQ(file.Rewind(), 1);
  ASSERT_EQ(file.Write("XY", 2), 1);
  ASSERT_EQ(file.Close(), 1);
  EXPECT_EQ(readFile(folder.file("x.bin")), "XYcdef");
}

TEST(AFileTest, ACreatedFileAppearsUnderItsNameOnlyWhenItIsClosed) {
  const TempFolder folder;
  writeFile(folder.file("x.bin"), "old");
  AFile file;
  ASSERT_EQ(file.Open(folder.file("x.bin"), AFile::kCreate), 1);
  ASSERT_EQ(file.Write("new", 3), 1);
  EXPECT_EQ(readFile(folder.file("x.bin")), "old");
  ASSERT_EQ(file.Close(), 1);
  EXPECT_EQ(readFile(folder.file("x.bin")), "new");
  EXPECT_THAT(namesIn(folder), ElementsAre("x.bin"));
}

TEST(AFileTest, ACreatedFileThatIsNeverClosedLeavesTheOldOneAndNoTemporary) {
  const TempFolder folder;
  writeFile(folder.file("x.bin"), "old");
  {
    AFile file;
    ASSERT_EQ(file.Open(folder.file("x.bin"), AFile::kCreate), 1);
    ASSERT_EQ(file.Write("half", 4), 1);
  }
  EXPECT_EQ(readFile(folder.file("x.bin")), "old");
  EXPECT_THAT(namesIn(folder), ElementsAre("x.bin"));
}

TEST(AFileTest, OpeningAnotherFileGivesUpTheCreatedOne) {
  const TempFolder folder;
  AFile file;
  ASSERT_EQ(file.Open(folder.file("first"), AFile::kCreate), 1);
  ASSERT_EQ(file.Write("half", 4), 1);
  ASSERT_EQ(file.Open(folder.file("second"), AFile::kCreate), 1);
  ASSERT_EQ(file.Close(), 1);
  EXPECT_THAT(namesIn(folder), ElementsAre("second"));
}

TEST(AFileTest, AFailureThroughAFullDiskLeavesTheOldFileAndNoTemporary) {
  const TempFolder folder;
  writeFile(folder.file("x.bin"), "old");
  const std::string large(1 << 20, 'n');
  int closed = 1;
  Status status;
  {
    const test::FullDisk full(4096);
    AFile file;
    ASSERT_EQ(file.Open(folder.file("x.bin"), AFile::kCreate), 1);
    EXPECT_EQ(file.Write(large.data(), large.size()), 0);
    closed = file.Close();
    status = file.status();
  }
  EXPECT_EQ(closed, 0);
  EXPECT_EQ(status.code(), StatusCode::kWriteFailed);
  EXPECT_EQ(status.file(), folder.file("x.bin"));
  EXPECT_EQ(readFile(folder.file("x.bin")), "old");
  EXPECT_THAT(namesIn(folder), ElementsAre("x.bin"));
}

TEST(AFileTest, ADiskFoundFullOnlyWhenTheBufferIsWrittenOutFailsTheClose) {
  const TempFolder folder;
  int closed = 1;
  Status status;
  {
    const test::FullDisk full(10);
    AFile file;
    ASSERT_EQ(file.Open(folder.file("x.bin"), AFile::kCreate), 1);
    EXPECT_EQ(file.Write("twelve bytes", 12), 1);  // still in the stream's buffer
    closed = file.Close();
    status = file.status();
  }
  EXPECT_EQ(closed, 0);
  EXPECT_EQ(status.code(), StatusCode::kWriteFailed);
  EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST(AFileTest, ADiskFoundFullOnGoingBackToTheFirstByteIsTheReasonTold) {
  const TempFolder folder;
  int rewound = 1;
  Status status;
  {
    const test::FullDisk full(10);
    AFile file;
    ASSERT_EQ(file.Open(folder.file("x.bin"), AFile::kCreate), 1);
    EXPECT_EQ(file.Write("twelve bytes", 12), 1);  // still in the stream's buffer
    rewound = file.Rewind();
    status = file.status();
    EXPECT_EQ(file.Close(), 0);
  }
  EXPECT_EQ(rewound, 0);
  EXPECT_THAT(status.text(), HasSubstr("cannot be written: File too large"));
  EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST(AFileTest, AFileInAFolderThatIsNotThereCannotBeCreated) {
  const TempFolder folder;
  AFile file;
  EXPECT_EQ(file.Open(folder.file("none/x.bin"), AFile::kCreate), 0);
  EXPECT_EQ(file.status().code(), StatusCode::kWriteFailed);
  EXPECT_THAT(file.status().text(), HasSubstr("none/x.bin"));
}

TEST(AFileTest, AFolderThatVanishesBetweenOpenAndCloseFailsTheClose) {
  const TempFolder folder;
  std::filesystem::create_directory(folder.file("work"));
  AFile file;
  ASSERT_EQ(file.Open(folder.file("work/x.bin"), AFile::kCreate), 1);
  ASSERT_EQ(file.Write("abc", 3), 1);
  std::filesystem::remove_all(folder.file("work"));
  EXPECT_EQ(file.Close(), 0);
  EXPECT_EQ(file.status().code(), StatusCode::kWriteFailed);
  EXPECT_FALSE(exists(folder.file("work")));
}

TEST(AFileTest, AFolderInTheWayOfTheNameFailsTheCloseAndStays) {
  const TempFolder folder;
  std::filesystem::create_directory(folder.file("x.bin"));
  EXPECT_EQ(create(folder.file("x.bin"), "abc"), 0);
  EXPECT_TRUE(std::filesystem::is_directory(folder.file("x.bin")));
  EXPECT_THAT(namesIn(folder), ElementsAre("x.bin"));
}

TEST(AFileTest, NamesOfUpTo255BytesAndWithAnyCharactersAreTakenAsTheyStand) {
  const TempFolder folder;
  for (const std::string& name :
       {std::string("MFS^cln0.exm"), std::string("a[1:2].bin"), std::string("!x+y(2)"),
        std::string("with space  two"), std::string("Квазар 3C 84°.bin"), std::string(255, 'n')}) {
    ASSERT_EQ(create(folder.file(name), name), 1) << name;
    EXPECT_EQ(readFile(folder.file(name)), name);
    AFile file;
    EXPECT_EQ(file.Open(folder.file(name), AFile::kRead), 1) << name;
  }
  EXPECT_EQ(namesIn(folder).size(), 6u);
}

TEST(AFileTest, ANameOver255BytesFailsAndLeavesNothing) {
  const TempFolder folder;
  EXPECT_EQ(create(folder.file(std::string(256, 'n')), "abc"), 0);
  EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST(AFileTest, AFileThatGrowsWhileOpenHasNothingRemainingBeyondItsOldEnd) {
  const TempFolder folder;
  writeFile(folder.file("x.bin"), "ab");
  AFile file;
  ASSERT_EQ(file.Open(folder.file("x.bin"), AFile::kRead), 1);
  std::ofstream(folder.file("x.bin"), std::ios::app) << "cdef";
  char bytes[6];
  ASSERT_EQ(file.Read(bytes, 6), 1);
  EXPECT_EQ(file.remaining(), 0u);
}

TEST(AFileTest, ClosingAFileThatIsNotOpenSucceeds) {
  AFile file;
  EXPECT_EQ(file.Close(), 1);
}

TEST(AFileTest, BytesAnywhereAreReadWithoutMovingThePosition) {
  const test::TempFolder folder;
  test::writeFile(folder.file("a"), "0123456789");
  AFile file;
  char bytes[4] = {};
  EXPECT_EQ(file.readAt(0, bytes, 1).code(), StatusCode::kReadFailed) << "not open";
  ASSERT_EQ(file.Open(folder.file("a"), AFile::kRead), 1);
  ASSERT_TRUE(file.readAt(6, bytes, 4).ok());
  EXPECT_EQ(std::string(bytes, 4), "6789");
  ASSERT_EQ(file.Read(bytes, 2), 1);
  EXPECT_EQ(std::string(bytes, 2), "01");
  const Status beyond = file.readAt(7, bytes, 4);
  EXPECT_EQ(beyond.code(), StatusCode::kBadFormat);
  EXPECT_EQ(beyond.file(), folder.file("a"));
}

}  // namespace
}  // namespace lumo
