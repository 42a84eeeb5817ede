// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/Restoration.h"

#include <algorithm>

#include "clean/A3DGaussFunc.h"
#include "core/Units.h"

namespace lumo {

namespace {

/// The beam elements first .. last - 1 of one direction that fall on the map when the beam's middle lies on
/// map index `centre`; element s falls on centre - size / 2 + s.
struct BeamRange {
  BeamRange(std::int64_t centre, std::int64_t size, std::int64_t mapSize)
      : origin(centre - size / 2),
        first(std::max<std::int64_t>(0, -origin)),
        last(std::min(size, mapSize - origin)) {}

  std::int64_t origin;
  std::int64_t first;
  std::int64_t last;
};

void addBeam(AMatrix<float>& map, const AMatrix<float>& beam, double value, std::uint32_t row,
             std::uint32_t column) {
  const BeamRange rows(row, beam.rows(), map.rows());
  const BeamRange columns(column, beam.columns(), map.columns());
  for (std::int64_t r = rows.first; r < rows.last; ++r) {
    const float* const from = beam.data() + r * beam.columns();
    float* const to = map.data() + (rows.origin + r) * map.columns();
    for (std::int64_t s = columns.first; s < columns.last; ++s) {
      float& pixel = to[columns.origin + s];
      pixel = static_cast<float>(static_cast<double>(pixel) + static_cast<double>(from[s]) * value);
    }
  }
}

}  // namespace

std::unique_ptr<AMatrix<float>> makeRestoringBeam(const AMapHeader& header, const TMinMax& range,
                                                  std::uint32_t rows, std::uint32_t columns) {
  const A3DGaussFunc gauss(header.beamMajor, header.beamMinor, (90.0 - header.beamPa) * kRadianPerDegree);
  const double dx = (range.xMax - range.xMin) / (static_cast<double>(columns) - 1.0);
  const double dy = (range.yMax - range.yMin) / (static_cast<double>(rows) - 1.0);
  return gauss.MakeMatrix(dx, dy, std::max(rows, 1U) - 1, std::max(columns, 1U) - 1);
}

AMatrix<float> restoreComponents(const AMatrix<float>& components, const AMatrix<float>& beam) {
  AMatrix<float> restored(components.rows(), components.columns());
  for (std::uint32_t row = 0; row < components.rows(); ++row) {
    for (std::uint32_t column = 0; column < components.columns(); ++column) {
      const float value = components(row, column);
      if (value == 0.0F) continue;
      addBeam(restored, beam, static_cast<double>(value), row, column);
    }
  }
  return restored;
}

void addResidual(AMatrix<float>& restored, const AMatrix<float>& residual) {
  for (std::size_t i = 0; i < restored.size(); ++i) restored.data()[i] += residual.data()[i];
}

}  // namespace lumo
