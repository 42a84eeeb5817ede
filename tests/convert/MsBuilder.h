// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace lumo::test {

/// A small Measurement Set, written through casacore's own classes for them. Starts as one field "SRC" at
/// (0.1, 0.2) rad J2000, one window at 5 GHz with one channel of 1 MHz, RR only, four antennas; a test
/// changes what it is about. The header keeps to C++17, since casacore's are not ready for C++20.
struct MsBuilder {
  struct Field {
    std::string name = "SRC";
    std::vector<double> direction = {0.1, 0.2};  ///< radians; pairs of rates after the first pair
    int ephemeris = -1;
    std::string frame = "J2000";  ///< only with `framePerField`
  };
  struct Window {
    std::string name = "W";
    std::vector<double> frequencies = {5e9};
    std::vector<double> widths = {1e6};
    int frame = 5;  ///< TOPO
  };
  /// Arrays are [channel][correlation]. An empty one leaves its cell undefined (weight: one 1 per
  /// correlation).
  struct Row {
    int field = 0;
    int description = 0;
    int antenna1 = 0;
    int antenna2 = 1;
    double time = 50000.25 * 86400;
    std::array<double, 3> uvw = {300, 400, 50};
    bool flagged = false;
    std::vector<std::complex<float>> data, corrected;
    std::vector<char> flags;
    std::vector<float> weight, spectrum;
  };

  std::vector<Field> fields = {Field()};
  std::vector<Window> windows = {Window()};
  std::vector<std::vector<int>> correlations = {{5}};  ///< casacore's Stokes codes
  std::vector<std::pair<int, int>> descriptions = {{0, 0}};
  std::vector<Row> rows;
  int antennas = 4;
  std::string frame = "J2000";
  bool framePerField = false;
  std::string timeScale = "UTC";
  bool hasData = true, hasCorrected = false, hasModel = false, hasSpectrum = false, hasFloat = false;
  std::string unit;                           ///< of DATA
  bool tiled = false;                         ///< DATA and FLAG in tiles, as instruments write them
  int danglingWindow = -1;                    ///< data description that gets a window beyond the list
  int danglingPolarization = -1;              ///< the same of its polarization
  std::vector<std::string> removedColumns;    ///< of the main table
  std::vector<std::string> removedSubtables;  ///< from its keywords

  /// Adds a row with one value in every channel and correlation, weight 1.
  Row& add(double u, double v, std::complex<float> value, int description = 0);
  /// Channels and correlations of a data description.
  [[nodiscard]] std::pair<std::size_t, std::size_t> shape(int description) const;
  /// Writes the set as a folder of that name.
  void write(const std::string& path) const;
};

}  // namespace lumo::test
