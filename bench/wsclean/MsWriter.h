// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <complex>
#include <memory>
#include <string>
#include <vector>

namespace lumo::bench {

/// What a Measurement Set of one field holds beside its rows. The header keeps to C++17, since casacore's are
/// not ready for C++20.
struct MsSetup {
  struct Antenna {
    std::string name;
    std::array<double, 3> position = {};  ///< metres, geocentric
  };
  struct Window {
    std::vector<double> frequencies;  ///< Hz, a channel each; as many in every window
    double width = 0;                 ///< of a channel, Hz
  };
  std::string field;
  std::array<double, 2> direction = {};  ///< radians, J2000
  std::vector<Antenna> antennas;
  std::vector<Window> windows;
  std::vector<int> products;   ///< casacore's Stokes codes
  double intervalSeconds = 1;  ///< integration time
};

/// One row. Arrays of visibilities have the product fastest, then the channel.
struct MsRow {
  int window = 0;
  int antenna1 = 0;  ///< from 0
  int antenna2 = 0;
  double time = 0;                 ///< seconds, modified Julian date, UTC
  std::array<double, 3> uvw = {};  ///< metres
  std::vector<float> weights;      ///< a product each
  std::vector<char> flags;         ///< 1: not to be used
  std::vector<std::complex<float>> data;
};

/// Writes a Measurement Set as instruments do: data and flags in tiles, the rest in casacore's standard
/// columns. Throws casacore's exceptions when it cannot be written.
class MsWriter {
 public:
  /// Makes the set, which must not exist, with room for that many rows.
  MsWriter(const std::string& path, const MsSetup& setup, std::size_t rows);
  MsWriter(const MsWriter&) = delete;
  MsWriter& operator=(const MsWriter&) = delete;
  ~MsWriter();

  /// Appends a row. They are collected and written in blocks.
  void add(const MsRow& row);
  /// Writes the last block; throws std::logic_error when the rows are not as many as announced.
  void finish();

 private:
  struct Tables;
  std::unique_ptr<Tables> tables_;
};

}  // namespace lumo::bench
