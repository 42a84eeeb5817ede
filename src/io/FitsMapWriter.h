// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/AFile.h"
#include "core/AMatrix.h"
#include "core/AMatrixRect.h"
#include "core/Status.h"
#include "core/TMinMax.h"
#include "io/AMapHeader.h"
#include "io/FitsCards.h"

namespace lumo {

/// Smallest and largest of the finite pixels; unset (minimum above maximum) when there is none.
struct ValueRange {
  double min = TMinMax::kUnsetMin;
  double max = TMinMax::kUnsetMax;

  [[nodiscard]] bool set() const { return min <= max; }
};
[[nodiscard]] ValueRange finiteRange(const AMatrix<float>& matrix, const AMatrixRect& rect);

/// All cards of a map file (docs/formats.md). `rows` and `columns` are those
/// written, `values` the range of their finite pixels.
[[nodiscard]] FitsCards mapCards(const AMapHeader& header, const TMinMax& range, std::uint32_t rows,
                                 std::uint32_t columns, const ValueRange& values);

/// Writes `cards`, then a part of a matrix, the columns from east to west, to a file being created. Needs
/// about a megabyte besides the matrix. Returns 0 when the file does not take it, with the reason in its
/// status(). Not through cfitsio, which does not tell when the last of its bytes meet a full disk.
[[nodiscard]] int writeMapImage(AFile& file, const FitsCards& cards, const AMatrix<float>& matrix,
                                const AMatrixRect& rect);

}  // namespace lumo
