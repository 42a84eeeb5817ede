// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>
#include <complex>
#include <numbers>

#include "MsFixture.h"
#include "convert/AntennaArray.h"
#include "convert/Simulator.h"
#include "convert/SkyModel.h"

namespace lumo {
namespace {

using test::MsBuilder;
using test::UvfitsBuilder;
using test::UvxReadBack;

constexpr double kLightSpeed = 299792458.0;
constexpr double kMas = std::numbers::pi / 180 / 3600 / 1000;
constexpr std::uint32_t kIfs = 2;
constexpr std::uint32_t kChannels = 3;

/// One simulated observation, written as a UVFITS file and as a Measurement Set and imported from both. A
/// point source lies 3 mas east and 2 mas north of the phase centre; there is noise, so that no two numbers
/// agree by chance.
class MsAgreementTest : public test::MsFixture {
 protected:
  void SetUp() override {
    SkyModel sky;
    ASSERT_TRUE(sky.parse(R"({"name":"SRC","ra_deg":120.5,"dec_deg":40,"reference_mhz":5000,"components":[)"
                          R"({"type":"point","east_mas":3,"north_mas":2,"flux_jy":1.5,"index":-0.7}]})")
                    .ok());
    SimulatorSettings settings;
    settings.bandsMhz = {5000};
    settings.ifs = kIfs;
    settings.channels = kChannels;
    settings.hours = 4;
    settings.intervalSeconds = 1800;
    settings.noiseJy = 0.1;
    settings.folder = folder_.path();
    SimulationReport made;
    ASSERT_TRUE(simulate(settings, sky, AntennaArray::vlba(), {}, made).ok());
    truth_ = test::readUvx(made.files.at(0).path);
    ASSERT_GT(truth_.groups.size(), 100U);
  }

  [[nodiscard]] UvxReadBack fromUvfits(std::uint32_t average = 0) {
    UvfitsBuilder builder;
    builder.axis("STOKES").pixels = 2;
    builder.axis("FREQ").pixels = kChannels;
    builder.axis("IF").pixels = kIfs;
    builder.axis("RA").value = truth_.sources.at(0).rightAscension;
    builder.axis("DEC").value = truth_.sources.at(0).declination;
    builder.parameterZeros[4] = 2460000.5;
    const double offset = frequency(1, 0) - 5e9;
    builder.tables.push_back(test::frequencyTable(kIfs));
    builder.tables.back().numbers({1, 0, offset, 1e6, 1e6, 3e6, 3e6, 1, 1});
    for (const UvxReadBack::Group& group : truth_.groups) {
      auto& made = builder.add(group.record.u, group.record.v, group.record.baseline, 0, 0, 0);
      made.parameters[2] = group.record.w;
      made.parameters[5] = group.record.time - 60000.0;
      for (std::size_t i = 0; i < group.visibilities.size(); ++i) {
        made.array[3 * i] = group.visibilities[i].Re();
        made.array[3 * i + 1] = group.visibilities[i].Im();
        made.array[3 * i + 2] = group.visibilities[i].Weight();
      }
    }
    test::writeFile(folder_.file("data.uvf"), builder.bytes());
    ImportReport report;
    const Status status = importVisibilities(
        folder_.file("data.uvf"), {folder_.file("uvfits"), "", {}, "", average}, RunIndicators{}, report);
    EXPECT_TRUE(status.ok()) << status.text();
    return test::readUvx(report.files.at(0).path);
  }

  /// The IFs as spectral windows, the products as RR and LL around RL and LR that hold nothing.
  [[nodiscard]] UvxReadBack fromMs(std::uint32_t average = 0) {
    MsBuilder builder;
    builder.antennas = 10;
    builder.tiled = true;
    builder.correlations = {{5, 8}};
    const auto& source = truth_.sources.at(0);
    builder.fields[0].direction = {source.rightAscension * std::numbers::pi / 180,
                                   source.declination * std::numbers::pi / 180};
    builder.windows.resize(kIfs);
    builder.descriptions = {{0, 0}, {1, 0}};
    for (int i = 0; i < static_cast<int>(kIfs); ++i) {
      builder.windows[i].frequencies.clear();
      for (int c = 0; c < static_cast<int>(kChannels); ++c)
        builder.windows[i].frequencies.push_back(frequency(i, c));
      builder.windows[i].widths.assign(kChannels, 1e6);
    }
    for (const UvxReadBack::Group& group : truth_.groups)
      for (std::uint32_t i = 0; i < kIfs; ++i) addRow(builder, group, i);
    options_.average = average;
    return imported(builder);
  }

  static void addRow(MsBuilder& builder, const UvxReadBack::Group& group, std::uint32_t ifNumber) {
    auto& row = builder.add(group.record.u * kLightSpeed, group.record.v * kLightSpeed, 0,
                            static_cast<int>(ifNumber));
    row.uvw[2] = group.record.w * kLightSpeed;
    row.antenna1 = group.record.baseline / 256 - 1;
    row.antenna2 = group.record.baseline % 256 - 1;
    row.time = group.record.time * 86400;
    row.weight.assign(2, group.visibilities[0].Weight());
    for (std::size_t k = 0; k < row.data.size(); ++k) {
      const AUVXComplex& value = group.visibilities[ifNumber * row.data.size() + k];
      row.data[k] = {value.Re(), value.Im()};
    }
  }

