// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include "MsFixture.h"
#include "support/RealData.h"

namespace lumo {
namespace {

using ::testing::HasSubstr;

constexpr double kDegree = std::numbers::pi / 180;

ImportReport importReal(const std::string& set, const test::TempFolder& folder, std::uint32_t average = 0) {
  ImportReport report;
  const Status status = importVisibilities(test::realDataFolder() + set, {folder.path(), "", {}, "", average},
                                           RunIndicators{}, report);
  EXPECT_TRUE(status.ok()) << status.text();
  return report;
}

/// What is known about a published set, independently of this program.
struct SetFacts {
  const char* set;
  std::uint64_t rows;
  std::uint64_t autocorrelations;
  std::vector<std::uint64_t> records;  ///< per output
  std::vector<UvxShape> shapes;
  std::uint64_t usable;  ///< unflagged, with a weight above 0
  double lowestMhz, highestMhz;
  const char* column;
};

std::vector<SetFacts> allSets() {
  return {
      {"lofar-3c48-2013-ms/lofar-3c48-regular.ms",
       168,
       0,
       {168},
       {{1, 8, 4}},
       3712,
       134.288,
       134.459,
       "CORRECTED_DATA"},
      // Nothing is flagged; of the widest window's 4224 visibilities 1984 have the weight 0.
      {"lofar-3c48-2013-ms/lofar-3c48-bda.ms",
       159,
       0,
       {6, 12, 9, 132},
       {{3, 1, 4}, {1, 4, 4}, {1, 1, 4}, {1, 8, 4}},
       4524 - 1984,
       134.288,
       134.459,
       "DATA"},
      {"ms-singles/wsrt-3c343.1-2000.ms", 108, 0, {108}, {{1, 16, 4}}, 6912, 1175.156, 1177.5, "DATA"},
      {"ms-singles/vla-j1008-2010.ms", 1360, 0, {1360}, {{1, 64, 4}}, 348160, 36304.5, 36312.4, "DATA"},
      // Two fields with two windows each.
      {"ms-singles/alma-two-fields-2014.ms",
       1058,
       0,
       {161, 161, 368, 368},
       {{1, 64, 4}, {1, 1, 4}, {1, 64, 4}, {1, 1, 4}},
       89698,
       84321.6,
       86290.3,
       "DATA"},
      // 20 of 210 rows are autocorrelations; nothing is flagged.
      {"ms-singles/ovro-lwa-2018.ms",
       210,
       20,
       {190},
       {{1, 109, 4}},
       std::uint64_t{190} * 109 * 4,
       27.384,
       29.976,
       "DATA"},
  };
}

class MsRealDataTest : public ::testing::TestWithParam<SetFacts> {};

TEST_P(MsRealDataTest, ImportsWithThePublishedFiguresAndStaysAsItIs) {
  LUMO_NEEDS_REAL_DATA();
  const SetFacts& facts = GetParam();
  const std::string path = test::realDataFolder() + facts.set;
  const auto before = test::everythingIn(path);
  const test::TempFolder folder;
  const ImportReport report = importReal(facts.set, folder);
  EXPECT_TRUE(test::everythingIn(path) == before);
  EXPECT_EQ(report.groups, facts.rows);
  EXPECT_EQ(report.autocorrelations, facts.autocorrelations);
  EXPECT_THAT(report.notes, ::testing::Contains(HasSubstr(std::string("those of column ") + facts.column)));
  ASSERT_EQ(report.files.size(), facts.records.size());
  std::uint64_t usable = 0;
  double lowest = 1e99;
  double highest = 0;
  for (std::size_t i = 0; i < report.files.size(); ++i) {
    const ImportedFile& file = report.files[i];
    EXPECT_EQ(file.records, facts.records[i]);
    EXPECT_EQ(file.shape, facts.shapes[i]);
    EXPECT_EQ(test::readUvx(file.path).groups.size(), facts.records[i]);
    for (const UvxBand& band : file.bands) {
      usable += band.usable;
      const double last = band.frequency + (band.channels - 1.0) * band.width;
      lowest = std::min({lowest, band.frequency, last});
      highest = std::max({highest, band.frequency, last});
    }
  }
  EXPECT_EQ(usable, facts.usable);
  // Published to a kilohertz, or to six digits: half of the last one.
  EXPECT_NEAR(lowest * 1e-6, facts.lowestMhz, std::max(1e-3, 1.5e-6 * facts.lowestMhz));
  EXPECT_NEAR(highest * 1e-6, facts.highestMhz, std::max(1e-3, 1.5e-6 * facts.highestMhz));
}

INSTANTIATE_TEST_SUITE_P(Sets, MsRealDataTest, ::testing::ValuesIn(allSets()), [](const auto& test) {
  std::string name = test.param.set;
  std::replace_if(
      name.begin(), name.end(), [](char c) { return !std::isalnum(c); }, '_');
  return name;
});

/// Direction cosines of a place on the sky seen from a phase centre, degrees.
std::pair<double, double> offset(double ra, double dec, double centreRa, double centreDec) {
  const double a = (ra - centreRa) * kDegree;
  const double d = dec * kDegree;
  const double d0 = centreDec * kDegree;
  return {std::cos(d) * std::sin(a), std::sin(d) * std::cos(d0) - std::cos(d) * std::sin(d0) * std::cos(a)};
}

/// Least-squares flux densities of a source at the phase centre and one at (l, m), from the parallel hands.
std::pair<std::complex<double>, std::complex<double>> twoSources(const test::UvxReadBack& back, double l,
                                                                 double m) {
  std::complex<double> sumV = 0, sumTurned = 0, cross = 0;
  double count = 0;
  for (const auto& group : back.groups)
    for (int i = 0; i < back.frequencies.GetIFs(); ++i)
      for (std::size_t product = 0; product < 2; ++product) {
        const AUVXComplex& value = group.visibilities[static_cast<std::size_t>(i) * 4 + product];
        if (!value.isUsable()) continue;
        const double phase = 2 * std::numbers::pi * back.frequencies.GetFreq(0, i, 0) *
                             (group.record.u * l + group.record.v * m);
        const std::complex<double> v(value.Re(), value.Im());
        const std::complex<double> fringe = std::polar(1.0, phase);
        sumV += v;
        sumTurned += v * std::conj(fringe);
        cross += fringe;
        ++count;
      }
  const std::complex<double> determinant = count * count - std::norm(cross);
  return {(count * sumV - cross * sumTurned) / determinant,
          (count * sumTurned - std::conj(cross) * sumV) / determinant};
}

TEST(MsRealDataSignTest, TheNeighbourOf3C343Point1LiesWhereCataloguesHaveIt) {
  LUMO_NEEDS_REAL_DATA();
  // 3C 343 (16h34m33.80s, +62d45'35.9") lies 27' west and 11' north of 3C 343.1 (16h38m28.205s,
  // +62d34'44.32"), the phase centre, J2000, and is attenuated by the antennas' beam. A wrong sign of u, of v
  // or of the phases would find nothing there.
  const test::TempFolder folder;
  const ImportReport report = importReal("ms-singles/wsrt-3c343.1-2000.ms", folder, 1);
  const auto back = test::readUvx(report.files.at(0).path);
  const double ra0 = 15 * (16 + 38 / 60.0 + 28.205 / 3600);
  const double dec0 = 62 + 34 / 60.0 + 44.32 / 3600;
  EXPECT_NEAR(back.sources.at(0).rightAscension, ra0, 1e-3);
  EXPECT_NEAR(back.sources.at(0).declination, dec0, 1e-3);
  const auto [l, m] = offset(15 * (16 + 34 / 60.0 + 33.80 / 3600), 62 + 45 / 60.0 + 35.9 / 3600, ra0, dec0);
  const auto [centre, neighbour] = twoSources(back, l, m);
  EXPECT_NEAR(centre.real(), 3, 0.15);  // Jy; "about 3 Jy"
  EXPECT_GT(neighbour.real(), 0.6);
  for (const auto& [east, north] : {std::pair(-1, -1), std::pair(-1, 1), std::pair(1, -1)})
    EXPECT_LT(std::abs(twoSources(back, east * l, north * m).second), 0.3) << east << " " << north;
}

TEST(MsRealDataSignTest, CalibratedLofarDataHave3C48AtThePhaseCentre) {
  LUMO_NEEDS_REAL_DATA();
  const test::TempFolder folder;
  const ImportReport report = importReal("lofar-3c48-2013-ms/lofar-3c48-regular.ms", folder, 1);
  const auto back = test::readUvx(report.files.at(0).path);
  // 3C 48: 01h37m41.299s, +33d09'35.13" (J2000).
  EXPECT_NEAR(back.sources.at(0).rightAscension, 15 * (1 + 37 / 60.0 + 41.299 / 3600), 1e-4);
  EXPECT_NEAR(back.sources.at(0).declination, 33 + 9 / 60.0 + 35.13 / 3600, 1e-4);
  std::complex<double> sum = 0;
  double count = 0;
  for (const auto& group : back.groups)
    for (std::size_t i = 0; i < 8; ++i)
      for (std::size_t product = 0; product < 2; ++product)
        if (const AUVXComplex& value = group.visibilities[4 * i + product]; value.isUsable()) {
          sum += std::complex<double>(value.Re(), value.Im());
          ++count;
        }
  // Parallel hands of 73 Jy with phases within about 10 degrees.
  EXPECT_NEAR(std::abs(sum) / count, 73, 2);
  EXPECT_LT(std::abs(std::arg(sum)), 5 * kDegree);
}

}  // namespace
}  // namespace lumo
