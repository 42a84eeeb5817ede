// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/WatchedCleanRecord.h"

namespace lumo {

void WatchedCleanRecord::iterationDone(const CleanProgress& progress) {
  record_.iterationDone(progress);
  if (!isAsked_.load(std::memory_order_relaxed)) return;
  // A follower that is just fetching gets its copy at the end of the next iteration.
  const std::unique_lock lock(mutex_, std::try_to_lock);
  if (!lock.owns_lock()) return;
  copy_.assign(record_.lines().begin(), record_.lines().end());
  isThere_ = true;
  isAsked_.store(false, std::memory_order_relaxed);
}

void WatchedCleanRecord::requestCopy() {
  const std::lock_guard lock(mutex_);
  // Here rather than on the CLEAN's thread, which must not fail for a picture.
  copy_.reserve(CleanRecord::kMostLines);
  isAsked_.store(true, std::memory_order_relaxed);
}

bool WatchedCleanRecord::fetchCopy(std::vector<CleanProgress>& lines) {
  const std::lock_guard lock(mutex_);
  if (!isThere_) return false;
  lines.assign(copy_.begin(), copy_.end());
  isThere_ = false;
  return true;
}

}  // namespace lumo
