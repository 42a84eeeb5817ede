// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "core/AFile.h"
#include "core/Status.h"
#include "io/AUVXFile.h"

namespace lumo {

/// weightingMode values; every value but kUniformWeighting is natural weighting.
inline constexpr std::int32_t kNaturalWeighting = 1;
inline constexpr std::int32_t kUniformWeighting = 2;

/// kernelType values, and taperType values (kTaperNone is a pill box without bounds).
enum KernelType : std::int32_t { kKernelPillBox = 1, kKernelGauss = 2, kKernelLorentz = 3, kKernelHat = 4 };
enum TaperType : std::int32_t { kTaperNone = 1, kTaperGauss = 2, kTaperLorentz = 3, kTaperTh = 4 };

/// The imaging parameter block. A copyable value; the fields stand in the order in which Store writes them.
class ABMakeParameters {
 public:
  /// Half-extents of the uv grid are uvLimitU * uvScaleU and uvLimitV * uvScaleV wavelengths. A limit of 0 is
  /// unset; Setup gives it a value. The frequency survey writes all four.
  double uvLimitU = 0, uvLimitV = 0, uvScaleU = 0, uvScaleV = 0;
  double shiftX = 0, shiftY = 0;                  ///< shift of the phase centre, arcseconds
  std::int32_t halfSizeX = 256, halfSizeY = 256;  ///< Nx, Ny: columns and rows of the maps
  std::int32_t weightingMode = kNaturalWeighting;
  double uniformBoxU = 1, uniformBoxV = 1;    ///< reciprocals of a cell count; <= 0: the whole grid
  double kernelWidthU = 1, kernelWidthV = 1;  ///< cells
  std::int32_t kernelType = kKernelPillBox;
  double taperWidthU = 0, taperWidthV = 0;  ///< wavelengths
  double taperParam3 = 0, taperParam4 = 0;
  std::int32_t taperType = kTaperNone;
  std::int32_t useVisWeights = 1;  ///< non-zero: the visibility weight multiplies the taper

  /// The value Setup gives an unset limit: the grid reaches twice as far as the data, so that the restoring
  /// beam spans several map cells.
  static constexpr double kDefaultUvLimit = 2.0;

  /// Prepares the block for a run on a file's source: gives unset limits their value and refuses what
  /// gridding cannot use. Returns 1, or 0 with the field named in status().
  int Setup(const AUVXFile& file, std::int32_t sourceId);
  /// The checks of Setup alone.
  [[nodiscard]] Status validate() const;
  [[nodiscard]] const Status& status() const { return status_; }

  /// Writes char[4] "AMP1", then every field above in its order, doubles and i32, packed. Returns 1 or 0.
  [[nodiscard]] int Store(AFile& file) const;
  /// Reads what Store wrote. Returns 0 and leaves the block as it was when the file ends early or the mark is
  /// another.
  [[nodiscard]] int Load(AFile& file);

  /// True when maps of this many columns (Nx) and rows (Ny) have usable transforms: Nx in {2, 4, 16, 32, 256,
  /// 512, 1024, 2048} and 2 Ny in {4, 16, 32, 256, 512, 1024, 2048}.
  [[nodiscard]] static bool isUsableColumns(std::int32_t halfSizeX);
  [[nodiscard]] static bool isUsableRows(std::int32_t halfSizeY);

 private:
  Status status_;
};

}  // namespace lumo
