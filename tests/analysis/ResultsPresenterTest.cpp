// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>

#include "AnalysisSample.h"
#include "analysis/ResultsPresenter.h"
#include "io/ProductNames.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::constant;
using test::TempFolder;
using test::writeSample;

constexpr double kReference = 2e9;
constexpr double kPixels = test::kRows * test::kColumns;

// Intensity 2 and first-order value -1 everywhere, residuals that alternate between +0.5 and -0.5.
class ResultsPresenterTest : public ::testing::Test {
 protected:
  ResultsPresenterTest() {
    write(cleanName(folder_.path(), "R", 0), constant(2.0F));
    write(cleanName(folder_.path(), "R", 1), constant(-1.0F));
    write(indexName(folder_.path(), "R"), constant(-0.5F));
    write(residualName(folder_.path(), "R"), [](std::uint32_t row, std::uint32_t column) {
      return row == 0 && column == 0 ? 0.0F : (row * test::kColumns + column) % 2 == 0 ? 0.5F : -0.5F;
    });
    test::writeFile(freqRangeName(folder_.path(), "R"), "1e+09 4e+09 2\n");
  }

  void write(const std::string& path, const test::PixelValue& value) { writeSample(path, kReference, value); }
  [[nodiscard]] std::string term(int k) const { return cleanName(folder_.path(), "R", k); }
  [[nodiscard]] ResultsPresenter presenter() const { return {folder_.path(), "R", 5e8, 6e8}; }
  [[nodiscard]] AreaSpectra measured(const AreaSettings& settings) const {
    ResultsPresenter loaded = presenter();
    EXPECT_TRUE(loaded.load().ok());
    AreaSpectra spectra;
    EXPECT_TRUE(loaded.measure(settings, spectra).ok());
    return spectra;
  }

  TempFolder folder_;
};

TEST_F(ResultsPresenterTest, WithoutAreasTheWholeMapIsOneRowOrCurve) {
  const AreaSpectra spectra = measured(AreaSettings());
  EXPECT_EQ(spectra.areaTermSum, std::vector<double>{-kPixels});
  EXPECT_EQ(spectra.areaIndex, std::vector<double>{-0.5});
  EXPECT_NEAR(spectra.areaFlux[0], 2 * kPixels / 10, 1e-10);
  EXPECT_EQ(spectra.flux.rows(), 1U);
  EXPECT_EQ(spectraGraph(spectra, AreaSettings()).curves.size(), 1U);
  EXPECT_EQ(spectraTable(spectra).columnCount(), 3);
}

TEST_F(ResultsPresenterTest, SpectrumIsThePowerLawAboutTheReferenceFrequency) {
  AreaSettings settings;
  settings.pointCount = 4;
  const AreaSpectra spectra = measured(settings);
  EXPECT_EQ(spectra.freq, (std::vector<double>{1e9, 2e9, 3e9, 4e9}));
  const double flux = 2 * kPixels / 10;
  EXPECT_NEAR(spectra.flux(0, 0), flux * std::sqrt(2.0), 1e-10);
  EXPECT_NEAR(spectra.flux(0, 1), flux, 1e-10);
  EXPECT_NEAR(spectra.flux(0, 3), flux / std::sqrt(2.0), 1e-10);
}

TEST_F(ResultsPresenterTest, AreaIsMeasuredOnItsOwnPixelsOnly) {
  // One pixel east and north of the centre, (x, y) = (1.5, 0.5): column 11, row 6.
  write(term(0),
        [](std::uint32_t row, std::uint32_t column) { return row == 6 && column == 11 ? 5.0F : 1.0F; });
  write(term(1),
        [](std::uint32_t row, std::uint32_t column) { return row == 6 && column == 11 ? 10.0F : 0.0F; });
  AreaSettings settings;
  settings.areas.add(AreaShape::circle({1.5, 0.5}, 0.1));
  settings.areas.add(AreaShape::circle({-1.5, 0.5}, 0.1));
  const AreaSpectra spectra = measured(settings);
  EXPECT_EQ(spectra.areaIndex, (std::vector<double>{2.0, 0.0}));
  EXPECT_NEAR(spectra.areaFlux[0], 0.5, 1e-12);
  EXPECT_NEAR(spectra.areaFlux[1], 0.1, 1e-12);
}

