// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>
#include <complex>
#include <filesystem>
#include <limits>
#include <numbers>

#include "UvfitsFixture.h"
#include "convert/UvfitsFile.h"

namespace lumo {
namespace {

using test::UvfitsBuilder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class UvfitsImporterTest : public test::UvfitsFixture {};

constexpr double kMas = std::numbers::pi / 180 / 3600 / 1000;

/// Four stations' worth of baselines spread over all directions.
const std::vector<std::pair<double, double>> kTracks = {{0.010, 0.002}, {-0.003, 0.012}, {0.007, -0.009},
                                                        {0.002, 0.004}, {0.013, 0.008},  {-0.011, 0.005}};

TEST_F(UvfitsImporterTest, ASourceToTheNorthEastComesOutThere) {
  // 2 mas east, 3 mas north of the phase centre, with the sign of UVFITS: V = exp(+2 pi i (u l + v m)).
  const double east = 2 * kMas;
  const double north = 3 * kMas;
  UvfitsBuilder builder;
  for (const auto& [u, v] : kTracks) {
    const double phase = 2 * std::numbers::pi * 5e9 * (u * east + v * north);
    builder.add(u, v, 258, std::cos(phase), std::sin(phase), 1);
  }
  const auto back = imported(builder);
  // The image at an offset is the mean of V exp(-2 pi i (u l + v m)): 1 where the source is.
  const auto image = [&](double l, double m) {
    std::complex<double> sum = 0;
    for (const auto& group : back.groups) {
      const AUVXComplex& value = group.visibilities.at(0);
      const double phase = -2 * std::numbers::pi * back.frequencies.GetFreq(0, 0, 0) *
                           (group.record.u * l + group.record.v * m);
      sum += std::complex<double>(value.Re(), value.Im()) * std::polar(1.0, phase);
    }
    return sum.real() / static_cast<double>(back.groups.size());
  };
  // Single precision of u times 6e7 wavelengths times 1e-8 rad: phases good to 1e-6.
  EXPECT_NEAR(image(east, north), 1.0, 1e-5);
  EXPECT_LT(image(-east, -north), 0.9);
  EXPECT_LT(image(-east, north), 0.9);
  EXPECT_LT(image(east, -north), 0.9);
}

TEST_F(UvfitsImporterTest, EveryNumberOfAGroupArrives) {
  UvfitsBuilder builder;
  builder.axis("STOKES").pixels = 2;
  builder.axis("FREQ").pixels = 3;
  builder.axis("IF").pixels = 2;
  builder.tables.push_back(test::frequencyTable(2));
  builder.tables.back().numbers({1, 0, 8e6, 1e6, 1e6, 3e6, 3e6, 1, 1});
  auto& group = builder.add(0.125, -0.25, 256 * 3 + 7, 0, 0, 0);
  for (std::size_t i = 0; i < group.array.size(); ++i) group.array[i] = static_cast<double>(i) + 1;
  const auto back = imported(builder);
  const auto& record = back.groups.at(0).record;
  EXPECT_EQ(record.u, 0.125F);
  EXPECT_EQ(record.v, -0.25F);
  EXPECT_EQ(record.baseline, 256 * 3 + 7);
  EXPECT_EQ(record.freqSel, 1);
  EXPECT_EQ(record.flag, 0);
  EXPECT_EQ(record.time, 2450000.75 - 2400000.5);
  ASSERT_EQ(back.groups[0].visibilities.size(), 12U);
  for (std::size_t i = 0; i < 12; ++i) {
    const AUVXComplex& value = back.groups[0].visibilities[i];
    EXPECT_EQ(value.Re(), 3 * static_cast<float>(i) + 1);
    EXPECT_EQ(value.Im(), 3 * static_cast<float>(i) + 2);
    EXPECT_EQ(value.Weight(), 3 * static_cast<float>(i) + 3);
  }
  EXPECT_THAT(report_.files[0].products, ElementsAre(-1, -2));
}

TEST_F(UvfitsImporterTest, AxesInAnotherOrderGiveTheSameGroups) {
  UvfitsBuilder builder;
  builder.axis("STOKES").pixels = 2;
  builder.axis("FREQ").pixels = 3;
  // In the file: FREQ fastest, then STOKES, then COMPLEX.
  std::swap(builder.axes[0], builder.axes[2]);
  auto& group = builder.add(0.1, 0.1, 258, 0, 0, 0);
  for (std::size_t part = 0; part < 3; ++part)
    for (std::size_t stokes = 0; stokes < 2; ++stokes)
      for (std::size_t channel = 0; channel < 3; ++channel)
        group.array[part * 6 + stokes * 3 + channel] =
            static_cast<double>(100 * (part + 1) + 10 * stokes + channel);
  const auto back = imported(builder);
  for (std::size_t channel = 0; channel < 3; ++channel)
    for (std::size_t stokes = 0; stokes < 2; ++stokes) {
      const AUVXComplex& value = back.groups.at(0).visibilities.at(channel * 2 + stokes);
      const auto tag = static_cast<float>(10 * stokes + channel);
      EXPECT_EQ(value.Re(), 100 + tag);
      EXPECT_EQ(value.Im(), 200 + tag);
      EXPECT_EQ(value.Weight(), 300 + tag);
    }
}

TEST_F(UvfitsImporterTest, AutocorrelationsAreLeftOutAndCounted) {
  UvfitsBuilder builder;
  builder.add(0, 0, 257, 100, 0, 1);
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  builder.add(0, 0, 514, 100, 0, 1);
  EXPECT_EQ(imported(builder).groups.size(), 1U);
  EXPECT_EQ(report_.groups, 3U);
  EXPECT_EQ(report_.autocorrelations, 2U);
}

TEST_F(UvfitsImporterTest, OnlyAutocorrelationsAreNoData) {
  UvfitsBuilder builder;
  builder.add(0, 0, 257, 100, 0, 1);
  EXPECT_THAT(refusal(builder), HasSubstr("no visibilities between different antennas"));
}

TEST_F(UvfitsImporterTest, OneHandOfPolarisationKeepsItsName) {
  UvfitsBuilder builder;
  builder.axis("STOKES").value = -2;
  builder.axis("STOKES").step = 1;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  (void)imported(builder);
  EXPECT_THAT(report_.files.at(0).products, ElementsAre(-2));
}

TEST_F(UvfitsImporterTest, StokesAndLinearProductsAreAccepted) {
  UvfitsBuilder builder;
  builder.axis("STOKES") = {"STOKES", 4, 1, 1, 1};
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  (void)imported(builder);
  EXPECT_THAT(report_.files.at(0).products, ElementsAre(1, 2, 3, 4));
  builder.axis("STOKES") = {"STOKES", 4, -6, 2, -1};
  (void)imported(builder);
  EXPECT_THAT(report_.files.at(0).products, ElementsAre(-5, -6, -7, -8));
}

TEST_F(UvfitsImporterTest, AnAxisOfOnePixelNeedsNoName) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  builder.edit = [](test::FitsHeader& header) {
    for (const char* card : {"CTYPE5", "CRVAL5", "CRPIX5", "CDELT5"}) header.remove(card);
  };
  EXPECT_EQ(imported(builder).groups.size(), 1U);
}

TEST_F(UvfitsImporterTest, TheUnitIsJanskyOnlyWhereTheFileSaysSo) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  EXPECT_EQ(imported(builder).unit, "JY");
  builder.edit = [](test::FitsHeader& header) { header.text("BUNIT", "UNCALIB"); };
  EXPECT_EQ(imported(builder).unit, "");
  builder.edit = [](test::FitsHeader& header) { header.text("BUNIT", "Jy"); };
  EXPECT_EQ(imported(builder).unit, "JY");
}

