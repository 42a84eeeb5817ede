// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>

#include "AnalysisSample.h"
#include "analysis/MapSelector.h"
#include "core/TextForm.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::TempFolder;
using test::writeSample;

// Bands 1, 2 and 4 GHz; west of x = 0 an index of -0.5, east of it +1, and nothing at x = 0.
constexpr double kBands[] = {1e9, 2e9, 4e9};

MapSelector threeBands(const TempFolder& folder) {
  MapSelector selector;
  for (const double band : kBands) {
    const std::string path = folder.file("m" + valToStr(band) + ".exm");
    writeSample(path, band, [band](std::uint32_t, std::uint32_t column) {
      const double x = band / 1e9;
      return static_cast<float>(column < 8 ? std::pow(x, -0.5) : column > 8 ? 3.0 * x : 0.0);
    });
    EXPECT_TRUE(selector.add(path).ok());
  }
  return selector;
}

AreaSettings twoSides() {
  AreaSettings settings;
  settings.areas.add(AreaShape::rectangle({-2.0, 0.0}, 2.0, 0.5));  // 5 columns, 3 rows
  settings.areas.add(AreaShape::circle({2.0, 0.0}, 0.3));           // 3 pixels in a column
  return settings;
}

TEST(MapSelectorTest, MapIsListedOnceAndOnlyWhenItOpens) {
  const TempFolder folder;
  writeSample(folder.file("a.exm"), 1e9, test::constant(1.0F));
  test::writeFile(folder.file("b.exm"), "not a map");
  MapSelector selector;
  EXPECT_TRUE(selector.add(folder.file("a.exm")).ok());
  EXPECT_EQ(selector.add(folder.file("a.exm")).code(), StatusCode::kInvalidValue);
  EXPECT_FALSE(selector.add(folder.file("b.exm")).ok());
  EXPECT_FALSE(selector.add(folder.file("missing.exm")).ok());
  EXPECT_EQ(selector.paths(), std::vector<std::string>{folder.file("a.exm")});
}

TEST(MapSelectorTest, DeletedMapLeavesTheListAndMayComeBack) {
  const TempFolder folder;
  MapSelector selector = threeBands(folder);
  const std::string second = selector.paths()[1];
  selector.remove(1);
  selector.remove(7);
  EXPECT_EQ(selector.paths().size(), 2U);
  EXPECT_TRUE(selector.add(second).ok());
  EXPECT_EQ(selector.paths().back(), second);
}

TEST(MapSelectorTest, TableHoldsTheUnconvertedSumsOfEveryMap) {
  const TempFolder folder;
  MapMeasurement found;
  ASSERT_TRUE(threeBands(folder).measure(twoSides().areas, found).ok());
  const MeanSigmaTable table = mapTable(found);
  EXPECT_EQ(table.rowCount(), 4);
  EXPECT_EQ(table.columnCount(), 5);
  EXPECT_EQ(table.headerText(2, 0), "2000 [MHz]");
  EXPECT_EQ(table.cellText(1, 1), "15");
  EXPECT_EQ(table.cellText(3, 1), "7.5");
  EXPECT_EQ(table.cellText(1, 2), "0");
  EXPECT_EQ(table.cellText(3, 3), "36");
}

TEST(MapSelectorTest, DeviationOfAnAreaIsThatOfItsPixels) {
  const TempFolder folder;
  MapSelector selector;
  writeSample(folder.file("a.exm"), 1e9, [](std::uint32_t row, std::uint32_t column) {
    return row == 4 && column == 8 ? 1.0F : row == 5 && column == 8 ? 3.0F : 0.0F;
  });
  ASSERT_TRUE(selector.add(folder.file("a.exm")).ok());
  MapMeasurement found;
  ASSERT_TRUE(selector.measure(AreaList(), found).ok());
  EXPECT_EQ(found.sums(0, 0), 4.0);
  EXPECT_DOUBLE_EQ(found.deviations(0, 0), std::sqrt(0.5));
}

TEST(MapSelectorTest, PowerLawOfEveryAreaIsFound) {
  const TempFolder folder;
  MapMeasurement found;
  ASSERT_TRUE(threeBands(folder).measure(twoSides().areas, found).ok());
  const MapFits fits = fitMaps(found);
  ASSERT_EQ(fits.areas.size(), 2U);
  // Single-precision flux densities: a few 1e-7.
  EXPECT_NEAR(fits.areas[0].alpha, -0.5, 1e-6);
  EXPECT_NEAR(fits.areas[0].amplitude, 1.5, 1e-6);
  EXPECT_NEAR(fits.areas[1].alpha, 1.0, 1e-6);
  EXPECT_NEAR(fits.areas[1].amplitude, 0.9, 1e-6);
  EXPECT_NEAR(fits.areas[1].fitted[2], 3.6, 1e-5);
}

TEST(MapSelectorTest, FluxIsTheSumOverThePixelsOfTheBeam) {
  const TempFolder folder;
  MapMeasurement found;
  ASSERT_TRUE(threeBands(folder).measure(twoSides().areas, found).ok());
  EXPECT_NEAR(found.beamPixels[0], 10.0, 1e-12);
  EXPECT_EQ(fitMaps(found).areas[0].flux[0],
            static_cast<double>(static_cast<float>(15 / found.beamPixels[0])));
}

