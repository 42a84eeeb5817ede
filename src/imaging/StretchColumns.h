// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/Stretch.h"

namespace lumo {

/// Records of one product and one channel as a file holds them, in little-endian order: re, im and weight of
/// IF after IF. They become columns of the means, several records at a time, with weight 0 for what
/// AUVXComplex::isUsable rejects.
///
/// @param values  where the bytes of each of `records` records begin.
/// @param record  of the means, where the first one goes.
/// @return how many of them are done; the last few may be left.
[[nodiscard]] std::size_t takeColumns(const std::uint8_t* const* values, std::size_t records,
                                      std::size_t record, std::size_t ifs, Stretch::Means* means);

}  // namespace lumo
