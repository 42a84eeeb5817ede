// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <numbers>

#include "convert/Simulator.h"
#include "io/AStokesMix.h"
#include "io/AUVXFile.h"
#include "io/AUVXFqTbl.h"
#include "io/AUVXGroup.h"
#include "io/AUVXHeader.h"
#include "io/AUVXRead_FqS.h"
#include "io/AUVXSources.h"
#include "io/AUVXVisibility.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr double kPi = std::numbers::pi;
constexpr double kDegree = kPi / 180;
constexpr double kRadianPerMas = kDegree / 3.6e6;
constexpr double kLightSpeed = 299792458.0;

SkyModel skyOf(const std::string& components, const std::string& name = "test", double declination = 40) {
  SkyModel sky;
  const Status status =
      sky.parse(R"({"name":")" + name + R"(","ra_deg":120.5,"dec_deg":)" + std::to_string(declination) +
                R"(,"reference_mhz":5000,"components":[)" + components + "]}");
  EXPECT_TRUE(status.ok()) << status.text();
  return sky;
}

SkyModel offsetSky() {
  return skyOf(R"({"name":"knot","type":"point","east_mas":3,"north_mas":2,"flux_jy":1.5,"index":-0.7})");
}

SimulatorSettings settingsIn(const test::TempFolder& folder) {
  SimulatorSettings settings;
  settings.bandsMhz = {5000};
  settings.hours = 6;
  settings.intervalSeconds = 600;
  settings.folder = folder.path();
  return settings;
}

SimulationReport made(const SimulatorSettings& settings, const SkyModel& sky,
                      const AntennaArray& array = AntennaArray::vlba()) {
  SimulationReport report;
  const Status status = simulate(settings, sky, array, {}, report);
  EXPECT_TRUE(status.ok()) << status.text();
  return report;
}

/// A simulated file read back whole.
struct Observation {
  explicit Observation(const std::string& path) {
    if (file.Open(path, AFile::kRead) == 0) {
      ADD_FAILURE() << file.status().text();
      return;
    }
    AUVXVisibility visibility(file);
    table = AUVXFqTbl(file, 1);
    for (std::uint64_t i = 0; i < file.groupCount(); ++i) {
      file.SeekUVGroup(i);
      AUVXGroup group;
      group.load(file);
      records.push_back(group.record());
      visibility.load(file);
      visibilities.push_back(visibility);
    }
  }

  AUVXFile file;
  AUVXFqTbl table;
  std::vector<UvxRecord> records;
  std::vector<AUVXVisibility> visibilities;
};

/// Two antennas at the same latitude, half a degree each side of the zero meridian; the first is the eastern
/// one.
AntennaArray eastWestPair() {
  const auto line = [](const char* name, double longitude) {
    const EarthVector p = fromGeodetic(40 * kDegree, longitude * kDegree, 0);
    char text[128];
    std::snprintf(text, sizeof text, "%s %.6f %.6f %.6f\n", name, p.x, p.y, p.z);
    return std::string(text);
  };
  AntennaArray array;
  const Status status = array.parse(line("east", 0.5) + line("west", -0.5));
  EXPECT_TRUE(status.ok()) << status.text();
  return array;
}

TEST(SimulatorTest, ANoiseFreeFileFitsItsStoredCoordinatesToTheBit) {
  const test::TempFolder folder;
  SimulatorSettings settings = settingsIn(folder);
  settings.ifs = 2;
  settings.channels = 3;
  const SkyModel sky = offsetSky();
  const Observation seen(made(settings, sky).files.at(0).path);
  ASSERT_GT(seen.records.size(), 500u);
  for (std::size_t g = 0; g < seen.records.size(); ++g) {
    for (int i = 0; i < 2; ++i) {
      for (int c = 0; c < 3; ++c) {
        const double frequency = seen.table.GetFreq(c, i, 0);
        const auto expected =
            sky.visibility(seen.records[g].u * frequency, seen.records[g].v * frequency, frequency);
        for (int p = 0; p < 2; ++p) {
          EXPECT_EQ(seen.visibilities[g](i, c, p).Re(), static_cast<float>(expected.real()));
          EXPECT_EQ(seen.visibilities[g](i, c, p).Im(), static_cast<float>(expected.imag()));
          EXPECT_EQ(seen.visibilities[g](i, c, p).Weight(), 1.0F);
        }
      }
    }
  }
}