TEST_F(ResultsPresenterTest, IndexIsTheRatioOfTheSumsWhateverTheIndexMapHolds) {
  write(indexName(folder_.path(), "R"), constant(99.0F));
  EXPECT_EQ(measured(AreaSettings()).areaIndex, std::vector<double>{-0.5});
}

TEST_F(ResultsPresenterTest, PixelsOfNoIntensityOrWithoutANumberAreLeftOutOfBothSums) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  write(term(0), [nan](std::uint32_t row, std::uint32_t column) {
    return row != 0 ? 0.0F : column == 0 ? nan : column < 4 ? 2.0F : 0.0F;
  });
  write(term(1), [nan](std::uint32_t row, std::uint32_t column) {
    return row != 0 ? 7.0F : column == 1 ? nan : column < 3 ? 3.0F : 100.0F;
  });
  // Left are columns 2 and 3 of row 0: 2 and 2, 3 and 100.
  const AreaSpectra spectra = measured(AreaSettings());
  EXPECT_EQ(spectra.areaTermSum, std::vector<double>{103.0});
  EXPECT_EQ(spectra.areaIndex, std::vector<double>{103.0 / 4.0});
}

TEST_F(ResultsPresenterTest, EveryAreaCarriesHalfTheDeviationOfTheWholeResidualMap) {
  AreaSettings settings;
  settings.areas.add(AreaShape::circle({1.5, 0.5}, 0.1));
  settings.areas.add(AreaShape::circle({-1.5, 0.5}, 0.6));
  const AreaSpectra spectra = measured(settings);
  // 76 pixels of +0.5, 76 of -0.5 and one of 0.
  const double expected = 0.5 * std::sqrt(0.25 * 152.0 / 153.0);
  for (std::uint32_t k = 0; k < 2; ++k)
    for (std::uint32_t u = 0; u < 8; ++u) EXPECT_NEAR(spectra.fluxErr(k, u), expected, 1e-14);
}

TEST_F(ResultsPresenterTest, ResidualThatIsNotFiniteMakesTheErrorNan) {
  write(residualName(folder_.path(), "R"), [](std::uint32_t row, std::uint32_t) {
    return row == 3 ? std::numeric_limits<float>::quiet_NaN() : 0.0F;
  });
  EXPECT_TRUE(std::isnan(measured(AreaSettings()).error));
}

TEST_F(ResultsPresenterTest, ConstantResidualHasNoDeviation) {
  write(residualName(folder_.path(), "R"), constant(0.1F));
  EXPECT_NEAR(measured(AreaSettings()).error, 0.0, 1e-8);  // the root of a rounding error
}

TEST_F(ResultsPresenterTest, MissingResidualLeavesTheErrorUnknownAndSaysWhy) {
  std::filesystem::remove(residualName(folder_.path(), "R"));
  const AreaSpectra spectra = measured(AreaSettings());
  EXPECT_FALSE(spectra.noiseStatus.ok());
  EXPECT_TRUE(std::isnan(spectra.error));
}

TEST_F(ResultsPresenterTest, SingleFrequencyPointLiesAtTheLowestFrequency) {
  AreaSettings settings;
  settings.pointCount = 1;
  const AreaSpectra spectra = measured(settings);
  EXPECT_EQ(spectra.freq, std::vector<double>{1e9});
  EXPECT_NEAR(spectra.flux(0, 0), 2 * kPixels / 10 * std::sqrt(2.0), 1e-10);
}

TEST_F(ResultsPresenterTest, NumberOfPointsBelowOneIsRefused) {
  ResultsPresenter loaded = presenter();
  ASSERT_TRUE(loaded.load().ok());
  AreaSettings settings;
  settings.pointCount = 0;
  AreaSpectra spectra;
  EXPECT_EQ(loaded.measure(settings, spectra).code(), StatusCode::kInvalidValue);
}

