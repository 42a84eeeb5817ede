// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <limits>
#include <string>

#include "core/MappedFile.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::TempFolder;
using test::writeFile;

std::string content(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 31 % 251);
  return bytes;
}

bool holds(const MappedFile& file, const std::string& bytes) {
  return file.size() == bytes.size() && std::memcmp(file.data(), bytes.data(), bytes.size()) == 0;
}

TEST(MappedFileTest, ShowsTheBytesOfTheFile) {
  const TempFolder folder;
  const std::string bytes = content(10001);
  writeFile(folder.file("x"), bytes);
  MappedFile file;
  ASSERT_TRUE(file.open(folder.file("x")).ok());
  EXPECT_TRUE(holds(file, bytes));
  file.close();
  EXPECT_EQ(file.data(), nullptr);
  EXPECT_EQ(file.size(), 0u);
}

TEST(MappedFileTest, PagesGivenBackAreReadAgainWhenTouched) {
  const TempFolder folder;
  const auto page = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
  const std::string bytes = content(static_cast<std::size_t>(5 * page + 7));
  writeFile(folder.file("x"), bytes);
  MappedFile file;
  ASSERT_TRUE(file.open(folder.file("x")).ok());
  file.release(0, file.size());
  EXPECT_TRUE(holds(file, bytes));
  file.release(1, 3 * page - 1);
  file.release(page, page);
  file.release(4 * page, page);
  file.release(0, std::numeric_limits<std::uint64_t>::max());
  EXPECT_TRUE(holds(file, bytes));
}

TEST(MappedFileTest, CopiesBytesOfTheFileAndRefusesThoseBehindItsEnd) {
  const TempFolder folder;
  const std::string bytes = content(10001);
  writeFile(folder.file("x"), bytes);
  MappedFile file;
  std::string copy(3000, ' ');
  EXPECT_EQ(file.readAt(0, copy.data(), copy.size()).code(), StatusCode::kReadFailed);
  ASSERT_TRUE(file.open(folder.file("x")).ok());
  ASSERT_TRUE(file.readAt(7001, copy.data(), copy.size()).ok());
  EXPECT_EQ(copy, bytes.substr(7001));
  const Status status = file.readAt(7002, copy.data(), copy.size());
  EXPECT_EQ(status.code(), StatusCode::kBadFormat);
  EXPECT_EQ(status.file(), folder.file("x"));
  EXPECT_TRUE(file.readAt(10001, copy.data(), 0).ok());
}

TEST(MappedFileTest, ReleasingOnAClosedFileDoesNothing) {
  const MappedFile file;
  file.release(0, 1 << 20);
  EXPECT_EQ(file.size(), 0u);
}

TEST(MappedFileTest, AnEmptyFileOpensWithoutBytes) {
  const TempFolder folder;
  writeFile(folder.file("empty"), "");
  MappedFile file;
  EXPECT_TRUE(file.open(folder.file("empty")).ok());
  EXPECT_EQ(file.size(), 0u);
  EXPECT_EQ(file.data(), nullptr);
}

TEST(MappedFileTest, OpeningAnotherFileReplacesTheFirst) {
  const TempFolder folder;
  writeFile(folder.file("a"), "first");
  writeFile(folder.file("b"), "second one");
  MappedFile file;
  ASSERT_TRUE(file.open(folder.file("a")).ok());
  ASSERT_TRUE(file.open(folder.file("b")).ok());
  EXPECT_TRUE(holds(file, "second one"));
}

TEST(MappedFileTest, AFailedOpenSaysWhyAndLeavesTheObjectClosed) {
  const TempFolder folder;
  writeFile(folder.file("a"), "first");
  MappedFile file;
  ASSERT_TRUE(file.open(folder.file("a")).ok());
  const Status missing = file.open(folder.file("none"));
  EXPECT_EQ(missing.code(), StatusCode::kNotFound);
  EXPECT_EQ(missing.file(), folder.file("none"));
  EXPECT_EQ(file.data(), nullptr);
  EXPECT_EQ(file.size(), 0u);
  EXPECT_EQ(file.open(folder.path()).code(), StatusCode::kReadFailed);
  ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
  EXPECT_EQ(file.open(folder.file("pipe")).code(), StatusCode::kReadFailed);
}

