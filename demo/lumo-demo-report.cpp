// SPDX-License-Identifier: GPL-3.0-or-later
// Compares the products of a run with the model sky that its input was simulated from:
//   lumo-demo-report SKY.json FOLDER PREFIX
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "ComponentProbe.h"
#include "convert/SkyModel.h"
#include "core/Paths.h"
#include "core/Units.h"
#include "io/MapProduct.h"

namespace lumo {
namespace {

constexpr double kMasPerArcsec = 1000;
constexpr double kMasPerRadian = kMasPerArcsec * kArcsecPerRadian;
constexpr int kMaxTerms = 20;
constexpr int kWorkFailed = 1;
constexpr int kBadCommandLine = 2;

// One component as the maps show it; what could not be measured is NaN.
struct Measurement {
  double flux = std::numeric_limits<double>::quiet_NaN();
  double index = std::numeric_limits<double>::quiet_NaN();
  double offset = std::numeric_limits<double>::quiet_NaN();  // of a point's peak from its true place, mas
};

std::vector<std::string> productSuffixes() {
  std::vector<std::string> suffixes;
  for (const char* family : {"^dm", "^bm", "^cln", "^cln_res"})
    for (int term = 0; term < kMaxTerms; ++term) suffixes.push_back(family + std::to_string(term) + ".exm");
  suffixes.push_back("^residual0.exm");
  suffixes.push_back("^sindex.exm");
  return suffixes;
}

// Value of the largest magnitude among the finite pixels, 0 if there is none.
double peakOf(const AMatrix<float>& map) {
  double peak = 0;
  for (std::size_t i = 0; i < map.size(); ++i)
    if (std::isfinite(map.data()[i]) && std::abs(map.data()[i]) > std::abs(peak)) peak = map.data()[i];
  return peak;
}

// The products that are there; false when one is there but cannot be read.
bool printProducts(const std::string& start) {
  bool readable = true;
  std::printf("%-18s %11s %11s %12s  %s\n", "product", "size", "cell [mas]", "peak", "unit");
  for (const std::string& suffix : productSuffixes()) {
    LoadedMap loaded;
    if (const Status status = readMap(start + suffix, loaded); !status.ok()) {
      if (status.code() == StatusCode::kNotFound) continue;
      std::fprintf(stderr, "%s\n", status.text().c_str());
      readable = false;
      continue;
    }
    const AMatrix<float>& map = *loaded.matrix;
    const MapPlane plane(map, loaded.range);
    const std::string size = std::to_string(map.columns()) + " x " + std::to_string(map.rows());
    std::printf("%-18s %11s %11.4f %12.5g  %s\n", (fileName(start) + suffix).c_str(), size.c_str(),
                plane.usable() ? plane.stepX() * kMasPerArcsec : 0.0, peakOf(map),
                loaded.header.unit.c_str());
  }
  return readable;
}

Measurement measure(const SkyComponent& component, const LoadedMap& flux, const LoadedMap& slope,
                    const LoadedMap& index) {
  const GaussianShape beam{flux.header.beamMajor, flux.header.beamMinor, flux.header.beamPa};
  const MapPlane plane(*flux.matrix, flux.range);
  double x = component.east * kArcsecPerRadian, y = component.north * kArcsecPerRadian;
  Measurement result;
  if (component.shape == SkyComponent::Shape::kPoint) {
    const double radius = std::max(0.5 * beam.major, 1.5 * std::hypot(plane.stepX(), plane.stepY()));
    const auto peak = fitPeak(plane, x, y, radius);
    if (!peak) return result;
    result.flux = peak->value;
    result.offset = std::hypot(peak->x - x, peak->y - y) * kMasPerArcsec;
    x = peak->x;
    y = peak->y;
  } else {
    const GaussianShape own{component.major * kArcsecPerRadian, component.minor * kArcsecPerRadian,
                            component.pa * kDegreePerRadian};
    result.flux =
        sumFlux(plane, x, y, own.convolved(beam), beam).value_or(std::numeric_limits<double>::quiet_NaN());
  }
  if (index.matrix) result.index = MapPlane(*index.matrix, index.range).nearest(x, y);
  if (!std::isfinite(result.index) && slope.matrix)
    result.index = MapPlane(*slope.matrix, slope.range).nearest(x, y) / plane.nearest(x, y);
  return result;
}

std::string numberText(double value, int decimals) {
  if (!std::isfinite(value)) return "-";
  std::array<char, 64> buffer{};
  std::snprintf(buffer.data(), buffer.size(), "%.*f", decimals, value);
  return buffer.data();
}

void printComponents(const SkyModel& sky, const LoadedMap& flux, const LoadedMap& slope,
                     const LoadedMap& index) {
  const double frequency = flux.header.frequency;
  std::printf("\nreference %.3f MHz, restoring beam %.3f x %.3f mas at %.1f deg\n\n",
              frequency * kMegahertzPerHertz, flux.header.beamMajor * kMasPerArcsec,
              flux.header.beamMinor * kMasPerArcsec, flux.header.beamPa);
  std::printf("%-10s %-8s %8s %8s  %9s %9s %7s  %7s %8s %7s  %8s\n", "component", "type", "east", "north",
              "flux true", "measured", "error", "index", "measured", "error", "offset");
  std::printf("%-10s %-8s %8s %8s  %9s %9s %7s  %7s %8s %7s  %8s\n", "", "", "[mas]", "[mas]", "[Jy]", "[Jy]",
              "[%]", "true", "", "", "[mas]");
  for (const SkyComponent& component : sky.components()) {
    const Measurement seen = measure(component, flux, slope, index);
    const double trueFlux = component.flux(frequency, sky.referenceFrequency());
    const double trueIndex = component.indexAt(frequency, sky.referenceFrequency());
    std::printf("%-10s %-8s %8.2f %8.2f  %9.4f %9s %7s  %7.3f %8s %7s  %8s\n", component.name.c_str(),
                component.shape == SkyComponent::Shape::kPoint ? "point" : "gaussian",
                component.east * kMasPerRadian, component.north * kMasPerRadian, trueFlux,
                numberText(seen.flux, 4).c_str(), numberText((seen.flux / trueFlux - 1) * 100, 1).c_str(),
                trueIndex, numberText(seen.index, 3).c_str(), numberText(seen.index - trueIndex, 3).c_str(),
                numberText(seen.offset, 3).c_str());
  }
}

int report(const std::string& skyPath, const std::string& start) {
  SkyModel sky;
  LoadedMap flux, slope, index;
  Status status = sky.load(skyPath);
  if (status.ok()) status = readMap(start + "^cln0.exm", flux);
  if (status.ok() && !MapPlane(*flux.matrix, flux.range).usable())
    status = {StatusCode::kBadFormat, "has no pixel scale", start + "^cln0.exm"};
  if (status.ok() && !(flux.header.frequency > 0 && flux.header.beamMajor > 0 && flux.header.beamMinor > 0))
    status = {StatusCode::kBadFormat, "has no reference frequency or no restoring beam", start + "^cln0.exm"};
  if (!status.ok()) {
    std::fprintf(stderr, "lumo-demo-report: %s\n", status.text().c_str());
    return kWorkFailed;
  }
  const bool readable = printProducts(start);
  // A run of order 1 has neither of these; the columns stay empty then.
  for (auto& [suffix, map] : {std::pair{"^cln1.exm", &slope}, std::pair{"^sindex.exm", &index}}) {
    const Status read = readMap(start + suffix, *map);
    if (!read.ok() || !MapPlane(*map->matrix, map->range).usable()) map->matrix.reset();
  }
  printComponents(sky, flux, slope, index);
  return readable ? 0 : kWorkFailed;
}

}  // namespace
}  // namespace lumo

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: lumo-demo-report SKY.json FOLDER PREFIX\n");
    return lumo::kBadCommandLine;
  }
  return lumo::report(argv[1], lumo::withSeparator(argv[2]) + argv[3]);
}
