// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

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

/// What a phase took and the phases that it consists of, in the order in which they began.
struct PhaseTime {
  PhaseTime() = default;
  PhaseTime(std::string phase, double time, std::vector<PhaseTime> itsParts = {})
      : name(std::move(phase)), seconds(time), parts(std::move(itsParts)) {}

  std::string name;
  double seconds = 0;  ///< wall clock
  std::vector<PhaseTime> parts;

  /// Appends a part with the time that the others do not account for, 0 when the clock's steps leave less.
  void addOther() {
    double left = seconds;
    for (const PhaseTime& part : parts) left -= part.seconds;
    parts.emplace_back("other", std::max(left, 0.0));
  }
};

}  // namespace lumo
