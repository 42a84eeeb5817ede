// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/PreFlight.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "core/TextForm.h"
#include "core/Units.h"
#include "imaging/GridGeometry.h"
#include "io/AUVXFile.h"
#include "io/AUVXVisibility.h"
#include "numerics/ConditionNumber.h"

namespace lumo {

namespace {

/// The sums over all files that the terms' matrix and the extents are made of.
struct Sums {
  std::vector<double> moments;  ///< Σ w f^m, m = 0 .. 2·order−2
  double maxU = 0, maxV = 0;    ///< of the points, wavelengths
  std::set<double> frequencies;
};

/// Whether the cell nearest to a point, taken with u >= 0, is on the half-plane grid.
bool isOnGrid(const GridGeometry& grid, double u, double v) {
  const double turnedV = u < 0 ? -v : v;
  const double column = std::trunc((std::abs(u) + grid.uMax) * grid.perDu + 0.5) - grid.nx;
  const double row = std::trunc((turnedV + grid.vMax) * grid.perDv + 0.5);
  return column < grid.columns && row >= 0 && row < grid.rows && (turnedV + grid.vMax) * grid.perDv > -0.5;
}

class Inspection {
 public:
  Inspection(const RunParameters& parameters, const ABMakeParameters& imaging, PreFlight& result)
      : result_(result),
        grid_(imaging),
        useWeights_(imaging.useVisWeights != 0),
        perReference_(1 / (parameters.referenceMhz * kMegahertz)) {
    sums_.moments.assign(static_cast<std::size_t>(2 * parameters.order - 1), 0.0);
  }

  Status add(const VisibilityInputs& inputs, std::int32_t index, const RunIndicators& indicators) {
    AUVXFile file;
    if (file.Open(inputs.names[index], AFile::kRead) == 0) return file.status();
    const AUVXFqTbl& table = inputs.tables[index];
    if (static_cast<int>(file.shape().ifs) != table.GetIFs() ||
        static_cast<int>(file.shape().channels) != table.GetChannels() ||
        !inputs.mixes[index].fits(file.shape().products))
      return {StatusCode::kBadFormat, "was changed since it was listed", inputs.names[index]};
    PreFlightFile& facts = result_.files.emplace_back();
    facts.name = inputs.names[index];
    addFrequencies(table, inputs.selections[index], facts);
    seen_.assign(static_cast<std::size_t>(table.GetFreqSels()) * static_cast<std::size_t>(table.GetIFs()),
                 false);

    AUVXVisibility visibility(file);
    constexpr std::uint64_t residentBytes = std::uint64_t{16} << 20;
    const std::uint64_t between = residentBytes / file.groupBytes() + 1;
    AProgress progress(indicators.readingBar, static_cast<double>(file.groupCount()));
    for (std::uint64_t g = 0; g < file.groupCount(); ++g) {
      if (g % between == 0) {
        if (indicators.cancelled()) return {StatusCode::kCancelled, "the run was cancelled"};
        file.releaseBefore(g);
        progress.SetPos(static_cast<double>(g));
      }
      const UvxRecord record = UvxRecord::load(file.groupAt(g));
      const int selection = table.GetFreqSelNum(record.freqSel);
      if (selection < 0 || inputs.selections[index](selection) == 0) continue;
      ++facts.records;
      facts.visibilities += std::uint64_t{file.shape().ifs} * file.shape().channels;
      if (record.isFlagged() || !std::isfinite(record.u) || !std::isfinite(record.v)) continue;
      file.SeekUVGroup(g);
      visibility.load(file);
      addGroup(record, visibility, inputs.mixes[index], table, selection, facts);
    }
    RunIndicators::resetBar(indicators.readingBar);
    keepFrequencies(table);
    return {};
  }

  void finish(std::int32_t order) {
    const double kArcsecWavelengths = kArcsecPerRadian / 2;
    result_.cellX = kArcsecWavelengths / grid_.uMax;
    result_.cellY = kArcsecWavelengths / grid_.vMax;
    result_.cellXAll = sums_.maxU > 0 ? kArcsecWavelengths / sums_.maxU : 0;
    // The grid has no row for v = +vMax.
    result_.cellYAll = sums_.maxV > 0 ? kArcsecWavelengths / sums_.maxV * (1 - 0.5 / grid_.ny) : 0;
    result_.distinctFrequencies = static_cast<std::int32_t>(sums_.frequencies.size());
    const auto n = static_cast<std::size_t>(order);
    std::vector<double> matrix;
    for (std::size_t j = 0; j < n; ++j)
      for (std::size_t k = 0; k < n; ++k) matrix.push_back(sums_.moments[j + k] / sums_.moments[0]);
    result_.condition = conditionNumber(std::move(matrix), n);
  }

