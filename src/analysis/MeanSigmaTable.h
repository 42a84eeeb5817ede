// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "core/AMatrix.h"

namespace lumo {

/// The texts of the mean/RMS table: a row for each frequency, two columns for each area. Rows and columns
/// count from 0, and row 0 and column 0 are the headers.
class MeanSigmaTable {
 public:
  /// Takes the values, both [area][point], and the frequencies of the points in Hz. The three agree in size.
  void setData(AMatrix<double> mean, AMatrix<double> rms, std::vector<double> freqs);

  /// Headers included: points + 1.
  [[nodiscard]] int rowCount() const { return static_cast<int>(mean_.columns()) + 1; }
  /// Headers included: 2 areas + 1.
  [[nodiscard]] int columnCount() const { return 2 * static_cast<int>(mean_.rows()) + 1; }
  /// Text of a header cell: "1.23 [MHz]" in column 0, "Mean (1)", "RMS (1)", "Mean (2)", ... in row 0, and
  /// nothing in the corner.
  [[nodiscard]] std::string headerText(int row, int column) const;
  /// Text of a value, row and column from 1: a mean with six significant digits, an RMS with four.
  [[nodiscard]] std::string cellText(int row, int column) const;
  /// The value that cellText() is about, with all its digits.
  [[nodiscard]] double value(int row, int column) const;
  /// Frequency of a row from 1, in Hz.
  [[nodiscard]] double frequency(int row) const { return freqs_[static_cast<std::size_t>(row - 1)]; }
  /// Header or value, whichever the cell holds.
  [[nodiscard]] std::string text(int row, int column) const;

 private:
  AMatrix<double> mean_;
  AMatrix<double> rms_;
  std::vector<double> freqs_;
};

}  // namespace lumo
