// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumo::fuzz {

/// Writes the right checksums into the header and the table directory of a visibility file, as far as they
/// can be found in it.
void mendChecksums(std::uint8_t* data, std::size_t size);

}  // namespace lumo::fuzz