 private:
  void addFrequencies(const AUVXFqTbl& table, const ABitArray& mask, PreFlightFile& facts) {
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

  /// Those of this file that a usable visibility came from.
  void keepFrequencies(const AUVXFqTbl& table) {
    for (std::size_t i = 0; i < seen_.size(); ++i)
      if (seen_[i])
        sums_.frequencies.insert(
            table.GetFreq(0, static_cast<int>(i) % table.GetIFs(), static_cast<int>(i) / table.GetIFs()));
  }

  void addGroup(const UvxRecord& record, const AUVXVisibility& visibility, const AStokesMix& mix,
                const AUVXFqTbl& table, int selection, PreFlightFile& facts) {
    for (int i = 0; i < table.GetIFs(); ++i) {
      std::uint64_t usable = 0;
      double weight = 0;
      for (int c = 0; c < table.GetChannels(); ++c) {
        const AUVXComplex value = mix.GetVisible(&visibility(i, c, 0), 0);
        if (!value.isUsable()) continue;
        ++usable;
        weight += value.Weight();
      }
      if (usable == 0) continue;
      facts.usable += usable;
      facts.weightSum += weight;
      const double hertz = table.GetFreq(0, i, selection);
      addPoint(record.u * hertz, record.v * hertz, facts);
      addTerms(hertz, useWeights_ ? weight / static_cast<double>(usable) : 1.0);
      seen_[static_cast<std::size_t>(selection * table.GetIFs() + i)] = true;
    }
  }

  void addPoint(double u, double v, PreFlightFile& facts) {
    ++result_.points;
    if (!isOnGrid(grid_, u, v)) ++result_.outside;
    sums_.maxU = std::max(sums_.maxU, std::abs(u));
    sums_.maxV = std::max(sums_.maxV, std::abs(v));
    const double length = std::hypot(u, v);
    facts.uvMin = facts.uvMax == 0 ? length : std::min(facts.uvMin, length);
    facts.uvMax = std::max(facts.uvMax, length);
  }

  void addTerms(double hertz, double weight) {
    const double f = hertz * perReference_ - 1;
    double p = weight;
    for (double& moment : sums_.moments) {
      moment += p;
      p *= f;
    }
  }

  PreFlight& result_;
  GridGeometry grid_;
  bool useWeights_;
  double perReference_;
  Sums sums_;
  std::vector<bool> seen_;  ///< [selection][IF] of the file at hand
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
                  const ABMakeParameters& imaging, const RunIndicators& indicators, PreFlight& preFlight) {
  preFlight = PreFlight();
  Inspection inspection(parameters, imaging, preFlight);
  AProgress progress(indicators.fileBar, inputs.count());
  for (std::int32_t i = 0; i < inputs.count(); ++i) {
    if (Status status = inspection.add(inputs, i, indicators); !status.ok()) return status;
    progress.SetPos(i + 1);
  }
  inspection.finish(parameters.order);
  return {};
}

std::vector<std::string> preFlightLines(const PreFlight& preFlight) {
  std::vector<std::string> lines;
  lines.push_back(formatted("%14s %14s %10s %9s %12s %24s  %s", "lowest MHz", "highest MHz", "records",
                            "rejected", "weight sum", "uv range [kwavelengths]", "file"));
  for (const PreFlightFile& file : preFlight.files)
    lines.push_back(formatted("%14.6f %14.6f %10llu %8.2f%% %12.6g %11.5g .. %-9.5g  ",
                              file.minHz * kMegahertzPerHertz, file.maxHz * kMegahertzPerHertz,
                              static_cast<unsigned long long>(file.records), 100 * file.rejectedShare(),
                              file.weightSum, file.uvMin * 1e-3, file.uvMax * 1e-3) +
                    printable(file.name));
  lines.push_back(formatted(
      "map cell %.6g x %.6g arcsec; off the grid %.4g%% of the points, none up to %.6g x %.6g arcsec",
      preFlight.cellX, preFlight.cellY, 100 * preFlight.outsideShare(), preFlight.cellXAll,
      preFlight.cellYAll));
  lines.push_back(formatted("%d different frequencies with usable data, condition of the terms' matrix %.3g",
                            preFlight.distinctFrequencies, preFlight.condition));
  return lines;
}

std::vector<std::string> preFlightWarnings(const PreFlight& preFlight, std::int32_t order) {
  std::vector<std::string> warnings;
  for (const PreFlightFile& file : preFlight.files)
    if (file.records > 0 && file.usable == 0)
      warnings.push_back(printable(file.name) + ": no visibility of the selection is usable");
  if (preFlight.distinctFrequencies < order)
    warnings.push_back(formatted("order %d needs as many different frequencies, the usable data have %d",
                                 order, preFlight.distinctFrequencies));
  else if (!(preFlight.condition <= PreFlight::kLargestSoundCondition))
    warnings.push_back(
        formatted("order %d is more than these frequencies can carry: the condition of the terms' "
                  "matrix is %.3g, above %g the highest term is noise",
                  order, preFlight.condition, PreFlight::kLargestSoundCondition));
  if (preFlight.outside > 0)
    warnings.push_back(
        formatted("%llu of %llu points lie off the uv grid and are left out; a larger --uv-limit keeps them",
                  static_cast<unsigned long long>(preFlight.outside),
                  static_cast<unsigned long long>(preFlight.points)));
  return warnings;
}

}  // namespace lumo
