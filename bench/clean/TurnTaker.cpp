// SPDX-License-Identifier: GPL-3.0-or-later
#include "TurnTaker.h"

#include <time.h>

namespace lumo::bench {

TurnTaker::Seconds TurnTaker::now() {
  const auto read = [](clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
  };
  return {read(CLOCK_MONOTONIC), read(CLOCK_THREAD_CPUTIME_ID)};
}

TurnTaker::TurnTaker(ABCleanEngine& engine) {
  thread_ = std::jthread([this, &engine] {
    start_ = now();
    static_cast<void>(engine.Run(stop_, this));
  });
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return !running_; });
  prepared_ = taken_;
}

TurnTaker::~TurnTaker() {
  stop_ = 1;
  const std::lock_guard lock(mutex_);
  running_ = true;
  changed_.notify_all();
}

TurnTaker::Seconds TurnTaker::slice(std::int32_t iterations, const std::function<void()>& then) {
  std::unique_lock lock(mutex_);
  left_ = iterations;
  then_ = then;
  running_ = true;
  changed_.notify_all();
  changed_.wait(lock, [this] { return !running_; });
  return {taken_.wall / iterations, taken_.thread / iterations};
}

void TurnTaker::iterationDone(const CleanProgress&) {
  if (stop_.load(std::memory_order_relaxed) != 0 || --left_ > 0) return;
  const Seconds end = now();
  taken_ = {end.wall - start_.wall, end.thread - start_.thread};
  if (then_) then_();
  std::unique_lock lock(mutex_);
  running_ = false;
  changed_.notify_all();
  changed_.wait(lock, [this] { return running_; });
  start_ = now();
}

}  // namespace lumo::bench
