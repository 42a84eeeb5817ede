// SPDX-License-Identifier: GPL-3.0-or-later
// The whole path, from a simulated sky to the products, held against the sky.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "ComponentProbe.h"
#include "clean/HeadlessCleanWatcher.h"
#include "convert/AntennaArray.h"
#include "convert/Simulator.h"
#include "convert/SkyModel.h"
#include "core/Units.h"
#include "io/MapProduct.h"
#include "run/RunDriver.h"
#include "run/UvxFileList.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

struct Source {
  const char* name;
  double eastMas, northMas, fluxJy, index;
};

// Away from the phase centre in all four directions, so that a mirrored axis shows; the brightest to the
// north-east. At most 25 cells out, where the gridding takes less than half a percent.
constexpr Source kSources[] = {{"A", 3.1, 4.2, 1.0, -1.0},
                               {"B", -5.3, 2.7, 0.4, 0.5},
                               {"C", -2.2, -4.4, 0.2, -0.7},
                               {"D", 6.4, -3.5, 0.1, 0.0}};

/// A source as the maps show it.
struct Seen {
  double east = 0, north = 0;  ///< mas
  double flux = 0, index = 0;
  double cell = 0;  ///< mas
};

class SimulatedSkyTest : public testing::Test {
 protected:
  void observe(const std::vector<double>& bandsMhz) {
    std::string json =
        R"({"name": "truth", "ra_deg": 83.75, "dec_deg": 42.5, "reference_mhz": 5000, "components": [)";
    for (const Source& s : kSources)
      json += std::string(&s == kSources ? "" : ",") + R"({"name": ")" + s.name +
              R"(", "type": "point", "east_mas": )" + std::to_string(s.eastMas) + R"(, "north_mas": )" +
              std::to_string(s.northMas) + R"(, "flux_jy": )" + std::to_string(s.fluxJy) + R"(, "index": )" +
              std::to_string(s.index) + "}";
    SkyModel sky;
    const Status parsed = sky.parse(json + "]}");
    ASSERT_TRUE(parsed.ok()) << parsed.text();
    SimulatorSettings settings;
    settings.bandsMhz = bandsMhz;
    settings.hours = 8;
    settings.intervalSeconds = 180;
    settings.folder = folder_.path();
    SimulationReport report;
    const Status simulated = simulate(settings, sky, AntennaArray::vlba(), {}, report);
    ASSERT_TRUE(simulated.ok()) << simulated.text();
    for (const SimulatedFile& file : report.files) files_.push_back(file.path);
  }

  void image(std::int32_t order) {
    UvxFileList list;
    ASSERT_TRUE(list.AddFiles(files_).empty());
    RunParameters parameters;
    parameters.referenceMhz = 5000;
    parameters.order = order;
    parameters.iterations = 4000;
    parameters.folder = folder_.path();
    HeadlessCleanWatcher watcher(nullptr, nullptr, nullptr);
    RunCompany company;
    company.clean = &watcher;
    const RunReport report = RunDriver(company).Run(parameters, list);
    ASSERT_TRUE(report.status.ok()) << report.status.text();
    EXPECT_EQ(report.iterations, 4000);
    ASSERT_TRUE(readMap(folder_.file("MFS^cln0.exm"), flux_).ok());
    ASSERT_TRUE(readMap(folder_.file("MFS^sindex.exm"), index_).ok());
  }

  [[nodiscard]] Seen measure(const Source& source) const {
    const MapPlane plane(*flux_.matrix, flux_.range);
    Seen seen;
    seen.cell = plane.stepX() * 1e3;
    const auto peak = fitPeak(plane, source.eastMas * 1e-3, source.northMas * 1e-3, 1e-3);
    if (!peak) {
      ADD_FAILURE() << source.name << " is not there";
      return seen;
    }
    seen.east = peak->x * 1e3;
    seen.north = peak->y * 1e3;
    seen.flux = peak->value;
    seen.index = MapPlane(*index_.matrix, index_.range).nearest(peak->x, peak->y);
    return seen;
  }

  /// Prints the row of a table and returns the errors of flux density (relative) and index.
  std::pair<double, double> compare(std::int32_t order, const Source& source) const {
    const Seen seen = measure(source);
    // Half a cell: a component can lie no nearer to its source than the grid allows.
    EXPECT_NEAR(seen.east, source.eastMas, seen.cell / 2) << source.name;
    EXPECT_NEAR(seen.north, source.northMas, seen.cell / 2) << source.name;
    std::printf("order %d  %s  flux %.4f (true %.4f, %+.2f %%)  index %+.3f (true %+.3f)\n", order,
                source.name, seen.flux, source.fluxJy, (seen.flux / source.fluxJy - 1) * 100, seen.index,
                source.index);
    return {seen.flux / source.fluxJy - 1, seen.index - source.index};
  }

  test::TempFolder folder_;
  std::vector<std::string> files_;
  LoadedMap flux_, index_;
};

// With an index of -1 the quadratic term of the power law is f^2: 4 % at the edges of a 40 % band, 2.7 % in
// the mean of three bands. Two terms can only put it into the flux density; a third takes it.
TEST_F(SimulatedSkyTest, WideBandNeedsThreeTermsForTheFluxOfASteepSource) {
  observe({4000, 5000, 6000});
  double steepFlux[4] = {};
  for (const std::int32_t order : {2, 3}) {
    image(order);
    for (const Source& source : kSources) {
      const auto [fluxError, indexError] = compare(order, source);
      if (&source == kSources) steepFlux[order] = std::abs(fluxError);
      if (order < 3) continue;
      EXPECT_LT(std::abs(fluxError), 0.02) << source.name;
      EXPECT_LT(std::abs(indexError), 0.05) << source.name;
    }
  }
  EXPECT_GT(steepFlux[2], 0.02);
  EXPECT_LT(steepFlux[3], steepFlux[2] / 3);
}

// Half that bandwidth: narrow enough for two terms, wide enough for the slope to stand out of the gridding's
// own errors, which put a few thousandths of the brightest source on the others (docs/accuracy.md).
TEST_F(SimulatedSkyTest, NarrowBandIsRightWithTwoTerms) {
  observe({4500, 5000, 5500});
  image(2);
  for (const Source& source : kSources) {
    const auto [fluxError, indexError] = compare(2, source);
    EXPECT_LT(std::abs(fluxError), 0.02) << source.name;
    EXPECT_LT(std::abs(indexError), 0.02) << source.name;
  }
}

}  // namespace
}  // namespace lumo