TEST_F(ResultsPresenterTest, MissingFrequencyFileLeavesTheGivenRange) {
  std::filesystem::remove(freqRangeName(folder_.path(), "R"));
  ResultsPresenter loaded = presenter();
  ASSERT_TRUE(loaded.load().ok());
  EXPECT_EQ(loaded.freqMin(), 5e8);
  EXPECT_EQ(loaded.freqMax(), 6e8);
  EXPECT_EQ(loaded.rangeStatus().code(), StatusCode::kNotFound);
}

TEST_F(ResultsPresenterTest, FrequencyFileThatIsUsedLeavesNoNote) {
  ResultsPresenter loaded = presenter();
  ASSERT_TRUE(loaded.load().ok());
  EXPECT_TRUE(loaded.rangeStatus().ok());
  EXPECT_EQ(loaded.freqMin(), 1e9);
  EXPECT_EQ(loaded.freqMax(), 4e9);
}

TEST_F(ResultsPresenterTest, FrequencyFileThatMakesNoSenseIsNamedAndLeavesTheGivenRange) {
  const std::string name = freqRangeName(folder_.path(), "R");
  for (const char* const text : {"1e9 high\n", "", "4e9 1e9 2\n", "-1e9 1e9 2\n", "0 1e9 2\n", "nan 1e9 2\n",
                                 "1e9 nan 2\n", "1e9 inf 2\n", "1e9 1e999 2\n"}) {
    test::writeFile(name, text);
    ResultsPresenter loaded = presenter();
    ASSERT_TRUE(loaded.load().ok()) << text;
    EXPECT_EQ(loaded.rangeStatus().code(), StatusCode::kBadFormat) << text;
    EXPECT_EQ(loaded.rangeStatus().file(), name);
    EXPECT_EQ(loaded.freqMin(), 5e8) << text;
    EXPECT_EQ(loaded.freqMax(), 6e8) << text;
  }
}

TEST_F(ResultsPresenterTest, SumsHaveTheBitsOfTheLoopOverTheWholeMask) {
  const auto rough = [](std::uint32_t row, std::uint32_t column) {
    return std::sin(12.9898F * static_cast<float>(row) + 78.233F * static_cast<float>(column)) / 3.0F;
  };
  const auto rougher = [&rough](std::uint32_t row, std::uint32_t column) {
    return rough(column, row) / 7.0F;
  };
  write(term(0), rough);
  write(term(1), rougher);
  AreaSettings settings;
  settings.areas =
      AreaList({AreaShape::circle({0.3, -0.1}, 0.7), AreaShape::ellipse({-1.1, 0.2}, 2.0, 0.5, 33.0),
                AreaShape::rectangle({2.0, 0.0}, 3.0, 0.8, 90.0),
                AreaShape::polygon({{-9.0, -9.0}, {9.0, 0.1}, {-2.0, 9.0}})});
  const AreaSpectra spectra = measured(settings);
  for (std::size_t k = 0; k < settings.areas.areaCount(); ++k) {
    ABitMatrix mask(test::kRows, test::kColumns);
    settings.areas.makeMask(k, mask, test::sampleRange());
    double zeroSum = 0.0;
    double firstSum = 0.0;
    for (std::uint32_t row = 0; row < test::kRows; ++row) {
      for (std::uint32_t column = 0; column < test::kColumns; ++column) {
        if (mask(row, column) == 0 || rough(row, column) == 0.0F) continue;
        zeroSum += rough(row, column);
        firstSum += rougher(row, column);
      }
    }
    EXPECT_NE(zeroSum, 0.0);
    EXPECT_EQ(spectra.areaTermSum[k], firstSum) << k;
    EXPECT_EQ(spectra.areaIndex[k], firstSum / zeroSum) << k;
  }
}

TEST_F(ResultsPresenterTest, MissingFolderIsToldBeforeItsProducts) {
  const std::string folder = folder_.file("absent/");
  const Status status = ResultsPresenter(folder, "R", 5e8, 6e8).load();
  EXPECT_EQ(status.code(), StatusCode::kNotFound);
  EXPECT_EQ(status.message(), "there is no such folder");
  EXPECT_EQ(status.file(), folder);
}

