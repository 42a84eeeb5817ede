// SPDX-License-Identifier: GPL-3.0-or-later
#include <complex>
#include <limits>

#include "MsFixture.h"

namespace lumo {
namespace {

using test::MsBuilder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class MsImporterTest : public test::MsFixture {};

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kLightSpeed = 299792458.0;

TEST_F(MsImporterTest, EveryNumberOfARowArrives) {
  MsBuilder builder;
  builder.correlations = {{5, 6, 7, 8}};  // RR RL LR LL
  builder.windows[0].frequencies = {5e9, 5.002e9, 5.004e9};
  builder.windows[0].widths = {2e6, 2e6, 2e6};
  builder.hasSpectrum = true;
  auto& row = builder.add(0.25 * kLightSpeed, -0.5 * kLightSpeed, 0);
  row.uvw[2] = 2 * kLightSpeed;
  row.antenna1 = 1;
  row.antenna2 = 3;
  row.time = 50000.25 * 86400;
  for (std::size_t i = 0; i < 12; ++i) {
    const auto x = static_cast<float>(i);
    row.data[i] = {3 * x + 1, 3 * x + 2};
    row.spectrum.push_back(3 * x + 3);
  }
  const auto back = imported(builder);
  ASSERT_EQ(back.groups.size(), 1U);
  const auto& record = back.groups[0].record;
  EXPECT_EQ(record.u, 0.25F);
  EXPECT_EQ(record.v, -0.5F);
  EXPECT_EQ(record.w, 2.0F);
  EXPECT_EQ(record.baseline, 256 * 2 + 4);
  EXPECT_EQ(record.time, 50000.25);
  EXPECT_EQ(record.flag, 0);
  EXPECT_EQ(record.source, back.sources.at(0).id);
  // Stored as RR LL RL LR, like UVFITS files: from the places 0 3 1 2 of a row.
  EXPECT_THAT(report_.files.at(0).products, ElementsAre(-1, -2, -3, -4));
  ASSERT_EQ(back.groups[0].visibilities.size(), 12U);
  const std::size_t places[] = {0, 3, 1, 2};
  for (std::size_t channel = 0; channel < 3; ++channel)
    for (std::size_t product = 0; product < 4; ++product) {
      const AUVXComplex& value = back.groups[0].visibilities[4 * channel + product];
      const auto x = static_cast<float>(4 * channel + places[product]);
      EXPECT_EQ(value.Re(), 3 * x + 1);
      EXPECT_EQ(value.Im(), 3 * x + 2);
      EXPECT_EQ(value.Weight(), 3 * x + 3);
    }
  EXPECT_DOUBLE_EQ(back.frequencies.GetFreq(0, 0, 0), 5e9);
  EXPECT_DOUBLE_EQ(back.frequencies.GetFreq(2, 0, 0), 5.004e9);
}

TEST_F(MsImporterTest, TiledDataArriveLikeUntiledOnes) {
  MsBuilder builder;
  builder.correlations = {{9, 10, 11, 12}};
  builder.windows[0].frequencies = {5e9, 5.001e9, 5.002e9};
  builder.windows[0].widths = {1e6, 1e6, 1e6};
  for (int i = 0; i < 11; ++i) {
    auto& row = builder.add(10.0 * i, 5, 0);
    for (std::size_t k = 0; k < 12; ++k) row.data[k] = {static_cast<float>(i), static_cast<float>(k)};
  }
  const auto plain = imported(builder);
  builder.tiled = true;
  const auto tiled = imported(builder);
  ASSERT_EQ(tiled.groups.size(), 11U);
  for (std::size_t g = 0; g < 11; ++g)
    for (std::size_t k = 0; k < 12; ++k) {
      EXPECT_EQ(tiled.groups[g].visibilities[k].Re(), static_cast<float>(g));
      EXPECT_EQ(tiled.groups[g].visibilities[k].Im(), plain.groups[g].visibilities[k].Im());
    }
}

TEST_F(MsImporterTest, CorrectedDataAreTakenWhereThereAreAny) {
  MsBuilder builder;
  builder.hasCorrected = true;
  builder.add(100, 200, {1, 0}).corrected = {{2, 0}};
  EXPECT_EQ(imported(builder).groups.at(0).visibilities.at(0).Re(), 2.0F);
  EXPECT_THAT(report_.notes, ElementsAre(HasSubstr("column CORRECTED_DATA (the set also has DATA)")));
  for (const char* name : {"data", "DATA"}) {
    options_.column = name;
    EXPECT_EQ(imported(builder).groups.at(0).visibilities.at(0).Re(), 1.0F);
    EXPECT_THAT(report_.notes, ElementsAre(HasSubstr("column DATA (the set also has CORRECTED_DATA)")));
  }
  options_.column = "corrected";
  EXPECT_EQ(imported(builder).groups.at(0).visibilities.at(0).Re(), 2.0F);
}

TEST_F(MsImporterTest, AColumnThatIsNotThereIsRefusedAndTheOthersAreNamed) {
  MsBuilder builder;
  builder.add(100, 200, {1, 0});
  options_.column = "corrected";
  EXPECT_THAT(refusal(builder), HasSubstr("no column CORRECTED_DATA of complex visibilities; it has DATA"));
}

TEST_F(MsImporterTest, TheModelIsNeverImported) {
  MsBuilder builder;
  builder.hasModel = true;
  builder.add(100, 200, {1, 0});
  options_.column = "model";
  EXPECT_THAT(refusal(builder), HasSubstr("MODEL_DATA holds a model, not the observation"));
  options_.column.clear();
  builder.hasData = false;
  EXPECT_THAT(refusal(builder), HasSubstr("neither a column DATA nor CORRECTED_DATA"));
}

TEST_F(MsImporterTest, SingleDishDataAreRefused) {
  MsBuilder builder;
  builder.hasData = false;
  builder.hasFloat = true;
  builder.add(100, 200, {1, 0});
  EXPECT_THAT(refusal(builder), HasSubstr("only FLOAT_DATA of single dishes"));
}

TEST_F(MsImporterTest, TheUnitIsJanskyForCorrectedDataAndWhereTheColumnSaysSo) {
  MsBuilder builder;
  builder.add(100, 200, {1, 0});
  EXPECT_EQ(imported(builder).unit, "");
  builder.unit = "Jy";
  EXPECT_EQ(imported(builder).unit, "JY");
  builder.unit.clear();
  builder.hasCorrected = true;
  builder.rows[0].corrected = {{1, 0}};
  EXPECT_EQ(imported(builder).unit, "JY");
}

TEST_F(MsImporterTest, FlaggedVisibilitiesKeepTheirValueUnderANegativeWeight) {
  MsBuilder builder;
  builder.correlations = {{9, 12}};
  auto& row = builder.add(100, 200, {3, 4});
  row.flags = {1, 0};
  row.weight = {2, 5};
  const auto back = imported(builder);
  EXPECT_EQ(back.groups.at(0).record.flag, 0);
  EXPECT_EQ(back.groups[0].visibilities.at(0).Weight(), -2.0F);
  EXPECT_EQ(back.groups[0].visibilities.at(0).Re(), 3.0F);
  EXPECT_EQ(back.groups[0].visibilities.at(1).Weight(), 5.0F);
}

TEST_F(MsImporterTest, AFlaggedRowIsAFlaggedRecord) {
  MsBuilder builder;
  builder.add(900, 900, {1, 0}).flagged = true;
  builder.add(100, 200, {1, 0});
  const auto back = imported(builder);
  ASSERT_EQ(back.groups.size(), 2U);
  EXPECT_NE(back.groups[0].record.flag, 0);
  EXPECT_EQ(back.groups[1].record.flag, 0);
  EXPECT_EQ(report_.files.at(0).flaggedRecords, 1U);
  EXPECT_FLOAT_EQ(static_cast<float>(back.uMax), static_cast<float>(100 / kLightSpeed));
}

TEST_F(MsImporterTest, TheSpectrumOfWeightsComesBeforeTheRowsWeight) {
  MsBuilder builder;
  builder.hasSpectrum = true;
  builder.windows[0].frequencies = {5e9, 5.001e9};
  builder.windows[0].widths = {1e6, 1e6};
  auto& whole = builder.add(100, 200, {1, 0});
  whole.weight = {9};
  whole.spectrum = {2, 3};
  builder.add(100, 200, {1, 0}).weight = {7};  // its spectrum is not defined
  auto& odd = builder.add(100, 200, {1, 0});
  odd.weight = {5};
  odd.spectrum = {1, 2, 3};  // three channels of two
  const auto back = imported(builder);
  const auto weights = [&](std::size_t group) {
    return std::vector<float>{back.groups.at(group).visibilities.at(0).Weight(),
                              back.groups.at(group).visibilities.at(1).Weight()};
  };
  EXPECT_THAT(weights(0), ElementsAre(2, 3));
  EXPECT_THAT(weights(1), ElementsAre(7, 7));
  EXPECT_THAT(weights(2), ElementsAre(5, 5));
  EXPECT_THAT(report_.notes,
              ::testing::Contains(HasSubstr("1 records have a WEIGHT_SPECTRUM of another shape")));
}

TEST_F(MsImporterTest, WithoutAnyWeightsEachIsOne) {
  MsBuilder builder;
  builder.add(100, 200, {1, 0}).weight = {9};
  builder.removedColumns = {"WEIGHT"};
  EXPECT_EQ(imported(builder).groups.at(0).visibilities.at(0).Weight(), 1.0F);
  EXPECT_THAT(report_.notes, ::testing::Contains(HasSubstr("1 records have no weights; each is 1")));
}

TEST_F(MsImporterTest, NumbersThatAreNotFiniteBecomeNoData) {
  MsBuilder builder;
  builder.add(100, 200, {static_cast<float>(kNan), 1});
  builder.add(100, 200, {1, std::numeric_limits<float>::infinity()});
  builder.add(100, 200, {1, 2}).weight = {std::numeric_limits<float>::infinity()};
  builder.add(100, 200, {static_cast<float>(kNan), 1}).flags = {1};
  builder.add(100, 200, {1, 2}).time = kNan;
  const auto back = imported(builder);
  for (std::size_t g : {0U, 1U, 3U}) {
    EXPECT_EQ(back.groups.at(g).visibilities[0].Re(), 0.0F);
    EXPECT_EQ(back.groups.at(g).visibilities[0].Weight(), 0.0F);
  }
  EXPECT_EQ(back.groups.at(2).visibilities[0].Re(), 1.0F);
  EXPECT_EQ(back.groups.at(2).visibilities[0].Weight(), 0.0F);
  EXPECT_EQ(back.groups.at(4).record.time, 0.0);
  // What is flagged as well is as it should be.
  EXPECT_THAT(report_.warnings, ElementsAre(HasSubstr("1 visibilities have a weight that is not finite"),
                                            HasSubstr("2 visibilities are not finite"),
                                            HasSubstr("1 records have no finite time")));
}

TEST_F(MsImporterTest, RecordsWithoutAPlaceAreFlagged) {
  MsBuilder builder;
  builder.add(kNan, 200, {1, 0});
  builder.add(0, 0, {1, 0});
  builder.add(0, 200, {1, 0});
  const auto back = imported(builder);
  EXPECT_NE(back.groups.at(0).record.flag, 0);
  EXPECT_EQ(back.groups.at(0).record.u, 0.0F);
  EXPECT_NE(back.groups.at(1).record.flag, 0);
  EXPECT_EQ(back.groups.at(2).record.flag, 0);
  EXPECT_THAT(report_.warnings, ElementsAre(HasSubstr("1 records have a u or v that is not finite"),
                                            HasSubstr("1 records between different antennas have UVW 0")));
}

TEST_F(MsImporterTest, AutocorrelationsAreLeftOutAndCounted) {
  MsBuilder builder;
  builder.add(0, 0, {100, 0}).antenna2 = 0;
  builder.add(100, 200, {1, 0});
  EXPECT_EQ(imported(builder).groups.size(), 1U);
  EXPECT_EQ(report_.groups, 2U);
  EXPECT_EQ(report_.autocorrelations, 1U);
}

TEST_F(MsImporterTest, OnlyAutocorrelationsAreNoData) {
  MsBuilder builder;
  builder.add(0, 0, {100, 0}).antenna2 = 0;
  EXPECT_THAT(refusal(builder), HasSubstr("no visibilities between different antennas"));
}

TEST_F(MsImporterTest, ASetWithoutRowsIsNoData) {
  EXPECT_THAT(refusal(MsBuilder()), HasSubstr("no visibilities between different antennas"));
}

TEST_F(MsImporterTest, RowsWithNothingInTheColumnAreLeftOut) {
  MsBuilder builder;
  builder.add(100, 200, {1, 0});
  builder.add(100, 200, {1, 0}).data.clear();
  EXPECT_EQ(imported(builder).groups.size(), 1U);
  EXPECT_THAT(report_.warnings, ElementsAre(HasSubstr("1 rows have nothing in column DATA")));
  builder.rows.erase(builder.rows.begin());
  std::filesystem::remove_all(folder_.file("out"));
  EXPECT_THAT(refusal(builder), HasSubstr("no row has a visibility in column DATA"));
}

TEST_F(MsImporterTest, AntennasBeyondTheTableFlagTheirRecords) {
  MsBuilder builder;
  builder.add(100, 200, {1, 0}).antenna2 = 4;
  builder.add(100, 200, {1, 0}).antenna1 = -1;
  builder.add(100, 200, {1, 0});
  const auto back = imported(builder);
  EXPECT_NE(back.groups.at(0).record.flag, 0);
  EXPECT_EQ(back.groups.at(0).record.baseline, 0);
  EXPECT_NE(back.groups.at(1).record.flag, 0);
  EXPECT_EQ(back.groups.at(2).record.flag, 0);
  EXPECT_THAT(report_.warnings, ElementsAre(HasSubstr("2 records have antennas that are not listed")));
}

TEST_F(MsImporterTest, AntennasAndHistoryArrive) {
  MsBuilder builder;
  builder.add(100, 200, {1, 0});
  const auto back = imported(builder);
  ASSERT_EQ(back.antennaTable.size(), 4 * 48U);
  EXPECT_EQ(loadLittle<std::int32_t>(back.antennaTable.data()), 1);
  EXPECT_EQ(back.antennaTable.substr(4, 16), "PAD0            ");  // its name is blank
  EXPECT_EQ(back.antennaTable.substr(52, 16), "ANT1            ");
  EXPECT_EQ(loadLittle<double>(back.antennaTable.data() + 48 + 24 + 16), 4.0);
  EXPECT_THAT(back.history, HasSubstr("imported from Measurement Set data.ms, field 0 'SRC', column DATA\n"));
  EXPECT_THAT(back.history, HasSubstr("\ntelescope SCOPE"));
  EXPECT_THAT(back.history, HasSubstr("\nflagged by hand\n"));
}

TEST_F(MsImporterTest, TimesOfAnotherScaleAreReported) {
  MsBuilder builder;
  builder.add(100, 200, {1, 0});
  builder.timeScale = "TAI";
  EXPECT_EQ(imported(builder).groups.at(0).record.time, 50000.25);
  EXPECT_THAT(report_.warnings, ElementsAre(HasSubstr("the times are TAI, not UTC")));
}

TEST_F(MsImporterTest, ASetWhereEverythingIsFlaggedSaysSo) {
  MsBuilder builder;
  builder.add(100, 200, {1, 0}).flags = {1};
  (void)imported(builder);
  EXPECT_THAT(report_.warnings, ElementsAre(HasSubstr("no visibility of column DATA is unflagged")));
}

TEST_F(MsImporterTest, ACancelledImportLeavesNothing) {
  MsBuilder builder;
  builder.add(100, 200, {1, 0});
  builder.write(input_);
  options_.outFolder = folder_.path();
  const CancelFlag cancel{1};
  RunIndicators indicators;
  indicators.cancel = &cancel;
  EXPECT_EQ(importVisibilities(input_, options_, indicators, report_).code(), StatusCode::kCancelled);
  EXPECT_FALSE(test::exists(folder_.file("data.uvx")));
}

TEST_F(MsImporterTest, TheReadingBarEndsAtAHundred) {
  struct Recorder : ProgressBar {
    void setPos(int percent) override { positions.push_back(percent); }
    std::vector<int> positions;
  } bar;
  MsBuilder builder;
  for (int i = 0; i < 600; ++i) builder.add(100, 200, {1, 0});
  builder.write(input_);
  options_.outFolder = folder_.path();
  RunIndicators indicators;
  indicators.readingBar = &bar;
  ASSERT_TRUE(importVisibilities(input_, options_, indicators, report_).ok());
  EXPECT_THAT(bar.positions, ElementsAre(0, 43, 85, 100));
}

TEST_F(MsImporterTest, ColumnsCanBeChosenInMeasurementSetsOnly) {
  test::writeFile(folder_.file("plain.uvf"), "SIMPLE");
  options_.column = "data";
  const Status status = importVisibilities(folder_.file("plain.uvf"), options_, RunIndicators{}, report_);
  EXPECT_EQ(status.code(), StatusCode::kInvalidValue);
  EXPECT_THAT(status.message(), HasSubstr("in Measurement Sets only"));
}

}  // namespace
}  // namespace lumo
