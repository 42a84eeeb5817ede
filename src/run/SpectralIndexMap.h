// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "core/AMatrix.h"
#include "core/Status.h"

namespace lumo {

/// Which pixels of the index map keep a value.
struct SpectralIndexRule {
  double threshold = 0;  ///< least |zero-order flux|, in map units
  double lowest = -3;    ///< index range, bounds included
  double highest = 3;
};

/// The spectral index of one pixel: first / zero in single precision, since in an expansion in f = nu/nu0 - 1
/// the ratio of the first two terms is d ln I / d ln nu at nu0. NaN where |zero| is below the threshold and
/// where the ratio is outside the range or not a number.
[[nodiscard]] float spectralIndex(float zero, float first, const SpectralIndexRule& rule);

/// Replaces the zero-order map by the index map. Fails with kBadFormat, nothing changed, when the sizes
/// differ.
[[nodiscard]] Status makeSpectralIndexMap(AMatrix<float>& zero, const AMatrix<float>& first,
                                          const SpectralIndexRule& rule);

/// The index map's files.
struct SpectralIndexFiles {
  std::string zero;   ///< zero-order CLEAN map, read
  std::string first;  ///< first-order CLEAN map, read
  std::string index;  ///< written
};

/// Makes the index map of two CLEAN maps. `fraction` times the upper end of the zero-order map's stored value
/// range is the threshold. The index map has that map's header with the unit "Sp. Index", and that map's
/// ranges, not those of the indices. Memory: two maps.
[[nodiscard]] Status writeSpectralIndexMap(const SpectralIndexFiles& files, double fraction, double lowest,
                                           double highest);

}  // namespace lumo
