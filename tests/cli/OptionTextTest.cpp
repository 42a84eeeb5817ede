// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "cli/OptionText.h"

namespace lumo {
namespace {

TEST(OptionTextTest, OneNumberStandsForBoth) {
  double a = 0, b = 0;
  ASSERT_TRUE(parseNumberOrPair("--uv-limit", "1.5", a, b).ok());
  EXPECT_EQ(a, 1.5);
  EXPECT_EQ(b, 1.5);
  ASSERT_TRUE(parseNumberOrPair("--uv-limit", "1.5,2", a, b).ok());
  EXPECT_EQ(b, 2.0);
  EXPECT_FALSE(parseNumberOrPair("--uv-limit", "1,2,3", a, b).ok());
}

TEST(OptionTextTest, PairsTakeNegativeNumbers) {
  double a = 0, b = 0;
  ASSERT_TRUE(parsePair("--shift", "-5,-0.25", a, b).ok());
  EXPECT_EQ(a, -5.0);
  EXPECT_EQ(b, -0.25);
  EXPECT_FALSE(parsePair("--shift", "-5", a, b).ok());
  EXPECT_FALSE(parsePair("--shift", "-5,", a, b).ok());
  EXPECT_FALSE(parsePair("--shift", "-5,x", a, b).ok());
}

TEST(OptionTextTest, WholeNumbersRefuseFractionsSignsAndOverflow) {
  std::int32_t a = 0, b = 0;
  ASSERT_TRUE(parseWholeNumbers("--half-size", "256", a, b).ok());
  EXPECT_EQ(b, 256);
  for (const char* text : {"", "256,", "25.6", "-4", "99999999999", "1,2,3"})
    EXPECT_FALSE(parseWholeNumbers("--half-size", text, a, b).ok()) << text;
}

TEST(OptionTextTest, SelectionsNameFileAndIds) {
  SelectionText selection;
  ASSERT_TRUE(parseSelection("2:1,-3,4", selection).ok());
  EXPECT_EQ(selection.file, 2);
  EXPECT_EQ(selection.ids, (std::vector<std::int64_t>{1, -3, 4}));
  ASSERT_TRUE(parseSelection("1:none", selection).ok());
  EXPECT_TRUE(selection.ids.empty());
  for (const char* text : {"2", "x:1", "1:", "1:2,", "1:some", ":1"}) {
    const Status status = parseSelection(text, selection);
    EXPECT_FALSE(status.ok()) << text;
    EXPECT_NE(status.message().find("--select"), std::string::npos);
  }
}

TEST(OptionTextTest, ListsNeedANumberBetweenCommas) {
  std::vector<double> values;
  ASSERT_TRUE(parseNumberList("--bands", "4900,5700.5", values).ok());
  EXPECT_EQ(values, (std::vector<double>{4900, 5700.5}));
  EXPECT_FALSE(parseNumberList("--bands", "4900,,1", values).ok());
  EXPECT_FALSE(parseNumberList("--bands", "", values).ok());
}

}  // namespace
}  // namespace lumo
