// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <memory>
#include <string>

#include "io/FitsCards.h"
#include "io/MapProduct.h"
#include "support/TempFolder.h"

namespace lumo::test {

inline AMatrix<float> ramp(std::uint32_t rows, std::uint32_t columns) {
  AMatrix<float> matrix(rows, columns);
  for (std::uint32_t r = 0; r < rows; ++r)
    for (std::uint32_t c = 0; c < columns; ++c)
      matrix(r, c) = 0.1F * static_cast<float>(r) - 0.37F * static_cast<float>(c) + 1.0F / 3.0F;
  return matrix;
}

// Values whose decimal forms need all 17 digits.
inline AMapHeader fullHeader() {
  AMapHeader header;
  header.kind = MapKind::kIntensity;
  header.unit = "Jy/Beam";
  header.sourceName = "0415+379";
  header.frame = UvxFrame::kByEpoch;
  header.rightAscension = 64.5886551542 + 1.0 / 3e9;
  header.declination = -38.0 / 3.0;
  header.epoch = 2000.0;
  header.stokes = "I";
  header.frequency = 5e9 * (1.0 + 1.0 / 7.0);
  header.bandwidth = 1e9 / 3.0;
  header.beamMajor = 0.001 / 3.0;
  header.beamMinor = 0.0001 / 7.0;
  header.beamPa = -170.0 / 9.0;
  header.beamArea = 100.0 / 3.0;
  header.date = "2014-05-08T01:02:03";
  header.history = {"Lumo 0.1.0", "", "  order = 2"};
  return header;
}

inline TMinMax fullRange(std::uint32_t rows, std::uint32_t columns) {
  const double dx = 0.1 / 3.0;
  const double dy = 0.1 / 7.0;
  TMinMax range;
  range.xMin = -(columns / 2.0) * dx;
  range.xMax = (columns - 1 - columns / 2.0) * dx;
  range.yMin = -(rows / 2.0) * dy;
  range.yMax = (rows - 1 - rows / 2.0) * dy;
  range.vMin = -0.1 / 3.0;
  range.vMax = 10.0 / 3.0;
  return range;
}

inline LoadedMap roundTrip(const AMapHeader& header, const TMinMax& range, const AMatrix<float>& matrix) {
  const TempFolder folder;
  LoadedMap map;
  const Status written = writeMap(folder.file("m.exm"), header, range, matrix);
  EXPECT_TRUE(written.ok()) << written.text();
  const Status read = readMap(folder.file("m.exm"), map);
  EXPECT_TRUE(read.ok()) << read.text();
  if (map.matrix == nullptr) map.matrix = std::make_unique<AMatrix<float>>();
  return map;
}

// The header of a written file as its cards, and its pixels as FITS counts them, both from the bytes.
struct RawMap {
  FitsCards cards;
  std::string bytes;
  std::size_t data = 0;

  explicit RawMap(const std::string& path) : bytes(readFile(path)) {
    for (std::size_t at = 0; at + 80 <= bytes.size(); at += 80) {
      const std::string card = bytes.substr(at, 80);
      if (card.substr(0, 8) == "END     ") {
        data = (at + 80 + 2879) / 2880 * 2880;
        break;
      }
      cards.addRecord(card);
    }
  }
  [[nodiscard]] float pixel(int i, int j) const {
    const auto columns = static_cast<int>(*cards.number("NAXIS1"));
    const std::size_t at = data + 4 * static_cast<std::size_t>((j - 1) * columns + (i - 1));
    std::uint32_t bits = 0;
    for (std::size_t k = 0; k < 4; ++k) bits = bits << 8 | static_cast<unsigned char>(bytes[at + k]);
    return std::bit_cast<float>(bits);
  }
};

inline RawMap written(const AMapHeader& header, const TMinMax& range, const AMatrix<float>& matrix) {
  const TempFolder folder;
  const Status status = writeMap(folder.file("m.exm"), header, range, matrix);
  EXPECT_TRUE(status.ok()) << status.text();
  return RawMap(folder.file("m.exm"));
}

}  // namespace lumo::test