TEST(SimulatorTest, AnEastWestBaselineAtTransitHasItsLengthInUAndNothingInV) {
  const test::TempFolder folder;
  SimulatorSettings settings = settingsIn(folder);
  settings.hours = 0.5;  // three integrations, the middle one at transit
  const AntennaArray array = eastWestPair();
  const Observation seen(made(settings, offsetSky(), array).files.at(0).path);
  ASSERT_EQ(seen.records.size(), 3u);
  const EarthVector b = array.position(0) - array.position(1);
  const double length = std::hypot(b.x, b.y, b.z) / kLightSpeed;
  // Stored in single precision: 6e-8 of the value.
  EXPECT_NEAR(seen.records[1].u, length, 1e-7 * length);
  EXPECT_NEAR(seen.records[1].v, 0, 1e-7 * length);
  EXPECT_EQ(seen.records[1].time, 60000.0);
  EXPECT_NEAR(seen.records[2].time, 60000.0 + 600 / 86400.0, 1e-10);
  EXPECT_EQ(seen.records[1].baseline, 256 + 2);
  // East of the zenith before the transit: the eastern antenna is nearer to the source.
  EXPECT_GT(seen.records[0].w, 0);
  EXPECT_LT(seen.records[2].w, 0);
}

TEST(SimulatorTest, ABaselinesTrackIsTheEllipseOfItsDeclination) {
  const test::TempFolder folder;
  SimulatorSettings settings = settingsIn(folder);
  settings.hours = 24;
  settings.intervalSeconds = 300;
  settings.elevationLimitDeg = -90;
  settings.declinationDeg = 25;
  const AntennaArray array = AntennaArray::vlba();
  const Observation seen(made(settings, offsetSky(), array).files.at(0).path);
  ASSERT_EQ(seen.records.size(), 45u * 288u);
  const EarthVector b = array.position(0) - array.position(9);
  const double semi = std::hypot(b.x, b.y) / kLightSpeed;
  double uMin = 0, uMax = 0;
  int count = 0;
  for (const UvxRecord& record : seen.records) {
    if (record.baseline != 256 * 1 + 10) continue;
    const double x = record.u / semi;
    const double y =
        (record.v - b.z / kLightSpeed * std::cos(25 * kDegree)) / (semi * std::sin(25 * kDegree));
    EXPECT_NEAR(x * x + y * y, 1, 1e-5);  // single precision over the sine of the declination
    uMin = std::min<double>(uMin, record.u);
    uMax = std::max<double>(uMax, record.u);
    ++count;
  }
  EXPECT_EQ(count, 288);
  // A full turn, sampled every 1.25 degrees: the extreme is met within 1 - cos(0.63 degrees).
  EXPECT_NEAR(uMax, semi, 1e-4 * semi);
  EXPECT_NEAR(uMin, -semi, 1e-4 * semi);
}

TEST(SimulatorTest, ABaselineIsObservedOnlyWhileBothAntennasSeeTheSource) {
  const test::TempFolder folder;
  SimulatorSettings settings = settingsIn(folder);
  settings.hours = 24;
  settings.elevationLimitDeg = 20;
  const AntennaArray array = AntennaArray::vlba();
  const Observation seen(made(settings, offsetSky(), array).files.at(0).path);
  std::map<std::pair<double, int>, int> expected;
  for (int k = 0; k < 144; ++k) {
    const double seconds = (k - 71.5) * 600;
    const auto altitude = [&](std::size_t i) {
      // Spherical triangle with the station's own geodetic latitude and local hour angle.
      const EarthVector p = array.position(i);
      const double latitude = std::atan2(p.z / (1 - 6.69437999014e-3), std::hypot(p.x, p.y));
      const double hour = 7.292115e-5 * seconds + std::atan2(p.y, p.x) - array.longitude();
      return std::asin(std::sin(latitude) * std::sin(40 * kDegree) +
                       std::cos(latitude) * std::cos(40 * kDegree) * std::cos(hour)) /
             kDegree;
    };
    for (int a = 0; a < 10; ++a)
      for (int b = a + 1; b < 10; ++b)
        if (altitude(static_cast<std::size_t>(a)) >= 20 && altitude(static_cast<std::size_t>(b)) >= 20)
          ++expected[{60000.0 + seconds / 86400, 256 * (a + 1) + b + 1}];
  }
  std::map<std::pair<double, int>, int> found;
  for (const UvxRecord& record : seen.records) ++found[{record.time, record.baseline}];
  EXPECT_EQ(found, expected);
  EXPECT_LT(found.size(), 45u * 144u);
  EXPECT_GT(found.size(), 1000u);
}

