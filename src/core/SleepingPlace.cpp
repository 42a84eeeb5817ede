// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/SleepingPlace.h"

#include <thread>

#ifdef __linux__
#include <unistd.h>
#endif

namespace lumo {

void SleepingPlace::sleep(const std::atomic<std::uint32_t>& word, std::uint32_t value) {
#ifdef __linux__
  thread_ = ::gettid();
  const bool known = ::sched_getaffinity(0, sizeof allowed_, &allowed_) == 0;
#else
  const bool known = false;
#endif
  if (!known) return word.wait(value);
  state_.store(kSleeping);
  word.wait(value);
  int sleeping = kSleeping;
  if (state_.compare_exchange_strong(sleeping, kAwake)) return;
  while (state_.load() != kSent) std::this_thread::yield();
#ifdef __linux__
  static_cast<void>(::sched_setaffinity(0, sizeof allowed_, &allowed_));
#endif
  state_.store(kAwake);
}

void SleepingPlace::sendAway() {
  int sleeping = kSleeping;
  if (!state_.compare_exchange_strong(sleeping, kBeingSent)) return;
#ifdef __linux__
  cpu_set_t others = allowed_;
  const int here = ::sched_getcpu();
  if (here >= 0 && here < CPU_SETSIZE) CPU_CLR(static_cast<std::size_t>(here), &others);
  if (CPU_COUNT(&others) > 0) static_cast<void>(::sched_setaffinity(thread_, sizeof others, &others));
#endif
  state_.store(kSent);
}

}  // namespace lumo
