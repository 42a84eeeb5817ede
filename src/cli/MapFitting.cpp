// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/MapFitting.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <set>
#include <utility>

#include "core/FileIdentity.h"
#include "core/TextForm.h"
#include "core/Units.h"
#include "io/MapForm.h"

namespace lumo {

namespace {

/// Looks at every map as it is measured.
class Survey {
 public:
  Survey(const AreaOptions& options, MapFitting& fitting) : options_(options), fitting_(fitting) {}

  Status take(const std::string& path, const LoadedMap& map, AreaList& areas) {
    if (!(map.header.frequency > 0.0) || !std::isfinite(map.header.frequency))
      return {StatusCode::kBadFormat, "has no frequency in its header; a power law needs it", path};
    if (Status status = options_.areasOn(map.header, map.range, *map.matrix, areas); !status.ok())
      return status.file() == options_.regions && status.code() == StatusCode::kBadFormat
                 ? Status(status.code(), status.message() + " (on " + path + ")", status.file())
                 : status;
    if (count_ == 0) {
      fitting_.areas = areas;
      fitting_.unit = map.header.unit;
    } else if (fitsUnit(map.header.unit) != fitsUnit(fitting_.unit)) {
      return {StatusCode::kInvalidValue,
              "has the unit '" + printable(map.header.unit) + "', the first map '" +
                  printable(fitting_.unit) + "'; maps of one unit can be fitted",
              path};
    }
    for (std::size_t k = 0; k < areas.areaCount(); ++k) {
      const std::string why = emptyAreaText(areas, k, *map.matrix, map.range);
      if (why.empty()) continue;
      empty_.emplace(k, count_);
      fitting_.notes.push_back(path);
      fitting_.notes.back().append(": ").append(why);
    }
    ++count_;
    return {};
  }

  // Without a pixel the sums are 0, which is no measurement.
  void clearEmptyAreas() {
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    for (const auto& [k, map] : empty_) {
      AreaFit& area = fitting_.fits.areas[k];
      area.flux[map] = area.deviation[map] = kNone;
      area.alpha = area.amplitude = kNone;
      std::fill(area.fitted.begin(), area.fitted.end(), kNone);
    }
  }

 private:
  const AreaOptions& options_;
  MapFitting& fitting_;
  std::size_t count_ = 0;
  std::set<std::pair<std::size_t, std::size_t>> empty_;  ///< area and map, from 0
};

Status addMaps(const std::vector<std::string>& maps, MapSelector& selector) {
  // One map twice would weigh double in silence; comparing files finds links and other spellings.
  std::set<FileIdentity> seen;
  for (const std::string& path : maps) {
    FileIdentity identity;
    if (identifyFile(path, identity) && !seen.insert(identity).second)
      return {StatusCode::kInvalidValue, "map " + path + " is given twice; each can be used once"};
    if (Status status = selector.add(path); !status.ok()) return status;
  }
  return {};
}

Status checkFrequencies(const std::vector<double>& freqs) {
  const auto [least, most] = std::minmax_element(freqs.begin(), freqs.end());
  if (*least != *most) return {};
  return {StatusCode::kNoData, "all maps lie at " + valToStr(*least * kMegahertzPerHertz) +
                                   " MHz; a power law needs two frequencies or more"};
}

void noteMissingLaws(MapFitting& fitting, const MapMeasurement& measurement) {
  if (std::any_of(measurement.beamPixels.begin(), measurement.beamPixels.end(),
                  [](double pixels) { return !std::isfinite(pixels); }))
    fitting.notes.emplace_back("a map's header has no restoring beam: there is no flux density");
  for (std::size_t k = 0; k < fitting.fits.areas.size(); ++k) {
    const std::vector<double>& flux = fitting.fits.areas[k].flux;
    if (std::any_of(flux.begin(), flux.end(), [](double value) { return value < 0.0; }))
      fitting.notes.push_back("area " + areaLabel(fitting.areas, k) +
                              " has a negative flux density, through which no power law goes");
  }
}

}  // namespace

Status fitMapFiles(const std::vector<std::string>& maps, const AreaOptions& options, MapFitting& fitting) {
  fitting = MapFitting();
  MapSelector selector;
  if (Status status = addMaps(maps, selector); !status.ok()) return status;
  Survey survey(options, fitting);
  MapMeasurement measurement;
  Status status = selector.measure([&survey](const std::string& path, const LoadedMap& map,
                                             AreaList& areas) { return survey.take(path, map, areas); },
                                   measurement);
  if (status.ok()) status = checkFrequencies(measurement.freqs);
  if (!status.ok()) return status;
  fitting.fits = fitMaps(measurement);
  noteMissingLaws(fitting, measurement);
  survey.clearEmptyAreas();
  return {};
}

}  // namespace lumo
