// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/AMatrix.h"
#include "core/AMatrixRect.h"
#include "core/Status.h"
#include "core/TMinMax.h"
#include "io/AMapHeader.h"

namespace lumo {

/// One product of a run and what became of it.
struct MapProduct {
  std::string path;
  Status status;  ///< ok when the file was written, else why it was not
};
using MapProducts = std::vector<MapProduct>;

/// A map read back whole.
struct LoadedMap {
  AMapHeader header;
  TMinMax range;
  std::unique_ptr<AMatrix<float>> matrix;  ///< null when the file could not be read
};

/// Writes a part of a matrix as a map file: open, header, range, matrix, close. The old file of that name
/// stays whole when anything fails.
[[nodiscard]] Status writeMap(const std::string& path, const AMapHeader& header, const TMinMax& range,
                              const AMatrix<float>& matrix, const AMatrixRect& rect);
/// The same for the whole matrix.
[[nodiscard]] Status writeMap(const std::string& path, const AMapHeader& header, const TMinMax& range,
                              const AMatrix<float>& matrix);
/// Reads header, ranges and matrix of a map file.
[[nodiscard]] Status readMap(const std::string& path, LoadedMap& map);

}  // namespace lumo
