// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <filesystem>

#include "io/Profile.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::readFile;
using test::TempFolder;
using test::writeFile;

TEST(ProfileTest, AMissingFileGivesTheFallbacksAndIsNoFailure) {
  const TempFolder folder;
  Profile profile(folder.file("none.ini"));
  EXPECT_EQ(profile.GetProfileInt("S", "ITER", 1000), 1000);
  EXPECT_EQ(profile.GetProfileString("S", "GAIN", "0.1"), "0.1");
  EXPECT_TRUE(profile.status().ok());
  EXPECT_FALSE(test::exists(folder.file("none.ini")));
}

TEST(ProfileTest, WrittenValuesAreReadBackByAnotherObject) {
  const TempFolder folder;
  const std::string path = folder.file("a.ini");
  Profile writer(path);
  EXPECT_EQ(writer.WriteProfileInt("S", "N", -7), 1);
  EXPECT_EQ(writer.WriteProfileString("S", "NAME", "abc"), 1);
  EXPECT_EQ(writer.WriteProfileString("OTHER", "NAME", "xyz"), 1);
  Profile reader(path);
  EXPECT_EQ(reader.GetProfileInt("S", "N", 0), -7);
  EXPECT_EQ(reader.GetProfileString("S", "NAME", ""), "abc");
  EXPECT_EQ(reader.GetProfileString("OTHER", "NAME", ""), "xyz");
}

TEST(ProfileTest, EveryWriteReachesTheFileAtOnce) {
  const TempFolder folder;
  Profile profile(folder.file("a.ini"));
  ASSERT_EQ(profile.WriteProfileInt("S", "ITER", 5), 1);
  EXPECT_EQ(readFile(folder.file("a.ini")), "[S]\nITER=5\n");
}

TEST(ProfileTest, AnEmptyValueIsNotAMissingKey) {
  const TempFolder folder;
  Profile writer(folder.file("a.ini"));
  ASSERT_EQ(writer.WriteProfileString("S", "PREFIX", ""), 1);
  Profile reader(folder.file("a.ini"));
  EXPECT_EQ(reader.GetProfileString("S", "PREFIX", "MFS"), "");
}

class ProfileRoundTrip : public testing::TestWithParam<std::string> {};

TEST_P(ProfileRoundTrip, KeepsEveryByteOfTheValue) {
  const TempFolder folder;
  Profile writer(folder.file("a.ini"));
  ASSERT_EQ(writer.WriteProfileString("S", "FIRST", GetParam()), 1) << writer.status().text();
  ASSERT_EQ(writer.WriteProfileString("S", "AFTER", "untouched"), 1);
  Profile reader(folder.file("a.ini"));
  EXPECT_EQ(reader.GetProfileString("S", "FIRST", "missing"), GetParam());
  EXPECT_EQ(reader.GetProfileString("S", "AFTER", "missing"), "untouched");
}

INSTANTIATE_TEST_SUITE_P(FileNames, ProfileRoundTrip,
                         testing::Values("  leading", "trailing \t", " ", "\t", "\"", "\"\"", "\"quoted\"",
                                         "\" quoted \"", "\"open", "close\"", "/a/MFS^cln0.exm", ";comment",
                                         "#comment", "a;b#c", "[section]", "KEY=value", "=", "<<<END",
                                         "/data/\xC3\xA4\xE2\x82\xAC.uvx", "/data/\xFF\xFE\x80.uvx",
                                         "\xEF\xBB\xBFx", "a\\nb", "%20", "'x'", "x\x01\x7F"));

TEST(ProfileTest, AValueWithALineEndIsRefusedAndTheOldOneStays) {
  const TempFolder folder;
  Profile profile(folder.file("a.ini"));
  ASSERT_EQ(profile.WriteProfileString("S", "UVX0", "old"), 1);
  const std::string before = readFile(folder.file("a.ini"));
  for (const std::string& value : {std::string("a\nb"), std::string("a\rb"), std::string("a\0b", 3)}) {
    EXPECT_EQ(profile.WriteProfileString("S", "UVX0", value), 0);
    EXPECT_EQ(profile.status().code(), StatusCode::kInvalidValue);
  }
  EXPECT_EQ(readFile(folder.file("a.ini")), before);
  EXPECT_EQ(profile.GetProfileString("S", "UVX0", ""), "old");
}

