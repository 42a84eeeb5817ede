// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "core/Log.h"

namespace lumo {
namespace {

TEST(LogTest, LinesStandInTheOrderTheyWereWritten) {
  Log log;
  log.add("first");
  log.add("second");
  ASSERT_EQ(log.lines().size(), 2u);
  EXPECT_EQ(log.lines()[0].text, "first");
  EXPECT_EQ(log.lines()[1].text, "second");
  EXPECT_LE(log.lines()[0].time, log.lines()[1].time);
}

TEST(LogTest, AFailureIsWrittenWithItsReasonAndFile) {
  Log log;
  log.add("Not added", Status(StatusCode::kNotFound, "is not there", "/data/a.uvx"));
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0].text, "Not added: /data/a.uvx: is not there");
}

TEST(LogTest, ASuccessIsNotWritten) {
  Log log;
  log.add("Not added", Status());
  EXPECT_TRUE(log.lines().empty());
}

TEST(LogTest, TheOldestLinesAreForgotten) {
  Log log;
  for (std::size_t i = 0; i < Log::kMaxLines + 3; ++i) log.add(std::to_string(i));
  ASSERT_EQ(log.lines().size(), Log::kMaxLines);
  EXPECT_EQ(log.lines().front().text, "3");
  EXPECT_EQ(log.lines().back().text, std::to_string(Log::kMaxLines + 2));
}

TEST(LogTest, AnEntryStaysOneLineOfBoundedLength) {
  Log log;
  log.add("a\nb\r\n" + std::string(2 * Log::kMaxLineBytes, 'c'));
  const std::string& text = log.lines()[0].text;
  EXPECT_EQ(text.size(), Log::kMaxLineBytes);
  EXPECT_EQ(text.substr(0, 6), "a b  c");
}

TEST(LogTest, TheListenerHearsOfEveryLineOnceItIsThere) {
  Log log;
  std::size_t seen = 0;
  log.setListener([&] { seen = log.lines().size(); });
  log.add("a");
  EXPECT_EQ(seen, 1u);
  log.add("b");
  EXPECT_EQ(seen, 2u);
}

TEST(LogTest, ALineBeginsWithItsLocalTime) {
  std::tm local{};
  local.tm_year = 131;
  local.tm_mon = 4;
  local.tm_mday = 6;
  local.tm_hour = 7;
  local.tm_min = 8;
  local.tm_sec = 9;
  local.tm_isdst = -1;
  const Log::Line line{std::chrono::system_clock::from_time_t(std::mktime(&local)), "text"};
  EXPECT_EQ(line.format(), "2031-05-06 07:08:09  text");
}

}  // namespace
}  // namespace lumo
