// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <mutex>
#include <vector>

#include "clean/CleanRecord.h"

namespace lumo {

/// A CleanRecord that another thread may follow while the CLEAN goes on: the follower asks for a copy, the
/// CLEAN's thread makes it at the end of an iteration, and the follower fetches it. Without a question
/// outstanding that costs the CLEAN one look per iteration; it never waits for the follower.
class WatchedCleanRecord final : public CleanObserver {
 public:
  /// On the CLEAN's thread.
  void iterationDone(const CleanProgress& progress) override;

  // What follows is for one following thread.

  /// Asks for a copy at the end of an iteration. Throws std::bad_alloc the first time when memory is short.
  void requestCopy();
  /// Puts the copy that was asked for into `lines`. Returns false, and leaves them alone, where there is none
  /// yet; each copy is given once.
  bool fetchCopy(std::vector<CleanProgress>& lines);

  /// The record itself, to be read only while the CLEAN rests.
  [[nodiscard]] const CleanRecord& record() const { return record_; }

 private:
  CleanRecord record_;
  std::atomic<bool> isAsked_{false};
  std::mutex mutex_;  ///< guards what follows
  std::vector<CleanProgress> copy_;
  bool isThere_ = false;
};

}  // namespace lumo