TEST(ProfileTest, AValueThatIsNoNumberReadsAsZero) {
  const TempFolder folder;
  writeFile(folder.file("a.ini"), "[S]\r\nITER = abc\r\nORDER = 3 terms\r\n");
  Profile profile(folder.file("a.ini"));
  EXPECT_EQ(profile.GetProfileInt("S", "ITER", 1000), 0);
  EXPECT_EQ(profile.GetProfileInt("S", "ORDER", 1000), 3);
}

TEST(ProfileTest, CommentsAndStrangeKeysSurviveAWrite) {
  const TempFolder folder;
  writeFile(folder.file("a.ini"), "; mine\n[S]\nSOMETHING=1\n");
  Profile profile(folder.file("a.ini"));
  ASSERT_EQ(profile.WriteProfileInt("S", "ITER", 2), 1);
  const std::string text = readFile(folder.file("a.ini"));
  EXPECT_NE(text.find("; mine"), std::string::npos);
  EXPECT_NE(text.find("SOMETHING=1"), std::string::npos);
}

TEST(ProfileTest, AFileWithNulBytesIsRefusedAndNotWrittenTo) {
  const TempFolder folder;
  const std::string content("[S]\nITER=5\0\n", 12);
  writeFile(folder.file("a.ini"), content);
  Profile profile(folder.file("a.ini"));
  EXPECT_EQ(profile.GetProfileInt("S", "ITER", 1000), 1000);
  EXPECT_EQ(profile.status().code(), StatusCode::kBadFormat);
  EXPECT_EQ(profile.WriteProfileInt("S", "ITER", 7), 0);
  EXPECT_EQ(readFile(folder.file("a.ini")), content);
}

TEST(ProfileTest, AHugeFileIsRefusedAndNotWrittenTo) {
  const TempFolder folder;
  const std::string path = folder.file("a.ini");
  writeFile(path, "[S]\nITER=5\n");
  std::filesystem::resize_file(path, std::uintmax_t{1} << 40);
  Profile profile(path);
  EXPECT_EQ(profile.GetProfileInt("S", "ITER", 1000), 1000);
  EXPECT_EQ(profile.status().code(), StatusCode::kBadFormat);
  EXPECT_EQ(profile.WriteProfileInt("S", "ITER", 7), 0);
  EXPECT_EQ(std::filesystem::file_size(path), std::uintmax_t{1} << 40);
}

TEST(ProfileTest, AWriteThatWouldMakeTheFileUnreadableIsRefused) {
  const TempFolder folder;
  Profile profile(folder.file("a.ini"));
  ASSERT_EQ(profile.WriteProfileInt("S", "ITER", 7), 1);
  EXPECT_EQ(profile.WriteProfileString("S", "BIG", std::string(Profile::kMaxBytes, 'x')), 0);
  Profile reader(folder.file("a.ini"));
  EXPECT_EQ(reader.GetProfileInt("S", "ITER", 0), 7);
}

TEST(ProfileTest, AnUnwritablePlaceGivesZeroAndAReason) {
  const TempFolder folder;
  Profile profile(folder.file("absent/a.ini"));
  EXPECT_EQ(profile.WriteProfileInt("S", "ITER", 7), 0);
  EXPECT_EQ(profile.status().code(), StatusCode::kWriteFailed);
}

TEST(ProfileTest, HeldWritesReachTheFileTogether) {
  const TempFolder folder;
  Profile profile(folder.file("a.ini"));
  profile.hold();
  EXPECT_EQ(profile.WriteProfileInt("S", "A", 1), 1);
  EXPECT_EQ(profile.WriteProfileInt("S", "B", 2), 1);
  EXPECT_FALSE(test::exists(folder.file("a.ini")));
  EXPECT_EQ(profile.flush(), 1);
  EXPECT_EQ(readFile(folder.file("a.ini")), "[S]\nA=1\nB=2\n");
}

}  // namespace
}  // namespace lumo
