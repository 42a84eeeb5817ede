// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "core/Status.h"
#include "imaging/ABMakeParameters.h"

namespace lumo {

/// The fields of ABMakeParameters in their order.
enum class MakeField {
  kUvLimitU,
  kUvLimitV,
  kUvScaleU,
  kUvScaleV,
  kShiftX,
  kShiftY,
  kHalfSizeX,
  kHalfSizeY,
  kWeightingMode,
  kUniformBoxU,
  kUniformBoxV,
  kKernelWidthU,
  kKernelWidthV,
  kKernelType,
  kTaperWidthU,
  kTaperWidthV,
  kTaperParam3,
  kTaperParam4,
  kTaperType,
  kUseVisWeights,
};
inline constexpr std::size_t kMakeFieldCount = 20;

/// One direction of the maps that a block gives. NaN where its texts do not tell.
struct MapExtent {
  double gridLimit = 0;  ///< half-extent of the uv grid, wavelengths
  double cell = 0;       ///< pixel size, arcseconds
  double field = 0;      ///< pixels times pixel size, arcseconds
};

/// The imaging parameters as a person edits them: one text per field, valid or not, read back all together.
class MakeParametersModel {
 public:
  /// What came of reading the texts: the block, or the first field refused and why. The reason starts with
  /// the field's name.
  struct Result {
    Status status;
    MakeField field = MakeField::kUvLimitU;
    ABMakeParameters block;
  };

  explicit MakeParametersModel(const ABMakeParameters& block = {});

  /// The field's name in the block, e.g. "uvLimitU".
  [[nodiscard]] static const char* name(MakeField field);
  [[nodiscard]] const std::string& text(MakeField field) const;
  /// Any text is taken. Numbers have a decimal point; whole numbers stand for the choices of a type.
  void setText(MakeField field, const std::string& text);
  /// The number that a text stands for; NaN if it is none.
  [[nodiscard]] double number(MakeField field) const;

  /// Reads all texts and checks them as ABMakeParameters::validate() does, and that the scales are not
  /// negative.
  [[nodiscard]] Result read() const;

  /// Whether gridding looks at the field at all with the present choices of weighting, kernel and taper.
  [[nodiscard]] bool isUsed(MakeField field) const;
  /// From the texts as they stand. An unset limit counts with the value that Setup gives it.
  [[nodiscard]] MapExtent extentX() const;
  [[nodiscard]] MapExtent extentY() const;

  /// The usable map sizes, ascending.
  [[nodiscard]] static std::vector<std::int32_t> usableColumns();
  [[nodiscard]] static std::vector<std::int32_t> usableRows();

 private:
  std::array<std::string, kMakeFieldCount> texts_;
};

/// An angle in arcseconds for display: four digits in "mas" below 0.1 arcsec, in "arcsec" up to 1000, in
/// "deg" from there on; "unknown" if it is not finite.
[[nodiscard]] std::string angleText(double arcsec);
/// A baseline in wavelengths for display: four digits in λ, kλ or Mλ (UTF-8); "unknown" if it is not finite.
[[nodiscard]] std::string wavelengthText(double wavelengths);

}  // namespace lumo
