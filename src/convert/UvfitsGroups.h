// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "convert/UvfitsAxes.h"
#include "convert/UvfitsFile.h"
#include "core/Status.h"
#include "io/AUVXComplex.h"

namespace lumo {

/// The random groups of a visibility file: where they lie and how their numbers are stored.
///
/// read() checks every size against the file's, so that decode() needs no check.
class UvfitsGroups {
 public:
  /// What decode() found that cannot be data.
  struct Damage {
    std::uint64_t values = 0;   ///< visibilities that are not finite
    std::uint64_t weights = 0;  ///< weights that are not finite
  };

  /// Reads BITPIX, PCOUNT, GCOUNT, BSCALE, BZERO and BLANK of the primary header (the current HDU). Fails on
  /// groups that do not lie inside the file whole.
  [[nodiscard]] Status read(const UvfitsFile& file, const UvfitsAxes& axes);

  [[nodiscard]] std::uint64_t count() const { return count_; }
  [[nodiscard]] std::uint32_t parameterCount() const { return parameterCount_; }
  /// Offset in the file of a group, 0..count(); count() gives the end of the last.
  [[nodiscard]] std::uint64_t offset(std::uint64_t index) const { return first_ + index * groupBytes_; }

  /// Decodes the group at `bytes`. `parameters` (parameterCount() numbers) become the random parameters as
  /// stored; `visibilities` (the shape's size, ordered IF, channel, product) real part, imaginary part and
  /// weight rounded to single precision. A finite weight <= 0 stays as it is; one that is not finite becomes
  /// 0. A visibility that is not finite becomes 0 with weight 0. Without stored weights every weight is 1.
  void decode(const std::uint8_t* bytes, std::span<double> parameters, std::span<AUVXComplex> visibilities,
              Damage& damage) const;

 private:
  template <typename T>
  void decodeAs(const std::uint8_t* bytes, std::span<double> parameters, std::span<AUVXComplex> visibilities,
                Damage& damage) const;

  int bitpix_ = 0;
  std::uint64_t first_ = 0;
  std::uint64_t count_ = 0;
  std::uint64_t groupBytes_ = 0;
  std::uint32_t parameterCount_ = 0;
  double scale_ = 1;
  double zero_ = 0;
  std::optional<double> blank_;
  bool weights_ = true;
  std::uint64_t complexStride_ = 1;
  std::vector<std::uint64_t> places_;  ///< of each visibility's real part, in numbers
};

}  // namespace lumo
