// SPDX-License-Identifier: GPL-3.0-or-later
// Writes the map that astropy_check.py examines.
#include <cstdio>

#include "io/MapProduct.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  lumo::AMapHeader header;
  header.unit = "Jy/Beam";
  header.sourceName = "0415+379 %";
  header.frame = lumo::UvxFrame::kByEpoch;
  header.rightAscension = 64.5;
  header.declination = 38.0;
  header.epoch = 2000.0;
  header.stokes = "RR";
  header.frequency = 5.0e9;
  header.bandwidth = 2.5e8;
  header.beamMajor = 3.6;
  header.beamMinor = 1.8;
  header.beamPa = 30.0;
  header.beamArea = 12.0;
  header.history = {"short", std::string(200, 'x')};
  // 8 columns of 60 arcseconds, 6 rows of 90; x = 0 at column 4, y = 0 at row 3.
  lumo::TMinMax range;
  range.xMin = -240.0;
  range.xMax = 180.0;
  range.yMin = -270.0;
  range.yMax = 180.0;
  lumo::AMatrix<float> matrix(6, 8);
  for (std::uint32_t row = 0; row < 6; ++row)
    for (std::uint32_t column = 0; column < 8; ++column)
      matrix(row, column) = static_cast<float>(10 * row + column);
  const lumo::Status status = lumo::writeMap(argv[1], header, range, matrix);
  if (!status.ok()) std::fprintf(stderr, "%s\n", status.text().c_str());
  return status.ok() ? 0 : 1;
}
