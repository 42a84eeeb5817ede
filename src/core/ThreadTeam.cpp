// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/ThreadTeam.h"

#include <algorithm>
#include <chrono>
#include <system_error>

namespace lumo {

namespace {

/// Longer than the pauses between the loops of one computation, short enough not to heat an idle machine.
constexpr std::chrono::microseconds kPatience(50);
/// Readings of the flag between two looks at the clock.
constexpr int kReadings = 64;

constexpr std::uint32_t kInside = 0x7fff;  ///< members in the loop
constexpr std::uint32_t kOpen = 0x8000;
constexpr std::uint32_t kLoop = 0x10000;  ///< one in the number of the loop, which may wrap

constexpr std::uint64_t kFirst = 0xffffffff;  ///< of a share

constexpr std::uint32_t loopOf(std::uint32_t state) {
  return state & ~(kOpen | kInside);
}

}  // namespace

void ThreadTeam::Share::set(std::uint64_t first, std::uint64_t end) {
  range.store(end << 32U | first, std::memory_order_relaxed);
}

bool ThreadTeam::Share::take(bool last, std::size_t& index) {
  std::uint64_t now = range.load(std::memory_order_relaxed);
  for (;;) {
    const std::uint64_t first = now & kFirst;
    const std::uint64_t end = now >> 32U;
    if (first >= end) return false;
    index = static_cast<std::size_t>(last ? end - 1 : first);
    const std::uint64_t left = last ? (end - 1) << 32U | first : now + 1;
    if (range.compare_exchange_weak(now, left, std::memory_order_relaxed)) return true;
  }
}

ThreadTeam::ThreadTeam(int size)
    : shares_(static_cast<std::size_t>(std::max(size, 1))), places_(shares_.size()) {
  try {
    for (int i = 1; i < size; ++i) threads_.emplace_back([this, i] { work(static_cast<std::size_t>(i)); });
  } catch (const std::system_error&) {
    // Fewer threads do the same work.
  }
}

ThreadTeam::~ThreadTeam() {
  ending_.store(true, std::memory_order_relaxed);
  state_.fetch_add(kLoop);
  state_.notify_all();
}

void ThreadTeam::run(std::size_t count, const std::function<void(std::size_t, std::size_t)>& task) {
  if (threads_.empty() || count < 2) {
    for (std::size_t i = 0; i < count; ++i) task(i, 0);
    return;
  }
  task_ = &task;
  const auto members = static_cast<std::size_t>(size());
  for (std::size_t m = 0; m < members; ++m) shares_[m].set(count * m / members, count * (m + 1) / members);
  state_.store((loopOf(state_.load(std::memory_order_relaxed)) + kLoop) | kOpen);
  wakeSleepers();
  takeTasks(0);
  for (std::uint32_t state = state_.fetch_and(~kOpen) & ~kOpen; (state & kInside) != 0;
       state = state_.load(std::memory_order_acquire))
    waitForChange(0, state);
}

void ThreadTeam::work(std::size_t member) {
  std::uint32_t seen = 0;
  while (!ending_.load(std::memory_order_relaxed)) {
    std::uint32_t state = state_.load(std::memory_order_acquire);
    if ((state & kOpen) == 0 || loopOf(state) == seen) {
      waitForChange(member, state);
      continue;
    }
    if (!state_.compare_exchange_weak(state, state + 1)) continue;
    seen = loopOf(state);
    takeTasks(member);
    state_.fetch_sub(1);
    wakeSleepers();
  }
}

/// Returns when the state is no longer `state`, or sooner.
void ThreadTeam::waitForChange(std::size_t member, std::uint32_t state) {
  const auto start = std::chrono::steady_clock::now();
  do {
    for (int i = 0; i < kReadings; ++i)
      if (state_.load(std::memory_order_acquire) != state || ending_.load(std::memory_order_relaxed)) return;
  } while (std::chrono::steady_clock::now() - start < kPatience);
  sleeping_.fetch_add(1);
  places_[member].sleep(state_, state);
  sleeping_.fetch_sub(1);
}

void ThreadTeam::wakeSleepers() {
  if (sleeping_.load() == 0) return;
  for (SleepingPlace& place : places_) place.sendAway();
  state_.notify_all();
}

void ThreadTeam::takeTasks(std::size_t member) {
  const auto members = static_cast<std::size_t>(size());
  std::size_t index = 0;
  for (std::size_t m = 0; m < members; ++m)
    while (shares_[(member + m) % members].take(m != 0, index)) (*task_)(index, member);
}

}  // namespace lumo