TEST_F(UvfitsImporterTest, TheHistoryTellsWhereTheDataCameFrom) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  builder.edit = [](test::FitsHeader& header) { header.history("SELFCAL 3 rounds").history("caf\xE9 \x01"); };
  const auto back = imported(builder);
  EXPECT_THAT(back.history, HasSubstr("data.uvf"));
  EXPECT_THAT(back.history, HasSubstr("\nSELFCAL 3 rounds\n"));
  EXPECT_THAT(back.history, HasSubstr("\ncaf? ?\n"));
}

TEST_F(UvfitsImporterTest, MissingAntennaTableIsNoFailure) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  EXPECT_THAT(imported(builder).antennaTable, IsEmpty());
  EXPECT_THAT(report_.notes, ElementsAre(HasSubstr("AIPS AN")));
}

TEST_F(UvfitsImporterTest, AntennaNamesLoseNulsAndGarbage) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  builder.tables.push_back(test::antennaTable());
  builder.tables.back().text(std::string("BR\0\x05zzzz", 8)).numbers({1, 2, 3, 1});
  builder.tables.back().text("F\xFF\x02  ").numbers({4, 5, 6, 2});
  const std::string table = imported(builder).antennaTable;
  ASSERT_EQ(table.size(), 96U);
  EXPECT_EQ(table.substr(4, 16), "BR              ");
  EXPECT_EQ(table.substr(52, 16), "F??             ");
  EXPECT_EQ(loadLittle<std::int32_t>(table.data() + 48), 2);
  EXPECT_EQ(loadLittle<double>(table.data() + 48 + 24 + 16), 6.0);
}

