// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "analysis/AreaSettings.h"
#include "analysis/MeanSigmaTable.h"
#include "analysis/SpectrumCurve.h"
#include "core/AMatrix.h"
#include "core/Status.h"
#include "io/MapProduct.h"

namespace lumo {

/// What the areas hold on every map of a list.
struct MapMeasurement {
  std::vector<double> freqs;       ///< [map], Hz
  std::vector<double> beamPixels;  ///< [map], pixels in the area of the map's beam
  AMatrix<double> sums;            ///< [area][map], in the maps' own units
  AMatrix<double> deviations;      ///< [area][map], the deviation of MaskedStatistics
};

/// The power law flux = amplitude (freq / first freq)^alpha of one area across the maps.
struct AreaFit {
  double alpha = 0.0;
  double amplitude = 0.0;
  std::vector<double> flux;       ///< [map], measured flux density (Jy for Jy/Beam maps), of single precision
  std::vector<double> fitted;     ///< [map], the law at the map's frequency
  std::vector<double> deviation;  ///< [map]
};

struct MapFits {
  std::vector<double> freqs;  ///< [map], Hz; the first is the reference
  std::vector<AreaFit> areas;
  std::string diagnostics;  ///< text of the diagnostic file
};

/// Gives the areas of one map, where they are not the same arcseconds on all. Each map has as many.
using AreasOfMap = std::function<Status(const std::string& path, const LoadedMap& map, AreaList& areas)>;

/// The list of maps that areas are measured on.
class MapSelector {
 public:
  /// Adds a map to the end of the list. Fails, and leaves the list as it is, when the path is listed already
  /// or does not open as a map file.
  [[nodiscard]] Status add(const std::string& path);
  /// Removes entry `i`; an index without an entry removes nothing.
  void remove(std::size_t i);
  [[nodiscard]] const std::vector<std::string>& paths() const { return paths_; }

  /// Reads every map, one after the other, and measures every area on it. Areas are in arcseconds, so maps
  /// may differ in size and pixels. Fails when a map cannot be read any more, naming it.
  [[nodiscard]] Status measure(const AreaList& areas, MapMeasurement& measurement) const;
  /// The same with areas of its own for each map; fails when they differ in number, or as `areasOf` does.
  [[nodiscard]] Status measure(const AreasOfMap& areasOf, MapMeasurement& measurement) const;

 private:
  std::vector<std::string> paths_;
};

/// Fits a power law to every area across two or more maps; fewer give no areas and no text.
/// Flux densities and frequency ratios are stored in single precision for the fit.
[[nodiscard]] MapFits fitMaps(const MapMeasurement& measurement);
/// One row for each map, with its sums in the columns of means.
[[nodiscard]] MeanSigmaTable mapTable(const MapMeasurement& measurement);
/// One curve of fitted values for each area; its reference is the measured flux density of the first map.
[[nodiscard]] SpectrumGraph fitGraph(const MapFits& fits, const AreaSettings& settings);
/// Where the diagnostic text of a graph is written; `folder` is the work folder with its separator.
[[nodiscard]] std::string diagnosticFileName(const std::string& folder);

}  // namespace lumo
