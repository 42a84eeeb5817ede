// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "core/TextForm.h"

namespace lumo {
namespace {

TEST(TextFormTest, ValToStrIsTheShortestTextThatReadsBack) {
  EXPECT_EQ(valToStr(0.01), "0.01");
  EXPECT_EQ(valToStr(-3), "-3");
  EXPECT_EQ(valToStr(0.1), "0.1");
  EXPECT_EQ(valToStr(std::nan("")), "nan");
}

TEST(TextFormTest, EveryDoubleReadsBackToTheSameBits) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 20000; ++i) {
    const std::uint64_t bits = random();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isfinite(value)) continue;
    const double back = textToDouble(valToStr(value));
    EXPECT_EQ(std::memcmp(&back, &value, sizeof value), 0) << valToStr(value);
  }
}

TEST(TextFormTest, GeneralTextHasSixSignificantDigits) {
  EXPECT_EQ(generalText(1.4e9), "1.4e+09");
  EXPECT_EQ(generalText(1e38 * 1e-6), "1e+32");
  EXPECT_EQ(generalText(-1e38 * 1e-6), "-1e+32");
  EXPECT_EQ(generalText(15135.875), "15135.9");
  EXPECT_EQ(nValToStr(1.0 / 3.0, 4), "0.3333");
}

TEST(TextFormTest, TextToDoubleTakesTheNumberAtTheStart) {
  EXPECT_EQ(textToDouble("abc"), 0.0);
  EXPECT_EQ(textToDouble(""), 0.0);
  EXPECT_EQ(textToDouble("  2.5 MHz"), 2.5);
  EXPECT_EQ(textToDouble("+3e2x"), 300.0);
  EXPECT_EQ(textToDouble("-1e999"), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(textToDouble("1e-999"), 0.0);
  EXPECT_EQ(textToDouble("+-1"), 0.0);
}

TEST(TextFormTest, TextToIntStopsAtTheFirstOtherCharacter) {
  EXPECT_EQ(textToInt("12abc"), 12);
  EXPECT_EQ(textToInt(" -7"), -7);
  EXPECT_EQ(textToInt("x"), 0);
  EXPECT_EQ(textToInt("99999999999"), std::numeric_limits<std::int32_t>::max());
}

TEST(TextFormTest, PrintableTextHasNoControlBytes) {
  EXPECT_EQ(printable("3C\x1B[2J 111\n\x7F"), "3C?[2J 111??");
  EXPECT_EQ(printable("\xC3\xA9toile"), "\xC3\xA9toile");
}

TEST(TextFormTest, CsvFieldsAreQuotedWhereTheyMustBe) {
  EXPECT_EQ(csvField("Mean (1)"), "Mean (1)");
  EXPECT_EQ(csvField("a,b"), "\"a,b\"");
  EXPECT_EQ(csvField("say \"x\""), "\"say \"\"x\"\"\"");
  EXPECT_EQ(csvField("two\nlines"), "\"two\nlines\"");
  EXPECT_EQ(csvField("bare\rreturn"), "\"bare\rreturn\"");
  EXPECT_EQ(csvField(""), "");
}

TEST(TextFormTest, ParsingRefusesTrailingText) {
  double value = 4.0;
  EXPECT_FALSE(parseDouble("1.5x", value));
  EXPECT_FALSE(parseDouble("", value));
  EXPECT_EQ(value, 4.0);
  EXPECT_TRUE(parseDouble("-1.5e3", value));
  EXPECT_EQ(value, -1500.0);
  std::int64_t whole = 0;
  EXPECT_FALSE(parseInt("1.5", whole));
  EXPECT_TRUE(parseInt("-12", whole));
  EXPECT_EQ(whole, -12);
}

}  // namespace
}  // namespace lumo