TEST(MapSelectorTest, TwoAreasGiveTwoCurvesEachWithItsOwnLegend) {
  const TempFolder folder;
  MapMeasurement found;
  AreaSettings settings = twoSides();
  settings.yScaleMode = kLinearScale;
  ASSERT_TRUE(threeBands(folder).measure(settings.areas, found).ok());
  const MapFits fits = fitMaps(found);
  const SpectrumGraph graph = fitGraph(fits, settings);
  ASSERT_EQ(graph.curves.size(), 2U);
  EXPECT_NE(graph.curves[0].legend(), graph.curves[1].legend());
  EXPECT_EQ(graph.xTitle, "Frequency [%sHz] (log scale)");
  EXPECT_EQ(graph.yTitle, "FLUX ~[Jy]");
  EXPECT_EQ(graph.curves[1].refFreq, 1e9);
  EXPECT_EQ(graph.curves[1].specIndex, fits.areas[1].alpha);
  EXPECT_EQ(graph.curves[1].fluxes(), fits.areas[1].fitted);
}

TEST(MapSelectorTest, ReferenceIntensityIsTheMeasuredFluxOfTheFirstMapNotTheAmplitude) {
  MapMeasurement found;
  found.freqs = {1e9, 2e9, 4e9};
  found.beamPixels = {1.0, 1.0, 1.0};
  found.sums.resize(1, 3);
  found.deviations.resize(1, 3);
  found.sums(0, 0) = 2.0;
  found.sums(0, 1) = 1.0;
  found.sums(0, 2) = 2.0;
  const MapFits fits = fitMaps(found);
  // ln y = ln 2 (1, 0, 1) over ln 2 (0, 1, 2): no slope, and a mean of two thirds.
  EXPECT_NEAR(fits.areas[0].alpha, 0.0, 1e-12);
  EXPECT_NEAR(fits.areas[0].amplitude, std::pow(2.0, 2.0 / 3.0), 1e-12);
  EXPECT_EQ(fitGraph(fits, AreaSettings()).curves[0].refIntensity, 2.0);
}

TEST(MapSelectorTest, DiagnosticTextListsMeasuredPointsTheLawAndFittedPoints) {
  MapMeasurement found;
  found.freqs = {4e8, 1.6e9};
  found.beamPixels = {4.0, 2.0};
  found.sums.resize(1, 2);
  found.deviations.resize(1, 2);
  found.sums(0, 0) = found.sums(0, 1) = 1.0;
  found.deviations(0, 0) = 0.5;
  const MapFits fits = fitMaps(found);
  const AreaFit& area = fits.areas[0];
  EXPECT_EQ(fits.diagnostics, "0 1 0.25 5e-05\n1 4 0.5 2.5e-05\nalpha = " + valToStr(area.alpha) +
                                  ", A = " + valToStr(area.amplitude) + "\n0 " + valToStr(area.fitted[0]) +
                                  " 0.5\n1 " + valToStr(area.fitted[1]) + " 0\n");
  EXPECT_NEAR(area.alpha, 0.5, 1e-12);
}

TEST(MapSelectorTest, FewerThanTwoMapsAreNotFitted) {
  MapMeasurement found;
  found.freqs = {1e9};
  found.beamPixels = {1.0};
  found.sums.resize(1, 1);
  found.deviations.resize(1, 1);
  EXPECT_TRUE(fitMaps(found).areas.empty());
  EXPECT_TRUE(fitMaps(found).diagnostics.empty());
}

TEST(MapSelectorTest, MapThatHasGoneIsNamed) {
  const TempFolder folder;
  const MapSelector selector = threeBands(folder);
  test::writeFile(selector.paths()[1], "gone");
  MapMeasurement found;
  const Status status = selector.measure(AreaList(), found);
  EXPECT_FALSE(status.ok());
  EXPECT_EQ(status.file(), selector.paths()[1]);
}

TEST(MapSelectorTest, DiagnosticFileLiesInTheWorkFolder) {
  EXPECT_EQ(diagnosticFileName("/data/"), "/data/mfs_map_tst.txt");
}

TEST(MapSelectorTest, MeasuresEachMapOnAreasOfItsOwn) {
  const TempFolder folder;
  MapSelector selector = threeBands(folder);
  MapMeasurement found;
  // The map's own west half, one column narrower on each further map.
  int maps = 0;
  const auto narrower = [&maps](const std::string&, const LoadedMap& map, AreaList& areas) {
    const double reach = -map.range.xMin - 0.5 * maps++;
    areas = AreaList({AreaShape::rectangle({map.range.xMin, 0.0}, 2.0 * reach - 0.1, 100.0)});
    return Status();
  };
  ASSERT_TRUE(selector.measure(narrower, found).ok());
  EXPECT_EQ(maps, 3);
  MapMeasurement whole;
  for (int i = 0; i < 3; ++i) {
    const double reach = 4.0 - 0.5 * i;
    const AreaList areas({AreaShape::rectangle({-4.0, 0.0}, 2.0 * reach - 0.1, 100.0)});
    ASSERT_TRUE(selector.measure(areas, whole).ok());
    EXPECT_EQ(found.sums(0, static_cast<std::uint32_t>(i)), whole.sums(0, static_cast<std::uint32_t>(i)));
  }
  EXPECT_NE(found.sums(0, 2), found.sums(0, 1));
}

TEST(MapSelectorTest, MapsWithDifferentNumbersOfAreasAreRefused) {
  const TempFolder folder;
  MapSelector selector = threeBands(folder);
  MapMeasurement found;
  int maps = 0;
  const Status status = selector.measure(
      [&maps](const std::string&, const LoadedMap&, AreaList& areas) {
        for (int k = 0; k <= maps; ++k) areas.add(AreaShape::circle({0.0, 0.0}, 1.0));
        ++maps;
        return Status();
      },
      found);
  EXPECT_EQ(status.code(), StatusCode::kInvalidValue);
  EXPECT_EQ(status.file(), selector.paths()[1]);
}

}  // namespace
}  // namespace lumo
