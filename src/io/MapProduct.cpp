// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/MapProduct.h"

#include "io/AMapFile.h"

namespace lumo {

Status writeMap(const std::string& path, const AMapHeader& header, const TMinMax& range,
                const AMatrix<float>& matrix, const AMatrixRect& rect) {
  AMapFile file;
  const bool written = file.Open(path, AFile::kCreate) != 0 && header.Store(file) != 0 &&
                       file.PutMinMax(range) != 0 && file.PutMatrix(matrix, rect) != 0 && file.Close() != 0;
  return written ? Status() : file.status();
}

Status writeMap(const std::string& path, const AMapHeader& header, const TMinMax& range,
                const AMatrix<float>& matrix) {
  return writeMap(path, header, range, matrix,
                  AMatrixRect(0, 0, static_cast<std::int32_t>(matrix.rows()) - 1,
                              static_cast<std::int32_t>(matrix.columns()) - 1));
}

Status readMap(const std::string& path, LoadedMap& map) {
  map = LoadedMap();
  AMapFile file;
  if (file.Open(path, AFile::kRead) == 0 || map.header.Load(file) == 0) return file.status();
  map.range = file.GetMinMax();
  map.matrix = file.GetMatrix();
  return map.matrix != nullptr ? Status() : file.status();
}

}  // namespace lumo
