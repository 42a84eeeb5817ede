// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "io/FitsCards.h"
#include "io/FitsText.h"

namespace lumo {
namespace {

using testing::ElementsAre;

TEST(FitsTextTest, PercentSignsOtherBytesAndALastBlankAreEscaped) {
  EXPECT_EQ(toFitsText("a b"), "a b");
  EXPECT_EQ(toFitsText("5%"), "5%25");
  EXPECT_EQ(toFitsText("\xC3\xA9\n"), "%C3%A9%0A");
  EXPECT_EQ(toFitsText("a  "), "a %20");
  EXPECT_EQ(fromFitsText("%C3%a9 %25"), "\xC3\xA9 %");
}

TEST(FitsTextTest, APercentSignWithoutTwoDigitsStandsForItself) {
  EXPECT_EQ(fromFitsText("%"), "%");
  EXPECT_EQ(fromFitsText("5% of"), "5% of");
  EXPECT_EQ(fromFitsText("%4"), "%4");
}

TEST(FitsTextTest, AHistoryEntryBeyond72CharactersContinuesBehindALastPercentSign) {
  EXPECT_THAT(toHistoryLines(std::string(72, 'x')), ElementsAre(std::string(72, 'x')));
  EXPECT_THAT(toHistoryLines(std::string(73, 'x')), ElementsAre(std::string(71, 'x') + "%", "xx"));
  EXPECT_THAT(toHistoryLines(std::string(70, 'x') + "%yy"), ElementsAre(std::string(70, 'x') + "%", "%25yy"));
  EXPECT_THAT(toHistoryLines(""), ElementsAre(""));
  EXPECT_THAT(fromHistoryLines({"a%", "b", "", "c%"}), ElementsAre("ab", "", "c"));
}

TEST(FitsCardsTest, NumbersAreWrittenAsFitsRealsAndReadInEveryForm) {
  FitsCards cards;
  cards.add("A", 5e9);
  cards.add("B", 1e-7);
  cards.add("C", -2.5);
  cards.addExact("D", 0.1);
  EXPECT_THAT(cards.records(),
              ElementsAre("A       =              5.0E+09", "B       =              1.0E-07",
                          "C       =                 -2.5", "D       =  0.10000000000000001"));
  for (const char* const card : {"E       = 1.5D3 / comment", "F       = '1500.0  '", "G       =+1500."})
    cards.addRecord(card);
  cards.addRecord("H       = +1500.");
  EXPECT_EQ(cards.number("E"), 1500.0);
  EXPECT_EQ(cards.number("F"), 1500.0);
  EXPECT_EQ(cards.number("G"), std::nullopt);
  EXPECT_EQ(cards.number("H"), 1500.0);
}

TEST(FitsCardsTest, ValuesThatAreNotFiniteAreNeitherWrittenNorFound) {
  FitsCards cards;
  cards.add("A", 1.0 / 0.0);
  EXPECT_TRUE(cards.records().empty());
  cards.addRecord("B       = NaN");
  cards.addRecord("C       = 1E999");
  cards.addRecord("D       = T");
  EXPECT_EQ(cards.number("B"), std::nullopt);
  EXPECT_EQ(cards.number("C"), std::nullopt);
  EXPECT_EQ(cards.number("D"), std::nullopt);
}

TEST(FitsCardsTest, OfSeveralCardsWithOneKeywordTheFirstCounts) {
  FitsCards cards;
  cards.addRecord("OBJECT  = 'it''s  '  / not 'this'");
  cards.addRecord("OBJECT  = 'second'");
  EXPECT_EQ(cards.text("OBJECT"), "it's");
}

}  // namespace
}  // namespace lumo
