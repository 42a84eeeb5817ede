// SPDX-License-Identifier: GPL-3.0-or-later
// What a PreFlight says to a person.
#include <algorithm>
#include <cmath>

#include "core/MemoryRoom.h"
#include "core/TextForm.h"
#include "core/Units.h"
#include "run/PreFlight.h"
#include "run/RunParameters.h"

namespace lumo {

namespace {

/// Arcseconds between two positions (degrees) in one frame. By the chord, which is exact for small angles
/// too.
double separation(const AUVXSourceItem& a, const AUVXSourceItem& b) {
  const double north = std::sin((a.declination - b.declination) / 2 * kRadianPerDegree);
  const double east = std::sin((a.rightAscension - b.rightAscension) / 2 * kRadianPerDegree);
  const double half = std::hypot(north, east * std::sqrt(std::cos(a.declination * kRadianPerDegree) *
                                                         std::cos(b.declination * kRadianPerDegree)));
  return 2 * std::asin(std::min(half, 1.0)) * kArcsecPerRadian;
}

void warnOfSources(const PreFlight& preFlight, std::vector<std::string>& warnings) {
  const PreFlightFile& first = preFlight.files[0];
  // A visibility at the end of the grid turns by a quarter when its phase centre moves by half a cell.
  const double cell = std::min(preFlight.cellX, preFlight.cellY);
  for (std::size_t i = 1; i < preFlight.files.size(); ++i) {
    const PreFlightFile& file = preFlight.files[i];
    if (file.source.name != first.source.name)
      warnings.push_back(printable(file.name) + ": its source is " + printable(file.source.name) +
                         ", that of " + printable(first.name) + " is " + printable(first.source.name) +
                         "; a map of different sources means nothing");
    if (file.source.frame != first.source.frame || file.source.epoch != first.source.epoch)
      warnings.push_back(printable(file.name) + ": its position is in another frame or epoch than that of " +
                         printable(first.name) + ", so the phase centres cannot be compared");
    else if (const double apart = separation(file.source, first.source); apart > cell / 2)
      warnings.push_back(
          formatted("%s: its phase centre is %.3g arcsec from that of %s; the map will be smeared",
                    printable(file.name).c_str(), apart, printable(first.name).c_str()));
  }
}

void warnOfTerms(const PreFlight& preFlight, std::int32_t order, std::vector<std::string>& warnings) {
  const bool any = preFlight.highestHz > 0;
  const double reference = preFlight.referenceHz * kMegahertzPerHertz;
  const double lowest = preFlight.lowestHz * kMegahertzPerHertz;
  const double highest = preFlight.highestHz * kMegahertzPerHertz;
  if (any && (reference < lowest - centerTolerance(lowest) || reference > highest + centerTolerance(highest)))
    warnings.push_back(
        formatted("the reference frequency %.6f MHz lies outside the usable data (%.6f to %.6f MHz): the "
                  "maps are extrapolated "
                  "to it; choose one between them",
                  reference, lowest, highest));
  if (preFlight.distinctFrequencies < order)
    warnings.push_back(formatted("order %d needs as many different frequencies, the usable data have %d",
                                 order, preFlight.distinctFrequencies));
  else if (!(preFlight.condition <= PreFlight::kLargestSoundCondition))
    warnings.push_back(
        formatted("order %d is more than these frequencies can carry: the condition of the terms' "
                  "matrix is %.3g, above %g the highest term is noise",
                  order, preFlight.condition, PreFlight::kLargestSoundCondition));
}

void warnOfMemory(const RunMemory& memory, std::vector<std::string>& warnings) {
  if (memory.peak > memory.room.most)
    warnings.push_back("the run may take " + bytesText(memory.peak) +
                       " of memory, more than there is: " + bytesText(memory.room.most) + " (" +
                       memory.room.mostIs + "); lower the map size or the order");
  else if (memory.peak - memory.before > memory.room.free)
    warnings.push_back(
        "the run may take " + bytesText(memory.peak - memory.before) + " more of memory, " +
        bytesText(memory.room.free) +
        " are free now: it may be slow or fail; end other programs, or lower the map size or the order");
}

}  // namespace

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
  const RunMemory& memory = preFlight.memory;
  lines.push_back("memory up to " + bytesText(memory.peak) + ": imaging " + bytesText(memory.imaging) +
                  " (spectral grids " + bytesText(memory.grids) + "), then CLEAN " + bytesText(memory.clean) +
                  ", the program before " + bytesText(memory.before) +
                  (memory.room.free == MemoryRoom::kUnknown ? "" : "; free " + bytesText(memory.room.free)));
  return lines;
}

std::vector<std::string> preFlightWarnings(const PreFlight& preFlight, std::int32_t order) {
  std::vector<std::string> warnings;
  if (preFlight.files.empty()) return warnings;
  for (const PreFlightFile& file : preFlight.files)
    if (file.records > 0 && file.usable == 0)
      warnings.push_back(printable(file.name) + ": no visibility of the selection is usable");
  warnOfSources(preFlight, warnings);
  warnOfTerms(preFlight, order, warnings);
  if (preFlight.outside > 0)
    warnings.push_back(
        formatted("%llu of %llu points lie off the uv grid and are left out; a larger --uv-limit keeps them",
                  static_cast<unsigned long long>(preFlight.outside),
                  static_cast<unsigned long long>(preFlight.points)));
  warnOfMemory(preFlight.memory, warnings);
  return warnings;
}

}  // namespace lumo
