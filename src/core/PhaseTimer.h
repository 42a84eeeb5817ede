// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

namespace lumo {

/// Wall-clock time since its own construction.
class Stopwatch {
 public:
  [[nodiscard]] double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// Adds the seconds of its own life to the time of a phase, which must outlive it.
class PhaseTimer {
 public:
  explicit PhaseTimer(double& seconds) : seconds_(seconds) {}
  PhaseTimer(const PhaseTimer&) = delete;
  PhaseTimer& operator=(const PhaseTimer&) = delete;
  ~PhaseTimer() { seconds_ += watch_.seconds(); }

 private:
  double& seconds_;
  Stopwatch watch_;
};

}  // namespace lumo
