// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumo::fuzz {

/// A custom mutator for FITS files. Every other change is libFuzzer's own; the rest keep the cards in place:
/// a value is changed inside its card, a card takes another's place, goes away or comes twice.
[[nodiscard]] std::size_t mutateFits(std::uint8_t* data, std::size_t size, std::size_t maximum,
                                     unsigned seed);

}  // namespace lumo::fuzz
