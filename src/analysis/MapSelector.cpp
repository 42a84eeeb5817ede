// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/MapSelector.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <utility>

#include "analysis/MaskedStatistics.h"
#include "core/TextForm.h"
#include "io/AMapFile.h"
#include "io/MapProduct.h"
#include "numerics/AAproxPower.h"

namespace lumo {

namespace {

void measureMap(const LoadedMap& map, const AreaList& areas, std::uint32_t i, MapMeasurement& measurement) {
  measurement.freqs.push_back(map.header.frequency);
  measurement.beamPixels.push_back(beamPixels(map.header, map.range, *map.matrix));
  ABitMatrix mask(map.matrix->rows(), map.matrix->columns());
  for (std::uint32_t k = 0; k < measurement.sums.rows(); ++k) {
    areas.makeMask(k, mask, map.range);
    const MaskedStatistics found = maskedStatistics(*map.matrix, mask);
    measurement.sums(k, i) = found.sum;
    measurement.deviations(k, i) = found.deviation;
  }
}

std::string blankSeparated(std::initializer_list<double> values) {
  std::string line;
  for (const double value : values) line += (line.empty() ? "" : " ") + valToStr(value);
  return line + "\n";
}

AreaFit fitArea(const MapMeasurement& measurement, std::uint32_t k, std::string& diagnostics) {
  const std::size_t count = measurement.freqs.size();
  std::vector<float> x(count);
  std::vector<float> y(count);
  AreaFit result;
  for (std::size_t i = 0; i < count; ++i) {
    const auto column = static_cast<std::uint32_t>(i);
    x[i] = static_cast<float>(measurement.freqs[i] / measurement.freqs[0]);
    y[i] = static_cast<float>(measurement.sums(k, column) / measurement.beamPixels[i]);
    result.flux.push_back(y[i]);
    result.deviation.push_back(measurement.deviations(k, column));
    diagnostics +=
        blankSeparated({static_cast<double>(i), x[i], y[i], 1.0 / std::sqrt(measurement.freqs[i])});
  }
  AAproxPower power;
  power.fit(x.data(), y.data(), 0, static_cast<int>(count) - 1);
  result.alpha = power.alpha();
  result.amplitude = power.amplitude();
  diagnostics += "alpha = " + valToStr(result.alpha) + ", A = " + valToStr(result.amplitude) + "\n";
  for (std::size_t i = 0; i < count; ++i) {
    result.fitted.push_back(power.valueAt(x[i]));
    diagnostics += blankSeparated({static_cast<double>(i), result.fitted[i], result.deviation[i]});
  }
  return result;
}

}  // namespace

Status MapSelector::add(const std::string& path) {
  if (std::find(paths_.begin(), paths_.end(), path) != paths_.end())
    return {StatusCode::kInvalidValue, "is already in the list of maps", path};
  AMapFile file;
  if (file.Open(path, AFile::kRead) == 0) return file.status();
  paths_.push_back(path);
  return {};
}

void MapSelector::remove(std::size_t i) {
  if (i < paths_.size()) paths_.erase(paths_.begin() + static_cast<std::ptrdiff_t>(i));
}

Status MapSelector::measure(const AreaList& areas, MapMeasurement& measurement) const {
  return measure(
      [&areas](const std::string&, const LoadedMap&, AreaList& own) {
        own = areas;
        return Status();
      },
      measurement);
}

Status MapSelector::measure(const AreasOfMap& areasOf, MapMeasurement& measurement) const {
  measurement = MapMeasurement();
  for (std::size_t i = 0; i < paths_.size(); ++i) {
    LoadedMap map;
    if (Status status = readMap(paths_[i], map); !status.ok()) return status.about(paths_[i]);
    AreaList areas;
    if (Status status = areasOf(paths_[i], map, areas); !status.ok()) return status.about(paths_[i]);
    if (i == 0) {
      measurement.sums.resize(static_cast<std::uint32_t>(areas.areaCount()),
                              static_cast<std::uint32_t>(paths_.size()));
      measurement.deviations = measurement.sums;
    } else if (areas.areaCount() != measurement.sums.rows()) {
      return {StatusCode::kInvalidValue, "has another number of areas than the first map", paths_[i]};
    }
    measureMap(map, areas, static_cast<std::uint32_t>(i), measurement);
  }
  return {};
}

MapFits fitMaps(const MapMeasurement& measurement) {
  MapFits fits;
  fits.freqs = measurement.freqs;
  if (measurement.freqs.size() < 2) return fits;
  for (std::uint32_t k = 0; k < measurement.sums.rows(); ++k)
    fits.areas.push_back(fitArea(measurement, k, fits.diagnostics));
  return fits;
}

MeanSigmaTable mapTable(const MapMeasurement& measurement) {
  MeanSigmaTable table;
  table.setData(measurement.sums, measurement.deviations, measurement.freqs);
  return table;
}

SpectrumGraph fitGraph(const MapFits& fits, const AreaSettings& settings) {
  SpectrumGraph graph = emptyGraph(settings, "FLUX ~[Jy]");
  for (const AreaFit& area : fits.areas) {
    SpectrumCurve curve;
    curve.setData(fits.freqs, area.fitted, area.deviation);
    curve.refFreq = fits.freqs.front();
    curve.refIntensity = area.flux.front();
    curve.specIndex = area.alpha;
    graph.curves.push_back(std::move(curve));
  }
  return graph;
}

std::string diagnosticFileName(const std::string& folder) {
#ifdef _WIN32
  (void)folder;
  return "d:\\mfs_map_tst.txt";
#else
  return folder + "mfs_map_tst.txt";
#endif
}

}  // namespace lumo