TEST(SimulatorTest, ASourceThatNeverRisesLeavesNoFile) {
  const test::TempFolder folder;
  SimulatorSettings settings = settingsIn(folder);
  settings.declinationDeg = -80;
  SimulationReport report;
  const Status status = simulate(settings, offsetSky(), AntennaArray::vlba(), {}, report);
  EXPECT_EQ(status.code(), StatusCode::kNoData);
  EXPECT_THAT(status.message(), HasSubstr("-80"));
  EXPECT_TRUE(report.files.empty());
  EXPECT_FALSE(test::exists(folder.file("test_5000.uvx")));
}

TEST(SimulatorTest, TheDirectFourierSumPeaksAtTheComponentsPlace) {
  const test::TempFolder folder;
  const Observation seen(made(settingsIn(folder), offsetSky()).files.at(0).path);
  const double frequency = seen.table.GetFreq(0, 0, 0);
  double best = 0, bestEast = 0, bestNorth = 0;
  for (double east = -6; east <= 6; east += 0.5) {
    for (double north = -6; north <= 6; north += 0.5) {
      double sum = 0;
      for (std::size_t g = 0; g < seen.records.size(); ++g) {
        const double phase =
            -2 * kPi * frequency * kRadianPerMas * (seen.records[g].u * east + seen.records[g].v * north);
        const AUVXComplex value = seen.visibilities[g](0, 0, 0);
        sum += value.Re() * std::cos(phase) - value.Im() * std::sin(phase);
      }
      sum /= static_cast<double>(seen.records.size());
      if (sum > best) best = sum, bestEast = east, bestNorth = north;
    }
  }
  EXPECT_EQ(bestEast, 3);        // to the east
  EXPECT_EQ(bestNorth, 2);       // to the north
  EXPECT_NEAR(best, 1.5, 1e-4);  // phases of some 100 radians from single-precision values of 1e-7
}

TEST(SimulatorTest, TheSameSeedGivesTheSameBytesAndAnotherDoesNot) {
  const test::TempFolder first, second, third;
  const auto bytes = [](const test::TempFolder& folder, std::uint64_t seed) {
    SimulatorSettings settings = settingsIn(folder);
    settings.noiseJy = 0.1;
    settings.seed = seed;
    return test::readFile(made(settings, offsetSky()).files.at(0).path);
  };
  const std::string reference = bytes(first, 7);
  EXPECT_EQ(reference, bytes(second, 7));
  EXPECT_NE(reference, bytes(third, 8));
}

TEST(SimulatorTest, ABandsFileDoesNotDependOnTheOtherBands) {
  const test::TempFolder first, second;
  SimulatorSettings settings = settingsIn(first);
  settings.noiseJy = 0.1;
  const std::string alone = test::readFile(made(settings, offsetSky()).files.at(0).path);
  settings.folder = second.path();
  settings.bandsMhz = {4000, 5000};
  const SimulationReport both = made(settings, offsetSky());
  EXPECT_EQ(alone, test::readFile(both.files.at(1).path));
}

