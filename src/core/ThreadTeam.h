// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

namespace lumo {

/// A fixed team of threads for many short parallel loops, one after the other: it is waited for a while
/// before a thread sleeps, so that a loop of some microseconds is worth sharing.
///
/// The calling thread is a member of the team and does its part. One thread at a time may call run(). Which
/// member takes which index is left to chance: the work of an index must not depend on it.
class ThreadTeam {
 public:
  /// `size` threads with the caller, at least 1. Where the system gives fewer threads the team is smaller.
  explicit ThreadTeam(int size);
  ThreadTeam(const ThreadTeam&) = delete;
  ThreadTeam& operator=(const ThreadTeam&) = delete;
  ~ThreadTeam();

  /// Members, the caller among them.
  [[nodiscard]] int size() const { return static_cast<int>(threads_.size()) + 1; }
  /// Calls task(i) for i = 0 .. count - 1, each once, and returns when all are done. `task` must not throw.
  void run(std::size_t count, const std::function<void(std::size_t)>& task);

 private:
  void work();
  void takeTasks();

  const std::function<void(std::size_t)>* task_ = nullptr;
  std::size_t count_ = 0;
  std::atomic<std::size_t> next_{0};
  std::atomic<std::uint32_t> round_{0};  ///< counts the loops; a change is the signal to begin
  std::atomic<std::uint32_t> busy_{0};   ///< threads other than the caller that have not ended the round
  std::atomic<bool> ending_{false};
  std::vector<std::jthread> threads_;  ///< last, so that they are joined while the rest is still there
};

}  // namespace lumo
