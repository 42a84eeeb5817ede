// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

#include "clean/ABCleanEngine.h"
#include "clean/CleanObserver.h"
#include "clean/WatchedCleanRecord.h"
#include "core/Status.h"
#include "core/ThreadPriority.h"

namespace lumo {

/// Runs a CLEAN engine on a thread of its own.
///
/// start() once, then pause() and resume() as often as wanted, stop() to end early, wait() for the end. A
/// pause takes effect at the end of the running iteration, so the maps are never seen half subtracted.
///
/// Threads: start, pause, resume and wait belong to one controlling thread; stop, progress, finished and
/// waitFor may be called from any thread. **The engine's component and residual maps may be touched only
/// before start(), while the worker is paused (from the return of pause(), or paused() being true, to the
/// call of resume()), and after it has finished.** The engine and the observer must outlive the worker.
class CleanWorker final : private CleanObserver {
 public:
  /// `observer`, which may be null, is told of every iteration on the worker's thread.
  explicit CleanWorker(ABCleanEngine& engine, CleanObserver* observer = nullptr);
  /// Stops and waits.
  ~CleanWorker() override;

  /// Starts the thread. A priority that the system refuses does not matter here: see priorityStatus(). Fails
  /// when no thread could be made (the worker then counts as finished, stopped) or when it was started
  /// before.
  [[nodiscard]] Status start(ThreadPriority priority);
  /// Asks for a pause without waiting for it; asked for before start(), it comes after the first iteration.
  void requestPause();
  /// Asks for a pause and returns when the worker is parked or finished (at once if it was never started).
  void pause();
  void resume();
  /// Asks the engine to end before its next iteration: what the running iteration began is completed. A
  /// paused worker stays parked until resume(). Before start() it ends the run before its first iteration.
  void stop() { stop_.store(1, std::memory_order_relaxed); }
  /// Returns when the worker has finished, at once if it was never started. Never returns while it is paused.
  void wait();
  /// Waits for at most `time`; returns finished().
  bool waitFor(std::chrono::milliseconds time);
  [[nodiscard]] bool finished() const;
  /// True while the worker is parked by a pause: a caller that must not block asks with requestPause() and
  /// polls this.
  [[nodiscard]] bool paused() const;

  /// Iterations done so far. Costs the worker nothing; the flux may be one iteration apart from it.
  [[nodiscard]] std::int32_t iteration() const { return iteration_.load(std::memory_order_relaxed); }
  /// Total flux so far, in map units.
  [[nodiscard]] double totalFlux() const { return totalFlux_.load(std::memory_order_relaxed); }
  /// How the CLEAN has gone on so far. One thread may follow it; the record itself may be read where the maps
  /// may be touched.
  [[nodiscard]] WatchedCleanRecord& record() { return record_; }

  /// The engine's result: 1 completed, 0 stopped, failed or not finished yet.
  [[nodiscard]] int result() const;
  /// Why the run failed; ok otherwise.
  [[nodiscard]] Status status() const;
  /// Why the thread does not have the priority asked for; ok otherwise. Known once the first iteration is
  /// done.
  [[nodiscard]] Status priorityStatus() const;

 private:
  enum class State { kIdle, kRunning, kParked, kFinished };

  void iterationDone(const CleanProgress& progress) override;
  void park();
  void run(ThreadPriority priority) noexcept;
  void finish(int result, Status status);

  ABCleanEngine& engine_;
  CleanObserver* const observer_;
  WatchedCleanRecord record_;
  std::atomic<int> stop_{0};
  std::atomic<std::int32_t> iteration_{0};
  std::atomic<double> totalFlux_{0.0};
  /// Written under mutex_; read without it once per iteration, to keep the lock out of the loop.
  std::atomic<bool> pauseRequested_{false};

  mutable std::mutex mutex_;  ///< guards what follows up to the thread
  std::condition_variable changed_;
  State state_ = State::kIdle;
  int result_ = 0;
  Status status_;
  Status priorityStatus_;

  std::jthread thread_;
};

}  // namespace lumo
