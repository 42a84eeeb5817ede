// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanWorker.h"

#include <exception>
#include <new>
#include <system_error>
#include <utility>

namespace lumo {

CleanWorker::CleanWorker(ABCleanEngine& engine, CleanObserver* observer)
    : engine_(engine), observer_(observer) {}

CleanWorker::~CleanWorker() {
  stop();
  resume();
  if (thread_.joinable()) thread_.join();
}

Status CleanWorker::start(ThreadPriority priority) {
  {
    const std::lock_guard lock(mutex_);
    if (state_ != State::kIdle) return {StatusCode::kInvalidValue, "the CLEAN was started before"};
    state_ = State::kRunning;
  }
  try {
    thread_ = std::jthread([this, priority] { run(priority); });
  } catch (const std::system_error&) {
    const Status failure(StatusCode::kOutOfMemory, "the system gave no thread for the CLEAN");
    finish(0, failure);
    return failure;
  }
  return {};
}

void CleanWorker::requestPause() {
  const std::lock_guard lock(mutex_);
  pauseRequested_.store(true, std::memory_order_relaxed);
}

void CleanWorker::pause() {
  std::unique_lock lock(mutex_);
  pauseRequested_.store(true, std::memory_order_relaxed);
  changed_.wait(lock, [this] { return state_ != State::kRunning; });
}

void CleanWorker::resume() {
  const std::lock_guard lock(mutex_);
  pauseRequested_.store(false, std::memory_order_relaxed);
  changed_.notify_all();
}

void CleanWorker::wait() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return state_ == State::kFinished || state_ == State::kIdle; });
}

bool CleanWorker::waitFor(std::chrono::milliseconds time) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, time, [this] { return state_ == State::kFinished; });
}

bool CleanWorker::finished() const {
  const std::lock_guard lock(mutex_);
  return state_ == State::kFinished;
}

bool CleanWorker::paused() const {
  const std::lock_guard lock(mutex_);
  return state_ == State::kParked;
}

int CleanWorker::result() const {
  const std::lock_guard lock(mutex_);
  return result_;
}

Status CleanWorker::status() const {
  const std::lock_guard lock(mutex_);
  return status_;
}

Status CleanWorker::priorityStatus() const {
  const std::lock_guard lock(mutex_);
  return priorityStatus_;
}

void CleanWorker::iterationDone(const CleanProgress& progress) {
  iteration_.store(progress.iteration, std::memory_order_relaxed);
  totalFlux_.store(progress.totalFlux, std::memory_order_relaxed);
  record_.iterationDone(progress);
  if (observer_ != nullptr) observer_->iterationDone(progress);
  if (pauseRequested_.load(std::memory_order_relaxed)) park();
}

void CleanWorker::park() {
  engine_.settle();
  std::unique_lock lock(mutex_);
  state_ = State::kParked;
  changed_.notify_all();
  changed_.wait(lock, [this] { return !pauseRequested_.load(std::memory_order_relaxed); });
  state_ = State::kRunning;
}

void CleanWorker::run(ThreadPriority priority) noexcept {
  try {
    Status given = setThreadPriority(priority);
    {
      const std::lock_guard lock(mutex_);
      priorityStatus_ = std::move(given);
    }
    const int result = engine_.Run(stop_, this);
    finish(result, {});
  } catch (const std::bad_alloc&) {
    finish(0, {StatusCode::kOutOfMemory, "there is not enough memory for the component maps"});
  } catch (const std::exception& problem) {
    finish(0, {StatusCode::kUnsupported, std::string("the CLEAN failed: ") + problem.what()});
  } catch (...) {
    finish(0, {StatusCode::kUnsupported, "the CLEAN failed for an unknown reason"});
  }
}

void CleanWorker::finish(int result, Status status) {
  const std::lock_guard lock(mutex_);
  result_ = result;
  status_ = std::move(status);
  state_ = State::kFinished;
  changed_.notify_all();
}

}  // namespace lumo
