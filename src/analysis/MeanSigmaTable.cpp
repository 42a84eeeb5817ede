// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/MeanSigmaTable.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "core/TextForm.h"

namespace lumo {

namespace {

// Two decimals of a megahertz, half up. Divided, not multiplied by 0.01: 1 235 000 Hz is 1.24 and not
// 1.2400000000000002.
std::string frequencyText(double freqHz) {
  return valToStr(std::trunc(freqHz / 1e4 + 0.5) / 100.0) + " [MHz]";
}

}  // namespace

void MeanSigmaTable::setData(AMatrix<double> mean, AMatrix<double> rms, std::vector<double> freqs) {
  mean_ = std::move(mean);
  rms_ = std::move(rms);
  freqs_ = std::move(freqs);
}

std::string MeanSigmaTable::headerText(int row, int column) const {
  if (row == 0 && column == 0) return {};
  if (column == 0) return frequencyText(freqs_[static_cast<std::size_t>(row - 1)]);
  const int area = (column + 1) / 2;
  return (column % 2 != 0 ? "Mean (" : "RMS (") + toStr(area) + ")";
}

std::string MeanSigmaTable::cellText(int row, int column) const {
  constexpr int kMeanDigits = 6;
  constexpr int kRmsDigits = 4;
  return nValToStr(value(row, column), column % 2 != 0 ? kMeanDigits : kRmsDigits);
}

double MeanSigmaTable::value(int row, int column) const {
  const auto area = static_cast<std::uint32_t>((column - 1) / 2);
  const auto point = static_cast<std::uint32_t>(row - 1);
  return column % 2 != 0 ? mean_(area, point) : rms_(area, point);
}

std::string MeanSigmaTable::text(int row, int column) const {
  return row == 0 || column == 0 ? headerText(row, column) : cellText(row, column);
}

}  // namespace lumo
