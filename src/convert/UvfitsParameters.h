// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "convert/UvfitsFile.h"
#include "core/Status.h"

namespace lumo {

/// What the random parameters of one group say.
struct UvfitsGroupHead {
  double u = 0, v = 0, w = 0;  ///< seconds of light travel, signs as in the file
  double time = 0;             ///< modified Julian date in the file's time system, days
  std::int32_t antenna1 = 0;   ///< 0 when the group does not tell legibly
  std::int32_t antenna2 = 0;
  std::int32_t subarray = 1;
  std::int32_t source = 0;     ///< 0 when the file has no SOURCE parameter
  std::int32_t selection = 0;  ///< 0 when the file has no FREQSEL parameter
};

/// Which random parameter means what.
///
/// A value is stored * PSCAL + PZERO in double; parameters with one name add up, which is how dates keep
/// their precision. Names may carry a projection: UU, UU--, UU---SIN.
class UvfitsParameters {
 public:
  /// Reads PTYPEn, PSCALn, PZEROn for n = 1..count from the primary header (the current HDU). Fails when u,
  /// v, w, the date or the antennas are missing, on the NCP projection and on other units, and on the
  /// compressed form.
  [[nodiscard]] Status read(const UvfitsFile& file, std::uint32_t count);

  /// `stored`: the group's parameters as they stand in the file.
  [[nodiscard]] UvfitsGroupHead decode(std::span<const double> stored) const;
  [[nodiscard]] bool hasSource() const { return !source_.empty(); }
  [[nodiscard]] bool hasSelection() const { return !selection_.empty(); }

 private:
  struct Term {
    std::size_t index;
    double scale;
    double zero;
  };
  using Terms = std::vector<Term>;

  [[nodiscard]] Status take(const std::string& type, const Term& term);
  [[nodiscard]] Status checkComplete() const;
  void decodeBaseline(std::span<const double> stored, UvfitsGroupHead& head) const;

  Terms u_, v_, w_, date_, baseline_, antenna1_, antenna2_, subarray_, source_, selection_;
};

}  // namespace lumo
