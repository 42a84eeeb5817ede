// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

#include "core/SleepingPlace.h"

namespace lumo {

/// A fixed team of threads for many short parallel loops, one after the other: it is waited for a while
/// before a thread sleeps, so that a loop of some microseconds is worth sharing.
///
/// The calling thread is a member of the team and does its part, all of it where the others come too late: it
/// waits for members that have begun a task, never for one that the system has not given a processor yet. One
/// thread at a time may call run().
///
/// The indices of a loop are cut into a stretch for each member, the same for loops of the same length, so
/// that what a member works on stays in its processor's cache from loop to loop. A member that is done helps
/// the others, so which one takes an index is left to chance in the end: its work must not depend on it.
class ThreadTeam {
 public:
  /// `size` threads with the caller, at least 1. Where the system gives fewer threads the team is smaller.
  explicit ThreadTeam(int size);
  ThreadTeam(const ThreadTeam&) = delete;
  ThreadTeam& operator=(const ThreadTeam&) = delete;
  ~ThreadTeam();

  /// Members, the caller among them.
  [[nodiscard]] int size() const { return static_cast<int>(threads_.size()) + 1; }
  /// Calls task(i, member) for i = 0 .. count − 1 < 2^32, each once, with 0 <= member < size(), and returns
  /// when all are done. No two calls with the same member at the same time, so that each can have memory of
  /// its own. `task` must not throw.
  void run(std::size_t count, const std::function<void(std::size_t, std::size_t)>& task);

 private:
  /// The indices of a member that are not taken yet.
  struct alignas(64) Share {
    void set(std::uint64_t first, std::uint64_t end);
    /// Takes the first one or, for another member, the last one; false when none is left.
    [[nodiscard]] bool take(bool last, std::size_t& index);

    std::atomic<std::uint64_t> range{0};  ///< first, and the one behind the last in the upper half
  };

  void work(std::size_t member);
  void takeTasks(std::size_t member);
  void waitForChange(std::size_t member, std::uint32_t state);
  void wakeSleepers();

  const std::function<void(std::size_t, std::size_t)>* task_ = nullptr;
  std::vector<Share> shares_;          ///< of each member
  std::vector<SleepingPlace> places_;  ///< of each member
  /// Number of the loop, whether members may still join it, and how many have, the caller not counted.
  std::atomic<std::uint32_t> state_{0};
  std::atomic<std::uint32_t> sleeping_{0};  ///< threads that a change of the state must wake
  std::atomic<bool> ending_{false};
  std::vector<std::jthread> threads_;  ///< last, so that they are joined while the rest is still there
};

}  // namespace lumo
