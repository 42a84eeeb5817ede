// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/Status.h"

namespace lumo {

/// Reads exactly `size` bytes of an open file from byte `offset` on, whatever its position, which stays.
/// kReadFailed when the system gives none, kBadFormat when the file ends before. Several threads may do so at
/// once.
[[nodiscard]] Status readAt(int descriptor, std::uint64_t offset, void* bytes, std::size_t size);

}  // namespace lumo
