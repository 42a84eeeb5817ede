// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Status.h"

namespace lumo {

/// Scheduling priority of a worker thread, lowest first; the values are the indices of the priority list.
enum class ThreadPriority { kIdle, kLow, kBelow, kNormal, kAbove, kHigh, kTimecritical };

inline constexpr int kThreadPriorityCount = 7;

/// The priority for a list index; kNormal for an index outside 0..6.
[[nodiscard]] ThreadPriority GetPriorityConst(int index);

/// Gives the calling thread the priority. Fails (its scheduling class unchanged) where the system does not
/// allow it, which is usual for priorities above normal without special rights.
[[nodiscard]] Status setThreadPriority(ThreadPriority priority);

}  // namespace lumo