TEST(MappedFileTest, AFileCutShortWhileItIsReadGivesZerosAndSaysSo) {
  const TempFolder folder;
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  writeFile(folder.file("x"), std::string(8 * page, 'x'));
  MappedFile file;
  ASSERT_TRUE(file.open(folder.file("x")).ok());
  EXPECT_TRUE(file.check().ok());
  ASSERT_EQ(::truncate(folder.file("x").c_str(), static_cast<off_t>(page + 10)), 0);
  EXPECT_EQ(file.data()[page + 9], 'x');
  EXPECT_EQ(file.data()[page + 10], 0);
  EXPECT_EQ(file.data()[3 * page], 0);
  EXPECT_EQ(file.data()[8 * page - 1], 0);
  const Status status = file.check();
  EXPECT_EQ(status.code(), StatusCode::kReadFailed);
  EXPECT_EQ(status.file(), folder.file("x"));
  EXPECT_NE(status.message().find(std::to_string(8 * page)), std::string::npos) << status.message();
  EXPECT_NE(status.message().find(std::to_string(page + 10)), std::string::npos) << status.message();
}

TEST(MappedFileTest, BytesThatWereMissingAreToldOfEvenWhenTheFileHasItsSizeAgain) {
  const TempFolder folder;
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  writeFile(folder.file("x"), std::string(4 * page, 'x'));
  MappedFile file;
  ASSERT_TRUE(file.open(folder.file("x")).ok());
  ASSERT_EQ(::truncate(folder.file("x").c_str(), 0), 0);
  EXPECT_EQ(file.data()[2 * page], 0);
  ASSERT_EQ(::truncate(folder.file("x").c_str(), static_cast<off_t>(4 * page)), 0);
  EXPECT_EQ(file.check().code(), StatusCode::kReadFailed);
  // Another file in the same object starts anew.
  writeFile(folder.file("y"), "whole");
  ASSERT_TRUE(file.open(folder.file("y")).ok());
  EXPECT_TRUE(file.check().ok());
}

TEST(MappedFileTest, AFileCutShortDoesNotConcernTheOthers) {
  const TempFolder folder;
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  const std::string bytes = content(4 * page);
  writeFile(folder.file("a"), bytes);
  writeFile(folder.file("b"), bytes);
  MappedFile a, b;
  ASSERT_TRUE(a.open(folder.file("a")).ok());
  ASSERT_TRUE(b.open(folder.file("b")).ok());
  ASSERT_EQ(::truncate(folder.file("a").c_str(), 0), 0);
  EXPECT_EQ(a.data()[0], 0);
  EXPECT_TRUE(holds(b, bytes));
  EXPECT_TRUE(b.check().ok());
  EXPECT_FALSE(a.check().ok());
}

TEST(MappedFileTest, ABusErrorElsewhereEndsTheProgramAsBefore) {
  const TempFolder folder;
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  writeFile(folder.file("guarded"), "x");
  writeFile(folder.file("plain"), std::string(page, 'x'));
  const pid_t child = ::fork();
  if (child == 0) {
    ::signal(SIGBUS, SIG_DFL);
    MappedFile guarded;
    const bool open = guarded.open(folder.file("guarded")).ok();
    const int descriptor = ::open(folder.file("plain").c_str(), O_RDONLY);
    const auto* const bytes =
        static_cast<const volatile char*>(::mmap(nullptr, page, PROT_READ, MAP_SHARED, descriptor, 0));
    ::_exit(open && ::truncate(folder.file("plain").c_str(), 0) == 0 ? bytes[0] : 1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGBUS) << status;
}

}  // namespace
}  // namespace lumo
