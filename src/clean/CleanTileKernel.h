// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumo {

/// Terms that the tile kernel is compiled for: 1 to this.
inline constexpr std::int32_t kMaxTileTerms = 4;
/// Steps that one call of the tile kernel subtracts at most.
inline constexpr std::size_t kMaxTileUpdates = 1024;

/// A step of the CLEAN that some tiles have not subtracted yet.
struct CleanUpdate {
  std::uint32_t row = 0;
  std::uint32_t column = 0;
  double increments[kMaxTileTerms] = {};  ///< D_0 .. D_{N-1}
};

/// Maps, beams and constants of an engine as the tile kernel sees them. The pointers are not owned.
struct CleanTileMaps {
  std::int32_t terms = 0;                          ///< N, 1 to kMaxTileTerms
  float* maps[kMaxTileTerms] = {};                 ///< R_0 .. R_{N-1}, row-major
  const float* beams[2 * kMaxTileTerms - 1] = {};  ///< B_0 .. B_{2N-2}, row-major
  const float* intensity = nullptr;                ///< C_0
  double smallestBeam = 0.0;  ///< smallest |value| of all beams that is not 0; 0 where it is not known
  std::size_t mapColumns = 0;
  std::size_t beamRows = 0;
  std::size_t beamColumns = 0;
  const double* inverse = nullptr;  ///< W, N x N
  double q = 0.0;                   ///< 1 / W[0][0]
  bool nonNegative = false;
};

/// The pixels of rows firstRow .. lastRow - 1 and columns firstColumn .. lastColumn - 1.
struct CleanTileArea {
  std::uint32_t firstRow = 0;
  std::uint32_t lastRow = 0;
  std::uint32_t firstColumn = 0;
  std::uint32_t lastColumn = 0;

  [[nodiscard]] std::size_t rows() const { return lastRow - firstRow; }
  [[nodiscard]] std::size_t columns() const { return lastColumn - firstColumn; }
};

/// Subtracts `count` <= kMaxTileUpdates steps from the pixels of an area, in their order.
///
/// Every operation and every rounding to float is that of ABCleanEngine's description; only pixels are
/// interleaved. The bits do not depend on the instruction set that the processor has. All values must be
/// finite. Touches nothing outside the area; may run on several areas at once.
void subtractExactly(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                     std::size_t count);

}  // namespace lumo
