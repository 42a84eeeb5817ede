// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <string>

#include "core/Units.h"
#include "io/MapProduct.h"

namespace lumo::test {

// Maps of 9 rows and 17 columns, pixels of 0.5 (x) by 0.25 (y) arcseconds, x = 0 at column 8, y = 0 at row 4.
inline constexpr std::uint32_t kRows = 9;
inline constexpr std::uint32_t kColumns = 17;

inline TMinMax sampleRange() {
  TMinMax range;
  range.xMin = -4.0;
  range.xMax = 4.0;
  range.yMin = -1.0;
  range.yMax = 1.0;
  return range;
}

// A beam of exactly ten pixels: the area of a Gaussian is pi bmaj bmin / (4 ln 2).
inline AMapHeader sampleHeader(double frequency) {
  AMapHeader header;
  header.unit = "Jy/Beam";
  header.frequency = frequency;
  header.beamMajor = 2.0;
  header.beamMinor = 10 * 0.125 * 4.0 * std::log(2.0) / (kPi * 2.0);
  header.beamPa = 0.0;
  header.rightAscension = 64.5;
  header.declination = 38.0;
  header.epoch = 2000.0;
  return header;
}

using PixelValue = std::function<float(std::uint32_t row, std::uint32_t column)>;

inline void writeSample(const std::string& path, double frequency, const PixelValue& value) {
  AMatrix<float> map(kRows, kColumns);
  for (std::uint32_t row = 0; row < kRows; ++row)
    for (std::uint32_t column = 0; column < kColumns; ++column) map(row, column) = value(row, column);
  const Status status = writeMap(path, sampleHeader(frequency), sampleRange(), map);
  ASSERT_TRUE(status.ok()) << status.text();
}

inline PixelValue constant(float value) {
  return [value](std::uint32_t, std::uint32_t) { return value; };
}

}  // namespace lumo::test
