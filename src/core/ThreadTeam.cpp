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

/// Returns when `flag` is no longer `value`.
void waitForChange(const std::atomic<std::uint32_t>& flag, std::uint32_t value) {
  const auto start = std::chrono::steady_clock::now();
  do {
    for (int i = 0; i < kReadings; ++i)
      if (flag.load(std::memory_order_acquire) != value) return;
  } while (std::chrono::steady_clock::now() - start < kPatience);
  flag.wait(value, std::memory_order_acquire);
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
  round_.fetch_add(1, std::memory_order_release);
  round_.notify_all();
}

void ThreadTeam::run(std::size_t count, const std::function<void(std::size_t)>& task) {
  if (threads_.empty() || count < 2) {
    for (std::size_t i = 0; i < count; ++i) task(i);
    return;
  }
  task_ = &task;
  count_ = count;
  next_.store(0, std::memory_order_relaxed);
  busy_.store(static_cast<std::uint32_t>(threads_.size()), std::memory_order_relaxed);
  round_.fetch_add(1, std::memory_order_release);
  round_.notify_all();
  takeTasks();
  for (std::uint32_t busy = busy_.load(std::memory_order_acquire); busy != 0;
       busy = busy_.load(std::memory_order_acquire))
    waitForChange(busy_, busy);
}

void ThreadTeam::work() {
  for (std::uint32_t seen = 0;; ++seen) {
    waitForChange(round_, seen);
    if (ending_.load(std::memory_order_relaxed)) return;
    takeTasks();
    busy_.fetch_sub(1, std::memory_order_release);
    busy_.notify_one();
  }
}

void ThreadTeam::takeTasks() {
  for (std::size_t i = next_.fetch_add(1, std::memory_order_relaxed); i < count_;
       i = next_.fetch_add(1, std::memory_order_relaxed))
    (*task_)(i);
}

}  // namespace lumo
