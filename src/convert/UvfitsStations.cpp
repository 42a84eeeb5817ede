// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <cmath>
#include <string>

#include "convert/UvfitsTables.h"
#include "core/TextForm.h"

namespace lumo {
namespace {

constexpr std::size_t kNameBytes = 16;
constexpr std::uint64_t kMaxAntennas = 10000;
constexpr double kNearGeocentre = 1000.0;  // metres

/// Where station positions are counted from, and how their axes are turned.
struct ArrayCentre {
  double x = 0, y = 0, z = 0;   ///< metres
  double cosine = 1, sine = 0;  ///< of the longitude that the x axis points to

  void place(const std::vector<double>& station, UvxAntenna& antenna) const {
    antenna.x = x + cosine * station[0] - sine * station[1];
    antenna.y = y + sine * station[0] + cosine * station[1];
    antenna.z = z + station[2];
  }
};

/// Positions are relative to ARRAYX/Y/Z with x in the meridian of the array, unless the centre is the
/// geocentre or FRAME says that they are geocentric axes.
Status readCentre(const UvfitsFile& file, ArrayCentre& centre) {
  Status status = file.number("ARRAYX", 0.0, centre.x);
  if (status.ok()) status = file.number("ARRAYY", 0.0, centre.y);
  if (status.ok()) status = file.number("ARRAYZ", 0.0, centre.z);
  const double axis = std::hypot(centre.x, centre.y);
  if (!status.ok() || file.text("FRAME") == "ITRF" || std::hypot(axis, centre.z) < kNearGeocentre ||
      axis == 0)
    return status;
  centre.cosine = centre.x / axis;
  centre.sine = centre.y / axis;
  return {};
}

Status readTable(UvfitsFile& file, int hdu, std::vector<UvxAntenna>& antennas) {
  if (Status status = file.moveTo(hdu); !status.ok()) return status;
  ArrayCentre centre;
  if (Status status = readCentre(file, centre); !status.ok()) return status;
  std::uint64_t rows = 0;
  if (Status status = file.tableRows(rows); !status.ok()) return status;
  if (rows > kMaxAntennas)
    return {StatusCode::kUnsupported, "table AIPS AN has " + toStr(static_cast<std::int64_t>(rows)) +
                                          " rows; expected at most " + toStr(kMaxAntennas)};
  for (std::uint64_t row = 0; row < rows; ++row) {
    std::vector<double> id;
    std::vector<double> position;
    std::string name;
    if (Status status = file.cell("NOSTA", row, 1, id); !status.ok()) return status;
    if (Status status = file.cell("STABXYZ", row, 3, position); !status.ok()) return status;
    if (Status status = file.cellText("ANNAME", row, name); !status.ok()) return status;
    if (!(std::abs(id[0]) <= kMaxAntennas)) continue;
    UvxAntenna antenna;
    antenna.id = static_cast<std::int32_t>(std::lround(id[0]));
    antenna.name = cleanText(name, kNameBytes);
    for (double& metres : position)
      if (!std::isfinite(metres)) metres = 0;
    centre.place(position, antenna);
    const bool known = std::any_of(antennas.begin(), antennas.end(),
                                   [&](const UvxAntenna& other) { return other.id == antenna.id; });
    if (!known) antennas.push_back(std::move(antenna));
  }
  return {};
}

/// File time minus UTC of the current antenna table, seconds.
Status readTimeOffset(const UvfitsFile& file, double& seconds, ImportReport& report) {
  std::string system = file.text("TIMSYS");
  if (system.empty()) system = file.text("TIMESYS");
  if (system.compare(0, 3, "IAT") != 0 && system.compare(0, 3, "TAI") != 0) return {};
  double given = 0;
  if (Status status = file.number("DATUTC", 0.0, given); !status.ok()) return status;
  if (given == 0.0)
    if (Status status = file.number("IATUTC", 0.0, given); !status.ok()) return status;
  if (given > 0 && given < 100) {
    seconds = given;
    report.notes.push_back("times are atomic; " + valToStr(given) + " s were taken off to get UTC");
  } else {
    report.notes.push_back(
        "times are atomic and the file does not tell the leap seconds; they are stored as they are");
  }
  return {};
}

}  // namespace

UvfitsStations readUvfitsStations(UvfitsFile& file, ImportReport& report) {
  UvfitsStations stations;
  const auto tables = file.extensionsNamed("AIPS AN");
  if (tables.empty()) report.notes.push_back("has no table AIPS AN: the antennas have no names");
  for (const auto& table : tables) {
    Status status = readTable(file, table.hdu, stations.antennas);
    if (status.ok() && &table == &tables.front())
      status = readTimeOffset(file, stations.secondsFromUtc, report);
    if (!status.ok()) report.warnings.push_back("antennas are incomplete: " + status.message());
  }
  return stations;
}

}  // namespace lumo
