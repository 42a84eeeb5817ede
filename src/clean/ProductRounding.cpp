// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/ProductRounding.h"

#include <cmath>

namespace lumo {

ProductRounding roundingFor(const CleanTileMaps& maps, const CleanUpdate* updates, std::size_t count) {
  constexpr double kLastBit = 0x1p-149;
  constexpr double kSmallestProduct = 2.0 * 0x1p53 * kLastBit;  // the 2 covers the rounding of P
  bool may = true;
  for (std::size_t p = 0; p < count; ++p)
    for (std::int32_t j = 0; j < maps.terms; ++j) {
      const double increment = std::fabs(updates[p].increments[j]);
      may = may && (increment == 0.0 || increment * maps.smallestBeam >= kSmallestProduct);
    }
  return may ? ProductRounding::kAlign : ProductRounding::kConvert;
}

}  // namespace lumo
