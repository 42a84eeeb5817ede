// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/MaskedStatistics.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "core/Units.h"

namespace lumo {

namespace {

template <typename Visit>
void visitUsable(const AMatrix<float>& map, const ABitMatrix& mask, Visit visit) {
  for (std::uint32_t row = 0; row < map.rows(); ++row) {
    for (std::uint32_t column = 0; column < map.columns(); ++column) {
      const float value = map(row, column);
      if (mask(row, column) != 0 && std::isfinite(value) && value != 0.0F) visit(static_cast<double>(value));
    }
  }
}

}  // namespace

MaskedStatistics maskedStatistics(const AMatrix<float>& map, const ABitMatrix& mask) {
  MaskedStatistics result;
  std::size_t count = 0;
  visitUsable(map, mask, [&](double value) {
    result.sum += value;
    ++count;
  });
  if (count == 0) return result;
  const double mean = result.sum / static_cast<double>(count);
  double squares = 0.0;
  visitUsable(map, mask, [&](double value) {
    squares += (value - mean) * (value - mean);
    ++count;
  });
  result.deviation = std::sqrt(squares / static_cast<double>(count));
  return result;
}

double beamPixels(const AMapHeader& header, const TMinMax& range, const AMatrix<float>& map) {
  constexpr double kQuarterPerLn2 = 0.36067376022224085;  // 1 / (4 ln 2)
  const double pixelArea = ((range.yMax - range.yMin) / (static_cast<double>(map.rows()) - 1.0)) *
                           ((range.xMax - range.xMin) / (static_cast<double>(map.columns()) - 1.0));
  return kPi * header.beamMajor * header.beamMinor * kQuarterPerLn2 / pixelArea;
}

}  // namespace lumo
