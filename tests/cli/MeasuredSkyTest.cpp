// SPDX-License-Identifier: GPL-3.0-or-later
// The whole path, from a simulated sky to the spectra of areas, held against the sky.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "analysis/MapSelector.h"
#include "analysis/ResultsPresenter.h"
#include "clean/HeadlessCleanWatcher.h"
#include "convert/AntennaArray.h"
#include "convert/Simulator.h"
#include "convert/SkyModel.h"
#include "core/TextForm.h"
#include "core/Units.h"
#include "run/RunDriver.h"
#include "run/UvxFileList.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

constexpr double kReferenceMhz = 5000;
constexpr std::array<double, 3> kBandsMhz{4500, 5000, 5500};

/// A component of the sky and the area around it; angles in milliarcseconds.
struct Target {
  const char* name;
  double east, north, flux, index;
  double major, minor, pa;  ///< of a Gaussian; 0 of a point

  /// One and a half full widths of the restored source to every side, which leaves out 0.2 % of a Gaussian.
  /// The beam is that of the lowest band, the widest.
  [[nodiscard]] AreaShape area() const {
    constexpr double kReach = 1.5;
    constexpr double kBeam = 3.1;
    return AreaShape::ellipse({east * 1e-3, north * 1e-3}, kReach * std::hypot(major, kBeam) * 1e-3,
                              kReach * std::hypot(minor, kBeam) * 1e-3, 90.0 - pa);
  }
};

using Sky = std::vector<Target>;

// A Gaussian somewhat larger than the beam, turned, and two points, in different quarters of the map and far
// enough apart for their areas.
const Sky kApart{{"Gaussian", 9.0, -6.0, 2.0, -0.7, 4.0, 2.5, 30.0},
                 {"bright point", -8.0, 7.0, 1.0, 0.5, 0, 0, 0},
                 {"faint point", -8.0, -7.0, 0.5, -1.0, 0, 0, 0}};

// For the map as one area. What the gridding makes of a source grows with the distance from the centre; over
// all of a map it adds up, more in the first-order term than in the flux density (docs/accuracy.md).
const Sky kTogether{{"Gaussian", 2.0, -1.5, 2.0, -0.7, 4.0, 2.5, 30.0},
                    {"point", -1.5, 2.0, 1.0, 0.5, 0, 0, 0}};

double trueFlux(const Target& target, double mhz) {
  return target.flux * std::pow(mhz / kReferenceMhz, target.index);
}

double skyFlux(const Sky& sky, double mhz) {
  double sum = 0;
  for (const Target& target : sky) sum += trueFlux(target, mhz);
  return sum;
}

/// d ln S / d ln nu of the whole sky at the reference frequency.
double skyIndex(const Sky& sky) {
  double sum = 0;
  for (const Target& target : sky) sum += target.flux * target.index;
  return sum / skyFlux(sky, kReferenceMhz);
}

AreaList areasAround(const Sky& sky) {
  AreaList areas;
  for (const Target& target : sky) areas.add(target.area());
  return areas;
}

std::string skyText(const Sky& sky) {
  std::string text =
      R"({"name": "areas", "ra_deg": 83.75, "dec_deg": 42.5, "reference_mhz": 5000, "components": [)";
  for (const Target& t : sky) {
    const auto pair = [&text](const char* key, double value) {
      text += std::string(", \"") + key + "\": " + valToStr(value);
    };
    text += std::string(&t == sky.data() ? "" : ", ") + R"({"type": ")" +
            (t.major > 0 ? "gaussian" : "point") + '"';
    pair("east_mas", t.east);
    pair("north_mas", t.north);
    pair("flux_jy", t.flux);
    pair("index", t.index);
    if (t.major > 0) {
      pair("major_mas", t.major);
      pair("minor_mas", t.minor);
      pair("pa_deg", t.pa);
    }
    text += '}';
  }
  return text + "]}";
}

class MeasuredSkyTest : public testing::Test {
 protected:
  void observe(const Sky& truth) {
    SkyModel sky;
    const Status parsed = sky.parse(skyText(truth));
    ASSERT_TRUE(parsed.ok()) << parsed.text();
    SimulatorSettings settings;
    settings.bandsMhz.assign(kBandsMhz.begin(), kBandsMhz.end());
    settings.hours = 10;
    settings.intervalSeconds = 180;
    // 15000 visibilities a band: about 0.1 mJy in its map, a signal to noise of thousands.
    settings.noiseJy = 0.02;
    settings.folder = folder_.path();
    SimulationReport report;
    const Status simulated = simulate(settings, sky, AntennaArray::vlba(), {}, report);
    ASSERT_TRUE(simulated.ok()) << simulated.text();
    for (const SimulatedFile& file : report.files) files_.push_back(file.path);
  }

  void image(const std::vector<std::string>& files, double mhz, std::int32_t order,
             const std::string& prefix) {
    UvxFileList list;
    ASSERT_TRUE(list.AddFiles(files).empty());
    // The errors of the gridding go down with the cell of the uv grid.
    list.imaging().halfSizeX = list.imaging().halfSizeY = 512;
    RunParameters parameters;
    parameters.referenceMhz = mhz;
    parameters.order = order;
    parameters.iterations = 4000;
    parameters.folder = folder_.path();
    parameters.prefix = prefix;
    HeadlessCleanWatcher watcher(nullptr, nullptr, nullptr);
    RunCompany company;
    company.clean = &watcher;
    company.threads = 2;
    const RunReport report = RunDriver(company).Run(parameters, list);
    ASSERT_TRUE(report.status.ok()) << report.status.text();
  }