TEST(SimulatorTest, NoiseHasTheGivenDeviationAndIsIndependentInBothProducts) {
  const test::TempFolder folder;
  SimulatorSettings settings = settingsIn(folder);
  settings.noiseJy = 0.25;
  settings.channels = 32;
  const SkyModel sky = skyOf(R"({"type":"point","east_mas":0,"north_mas":0,"flux_jy":2,"index":0})");
  const Observation seen(made(settings, sky).files.at(0).path);
  double sums[4] = {}, squares[4] = {}, cross = 0, n = 0;
  for (const AUVXVisibility& visibility : seen.visibilities) {
    for (int c = 0; c < 32; ++c) {
      const AUVXComplex rr = visibility(0, c, 0), ll = visibility(0, c, 1);
      const double parts[4] = {rr.Re() - 2.0, rr.Im(), ll.Re() - 2.0, ll.Im()};
      for (int k = 0; k < 4; ++k) sums[k] += parts[k], squares[k] += parts[k] * parts[k];
      cross += parts[0] * parts[2];
      EXPECT_EQ(rr.Weight(), 16.0F);  // 1 / 0.25²
      EXPECT_EQ(ll.Weight(), 16.0F);
      ++n;
    }
  }
  ASSERT_GT(n, 20000);
  for (int k = 0; k < 4; ++k) {
    // Five standard errors of a mean and of a deviation.
    EXPECT_NEAR(sums[k] / n, 0, 5 * 0.25 / std::sqrt(n));
    EXPECT_NEAR(std::sqrt(squares[k] / n), 0.25, 5 * 0.25 / std::sqrt(2 * n));
  }
  EXPECT_NEAR(cross / n, 0, 5 * 0.0625 / std::sqrt(n));
}

TEST(SimulatorTest, TheIfsFollowOneAnotherWithoutAGap) {
  const test::TempFolder folder;
  SimulatorSettings settings = settingsIn(folder);
  settings.ifs = 3;
  settings.channels = 4;
  settings.channelWidthKhz = 500;
  const Observation seen(made(settings, offsetSky()).files.at(0).path);
  ASSERT_EQ(seen.table.GetIFs(), 3);
  ASSERT_EQ(seen.table.GetChannels(), 4);
  ASSERT_EQ(seen.table.GetFreqSels(), 1);
  for (int i = 0; i < 3; ++i)
    for (int c = 0; c < 4; ++c) EXPECT_EQ(seen.table.GetFreq(c, i, 0), 5e9 + (4 * i + c) * 5e5);
}

TEST(SimulatorTest, TheTablesTellSourceProductsAndAntennas) {
  const test::TempFolder folder;
  const Observation seen(made(settingsIn(folder), offsetSky()).files.at(0).path);
  const AUVXSources sources(seen.file);
  ASSERT_EQ(sources.count(), 1);
  EXPECT_EQ(sources[0].name, "test");
  EXPECT_EQ(sources[0].rightAscension, 120.5);
  EXPECT_EQ(sources[0].declination, 40);
  EXPECT_THAT(AUVXStokes(seen.file).products(), ElementsAre(-1, -2));
  EXPECT_EQ(AUVXHeader(seen.file).unit, "JY");
  const auto antennas = seen.file.GetTable("AN");
  ASSERT_TRUE(antennas.has_value());
  EXPECT_EQ(antennas->size(), 480u);
  for (const UvxRecord& record : seen.records) {
    EXPECT_EQ(record.flag, 0);
    EXPECT_EQ(record.source, sources[0].id);
    EXPECT_EQ(record.freqSel, seen.table.GetFreqSelID(0));
  }
}

TEST(SimulatorTest, TheHistoryKeepsEverySetting) {
  const test::TempFolder folder;
  SimulatorSettings settings = settingsIn(folder);
  settings.noiseJy = 0.125;
  settings.seed = 987654321;
  settings.ifs = 2;
  settings.channels = 5;
  settings.channelWidthKhz = 250;
  settings.elevationLimitDeg = 12;
  settings.declinationDeg = 33.5;
  const Observation seen(made(settings, offsetSky()).files.at(0).path);
  const auto bytes = seen.file.GetTable("HI");
  ASSERT_TRUE(bytes.has_value());
  const std::string text(bytes->begin(), bytes->end());
  for (const char* part : {"VLBA", "12 deg", "5000 MHz", "IFs 2", "channels 5", "250 kHz", "hours 6", "600 s",
                           "33.5 deg", "0.125 Jy", "seed 987654321", "knot", "1.5 Jy", "index -0.7"})
    EXPECT_THAT(text, HasSubstr(part));
}

