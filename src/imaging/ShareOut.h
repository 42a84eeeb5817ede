// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstddef>
#include <new>

#include "core/ThreadTeam.h"

namespace lumo {

/// Calls task(i, member) for i = 0 .. count − 1 on a team's members (ThreadTeam::run). A task that runs out
/// of memory makes this throw std::bad_alloc once all members have stopped: tasks that have not begun by then
/// are left out.
template <typename Task>
void shareOut(ThreadTeam& team, std::size_t count, const Task& task) {
  std::atomic<bool> exhausted{false};
  team.run(count, [&](std::size_t i, std::size_t member) {
    if (exhausted.load(std::memory_order_relaxed)) return;
    try {
      task(i, member);
    } catch (const std::bad_alloc&) {
      exhausted = true;
    }
  });
  if (exhausted) throw std::bad_alloc();
}

}  // namespace lumo
