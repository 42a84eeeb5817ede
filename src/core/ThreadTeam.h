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
/// The calling thread is a member of the team and does its part, all of it where the others come too late: it
/// waits for members that have begun a task, never for one that the system has not given a processor yet. One
/// thread at a time may call run(). Which member takes which index is left to chance: the work of an index
/// must not depend on it.
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
  void waitForChange(std::uint32_t state);

  const std::function<void(std::size_t)>* task_ = nullptr;
  std::size_t count_ = 0;
  std::atomic<std::size_t> next_{0};
  /// Number of the loop, whether members may still join it, and how many have, the caller not counted.
  std::atomic<std::uint32_t> state_{0};
  std::atomic<std::uint32_t> sleeping_{0};  ///< threads that a change of the state must wake
  std::atomic<bool> ending_{false};
  std::vector<std::jthread> threads_;  ///< last, so that they are joined while the rest is still there
};

}  // namespace lumo
