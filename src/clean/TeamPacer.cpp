// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/TeamPacer.h"

#include <algorithm>

namespace lumo {

void TeamPacer::begin(Phase phase, double seconds) {
  phase_ = phase;
  start_ = seconds;
  work_ = 0.0;
  settled_ = phase == Phase::kKeep;
}

void TeamPacer::worked(double work, double seconds) {
  if (phase_ == Phase::kBegin) return begin(Phase::kTryAlone, seconds);
  work_ += work;
  const double elapsed = seconds - start_;
  if (elapsed < (settled_ ? kTrial : kSettling)) return;
  if (!settled_) {
    begin(phase_, seconds);
    settled_ = true;
    return;
  }
  const double rate = work_ / elapsed;
  if (phase_ == Phase::kTryAlone) {
    alone_ = rate;
    return begin(Phase::kTryTogether, seconds);
  }
  if (phase_ == Phase::kTryTogether) {
    const bool better = rate > alone_;
    keepFor_ = better == keepTogether_ ? std::min(2.0 * keepFor_, kLongest) : kShortest;
    keepTogether_ = better;
    keptFor_ = 0.0;
    return begin(Phase::kKeep, seconds);
  }
  keptFor_ += elapsed;
  if (keptFor_ >= keepFor_ || (keepTogether_ && rate < alone_)) return begin(Phase::kTryAlone, seconds);
  begin(Phase::kKeep, seconds);
}

}  // namespace lumo
