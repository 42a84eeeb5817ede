// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <sstream>
#include <utility>

#include "analysis/SpectraText.h"

namespace lumo {
namespace {

SpectrumCurve curveOf(std::vector<double> freqs, std::vector<double> fluxes, std::vector<double> errors) {
  SpectrumCurve curve;
  curve.setData(std::move(freqs), std::move(fluxes), std::move(errors));
  curve.refFreq = 1.5e9;
  curve.refIntensity = 0.25;
  curve.specIndex = -0.75;
  return curve;
}

SpectrumGraph graphOf(std::vector<SpectrumCurve> curves) {
  SpectrumGraph graph;
  graph.xTitle = "Frequency [%sHz] (log scale)";
  graph.yTitle = "Flux Density [%sJy] (log scale)";
  graph.curves = std::move(curves);
  return graph;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

TEST(SpectraTextTest, ColumnsAreNamedWithTheirUnits) {
  const auto curve = curveOf({1e9}, {0.5}, {0.125});
  EXPECT_EQ(linesOf(spectrumColumns(graphOf({curve, curve})))[0],
            "# frequency[Hz] flux_density_1[Jy] error_1[Jy] flux_density_2[Jy] error_2[Jy]");
}

TEST(SpectraTextTest, TitleWithoutAPrefixHasItsUnitToo) {
  SpectrumGraph graph = graphOf({curveOf({1e9}, {0.5}, {0.125})});
  graph.yTitle = "FLUX ~[Jy]";
  EXPECT_EQ(linesOf(spectrumColumns(graph))[0], "# frequency[Hz] flux_density_1[Jy] error_1[Jy]");
  graph.yTitle = "counts";
  EXPECT_EQ(linesOf(spectrumColumns(graph))[0], "# frequency[Hz] flux_density_1 error_1");
}

TEST(SpectraTextTest, EveryCurveHasItsLegendAsAComment) {
  const auto curve = curveOf({1e9}, {0.5}, {0.125});
  const auto lines = linesOf(spectrumColumns(graphOf({curve, curve})));
  EXPECT_EQ(lines[2],
            "# curve 2: Reference freq: 1500[MHz], Reference intensity: 0.25, Spectral index: -0.75 ");
}

TEST(SpectraTextTest, PointsHaveAllTheirDigits) {
  const double flux = 0.1 + 0.2;
  const auto lines =
      linesOf(spectrumColumns(graphOf({curveOf({1e9, 1234567890.0}, {flux, 2.0}, {0.01, 0.02}),
                                       curveOf({1e9, 1234567890.0}, {3.0, 4.0}, {0.03, 1.0 / 3.0})})));
  ASSERT_EQ(lines.size(), 5U);
  EXPECT_EQ(lines[3], "1e+09 0.30000000000000004 0.01 3 0.03");
  EXPECT_EQ(lines[4], "1234567890 2 0.02 4 0.3333333333333333");
}

TEST(SpectraTextTest, ValuesThatAreNotFiniteAreNamed) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto lines = linesOf(spectrumColumns(graphOf({curveOf({1e9, 2e9}, {nan, -inf}, {nan, inf})})));
  EXPECT_EQ(lines[2], "1e+09 nan nan");
  EXPECT_EQ(lines[3], "2e+09 -inf inf");
}

TEST(SpectraTextTest, CurvesOfDifferentFrequenciesHaveRowsOfTheirOwn) {
  const auto lines = linesOf(
      spectrumColumns(graphOf({curveOf({1.0, 2.0}, {5.0, 6.0}, {0.5, 0.5}), curveOf({3.0}, {7.0}, {0.25})})));
  ASSERT_EQ(lines.size(), 6U);
  EXPECT_EQ(lines[3], "1 5 0.5 nan nan");
  EXPECT_EQ(lines[4], "2 6 0.5 nan nan");
  EXPECT_EQ(lines[5], "3 nan nan 7 0.25");
}

TEST(SpectraTextTest, CurvesThatShareAFrequencyThatIsNotANumberShareTheirRows) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto curve = curveOf({nan, 2.0}, {5.0, 6.0}, {0.5, 0.5});
  EXPECT_EQ(linesOf(spectrumColumns(graphOf({curve, curve}))).size(), 5U);
}

TEST(SpectraTextTest, GraphWithoutCurvesIsItsHeader) {
  EXPECT_EQ(spectrumColumns(graphOf({})), "# frequency[Hz]\n");
}

MeanSigmaTable twoAreas() {
  AMatrix<double> mean(2, 2);
  AMatrix<double> rms(2, 2);
  mean(0, 0) = 1.23456789;
  mean(0, 1) = 0.1;
  mean(1, 0) = -4.5e-7;
  mean(1, 1) = std::numeric_limits<double>::quiet_NaN();
  rms(0, 0) = 0.001;
  rms(1, 1) = 2.0;
  MeanSigmaTable table;
  table.setData(mean, rms, {1234567.0, 1.4e9});
  return table;
}

TEST(SpectraTextTest, CsvHasHeadersAndAllDigits) {
  EXPECT_EQ(tableCsv(twoAreas()),
            "Frequency [Hz],Mean (1),RMS (1),Mean (2),RMS (2)\n"
            "1234567,1.23456789,0.001,-4.5e-07,0\n"
            "1.4e+09,0.1,0,nan,2\n");
}

TEST(SpectraTextTest, NumbersDoNotFollowTheLocale) {
  const std::string before = std::setlocale(LC_NUMERIC, nullptr);
  if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") == nullptr) GTEST_SKIP() << "no locale with a decimal comma";
  const std::string csv = tableCsv(twoAreas());
  const std::string columns = spectrumColumns(graphOf({curveOf({1e9}, {0.5}, {0.125})}));
  std::setlocale(LC_NUMERIC, before.c_str());
  EXPECT_NE(csv.find("1.23456789"), std::string::npos);
  EXPECT_NE(columns.find(" 0.5 0.125\n"), std::string::npos);
}

}  // namespace
}  // namespace lumo
