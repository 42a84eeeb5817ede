// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumo {

/// The row or column 0 .. period - 1 of a periodic beam that `index` stands for. Precondition: it is less
/// than one period outside of them.
inline std::size_t periodicIndex(std::int64_t index, std::size_t period) {
  const auto size = static_cast<std::int64_t>(period);
  return static_cast<std::size_t>(index < 0 ? index + size : index >= size ? index - size : index);
}

}  // namespace lumo
