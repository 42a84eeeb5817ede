// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>
#include <numbers>

#include "MsFixture.h"

namespace lumo {
namespace {

using test::MsBuilder;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// Fields, windows and polarizations of a set, imported.
class MsSetupsTest : public test::MsFixture {
 protected:
  MsSetupsTest() { builder_.add(100, 200, {1, 0}); }
  MsBuilder::Row& addOf(int field, int description = 0) {
    auto& row = builder_.add(100, 200, {1, 0}, description);
    row.field = field;
    return row;
  }
  static MsBuilder::Window windowAt(double first, double step, int channels) {
    MsBuilder::Window window{"", {}, {}, 5};
    for (int c = 0; c < channels; ++c) {
      window.frequencies.push_back(first + c * step);
      window.widths.push_back(step);
    }
    return window;
  }
  MsBuilder builder_;
};

constexpr double kDegree = std::numbers::pi / 180;

TEST_F(MsSetupsTest, ThePhaseCentreIsTheSource) {
  builder_.fields[0] = {"3C48", {24.5 * kDegree, -33.25 * kDegree}, -1, ""};
  const auto source = imported(builder_).sources.at(0);
  EXPECT_EQ(source.name, "3C48");
  EXPECT_NEAR(source.rightAscension, 24.5, 1e-12);  // rounding of the factor
  EXPECT_NEAR(source.declination, -33.25, 1e-12);
  EXPECT_EQ(source.frame, UvxFrame::kFk5);
  EXPECT_EQ(source.epoch, 2000.0);
}

TEST_F(MsSetupsTest, RightAscensionsBelowZeroCountFromTheOtherSide) {
  builder_.fields[0].direction = {-10 * kDegree, 0};
  EXPECT_NEAR(imported(builder_).sources.at(0).rightAscension, 350, 1e-12);
}

TEST_F(MsSetupsTest, TheFrameIsTheColumns) {
  builder_.frame = "ICRS";
  EXPECT_EQ(imported(builder_).sources.at(0).frame, UvxFrame::kIcrs);
  builder_.frame = "B1950";
  const auto source = imported(builder_).sources.at(0);
  EXPECT_EQ(source.frame, UvxFrame::kFk4);
  EXPECT_EQ(source.epoch, 1950.0);
  builder_.frame = "GALACTIC";
  std::filesystem::remove_all(folder_.file("out"));
  EXPECT_THAT(refusal(builder_),
              HasSubstr("field 0 'SRC' (1 rows) was left out: its phase centre has the frame "
                        "'GALACTIC'; expected J2000, ICRS or B1950"));
}

TEST_F(MsSetupsTest, EveryFieldMayHaveAFrameOfItsOwn) {
  builder_.framePerField = true;
  builder_.fields = {{"A", {1, 0}, -1, "B1950"}, {"B", {1, 0}, -1, "ICRS"}, {"C", {1, 0}, -1, "GALACTIC"}};
  addOf(1);
  addOf(2);
  ASSERT_TRUE(import(builder_).ok());
  ASSERT_EQ(report_.files.size(), 2U);
  EXPECT_EQ(test::readUvx(report_.files[0].path).sources.at(0).frame, UvxFrame::kFk4);
  EXPECT_EQ(test::readUvx(report_.files[1].path).sources.at(0).frame, UvxFrame::kIcrs);
  EXPECT_THAT(report_.warnings, ElementsAre(HasSubstr("field 2 'C' (1 rows) was left out")));
}

TEST_F(MsSetupsTest, EveryFieldBecomesAFile) {
  builder_.fields = {{"A", {0.1, 0.1}}, {"unused", {0.1, 0.1}}, {"B c", {0.2, 0.2}}};
  addOf(2).data[0] = {5, 0};
  ASSERT_TRUE(import(builder_).ok());
  ASSERT_EQ(report_.files.size(), 2U);
  EXPECT_EQ(fileOf(0), "data_A.uvx");
  EXPECT_EQ(fileOf(1), "data_B_c.uvx");
  const auto second = test::readUvx(report_.files[1].path);
  ASSERT_EQ(second.groups.size(), 1U);
  EXPECT_EQ(second.groups[0].visibilities.at(0).Re(), 5.0F);
  EXPECT_EQ(second.groups[0].record.source, second.sources.at(0).id);
}

TEST_F(MsSetupsTest, FieldsOfOneNameStayApart) {
  builder_.fields = {{"A", {0.1, 0.1}}, {"A", {0.2, 0.1}}};
  addOf(1);
  ASSERT_TRUE(import(builder_).ok());
  ASSERT_EQ(report_.files.size(), 2U);
  EXPECT_EQ(fileOf(0), "data_A.uvx");
  EXPECT_EQ(fileOf(1), "data_A_2.uvx");
}

TEST_F(MsSetupsTest, OneFieldCanBeChosenByItsName) {
  builder_.fields = {{"A", {0.1, 0.1}}, {"a name beyond sixteen", {0.2, 0.1}}};
  addOf(1);
  for (const char* name : {"a name beyond sixteen", "a name beyond si"}) {
    options_.source = name;
    ASSERT_TRUE(import(builder_).ok());
    ASSERT_EQ(report_.files.size(), 1U);
    EXPECT_EQ(report_.files[0].source, "a name beyond si");
  }
  options_.source = "Z";
  EXPECT_THAT(refusal(builder_),
              HasSubstr("no visibilities of a field 'Z'; it holds A, a name beyond sixteen"));
}

TEST_F(MsSetupsTest, MovingFieldsAreLeftOutByName) {
  builder_.fields = {{"A", {0.1, 0.1}}, {"Mars", {0.2, 0.1}, 0}, {"Comet", {0.2, 0.1, 1e-9, 0}}};
  addOf(1);
  addOf(2);
  ASSERT_TRUE(import(builder_).ok());
  EXPECT_EQ(report_.files.size(), 1U);
  EXPECT_THAT(report_.warnings,
              ElementsAre(HasSubstr("field 1 'Mars' (1 rows) was left out: it follows an ephemeris"),
                          HasSubstr("field 2 'Comet' (1 rows) was left out: its phase centre moves")));
  options_.source = "Mars";
  std::filesystem::remove_all(folder_.file("out"));
  EXPECT_THAT(refusal(builder_), HasSubstr("field 1 'Mars'"));
}

TEST_F(MsSetupsTest, APolynomialWithoutRatesIsAFixedPlace) {
  builder_.fields[0].direction = {0.1, 0.2, 0, 0};
  EXPECT_NEAR(imported(builder_).sources.at(0).rightAscension, 0.1 / kDegree, 1e-12);
}

TEST_F(MsSetupsTest, WindowsOfOneShapeShareAFileAsSelections) {
  builder_.windows = {windowAt(5e9, 1e6, 2), windowAt(6e9, -2e6, 2)};
  builder_.descriptions = {{1, 0}, {0, 0}};  // crosswise
  builder_.rows.clear();
  builder_.add(100, 200, {10, 0}, 1);
  builder_.add(100, 200, {20, 0}, 0);
  builder_.add(300, 200, {30, 0}, 0);  // window 0 has no row for this baseline
  const auto back = imported(builder_);
  ASSERT_EQ(back.groups.size(), 3U);
  EXPECT_EQ(back.groups[0].record.freqSel, 0);
  EXPECT_EQ(back.groups[1].record.freqSel, 1);
  EXPECT_EQ(back.groups[2].record.freqSel, 1);
  const auto frequency = [&](int id, int channel) {
    return back.frequencies.GetFreq(channel, 0, back.frequencies.GetFreqSelNum(id));
  };
  EXPECT_EQ(frequency(0, 0), 5e9);
  EXPECT_EQ(frequency(0, 1), 5.001e9);
  EXPECT_EQ(frequency(1, 0), 6e9);
  EXPECT_EQ(frequency(1, 1), 5.998e9);
}

TEST_F(MsSetupsTest, WindowsOfOtherShapesGetFilesOfTheirOwn) {
  builder_.windows = {windowAt(5e9, 1e6, 4), windowAt(6e9, 1e6, 2), windowAt(7e9, 1e6, 2)};
  builder_.correlations = {{9, 12}, {9}};
  builder_.descriptions = {{0, 0}, {1, 0}, {2, 1}};
  builder_.rows.clear();
  for (int i = 0; i < 3; ++i) addOf(0, i);
  ASSERT_TRUE(import(builder_).ok());
  ASSERT_EQ(report_.files.size(), 3U);
  EXPECT_EQ(fileOf(0), "data_4ch.uvx");
  EXPECT_EQ(fileOf(1), "data_2ch-XX-YY.uvx");
  EXPECT_EQ(fileOf(2), "data_2ch-XX.uvx");
  EXPECT_EQ(report_.files[0].shape, (UvxShape{1, 4, 2}));
  EXPECT_EQ(report_.files[2].shape, (UvxShape{1, 2, 1}));
}

TEST_F(MsSetupsTest, AWindowOfOneChannelKeepsItsWidth) {
  builder_.windows[0] = windowAt(5e9, -3e6, 1);
  (void)imported(builder_);
  EXPECT_EQ(report_.files.at(0).bands.at(0).width, -3e6);
}

TEST_F(MsSetupsTest, UnevenChannelsBecomeIfsOfTheirOwn) {
  builder_.windows[0] = windowAt(5e9, 1e6, 3);
  builder_.windows[0].name = "odd";
  builder_.windows[0].frequencies[1] += 0.02e6;
  builder_.rows[0].data = {{1, 0}, {2, 0}, {3, 0}};
  const auto back = imported(builder_);
  EXPECT_EQ(report_.files.at(0).shape, (UvxShape{3, 1, 1}));
  EXPECT_EQ(back.frequencies.GetFreq(0, 1, 0), 5.00102e9);
  EXPECT_EQ(back.groups.at(0).visibilities.at(1).Re(), 2.0F);
  EXPECT_THAT(report_.notes,
              Contains(HasSubstr("spectral window 0 'odd': its channels are not evenly spaced")));
}

TEST_F(MsSetupsTest, ChannelsAHairOffTheirPlaceAreEven) {
  builder_.windows[0] = windowAt(5e9, 1e6, 3);
  builder_.windows[0].frequencies[1] += 0.005e6;
  builder_.rows[0].data.assign(3, {1, 0});
  (void)imported(builder_);
  EXPECT_EQ(report_.files.at(0).shape, (UvxShape{1, 3, 1}));
}

TEST_F(MsSetupsTest, WindowsThatCannotBeUsedAreLeftOutByName) {
  builder_.windows = {windowAt(5e9, 1e6, 1), {"zero", {0.0}, {1e6}}, {"blank", {}, {}}};
  builder_.windows[2] = {"nan", {std::nan("")}, {1e6}};
  builder_.correlations = {{5}, {13}, {9, 9}};
  builder_.descriptions = {{0, 0}, {1, 0}, {2, 0}, {0, 1}, {0, 2}};
  for (int i = 1; i < 5; ++i) addOf(0, i);
  ASSERT_TRUE(import(builder_).ok());
  EXPECT_EQ(report_.files.size(), 1U);
  EXPECT_THAT(
      report_.warnings,
      ElementsAre(
          HasSubstr("spectral window 1 'zero' (1 rows) was left out: the frequency of its channel 0"),
          HasSubstr("spectral window 2 'nan' (1 rows) was left out"),
          HasSubstr("spectral window 0 (1 rows) was left out: its correlations have the Stokes code 13"),
          HasSubstr("its correlations name XX twice")));
  EXPECT_EQ(report_.files[0].records, 1U);
}

TEST_F(MsSetupsTest, ChannelsOfOneFrequencyAreRefused) {
  builder_.windows[0] = windowAt(5e9, 0, 3);
  builder_.rows[0].data.assign(3, {1, 0});
  EXPECT_THAT(refusal(builder_), HasSubstr("all its 3 channels have the frequency 5e+09 Hz"));
}

TEST_F(MsSetupsTest, NothingLeftIsARefusal) {
  builder_.correlations = {{17}};
  EXPECT_THAT(refusal(builder_), HasSubstr("spectral window 0 'W' (1 rows) was left out: its correlations"));
}

TEST_F(MsSetupsTest, CorrelationsOfAllKindsAreKnown) {
  const auto products = [&](const std::vector<int>& codes) {
    builder_.correlations = {codes};
    builder_.rows[0].data.assign(codes.size(), {1, 0});
    (void)imported(builder_);
    return report_.files.at(0).products;
  };
  EXPECT_THAT(products({1, 2, 3, 4}), ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(products({9, 12, 10, 11}), ElementsAre(-5, -6, -7, -8));
  EXPECT_THAT(products({8, 5}), ElementsAre(-1, -2));
}

TEST_F(MsSetupsTest, WindowNumbersBeyondASelectionGetAFreeOne) {
  builder_.windows.assign(130, windowAt(5e9, 1e6, 1));
  builder_.windows[129] = windowAt(7e9, 1e6, 1);
  builder_.descriptions = {{127, 0}, {129, 0}};
  builder_.rows.clear();
  addOf(0, 0);
  addOf(0, 1);
  const auto back = imported(builder_);
  EXPECT_EQ(back.groups.at(0).record.freqSel, 127);
  EXPECT_NE(back.groups.at(1).record.freqSel, 127);
  EXPECT_EQ(back.frequencies.GetFreq(0, 0, back.frequencies.GetFreqSelNum(back.groups[1].record.freqSel)),
            7e9);
}

TEST_F(MsSetupsTest, AveragesBecomeIfsAtTheirMeanFrequency) {
  builder_.windows = {windowAt(5e9, 2e6, 4), windowAt(6e9, -1e6, 3)};
  builder_.descriptions = {{0, 0}, {1, 0}};
  builder_.rows.clear();
  auto& first = addOf(0, 0);
  first.data = {{1, 0}, {3, 0}, {5, 0}, {9, 0}};
  first.flags = {0, 0, 1, 0};
  first.weight = {2};
  auto& second = addOf(0, 1);
  second.data = {{1, 1}, {2, 3}, {4, 4}};
  options_.average = 2;
  const auto back = imported(builder_);
  EXPECT_EQ(report_.files.at(0).shape, (UvxShape{2, 1, 1}));
  const auto& values = back.groups.at(0).visibilities;
  EXPECT_EQ(values.at(0).Re(), 2.0F);
  EXPECT_EQ(values.at(0).Weight(), 4.0F);
  EXPECT_EQ(values.at(1).Re(), 9.0F);
  EXPECT_EQ(values.at(1).Weight(), 2.0F);
  EXPECT_EQ(back.groups.at(1).visibilities.at(0).Im(), 2.0F);
  EXPECT_EQ(back.groups.at(1).visibilities.at(1).Im(), 4.0F);
  EXPECT_EQ(back.frequencies.GetFreq(0, 0, 0), 5.001e9);
  EXPECT_EQ(back.frequencies.GetFreq(0, 1, 0), 5.005e9);
  EXPECT_EQ(back.frequencies.GetFreq(0, 0, 1), 5.9995e9);
  EXPECT_EQ(back.frequencies.GetFreq(0, 1, 1), 5.998e9);
  EXPECT_EQ(report_.files[0].bands.at(0).width, 4e6);
}

TEST_F(MsSetupsTest, WideWindowsAreReportedUnlessTheyAreAveraged) {
  builder_.windows = {windowAt(5e9, 20e6, 4)};
  builder_.rows[0].data.assign(4, {1, 0});
  (void)imported(builder_);
  EXPECT_THAT(report_.warnings,
              ElementsAre(HasSubstr("1 spectral window span up to 1.2 % of their frequency")));
  options_.average = 1;
  (void)imported(builder_);
  EXPECT_THAT(report_.warnings, IsEmpty());
}

TEST_F(MsSetupsTest, FrequenciesOfAnotherFrameAreReported) {
  builder_.windows[0].frame = 1;
  (void)imported(builder_);
  EXPECT_THAT(report_.notes, Contains(HasSubstr("1 spectral window have the frame LSRK")));
}

}  // namespace
}  // namespace lumo
