// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "convert/EarthGeometry.h"
#include "core/Status.h"
#include "io/UvxTables.h"

namespace lumo {

/// The antennas of an interferometer, numbered from 1 in their order, on the Earth's surface.
class AntennaArray {
 public:
  static constexpr std::size_t kMaxFileBytes = 1 << 20;
  static constexpr std::size_t kMaxAntennas = 255;  ///< what 256 · antenna 1 + antenna 2 can tell apart

  /// The ten stations of the Very Long Baseline Array, positions to the metre.
  [[nodiscard]] static AntennaArray vlba();
  /// The 27 antennas of the Very Large Array's A configuration. Not the surveyed pads: nine antennas on each
  /// of three straight arms (azimuths 355, 115 and 236 degrees; 18.9, 21 and 21 km long) at distances that
  /// grow as the power 1.716 of the antenna's number, in the plane of the array's centre. Good for coverages.
  [[nodiscard]] static AntennaArray vla();

  /// "vlba", "vla" or the name of a file to load.
  [[nodiscard]] Status select(const std::string& nameOrFile);
  /// Replaces the array by a text file's: one antenna a line, name and geocentric x y z in metres, blanks
  /// between; # starts a comment. A failure names the line and leaves the array as it was.
  [[nodiscard]] Status load(const std::string& path);
  [[nodiscard]] Status parse(std::string_view text);

  /// "VLBA", "VLA" or the file's name without its folder.
  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] const std::vector<UvxAntenna>& antennas() const { return antennas_; }
  [[nodiscard]] EarthVector position(std::size_t index) const;
  /// Longitude of the mean position, radians, east positive: the meridian whose transit is hour angle 0.
  [[nodiscard]] double longitude() const;

 private:
  void add(std::string name, const EarthVector& position);
  [[nodiscard]] Status addLine(std::string_view line);

  std::string name_;
  std::vector<UvxAntenna> antennas_;
};

}  // namespace lumo
