// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/ThreadTeam.h"

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

constexpr std::uint32_t loopOf(std::uint32_t state) {
  return state & ~(kOpen | kInside);
}

}  // namespace

ThreadTeam::ThreadTeam(int size) {
  try {
    for (int i = 1; i < size; ++i) threads_.emplace_back([this] { work(); });
  } catch (const std::system_error&) {
    // Fewer threads do the same work.
  }
}

ThreadTeam::~ThreadTeam() {
  ending_.store(true, std::memory_order_relaxed);
  state_.fetch_add(kLoop);
  state_.notify_all();
}

void ThreadTeam::run(std::size_t count, const std::function<void(std::size_t)>& task) {
  if (threads_.empty() || count < 2) {
    for (std::size_t i = 0; i < count; ++i) task(i);
    return;
  }
  task_ = &task;
  count_ = count;
  next_.store(0, std::memory_order_relaxed);
  state_.store((loopOf(state_.load(std::memory_order_relaxed)) + kLoop) | kOpen);
  if (sleeping_.load() != 0) state_.notify_all();
  takeTasks();
  for (std::uint32_t state = state_.fetch_and(~kOpen) & ~kOpen; (state & kInside) != 0;
       state = state_.load(std::memory_order_acquire))
    waitForChange(state);
}

void ThreadTeam::work() {
  std::uint32_t seen = 0;
  while (!ending_.load(std::memory_order_relaxed)) {
    std::uint32_t state = state_.load(std::memory_order_acquire);
    if ((state & kOpen) == 0 || loopOf(state) == seen) {
      waitForChange(state);
      continue;
    }
    if (!state_.compare_exchange_weak(state, state + 1)) continue;
    seen = loopOf(state);
    takeTasks();
    state_.fetch_sub(1);
    if (sleeping_.load() != 0) state_.notify_all();
  }
}

/// Returns when the state is no longer `state`, or sooner.
void ThreadTeam::waitForChange(std::uint32_t state) {
  const auto start = std::chrono::steady_clock::now();
  do {
    for (int i = 0; i < kReadings; ++i)
      if (state_.load(std::memory_order_acquire) != state || ending_.load(std::memory_order_relaxed)) return;
  } while (std::chrono::steady_clock::now() - start < kPatience);
  sleeping_.fetch_add(1);
  state_.wait(state);
  sleeping_.fetch_sub(1);
}

void ThreadTeam::takeTasks() {
  for (std::size_t i = next_.fetch_add(1, std::memory_order_relaxed); i < count_;
       i = next_.fetch_add(1, std::memory_order_relaxed))
    (*task_)(i);
}

}  // namespace lumo