TEST(SimulatorTest, TheGivenDeclinationReplacesTheModels) {
  const test::TempFolder folder;
  SimulatorSettings settings = settingsIn(folder);
  settings.declinationDeg = 65;
  const Observation seen(made(settings, offsetSky()).files.at(0).path);
  EXPECT_EQ(AUVXSources(seen.file)[0].declination, 65);
}

TEST(SimulatorTest, OneFileABandIsNamedAfterTheModelAndTheBand) {
  const test::TempFolder folder;
  SimulatorSettings settings = settingsIn(folder);
  settings.folder = folder.file("new/deep");
  settings.bandsMhz = {4800.5, 100000};
  const SimulationReport report =
      made(settings, skyOf(R"({"type":"point","east_mas":0,"north_mas":0,"flux_jy":1,"index":0})", ""));
  ASSERT_EQ(report.files.size(), 2u);
  EXPECT_EQ(report.files[0].path, folder.file("new/deep/sim_4800.5.uvx"));
  EXPECT_EQ(report.files[1].path, folder.file("new/deep/sim_100000.uvx"));
  EXPECT_TRUE(test::exists(report.files[1].path));
}

TEST(SimulatorTest, TheReportTellsGroupsAndTheExtentInWavelengths) {
  const test::TempFolder folder;
  SimulatorSettings settings = settingsIn(folder);
  settings.ifs = 2;
  const SimulationReport report = made(settings, offsetSky());
  const Observation seen(report.files.at(0).path);
  const AUVXHeader header(seen.file);
  EXPECT_EQ(report.files[0].groups, seen.records.size());
  const double highest = 5.001e9;
  EXPECT_EQ(report.files[0].uMax, std::max(-header.uMin, header.uMax) * highest);
  EXPECT_EQ(report.files[0].vMax, std::max(-header.vMin, header.vMax) * highest);
}

TEST(SimulatorTest, TheReaderOfTheImagingSeesEveryGroup) {
  const test::TempFolder folder;
  Observation seen(made(settingsIn(folder), offsetSky()).files.at(0).path);
  AUVXRead_FqS reader(&seen.file, 1, seen.table.GetFreqSelID(0), nullptr);
  AUVXGroup group;
  AUVXVisibility visibility(seen.file);
  int flag = 1;
  std::size_t count = 0;
  while (reader.GetUVGVis(group, visibility, flag) != 0) ++count;
  EXPECT_EQ(count, seen.records.size());
}

struct BadSetting {
  const char* name;
  void (*spoil)(SimulatorSettings&);
};

TEST(SimulatorTest, ABadSettingIsRefusedByName) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  static const double kNan = nan;
  const BadSetting cases[] = {{"bands", [](SimulatorSettings& s) { s.bandsMhz = {}; }},
                              {"bands",
                               [](SimulatorSettings& s) {
                                 s.bandsMhz = {5000, -1};
                               }},
                              {"bands",
                               [](SimulatorSettings& s) {
                                 s.bandsMhz = {5000, 6000, 5000};
                               }},
                              {"bands", [](SimulatorSettings& s) { s.bandsMhz = {kNan}; }},
                              {"ifs", [](SimulatorSettings& s) { s.ifs = 0; }},
                              {"channels", [](SimulatorSettings& s) { s.channels = 0; }},
                              {"channels", [](SimulatorSettings& s) { s.ifs = 200, s.channels = 200; }},
                              {"channels", [](SimulatorSettings& s) { s.ifs = 2, s.channels = 4294967295u; }},
                              {"channel-width", [](SimulatorSettings& s) { s.channelWidthKhz = 0; }},
                              {"hours", [](SimulatorSettings& s) { s.hours = 25; }},
                              {"hours", [](SimulatorSettings& s) { s.hours = kNan; }},
                              {"interval", [](SimulatorSettings& s) { s.intervalSeconds = 0; }},
                              {"interval", [](SimulatorSettings& s) { s.intervalSeconds = 1e-9; }},
                              {"interval", [](SimulatorSettings& s) { s.intervalSeconds = kNan; }},
                              {"declination", [](SimulatorSettings& s) { s.declinationDeg = 90.1; }},
                              {"noise", [](SimulatorSettings& s) { s.noiseJy = -1; }},
                              {"noise", [](SimulatorSettings& s) { s.noiseJy = kNan; }},
                              {"elevation-limit", [](SimulatorSettings& s) { s.elevationLimitDeg = 90; }},
                              {"out", [](SimulatorSettings& s) { s.folder.clear(); }}};
  const test::TempFolder folder;
  for (const BadSetting& bad : cases) {
    SimulatorSettings settings = settingsIn(folder);
    bad.spoil(settings);
    EXPECT_THAT(settings.validate().message(), StartsWith(std::string(bad.name) + ": "));
    SimulationReport report;
    EXPECT_EQ(simulate(settings, offsetSky(), AntennaArray::vlba(), {}, report).code(),
              StatusCode::kInvalidValue);
  }
  EXPECT_TRUE(settingsIn(folder).validate().ok());
}

