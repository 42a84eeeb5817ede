// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lumo {

// The subtables of a Measurement Set as they stand there; a row's place in its list is its number in the set.
// These headers keep to C++17, since casacore's are not ready for C++20.

struct MsField {
  std::string name;
  /// PHASE_DIR, radians: right ascension and declination of the constant term, then pairs of the higher
  /// terms.
  std::vector<double> direction;
  std::string frame;            ///< casacore's name of the direction's frame ("J2000"), "" when there is none
  std::int32_t ephemeris = -1;  ///< EPHEMERIS_ID; 0 and above for a source that moves
};

struct MsWindow {
  std::string name;
  std::vector<double> frequencies;  ///< Hz, channel centres
  std::vector<double> widths;       ///< Hz, signed; as many as frequencies, or none
  std::int32_t frame = 0;           ///< MEAS_FREQ_REF
};

struct MsDescription {
  std::int32_t window = 0;
  std::int32_t polarization = 0;
};

/// Geocentric place in metres, 0 where the set gives none.
struct MsAntenna {
  std::string name;
  double x = 0, y = 0, z = 0;
};

struct MsTables {
  std::vector<MsField> fields;
  std::vector<MsWindow> windows;
  std::vector<std::vector<std::int32_t>> correlations;  ///< casacore's Stokes codes, per polarization
  std::vector<MsDescription> descriptions;
  std::vector<MsAntenna> antennas;
  std::string telescope;
  std::string observer;
  std::vector<std::string> history;
};

}  // namespace lumo
