// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstddef>
#include <new>

#include "core/ThreadTeam.h"

namespace lumo {

/// Calls task(i, member) for i = 0 .. count − 1 on a team's members, 0 <= member < team.size(); no two calls
/// with the same member at the same time, so that each can have memory of its own. A task that runs out of
/// memory makes this throw std::bad_alloc once all members have stopped.
template <typename Task>
void shareOut(ThreadTeam& team, std::size_t count, const Task& task) {
  std::atomic<std::size_t> next{0};
  std::atomic<bool> exhausted{false};
  team.run(static_cast<std::size_t>(team.size()), [&](std::size_t member) {
    try {
      for (std::size_t i = next.fetch_add(1); i < count; i = next.fetch_add(1)) task(i, member);
    } catch (const std::bad_alloc&) {
      exhausted = true;
    }
  });
  if (exhausted) throw std::bad_alloc();
}

}  // namespace lumo
