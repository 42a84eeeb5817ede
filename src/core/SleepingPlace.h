// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>

#ifdef __linux__
#include <sched.h>
#endif

namespace lumo {

/// Where a thread sleeps until another one wakes it, on a processor other than the waker's.
///
/// The system may let a thread wake up on the processor of the one that wakes it and that goes on working
/// there. On virtual machines, where a processor at rest does not always count as idle, it then takes until
/// the next tick, some milliseconds, before the thread moves and runs: longer than the work it was woken for.
class SleepingPlace {
 public:
  /// Sleeps until `word` is no longer `value` and someone has notified it. One thread at a time.
  void sleep(const std::atomic<std::uint32_t>& word, std::uint32_t value);
  /// Called by a thread that is about to notify the word: whoever sleeps here will not wake up on its
  /// processor, if there is another one for him. May be called by several threads.
  void sendAway();

 private:
  enum State : int { kAwake, kSleeping, kBeingSent, kSent };

  std::atomic<int> state_{kAwake};
#ifdef __linux__
  pid_t thread_ = 0;     ///< that sleeps
  cpu_set_t allowed_{};  ///< the processors that are its own again when it has woken
#endif
};

}  // namespace lumo
