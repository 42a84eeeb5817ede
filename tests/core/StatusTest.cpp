// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "core/Status.h"

namespace lumo {
namespace {

TEST(StatusTest, ADefaultStatusIsOk) {
  const Status status;
  EXPECT_TRUE(status.ok());
  EXPECT_EQ(status.text(), "ok");
}

TEST(StatusTest, TheTextNamesTheFileBeforeTheMessage) {
  const Status status(StatusCode::kBadFormat, "ends before it should", "a b.uvx");
  EXPECT_FALSE(status.ok());
  EXPECT_EQ(status.text(), "a b.uvx: ends before it should");
  EXPECT_EQ(Status(StatusCode::kNoData, "no usable visibility").text(), "no usable visibility");
}

TEST(StatusTest, AboutNamesAFileOnlyWhereNoneIsNamedYet) {
  const Status bare(StatusCode::kReadFailed, "cannot be read");
  EXPECT_EQ(bare.about("x").file(), "x");
  EXPECT_EQ(bare.about("x").about("y").file(), "x");
  EXPECT_EQ(bare.about("x").code(), StatusCode::kReadFailed);
  EXPECT_EQ(bare.about("x").message(), "cannot be read");
}

TEST(StatusTest, EveryCodeHasATextFormOfItsOwn) {
  std::set<std::string> names;
  for (int i = 0; i <= static_cast<int>(StatusCode::kOutOfMemory); ++i)
    names.insert(statusCodeName(static_cast<StatusCode>(i)));
  EXPECT_EQ(names.size(), static_cast<std::size_t>(StatusCode::kOutOfMemory) + 1);
  EXPECT_EQ(names.count("unknown"), 0u);
  EXPECT_STREQ(statusCodeName(StatusCode::kBadFormat), "bad-format");
  EXPECT_STREQ(statusCodeName(static_cast<StatusCode>(99)), "unknown");
}

}  // namespace
}  // namespace lumo