TEST(SimulatorTest, ASpectrumBeyondSinglePrecisionIsRefused) {
  const test::TempFolder folder;
  SimulatorSettings settings = settingsIn(folder);
  settings.bandsMhz = {5e6};
  SimulationReport report;
  const Status status = simulate(
      settings, skyOf(R"({"name":"wild","type":"point","east_mas":0,"north_mas":0,"flux_jy":1,"index":20})"),
      AntennaArray::vlba(), {}, report);
  EXPECT_EQ(status.code(), StatusCode::kInvalidValue);
  EXPECT_THAT(status.message(), HasSubstr("wild"));
}

TEST(SimulatorTest, AFolderThatCannotBeMadeIsReported) {
  const test::TempFolder folder;
  test::writeFile(folder.file("file"), "x");
  SimulatorSettings settings = settingsIn(folder);
  settings.folder = folder.file("file/below");
  SimulationReport report;
  const Status status = simulate(settings, offsetSky(), AntennaArray::vlba(), {}, report);
  EXPECT_EQ(status.code(), StatusCode::kWriteFailed);
  EXPECT_THAT(status.file(), HasSubstr("below"));
}

/// Records the positions and sets a flag once a position is reached.
class CancellingBar : public ProgressBar {
 public:
  CancellingBar(CancelFlag* flag, int at) : flag_(flag), at_(at) {}
  void setPos(int percent) override {
    positions.push_back(percent);
    if (percent >= at_ && flag_ != nullptr) *flag_ = 1;
  }
  std::vector<int> positions;

 private:
  CancelFlag* flag_;
  int at_;
};

TEST(SimulatorTest, ACancelledBandLeavesAnOlderFileAsItWas) {
  const test::TempFolder folder;
  const std::string path = folder.file("test_5000.uvx");
  test::writeFile(path, "older");
  CancelFlag cancel{0};
  CancellingBar bar(&cancel, 50);
  RunIndicators indicators;
  indicators.cancel = &cancel;
  indicators.readingBar = &bar;
  SimulationReport report;
  const Status status = simulate(settingsIn(folder), offsetSky(), AntennaArray::vlba(), indicators, report);
  EXPECT_EQ(status.code(), StatusCode::kCancelled);
  EXPECT_TRUE(report.files.empty());
  EXPECT_EQ(test::readFile(path), "older");
}

TEST(SimulatorTest, TheBarsReachTheirEnds) {
  const test::TempFolder folder;
  CancellingBar reading(nullptr, 0), file(nullptr, 0);
  RunIndicators indicators;
  indicators.readingBar = &reading;
  indicators.fileBar = &file;
  SimulatorSettings settings = settingsIn(folder);
  settings.bandsMhz = {5000, 6000};
  SimulationReport report;
  ASSERT_TRUE(simulate(settings, offsetSky(), AntennaArray::vlba(), indicators, report).ok());
  EXPECT_THAT(file.positions, ElementsAre(50, 100));
  EXPECT_EQ(std::count(reading.positions.begin(), reading.positions.end(), 100), 2);
}

}  // namespace
}  // namespace lumo
