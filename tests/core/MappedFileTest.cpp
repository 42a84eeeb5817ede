// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <sys/stat.h>
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

}  // namespace
}  // namespace lumo
