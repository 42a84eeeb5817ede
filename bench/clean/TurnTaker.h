// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "clean/ABCleanEngine.h"

namespace lumo::bench {

/// Lets an engine run in slices of iterations on a thread of its own and times each slice, so that several
/// engines can take turns: what else the machine does then hits all alike.
class TurnTaker final : private CleanObserver {
 public:
  /// The engine runs up to the end of its first iteration, which includes its preparation, and waits there.
  /// It must outlive this object.
  explicit TurnTaker(ABCleanEngine& engine);
  /// Stops the engine at the end of its current slice and waits for it.
  ~TurnTaker() override;
  TurnTaker(const TurnTaker&) = delete;
  TurnTaker& operator=(const TurnTaker&) = delete;

  /// Seconds on the clock on the wall, and those that the engine's thread had a processor: the second leave
  /// out what other programs took, and what helping threads did.
  struct Seconds {
    double wall = 0.0;
    double thread = 0.0;
  };

  /// Runs `iterations` more and returns the seconds per iteration. Subtractions that the engine puts off are
  /// left where they are. `then`, if given, is called on the engine's thread after the clocks have stopped.
  Seconds slice(std::int32_t iterations, const std::function<void()>& then = nullptr);
  /// Up to the end of the first iteration.
  [[nodiscard]] Seconds prepared() const { return prepared_; }

 private:
  static Seconds now();
  void iterationDone(const CleanProgress& progress) override;

  std::mutex mutex_;
  std::condition_variable changed_;
  bool running_ = true;  ///< the engine's turn
  std::int32_t left_ = 1;
  Seconds start_;
  Seconds taken_;
  Seconds prepared_;
  std::function<void()> then_;
  std::atomic<int> stop_{0};
  std::jthread thread_;
};

}  // namespace lumo::bench
