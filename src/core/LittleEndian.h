// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <bit>
#include <cstring>
#include <type_traits>

namespace lumo {

static_assert(std::endian::native == std::endian::little,
              "the readers of this project copy little-endian bytes as they are");

/// The value of type T whose little-endian bytes start at `bytes` (any alignment).
template <typename T>
[[nodiscard]] T loadLittle(const void* bytes) {
  static_assert(std::is_arithmetic_v<T>);
  T value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

/// Writes the little-endian bytes of `value` to `bytes` (any alignment).
template <typename T>
void storeLittle(void* bytes, std::type_identity_t<T> value) {
  static_assert(std::is_arithmetic_v<T>);
  std::memcpy(bytes, &value, sizeof value);
}

}  // namespace lumo