TEST_F(UvfitsImporterTest, StationsAreTurnedFromTheArraysMeridianToGreenwich) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  builder.tables.push_back(test::antennaTable());
  // Array at longitude 90 degrees east: its x axis points along +y, its y axis along -x.
  builder.tables.back().card("ARRAYX", "0.0").card("ARRAYY", "6000000.0").card("ARRAYZ", "1000000.0");
  builder.tables.back().text("A").numbers({10, 20, 30, 1});
  const std::string table = imported(builder).antennaTable;
  ASSERT_EQ(table.size(), 48U);
  EXPECT_NEAR(loadLittle<double>(table.data() + 24), -20, 1e-6);
  EXPECT_NEAR(loadLittle<double>(table.data() + 32), 6000010, 1e-6);
  EXPECT_NEAR(loadLittle<double>(table.data() + 40), 1000030, 1e-6);
}

TEST_F(UvfitsImporterTest, AtomicTimesBecomeUtc) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  builder.tables.push_back(test::antennaTable());
  builder.tables.back().card("TIMSYS", "'IAT     '").card("IATUTC", "37.0");
  builder.tables.back().text("A").numbers({0, 0, 0, 1});
  // A double near 50000 days has a grain of 7e-12 days.
  EXPECT_NEAR(imported(builder).groups.at(0).record.time, 50000.25 - 37 / 86400.0, 1e-11);
}

TEST_F(UvfitsImporterTest, TheReportGivesEachBandsFigures) {
  UvfitsBuilder builder;
  builder.axis("IF").pixels = 2;
  builder.axis("FREQ").pixels = 2;
  builder.tables.push_back(test::frequencyTable(2));
  builder.tables.back().numbers({1, 0, 1e9, 1e6, -2e6, 2e6, 4e6, 1, -1});
  builder.add(3e-3, 4e-3, 258, 1, 0, 2);
  builder.add(0.03, 0.04, 259, 1, 0, 4).array[2] = -1;
  (void)imported(builder);
  const auto& bands = report_.files.at(0).bands;
  ASSERT_EQ(bands.size(), 2U);
  EXPECT_EQ(bands[0].frequency, 5e9);
  EXPECT_EQ(bands[1].frequency, 6e9);
  EXPECT_EQ(bands[1].width, -2e6);
  EXPECT_EQ(bands[0].records, 2U);
  EXPECT_EQ(bands[0].visibilities, 4U);
  EXPECT_EQ(bands[0].usable, 3U);
  EXPECT_EQ(bands[0].rejectedShare(), 0.25);
  EXPECT_EQ(bands[0].weightSum, 2 + 2 + 4);
  EXPECT_EQ(bands[1].weightSum, 2 + 2 + 4 + 4);
  // u and v are single precision: 6e-8 relative.
  EXPECT_NEAR(bands[0].uvMin, 5e-3 * 5e9, 5);
  EXPECT_NEAR(bands[0].uvMax, 0.05 * 5.001e9, 50);
  EXPECT_NEAR(bands[1].uvMin, 5e-3 * 5.998e9, 5);
  EXPECT_NEAR(bands[1].uvMax, 0.05 * 6e9, 50);
}