  [[nodiscard]] double frequency(int ifNumber, int channel) const {
    return truth_.frequencies.GetFreq(channel, ifNumber, 0);
  }

  UvxReadBack truth_;
};

/// UVFITS has the IFs in one group, the set has a row and so a group for each.
void expectAgreement(const UvxReadBack& uvfits, const UvxReadBack& ms) {
  ASSERT_EQ(ms.groups.size(), kIfs * uvfits.groups.size());
  for (std::size_t g = 0; g < uvfits.groups.size(); ++g) {
    const auto& expected = uvfits.groups[g];
    const std::size_t each = expected.visibilities.size() / kIfs;
    for (std::size_t i = 0; i < kIfs; ++i) {
      const auto& group = ms.groups[kIfs * g + i];
      // Single-precision rounding: 4 units in the last place.
      EXPECT_FLOAT_EQ(group.record.u, expected.record.u);
      EXPECT_FLOAT_EQ(group.record.v, expected.record.v);
      EXPECT_FLOAT_EQ(group.record.w, expected.record.w);
      EXPECT_EQ(group.record.baseline, expected.record.baseline);
      // The UVFITS file holds the day's fraction in single precision.
      EXPECT_NEAR(group.record.time, expected.record.time, 3e-8);
      ASSERT_EQ(group.visibilities.size(), each);
      for (std::size_t k = 0; k < each; ++k) {
        const AUVXComplex& want = expected.visibilities[i * each + k];
        EXPECT_FLOAT_EQ(group.visibilities[k].Re(), want.Re());
        EXPECT_FLOAT_EQ(group.visibilities[k].Im(), want.Im());
        EXPECT_FLOAT_EQ(group.visibilities[k].Weight(), want.Weight());
      }
    }
  }
}

/// Real part of the mean of V exp(-2 pi i (u l + v m)), the image at an offset in mas, weights aside.
double image(const UvxReadBack& back, double eastMas, double northMas) {
  std::complex<double> sum = 0;
  int count = 0;
  for (const auto& group : back.groups) {
    const int selection = back.frequencies.GetFreqSelNum(group.record.freqSel);
    const auto products = static_cast<int>(group.visibilities.size()) / back.frequencies.GetIFs() /
                          back.frequencies.GetChannels();
    for (int k = 0; k < static_cast<int>(group.visibilities.size()); ++k) {
      const int channel = k / products % back.frequencies.GetChannels();
      const int ifNumber = k / products / back.frequencies.GetChannels();
      const double phase = -2 * std::numbers::pi * back.frequencies.GetFreq(channel, ifNumber, selection) *
                           (group.record.u * eastMas + group.record.v * northMas) * kMas;
      const AUVXComplex& value = group.visibilities[static_cast<std::size_t>(k)];
      sum += std::complex<double>(value.Re(), value.Im()) * std::polar(1.0, phase);
      ++count;
    }
  }
  return sum.real() / count;
}

TEST_F(MsAgreementTest, BothGiveTheSameValues) {
  const UvxReadBack uvfits = fromUvfits();
  const UvxReadBack ms = fromMs();
  EXPECT_NEAR(ms.sources.at(0).rightAscension, uvfits.sources.at(0).rightAscension, 1e-12);
  EXPECT_NEAR(ms.sources.at(0).declination, uvfits.sources.at(0).declination, 1e-12);
  for (int i = 0; i < static_cast<int>(kIfs); ++i)
    for (int c = 0; c < static_cast<int>(kChannels); ++c)
      EXPECT_NEAR(ms.frequencies.GetFreq(c, 0, i), uvfits.frequencies.GetFreq(c, i, 0), 1e-3);
  expectAgreement(uvfits, ms);
}

TEST_F(MsAgreementTest, BothGiveTheSameAverages) {
  const UvxReadBack uvfits = fromUvfits(2);
  const UvxReadBack ms = fromMs(2);
  ASSERT_EQ(uvfits.frequencies.GetIFs(), 4);  // per IF one of two channels and one of the third
  ASSERT_EQ(ms.frequencies.GetIFs(), 2);
  for (int i = 0; i < 4; ++i)
    EXPECT_NEAR(ms.frequencies.GetFreq(0, i % 2, i / 2), uvfits.frequencies.GetFreq(0, i, 0), 1e-3);
  expectAgreement(uvfits, ms);
}

TEST_F(MsAgreementTest, ASourceToTheNorthEastComesOutThereFromBoth) {
  for (const UvxReadBack& back : {fromUvfits(), fromMs(), fromMs(2)}) {
    const double there = image(back, 3, 2);
    // 0.1 Jy of noise in thousands of values; the other quadrants have sidelobes.
    EXPECT_NEAR(there, 1.5, 0.02);
    for (const auto& [east, north] : {std::pair(-3, -2), std::pair(-3, 2), std::pair(3, -2)})
      EXPECT_LT(image(back, east, north), 0.8) << east << " " << north;
  }
}

}  // namespace
}  // namespace lumo
