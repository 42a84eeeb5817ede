// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace lumo::test {

/// Bytes of a FITS header: cards as written, END, blanks to a multiple of 2880.
class FitsHeader {
 public:
  FitsHeader& number(const std::string& name, double value);
  FitsHeader& whole(const std::string& name, std::int64_t value);
  FitsHeader& logical(const std::string& name, bool value);
  FitsHeader& text(const std::string& name, const std::string& value);
  FitsHeader& history(const std::string& line);
  /// Replaces or adds a card whose value stands as `value` in the file.
  FitsHeader& set(const std::string& name, const std::string& value);
  FitsHeader& remove(const std::string& name);
  [[nodiscard]] std::string bytes() const;

 private:
  std::vector<std::pair<std::string, std::string>> cards_;
};

/// Big-endian bytes of a number as FITS stores it for a BITPIX.
void appendBig(std::string& bytes, int bitpix, double value);
void padBlock(std::string& bytes, char with);

/// A binary table extension written byte by byte.
class FitsTable {
 public:
  explicit FitsTable(std::string name) : name_(std::move(name)) {}
  /// `form` is a TFORM of D, E, J or A with a repeat count.
  FitsTable& column(const std::string& name, const std::string& form);
  FitsTable& card(const std::string& name, const std::string& value);
  FitsTable& numbers(const std::vector<double>& values);  ///< cells of the next columns, value by value
  FitsTable& text(const std::string& cell);               ///< the next text cell, padded with blanks
  [[nodiscard]] std::string bytes() const;

 private:
  struct Column {
    std::string name;
    char type;
    std::size_t repeat;
  };
  [[nodiscard]] std::size_t width() const;

  std::string name_;
  std::vector<Column> columns_;
  std::vector<std::pair<std::string, std::string>> cards_;
  std::string data_;
  std::size_t next_ = 0;    ///< column of the next value
  std::size_t inCell_ = 0;  ///< values of it already written
};

/// A small random-groups file. Starts as one IF at 5 GHz with one channel of 1 MHz, RR only, single
/// precision, source "SRC" at (10, 20) degrees J2000, parameters UU VV WW BASELINE DATE DATE; a test changes
/// what it is about. The defaults are written here by hand, independently of the reader.
struct UvfitsBuilder {
  struct Group {
    std::vector<double> parameters;  ///< as stored, in the order of `parameterNames`
    std::vector<double> array;       ///< as stored, first axis fastest
  };
  struct Axis {
    std::string type;
    std::int64_t pixels;
    double value;
    double pixel;
    double step;
  };

  int bitpix = -32;
  std::vector<Axis> axes = {{"COMPLEX", 3, 1, 1, 1}, {"STOKES", 1, -1, 1, -1}, {"FREQ", 1, 5e9, 1, 1e6},
                            {"IF", 1, 1, 1, 1},      {"RA", 1, 10, 1, 1},      {"DEC", 1, 20, 1, 1}};
  std::vector<std::string> parameterNames = {"UU", "VV", "WW", "BASELINE", "DATE", "DATE"};
  std::vector<double> parameterScales = {1, 1, 1, 1, 1, 1};
  std::vector<double> parameterZeros = {0, 0, 0, 0, 2450000.5, 0};
  std::vector<Group> groups;
  std::vector<FitsTable> tables;
  /// Last changes to the primary header.
  std::function<void(FitsHeader&)> edit;

  UvfitsBuilder();
  Axis& axis(const std::string& type);
  /// Numbers in a group's array.
  [[nodiscard]] std::size_t numbers() const;
  void addParameter(const std::string& name, double scale = 1, double zero = 0);
  /// Adds a group: the six default parameters (then `more`) and one value repeated for every visibility.
  Group& add(double u, double v, double baseline, double re, double im, double weight,
             const std::vector<double>& more = {});
  [[nodiscard]] std::string bytes() const;
  /// Bytes before the first table: header and groups.
  [[nodiscard]] std::size_t primaryBytes() const;
};

/// Table "AIPS FQ" for `ifs` IFs without rows; a row is FRQSEL, then IF FREQ, CH WIDTH, TOTAL BANDWIDTH and
/// SIDEBAND per IF.
[[nodiscard]] FitsTable frequencyTable(std::size_t ifs);
/// Table "AIPS SU" for `ifs` IFs without rows; a row is ID, name, RAEPO, DECEPO, EPOCH, FREQOFF per IF.
[[nodiscard]] FitsTable sourceTable(std::size_t ifs);
/// Table "AIPS AN" without rows; a row is the name, x y z, number.
[[nodiscard]] FitsTable antennaTable();

}  // namespace lumo::test