TEST_F(UvfitsImporterTest, TheOutputIsNeverTheInput) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  const std::string path = folder_.file("data.uvx");
  test::writeFile(path, builder.bytes());
  options_.outFolder = folder_.path();
  const Status status = importUvfits(path, options_, RunIndicators{}, report_);
  EXPECT_THAT(status.message(), HasSubstr("overwrite the input"));
  EXPECT_EQ(test::readFile(path), builder.bytes());
}

TEST_F(UvfitsImporterTest, AnOutputOfTheSameCommandIsNotWrittenOver) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  options_.taken = {folder_.file("out/data.uvx")};
  ASSERT_TRUE(import(builder).ok());
  EXPECT_EQ(report_.files.at(0).path, folder_.file("out/data_2.uvx"));
}

TEST_F(UvfitsImporterTest, AnotherInputOfTheSameCommandIsNotWrittenOver) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  std::filesystem::create_directory(folder_.file("out"));
  test::writeFile(folder_.file("out/data.uvx"), "to come");
  options_.inputs = {folder_.file("other.uvf"), folder_.file("out/../out/data.uvx")};
  EXPECT_THAT(import(builder).message(), HasSubstr("overwrite the input"));
  EXPECT_EQ(test::readFile(folder_.file("out/data.uvx")), "to come");
}

TEST_F(UvfitsImporterTest, ACancelledImportLeavesNothing) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  test::writeFile(input_, builder.bytes());
  options_.outFolder = folder_.path();
  const CancelFlag cancel{1};
  RunIndicators indicators;
  indicators.cancel = &cancel;
  EXPECT_EQ(importUvfits(input_, options_, indicators, report_).code(), StatusCode::kCancelled);
  EXPECT_FALSE(test::exists(folder_.file("data.uvx")));
}

TEST_F(UvfitsImporterTest, TheReadingBarEndsAtAHundred) {
  struct Recorder : ProgressBar {
    void setPos(int percent) override { positions.push_back(percent); }
    std::vector<int> positions;
  } bar;
  UvfitsBuilder builder;
  for (int i = 0; i < 600; ++i) builder.add(0.1, 0.2, 258, 1, 0, 1);
  test::writeFile(input_, builder.bytes());
  options_.outFolder = folder_.path();
  RunIndicators indicators;
  indicators.readingBar = &bar;
  ASSERT_TRUE(importUvfits(input_, options_, indicators, report_).ok());
  EXPECT_THAT(bar.positions, ElementsAre(0, 43, 85, 100));
}

TEST_F(UvfitsImporterTest, FitsIsToldFromOtherFilesByItsStart) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  test::writeFile(input_, builder.bytes());
  EXPECT_TRUE(looksLikeUvfits(input_));
  test::writeFile(input_, std::string("\x89UVX\r\n", 6) + std::string(200, ' '));
  EXPECT_FALSE(looksLikeUvfits(input_));
  EXPECT_FALSE(looksLikeUvfits(folder_.path()));
  EXPECT_FALSE(looksLikeUvfits(folder_.file("absent")));
}

}  // namespace
}  // namespace lumo
