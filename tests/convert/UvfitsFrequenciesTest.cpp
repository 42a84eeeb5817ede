// SPDX-License-Identifier: GPL-3.0-or-later
#include "UvfitsFixture.h"

namespace lumo {
namespace {

using test::UvfitsBuilder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class UvfitsFrequenciesTest : public test::UvfitsFixture {};

TEST_F(UvfitsFrequenciesTest, TheReferencePixelNeedNotBeTheFirst) {
  UvfitsBuilder builder;
  builder.axis("FREQ") = {"FREQ", 8, 5e9, 4.5, 1e6};
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  const auto back = imported(builder);
  // Pixel 4.5 is at 5 GHz, so pixel 1 lies 3.5 channels below and pixel 8 3.5 above.
  EXPECT_EQ(back.frequencies.GetFreq(0, 0, 0), 4.9965e9);
  EXPECT_EQ(back.frequencies.GetFreq(7, 0, 0), 5.0035e9);
  EXPECT_EQ(report_.files.at(0).bands.at(0).frequency, 4.9965e9);
}

TEST_F(UvfitsFrequenciesTest, ADescendingBandKeepsItsSign) {
  UvfitsBuilder builder;
  builder.axis("FREQ") = {"FREQ", 4, 5e9, 3, -1e6};
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  const auto back = imported(builder);
  EXPECT_EQ(back.frequencies.GetFreq(0, 0, 0), 5.002e9);
  EXPECT_EQ(back.frequencies.GetFreq(3, 0, 0), 4.999e9);
}

TEST_F(UvfitsFrequenciesTest, IrregularIfsComeFromTheTableAndItOverridesTheAxis) {
  UvfitsBuilder builder;
  builder.axis("IF").pixels = 3;
  builder.axis("FREQ").pixels = 4;
  builder.axis("FREQ").pixel = 2;
  builder.tables.push_back(test::frequencyTable(3));
  builder.tables.back().numbers({1, 0, 70e6, 385e6, 2e6, 4e6, 8e6, 8e6, 16e6, 32e6, 1, 1, 1});
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  const auto back = imported(builder);
  EXPECT_EQ(back.frequencies.GetFreq(0, 0, 0), 5e9 - 2e6);
  EXPECT_EQ(back.frequencies.GetFreq(0, 1, 0), 5.07e9 - 4e6);
  EXPECT_EQ(back.frequencies.GetFreq(3, 2, 0), 5.385e9 + 16e6);
  EXPECT_THAT(report_.warnings, IsEmpty());
}

TEST_F(UvfitsFrequenciesTest, ALowerSidebandFallsWithTheChannel) {
  UvfitsBuilder builder;
  builder.axis("IF").pixels = 4;
  builder.axis("FREQ").pixels = 2;
  builder.tables.push_back(test::frequencyTable(4));
  // Widths and sidebands: (+,+) rises; (-,-) and (+,-) fall; (-,+) falls as given.
  builder.tables.back().numbers({1, 0, 10e6, 20e6, 30e6, 1e6, -1e6, 1e6, -1e6, 1, 1, 1, 1, 1, -1, -1, 1});
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  const auto back = imported(builder);
  EXPECT_EQ(back.frequencies.GetFreq(1, 0, 0), 5.001e9);
  EXPECT_EQ(back.frequencies.GetFreq(1, 1, 0), 5.009e9);
  EXPECT_EQ(back.frequencies.GetFreq(1, 2, 0), 5.019e9);
  EXPECT_EQ(back.frequencies.GetFreq(1, 3, 0), 5.029e9);
  EXPECT_THAT(report_.warnings, ElementsAre(HasSubstr("SIDEBAND")));
}

TEST_F(UvfitsFrequenciesTest, AgreeingSignsAreNotWarnedAbout) {
  UvfitsBuilder builder;
  builder.tables.push_back(test::frequencyTable(1));
  builder.tables.back().numbers({1, 0, -1e6, 1e6, -1});
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  (void)imported(builder);
  EXPECT_THAT(report_.warnings, IsEmpty());
}

TEST_F(UvfitsFrequenciesTest, GroupsOfTwoSelectionsKeepTheirs) {
  UvfitsBuilder builder;
  builder.addParameter("FREQSEL");
  builder.tables.push_back(test::frequencyTable(1));
  builder.tables.back().numbers({7, 0, 1e6, 1e6, 1}).numbers({2, 3e9, 2e6, 2e6, 1});
  builder.tables.back().numbers({5, 9e9, 2e6, 2e6, 1});
  builder.add(0.1, 0.2, 258, 1, 0, 1, {2});
  builder.add(0.3, 0.4, 258, 1, 0, 1, {7});
  const auto back = imported(builder);
  EXPECT_EQ(back.groups.at(0).record.freqSel, 2);
  EXPECT_EQ(back.groups.at(1).record.freqSel, 7);
  ASSERT_EQ(back.frequencies.GetFreqSels(), 2) << "a selection without groups is left out";
  EXPECT_EQ(back.frequencies.GetFreq(0, 0, back.frequencies.GetFreqSelNum(2)), 8e9);
  EXPECT_EQ(back.frequencies.GetFreq(0, 0, back.frequencies.GetFreqSelNum(7)), 5e9);
  const auto& bands = report_.files.at(0).bands;
  ASSERT_EQ(bands.size(), 2U);
  EXPECT_EQ(bands[0].selection, 7);
  EXPECT_EQ(bands[0].records, 1U);
  EXPECT_EQ(bands[1].frequency, 8e9);
}

TEST_F(UvfitsFrequenciesTest, ASelectionThatTheTableDoesNotListIsNamed) {
  UvfitsBuilder builder;
  builder.addParameter("FREQSEL");
  builder.tables.push_back(test::frequencyTable(1));
  builder.tables.back().numbers({1, 0, 1e6, 1e6, 1});
  builder.add(0.1, 0.2, 258, 1, 0, 1, {1});
  builder.add(0.1, 0.2, 258, 1, 0, 1, {3});
  EXPECT_THAT(refusal(builder), HasSubstr("group 2 has frequency set-up 3"));
}

TEST_F(UvfitsFrequenciesTest, SeveralSetUpsNeedTheParameterThatTellsThemApart) {
  UvfitsBuilder builder;
  builder.tables.push_back(test::frequencyTable(1));
  builder.tables.back().numbers({1, 0, 1e6, 1e6, 1}).numbers({2, 1e9, 1e6, 1e6, 1});
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  EXPECT_THAT(refusal(builder), HasSubstr("FREQSEL"));
}

TEST_F(UvfitsFrequenciesTest, SeveralIfsNeedTheTable) {
  UvfitsBuilder builder;
  builder.axis("IF").pixels = 2;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  EXPECT_THAT(refusal(builder), HasSubstr("AIPS FQ"));
}

TEST_F(UvfitsFrequenciesTest, ATableWithTooFewIfsIsRefused) {
  UvfitsBuilder builder;
  builder.axis("IF").pixels = 2;
  builder.tables.push_back(test::frequencyTable(1));
  builder.tables.back().numbers({1, 0, 1e6, 1e6, 1});
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  const std::string sentence = refusal(builder);
  EXPECT_THAT(sentence, HasSubstr("column IF FREQ"));
  EXPECT_THAT(sentence, HasSubstr("expected 2"));
}

TEST_F(UvfitsFrequenciesTest, FrequenciesThatAreNotPositiveAreRefused) {
  UvfitsBuilder builder;
  builder.tables.push_back(test::frequencyTable(1));
  builder.tables.back().numbers({1, -6e9, 1e6, 1e6, 1});
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  EXPECT_THAT(refusal(builder), HasSubstr("positive frequencies"));
}

TEST_F(UvfitsFrequenciesTest, AMissingReferenceIsNamed) {
  for (const char* card : {"CRVAL4", "CRPIX4"}) {
    UvfitsBuilder builder;
    builder.add(0.1, 0.2, 258, 1, 0, 1);
    builder.edit = [card](test::FitsHeader& header) { header.remove(card); };
    EXPECT_THAT(refusal(builder), HasSubstr(card));
  }
}

}  // namespace
}  // namespace lumo
