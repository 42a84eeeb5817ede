// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include "UvfitsFixture.h"
#include "support/RealData.h"

namespace lumo {
namespace {

/// What is known about a published file, independently of this program: counts, frequencies (GHz, channel 0
/// of each IF) and baseline lengths (megawavelengths, to two or three digits).
struct Facts {
  const char* file;
  std::uint64_t records;
  UvxShape shape;
  std::uint64_t usable;
  double uvMin;
  double uvMax;
  std::vector<double> gigahertz;
};

std::vector<double> ifs(double first, double step, int count) {
  std::vector<double> list;
  for (int i = 0; i < count; ++i) list.push_back(first + step * i);
  return list;
}

std::vector<Facts> allFacts() {
  return {
      {"vlba-3c111-2014/3C111_C_2014_05_08.uvf", 3169, {8, 1, 4}, 101408, 2.3, 146, ifs(4.867875, 0.032, 8)},
      {"vlba-3c111-2014/3C111_X_2014_05_08.uvf", 3119, {8, 1, 4}, 99734, 4.1, 245, ifs(8.303875, 0.032, 8)},
      {"vlba-3c111-2014/3C111_U_2014_05_08.uvf", 4421, {8, 1, 4}, 140310, 7.5, 441, ifs(15.135875, 0.032, 8)},
      {"vlba-3c111-2014/3C111_Q_2014_05_08.uvf",
       4335,
       {8, 1, 4},
       124220,
       23.5,
       1099,
       ifs(43.675875, 0.032, 8)},
      {"vlba-3c111-2014/3C111_W_2014_05_08.uvf", 976, {8, 1, 4}, 15410, 129, 686, ifs(87.439875, 0.032, 8)},
      {"eht-m87-2018/L2V1_M87_2018_111_b1_hops_netcal_10s_StokesI.uvfits",
       5073,
       {1, 1, 4},
       10146,
       0.11,
       6714,
       {213.071}},
      {"eht-m87-2018/L2V1_M87_2018_111_b2_hops_netcal_10s_StokesI.uvfits",
       4358,
       {1, 1, 4},
       8716,
       0.11,
       6777,
       {215.071}},
      {"eht-m87-2018/L2V1_M87_2018_111_b3_hops_netcal_10s_StokesI.uvfits",
       7317,
       {1, 1, 4},
       14634,
       0.12,
       7347,
       {227.071}},
      {"eht-m87-2018/L2V1_M87_2018_111_b4_hops_netcal_10s_StokesI.uvfits",
       8004,
       {1, 1, 4},
       16008,
       0.12,
       7412,
       {229.071}},
      {"vlba-j1026-2006/J1026_2542-VLBA.UVF",
       1395,
       {4, 1, 4},
       21600,
       1.9,
       146,
       {4.60945875, 4.67945875, 4.99445875, 5.09545875}},
      {"vlba-j0414-1996/vis_multichan.vis",
       515,
       {8, 16, 1},
       54416,
       3.2,
       144,
       {4.60099, 4.73099, 4.84099, 4.93099, 5.00099, 5.05099, 5.08099, 5.09099}},
      {"vlba-0235-2022/0235+164E.Ku.uvf", 3072, {4, 1, 4}, 36048, 9.3, 441, ifs(15.176, 0.128, 4)},
      {"vlba-0235-2022/0235+164E.K.uvf", 4428, {4, 1, 4}, 60512, 14.5, 680, ifs(23.576, 0.128, 4)},
      {"vlba-0235-2022/0235+164E.Q.uvf", 6108, {4, 1, 4}, 71616, 26, 1235, ifs(42.9765, 0.128, 4)},
      {"uvfits-singles/vla-3c273-1989.fits", 7669, {1, 1, 4}, 23921, 0.0012, 0.101, {8.085}},
      {"uvfits-singles/vlba-m87-2006.uvfits", 3150, {2, 1, 4}, 23784, 4.4, 232, ifs(8.10445875, 0.008, 2)},
      {"uvfits-singles/evn-j0905-2023.fits",
       8152,
       {4, 1, 2},
       65216,
       3.8,
       141,
       {4.87225, 4.90375, 4.93625, 4.96775}},
  };
}

class UvfitsRealDataTest : public ::testing::TestWithParam<Facts> {};

TEST_P(UvfitsRealDataTest, ImportsWithThePublishedFigures) {
  LUMO_NEEDS_REAL_DATA();
  const Facts& facts = GetParam();
  test::TempFolder folder;
  ImportReport report;
  const Status status =
      importUvfits(test::realDataFolder() + facts.file, {folder.path(), "", {}}, RunIndicators{}, report);
  ASSERT_TRUE(status.ok()) << status.text();
  ASSERT_EQ(report.files.size(), 1U);
  const ImportedFile& file = report.files[0];
  EXPECT_EQ(file.records, facts.records);
  EXPECT_EQ(file.shape, facts.shape);
  ASSERT_EQ(file.bands.size(), facts.gigahertz.size());
  std::uint64_t usable = 0;
  double shortest = 1e99;
  double longest = 0;
  for (std::size_t i = 0; i < file.bands.size(); ++i) {
    // Published to ten digits or better: far below a channel.
    EXPECT_NEAR(file.bands[i].frequency, facts.gigahertz[i] * 1e9, 1.0);
    usable += file.bands[i].usable;
    shortest = std::min(shortest, file.bands[i].uvMin / 1e6);
    longest = std::max(longest, file.bands[i].uvMax / 1e6);
  }
  EXPECT_EQ(usable, facts.usable);
  // The published lengths have two digits for the shortest and three for the longest baselines.
  EXPECT_NEAR(shortest, facts.uvMin, 0.05 * facts.uvMin);
  EXPECT_NEAR(longest, facts.uvMax, 0.005 * facts.uvMax);
  EXPECT_EQ(test::readUvx(file.path).groups.size(), facts.records);
}

INSTANTIATE_TEST_SUITE_P(Files, UvfitsRealDataTest, ::testing::ValuesIn(allFacts()), [](const auto& test) {
  std::string name = test.param.file;
  std::replace_if(
      name.begin(), name.end(), [](char c) { return !std::isalnum(c); }, '_');
  return name;
});

TEST(UvfitsRealDataSignTest, TheJetOf3C111PointsToTheNorthEast) {
  LUMO_NEEDS_REAL_DATA();
  // The parsec-scale jet lies at a position angle of about 63 degrees (Kadler et al. 2008, ApJ 680, 867), the
  // core is at the phase centre. A wrong sign would put the jet at 243 degrees.
  test::TempFolder folder;
  ImportReport report;
  const Status status = importUvfits(test::realDataFolder() + "vlba-3c111-2014/3C111_X_2014_05_08.uvf",
                                     {folder.path(), "", {}}, RunIndicators{}, report);
  ASSERT_TRUE(status.ok()) << status.text();
  const auto back = test::readUvx(report.files.at(0).path);
  const double mas = std::numbers::pi / 180 / 3600 / 1000;
  const auto dirty = [&](double radius, double degrees) {
    const double l = radius * mas * std::sin(degrees * std::numbers::pi / 180);
    const double m = radius * mas * std::cos(degrees * std::numbers::pi / 180);
    double sum = 0;
    double weights = 0;
    for (const auto& group : back.groups) {
      for (int i = 0; i < back.frequencies.GetIFs(); ++i) {
        const double phase = -2 * std::numbers::pi * back.frequencies.GetFreq(0, i, 0) *
                             (group.record.u * l + group.record.v * m);
        for (std::size_t product = 0; product < 2; ++product) {  // RR and LL
          const AUVXComplex& value = group.visibilities[static_cast<std::size_t>(i) * 4 + product];
          if (!(value.Weight() > 0)) continue;
          sum += value.Weight() * (value.Re() * std::cos(phase) - value.Im() * std::sin(phase));
          weights += value.Weight();
        }
      }
    }
    return sum / weights;
  };
  // The dirty beam is symmetric, so what a ray has above its opposite is the source's own.
  std::vector<double> excess;
  for (int degrees = 3; degrees < 360; degrees += 20) {
    double sum = 0;
    for (double radius = 1.5; radius < 6; radius += 0.5)
      sum += dirty(radius, degrees) - dirty(radius, degrees + 180.0);
    excess.push_back(sum);
  }
  const auto best = std::max_element(excess.begin(), excess.end()) - excess.begin();
  EXPECT_NEAR(3 + 20 * static_cast<double>(best), 63, 20);
}

}  // namespace
}  // namespace lumo
