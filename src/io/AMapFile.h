// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "core/AFile.h"
#include "core/AMatrix.h"
#include "core/AMatrixRect.h"
#include "core/TMinMax.h"
#include "io/AMapHeader.h"

namespace lumo {

/// A map file: a FITS image (docs/formats.md). Reads any two-dimensional FITS image, ours or another
/// program's; writes ours.
///
/// Writing: Open(name, kCreate), AMapHeader::Store, PutMinMax, PutMatrix, Close. The file appears under its
/// name only when Close() succeeds. Reading: Open(name, kRead), then AMapHeader::Load, GetMinMax and
/// GetMatrix in any order. Every operation returns non-zero on success; status() keeps the reason of a
/// failure. An object belongs to one thread at a time; several threads may each use their own.
class AMapFile : public AFile {
 public:
  AMapFile();
  ~AMapFile() override;

  int Open(const std::string& name, int mode) override;
  int Close() override;

  /// The stored ranges (all unset when nothing is open). A foreign image without DATAMIN and DATAMAX leaves
  /// the value range unset.
  [[nodiscard]] TMinMax GetMinMax() const;
  /// Sets the ranges to store; x and y give the pixel coordinates. After the header.
  int PutMinMax(const TMinMax& range);
  /// The whole map, or null when it cannot be read. The caller owns it.
  [[nodiscard]] std::unique_ptr<AMatrix<float>> GetMatrix();
  /// Writes the given part of the matrix. After the range, whose x and y are those of the *written part's*
  /// first and last column and row. A value range that is unset becomes that of the finite pixels written.
  int PutMatrix(const AMatrix<float>& matrix, const AMatrixRect& rect);

 private:
  friend class AMapHeader;
  /// For AMapHeader: 0 with a reason when the file is not open for reading (writing).
  int giveHeader(AMapHeader& header);
  int takeHeader(const AMapHeader& header);

  struct Reading;
  struct Writing;
  std::unique_ptr<Reading> reading_;
  std::unique_ptr<Writing> writing_;
};

}  // namespace lumo