TEST_F(ResultsPresenterTest, MissingIndexMapShowsNothing) {
  std::filesystem::remove(indexName(folder_.path(), "R"));
  EXPECT_EQ(presenter().load().file(), indexName(folder_.path(), "R"));
}

TEST_F(ResultsPresenterTest, MissingRestoredMapShowsNothing) {
  std::filesystem::remove(term(0));
  EXPECT_EQ(presenter().load().file(), term(0));
}

TEST_F(ResultsPresenterTest, AreaWithoutAUsablePixelHasNoFiniteIndex) {
  AreaSettings settings;
  settings.areas.add(AreaShape::circle({100.0, 100.0}, 0.1));
  const AreaSpectra spectra = measured(settings);
  EXPECT_TRUE(std::isnan(spectra.areaIndex[0]));
  EXPECT_FALSE(std::isfinite(spectra.flux(0, 0)));
}

TEST_F(ResultsPresenterTest, MapSetWithTermsZeroToTwoLoadsThreeMatrices) {
  write(term(2), constant(0.0F));
  write(term(4), constant(0.0F));
  ResultsPresenter loaded = presenter();
  ASSERT_TRUE(loaded.load().ok());
  EXPECT_EQ(loaded.termCount(), 3U);
  EXPECT_EQ(loaded.intensity()(3, 3), 2.0F);
  EXPECT_EQ(loaded.mapHeader().frequency, kReference);
  EXPECT_EQ(loaded.mapRange().xMin, -4.0);
}

TEST_F(ResultsPresenterTest, FiftyFirstTermIsNeverRead) {
  for (int k = 2; k < 51; ++k) write(term(k), constant(0.0F));
  ResultsPresenter loaded = presenter();
  ASSERT_TRUE(loaded.load().ok());
  EXPECT_EQ(loaded.termCount(), 50U);
}

TEST_F(ResultsPresenterTest, HigherTermOfAnotherSizeEndsTheRow) {
  const AMatrix<float> small(4, 4);
  ASSERT_TRUE(writeMap(term(2), test::sampleHeader(kReference), test::sampleRange(), small).ok());
  write(term(3), constant(0.0F));
  ResultsPresenter loaded = presenter();
  ASSERT_TRUE(loaded.load().ok());
  EXPECT_EQ(loaded.termCount(), 2U);
}

TEST_F(ResultsPresenterTest, FirstTermOfAnotherSizeIsRefused) {
  const AMatrix<float> small(4, 4);
  ASSERT_TRUE(writeMap(term(1), test::sampleHeader(kReference), test::sampleRange(), small).ok());
  EXPECT_EQ(presenter().load().code(), StatusCode::kBadFormat);
}

TEST_F(ResultsPresenterTest, GraphCarriesTitlesModesAndReferences) {
  AreaSettings settings;
  settings.xScaleMode = kLinearScale;
  settings.invertColors = 1;
  const AreaSpectra spectra = measured(settings);
  const SpectrumGraph graph = spectraGraph(spectra, settings);
  EXPECT_EQ(graph.xTitle, "Frequency [%sHz]");
  EXPECT_EQ(graph.yTitle, "Flux Density [%sJy] (log scale)");
  EXPECT_EQ(graph.invertColors, 1);
  EXPECT_EQ(graph.curves[0].refFreq, kReference);
  EXPECT_EQ(graph.curves[0].refIntensity, spectra.areaFlux[0]);
  EXPECT_EQ(graph.curves[0].specIndex, -0.5);
  EXPECT_EQ(graph.curves[0].count(), 8U);
}

TEST(ResultsPresenterTitleTest, ValueTitleHoldsTheUnitInBrackets) {
  EXPECT_EQ(valueTitle("Jy/Beam"), "[%sJy/Beam]");
  EXPECT_EQ(valueTitle(""), "");
}

TEST(AreaSettingsTest, StartWithEightPointsAndLogarithmicScales) {
  const AreaSettings settings;
  EXPECT_EQ(settings.pointCount, 8);
  EXPECT_EQ(settings.xScaleMode, 0);
  EXPECT_EQ(settings.yScaleMode, 0);
  EXPECT_EQ(settings.invertColors, 0);
}

}  // namespace
}  // namespace lumo
