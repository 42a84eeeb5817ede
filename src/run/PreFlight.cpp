// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/PreFlight.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <utility>

#include "core/Units.h"
#include "imaging/GridGeometry.h"
#include "io/AUVXFile.h"
#include "io/AUVXSources.h"
#include "numerics/ConditionNumber.h"
#include "run/InputScan.h"

namespace lumo {

namespace {

/// Makes a PreFlight of the tallies of files, one after the other.
class Inspection {
 public:
  Inspection(const RunParameters& parameters, const VisibilityInputs& inputs, const ABMakeParameters& imaging,
             PreFlight& result)
      : result_(result),
        inputs_(inputs),
        grid_(imaging),
        moments_(static_cast<std::size_t>(2 * parameters.order - 1), 0.0) {
    result_.referenceHz = parameters.referenceMhz * kMegahertz;
  }

  Status addSource(std::int32_t index) {
    AUVXFile file;
    if (file.Open(inputs_.names[index], AFile::kRead) == 0) return file.status();
    PreFlightFile& facts = result_.files.emplace_back();
    facts.name = inputs_.names[index];
    const AUVXSources sources(file);
    if (const AUVXSourceItem* source = sources.ForID(inputs_.sources[index])) facts.source = *source;
    addFrequencies(inputs_.tables[index], inputs_.selections[index], facts);
    return {};
  }

  void add(std::int32_t index, const ScannedFile& file) {
    PreFlightFile& facts = result_.files[static_cast<std::size_t>(index)];
    facts.records = file.tally.records();
    facts.visibilities = file.tally.records() * file.visibilitiesPerGroup;
    facts.usable = file.tally.usable();
    facts.weightSum = file.tally.weight();
    const AUVXFqTbl& table = inputs_.tables[index];
    GridLoad load{0, 0, 0, file.groupBytes, file.facts.bytes};
    for (std::size_t s = 0; s < file.tally.selections().size(); ++s) {
      const GroupTally::Selection& selection = file.tally.selections()[s];
      for (std::size_t i = 0; i < selection.bands.size(); ++i)
        if (selection.bands[i].points > 0)
          addBand(selection.bands[i], table.GetFreq(0, static_cast<int>(i), static_cast<int>(s)), facts);
      if (!selection.bands.empty()) ++load.selections;
      load.ifs = std::max(load.ifs, selection.bands.size());
      load.tiles = std::max(load.tiles, selection.cover.count());
    }
    const auto tilesOf = [](const GridLoad& of) { return of.selections * of.ifs * of.tiles; };
    if (load.selections > 0 && tilesOf(load) >= tilesOf(load_)) load_ = load;
  }

  void finish() {
    const double kArcsecWavelengths = kArcsecPerRadian / 2;
    result_.cellX = kArcsecWavelengths / grid_.uMax;
    result_.cellY = kArcsecWavelengths / grid_.vMax;
    result_.cellXAll = maxU_ > 0 ? kArcsecWavelengths / maxU_ : 0;
    // The grid has no row for v = +vMax.
    result_.cellYAll = maxV_ > 0 ? kArcsecWavelengths / maxV_ * (1 - 0.5 / grid_.ny) : 0;
    result_.distinctFrequencies = static_cast<std::int32_t>(frequencies_.size());
    const std::size_t n = (moments_.size() + 1) / 2;
    // Far fewer terms are already beyond any data, and the work grows with the cube of their number.
    constexpr std::size_t kMostTerms = 64;
    result_.condition = std::numeric_limits<double>::infinity();
    if (n > kMostTerms) return;
    std::vector<double> matrix;
    for (std::size_t j = 0; j < n; ++j)
      for (std::size_t k = 0; k < n; ++k) matrix.push_back(moments_[j + k] / moments_[0]);
    result_.condition = conditionNumber(std::move(matrix), n);
  }

  /// Of the most demanding file.
  [[nodiscard]] const GridLoad& load() const { return load_; }

 private:
  static void addFrequencies(const AUVXFqTbl& table, const ABitArray& mask, PreFlightFile& facts) {
    bool first = true;
    for (int selection = 0; selection < table.GetFreqSels(); ++selection) {
      if (mask(selection) == 0) continue;
      for (int i = 0; i < table.GetIFs(); ++i) {
        const double hertz = table.GetFreq(0, i, selection);
        facts.minHz = first ? hertz : std::min(facts.minHz, hertz);
        facts.maxHz = first ? hertz : std::max(facts.maxHz, hertz);
        first = false;
      }
    }
  }

  void addBand(const GroupTally::Band& band, double hertz, PreFlightFile& facts) {
    result_.points += band.points;
    result_.outside += band.outside;
    maxU_ = std::max(maxU_, band.maxU * hertz);
    maxV_ = std::max(maxV_, band.maxV * hertz);
    const double shortest = std::sqrt(band.shortest) * hertz;
    facts.uvMin = facts.uvMax == 0 ? shortest : std::min(facts.uvMin, shortest);
    facts.uvMax = std::max(facts.uvMax, std::sqrt(band.longest) * hertz);
    if (band.points == band.outside) return;
    frequencies_.insert(hertz);
    result_.lowestHz = result_.lowestHz == 0 ? hertz : std::min(result_.lowestHz, hertz);
    result_.highestHz = std::max(result_.highestHz, hertz);
    const double f = hertz * (1 / result_.referenceHz) - 1;
    double term = band.weight;
    for (double& moment : moments_) {
      moment += term;
      term *= f;
    }
  }

  PreFlight& result_;
  const VisibilityInputs& inputs_;
  GridGeometry grid_;
  std::vector<double> moments_;   ///< Σ w f^m, m = 0 .. 2·order−2
  double maxU_ = 0, maxV_ = 0;    ///< of the points, wavelengths
  std::set<double> frequencies_;  ///< with points on the grid
  GridLoad load_;
};

}  // namespace

double PreFlightFile::rejectedShare() const {
  return visibilities == 0 ? 0.0
                           : static_cast<double>(visibilities - usable) / static_cast<double>(visibilities);
}

double PreFlight::outsideShare() const {
  return points == 0 ? 0.0 : static_cast<double>(outside) / static_cast<double>(points);
}

Status inspectRun(const RunParameters& parameters, const VisibilityInputs& inputs,
                  const ABMakeParameters& imaging, const PreFlightSettings& settings,
                  const RunIndicators& indicators, PreFlight& preFlight, std::vector<InputFileFacts>& facts) {
  preFlight = PreFlight();
  facts.assign(static_cast<std::size_t>(inputs.count()), InputFileFacts());
  Inspection inspection(parameters, inputs, imaging, preFlight);
  for (std::int32_t i = 0; i < inputs.count(); ++i)
    if (Status status = inspection.addSource(i); !status.ok()) return status;
  Status status = InputScan(inputs, imaging, settings.threads, indicators)
                      .run([&](std::int32_t index, const ScannedFile& file) {
                        facts[static_cast<std::size_t>(index)] = file.facts;
                        inspection.add(index, file);
                      });
  if (!status.ok()) return status;
  inspection.finish();
  preFlight.memory = runMemory(parameters, imaging, settings.threads, inspection.load(), settings.room);
  return {};
}

}  // namespace lumo
