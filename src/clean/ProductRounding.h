// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

#include "clean/CleanTileKernel.h"

namespace lumo {

/// How the tile kernel rounds the difference of a residual and a product, formed in double, to float. Both
/// give the same bits where both may be used.
enum class ProductRounding {
  kConvert,  ///< to float and back, for any value
  /// Stays a double: three operations where the two conversions make the processor do four.
  kAlign,
};

/// The faster of the two that may be used for these steps.
///
/// kAlign may where every difference has 24 bits or more to itself, or is a float as it stands. Let every
/// product that is not 0 be at least P. A residual below half of its product leaves P / 2 or more. Any other
/// has its last bit at 2^-25 P or above, and the product at 2^-53 P: their difference is a multiple of
/// 2^-53 P, which is to be no finer than the last bit of any float.
[[nodiscard]] ProductRounding roundingFor(const CleanTileMaps& maps, const CleanUpdate* updates,
                                          std::size_t count);

}  // namespace lumo