  [[nodiscard]] AreaSpectra measure(const AreaList& areas) const {
    AreaSpectra spectra;
    ResultsPresenter presenter(folder_.path(), "MFS", 0, 0);
    Status status = presenter.load();
    AreaSettings settings;
    settings.areas = areas;
    settings.pointCount = static_cast<int>(kBandsMhz.size());
    if (status.ok()) status = presenter.measure(settings, spectra);
    EXPECT_TRUE(status.ok()) << status.text();
    return spectra;
  }

  /// Power laws through the maps of the bands, each imaged alone with one term.
  MapFits fitBandsAlone(const AreaList& areas) {
    MapSelector maps;
    Status status;
    for (std::size_t i = 0; i < kBandsMhz.size(); ++i) {
      const std::string prefix = "band" + toStr(static_cast<std::int64_t>(i));
      image({files_[i]}, kBandsMhz[i], 1, prefix);
      if (status.ok()) status = maps.add(folder_.file(prefix + "^cln0.exm"));
    }
    MapMeasurement found;
    if (status.ok()) status = maps.measure(areas, found);
    EXPECT_TRUE(status.ok()) << status.text();
    return fitMaps(found);
  }

  static void expectNear(const char* what, double flux, double index, double wantedFlux, double wantedIndex) {
    std::printf("%-14s flux %.4f (true %.4f, %+.2f %%)  index %+.3f (true %+.3f)\n", what, flux, wantedFlux,
                (flux / wantedFlux - 1) * 100, index, wantedIndex);
    EXPECT_NEAR(flux, wantedFlux, 0.05 * wantedFlux) << what;
    EXPECT_NEAR(index, wantedIndex, 0.05) << what;
  }

  test::TempFolder folder_;
  std::vector<std::string> files_;
};

TEST_F(MeasuredSkyTest, AreasOfARunHoldTheFluxDensityAndTheIndexOfTheirSources) {
  observe(kApart);
  image(files_, kReferenceMhz, 2, "MFS");
  const AreaSpectra spectra = measure(areasAround(kApart));
  ASSERT_EQ(spectra.areaFlux.size(), kApart.size());
  for (std::uint32_t k = 0; k < kApart.size(); ++k) {
    const Target& target = kApart[k];
    expectNear(target.name, spectra.areaFlux[k], spectra.areaIndex[k], target.flux, target.index);
    for (std::uint32_t i = 0; i < kBandsMhz.size(); ++i) {
      const double truth = trueFlux(target, kBandsMhz[i]);
      EXPECT_NEAR(spectra.freq[i], kBandsMhz[i] * 1e6, 1.0);
      EXPECT_NEAR(spectra.flux(k, i), truth, 0.05 * truth) << target.name;
    }
  }
  // What CLEAN leaves over is a small part of the faintest source.
  EXPECT_GT(spectra.error, 0);
  EXPECT_LT(spectra.error, 0.005);
}

TEST_F(MeasuredSkyTest, RunWithoutAreasHoldsTheFluxDensityAndTheIndexOfTheSky) {
  observe(kTogether);
  image(files_, kReferenceMhz, 2, "MFS");
  const AreaSpectra spectra = measure(AreaList());
  ASSERT_EQ(spectra.areaFlux.size(), 1U);
  expectNear("the whole map", spectra.areaFlux[0], spectra.areaIndex[0], skyFlux(kTogether, kReferenceMhz),
             skyIndex(kTogether));
}

TEST_F(MeasuredSkyTest, FitOverBandsImagedAloneFindsTheSpectraOfTheSources) {
  observe(kApart);
  const MapFits fits = fitBandsAlone(areasAround(kApart));
  ASSERT_EQ(fits.areas.size(), kApart.size());
  for (std::size_t k = 0; k < kApart.size(); ++k) {
    const Target& target = kApart[k];
    // The amplitude belongs to the first band.
    expectNear(target.name, fits.areas[k].amplitude, fits.areas[k].alpha, trueFlux(target, kBandsMhz[0]),
               target.index);
    for (std::size_t i = 0; i < kBandsMhz.size(); ++i) {
      const double truth = trueFlux(target, kBandsMhz[i]);
      EXPECT_NEAR(fits.areas[k].flux[i], truth, 0.05 * truth) << target.name;
    }
  }
}

TEST_F(MeasuredSkyTest, FitOverWholeMapsOfBandsImagedAloneFindsTheSpectrumOfTheSky) {
  observe(kTogether);
  const MapFits fits = fitBandsAlone(AreaList());
  ASSERT_EQ(fits.areas.size(), 1U);
  expectNear("the whole map", fits.areas[0].amplitude, fits.areas[0].alpha, skyFlux(kTogether, kBandsMhz[0]),
             skyIndex(kTogether));
}

}  // namespace
}  // namespace lumo
