// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lumo {

/// More threads than this are of no use to any stage.
inline constexpr int kMostThreads = 256;

/// How many threads to work with when `wanted` are asked for: 1..kMostThreads; for 0 or less as many as
/// there are processor cores that this process may run on.
[[nodiscard]] int threadCount(int wanted);

}  // namespace lumo
