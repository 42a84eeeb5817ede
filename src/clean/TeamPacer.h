// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lumo {

/// Decides, while a long computation runs, whether its short parallel loops are worth sharing between
/// threads. On a machine whose cores are taken by others they are not: a thread that loses its processor
/// within a loop lets all others wait. So both ways are tried in turn for some milliseconds and the faster
/// one is kept for a while, longer each time it wins again; sharing is given up at once when it falls below
/// what one thread did.
///
/// The clock is the caller's, in seconds from any start.
class TeamPacer {
 public:
  /// Whether the next loop should be shared.
  [[nodiscard]] bool together() const {
    return phase_ == Phase::kTryTogether || (phase_ == Phase::kKeep && keepTogether_);
  }
  /// Tells that `work`, in any unit, was done since the last call, which is now `seconds`.
  void worked(double work, double seconds);

  static constexpr double kTrial = 8e-3;
  /// Before a trial counts: threads must wake, and the caches of their cores fill.
  static constexpr double kSettling = 4e-3;
  static constexpr double kShortest = 0.02;
  static constexpr double kLongest = 1.6;

 private:
  enum class Phase { kBegin, kTryAlone, kTryTogether, kKeep };
  void begin(Phase phase, double seconds);

  Phase phase_ = Phase::kBegin;
  bool settled_ = false;
  bool keepTogether_ = false;
  double start_ = 0.0;  ///< of the trial, or of the last look at the rate
  double work_ = 0.0;   ///< since then
  double alone_ = 0.0;  ///< work per second of the last trial on one thread
  double keepFor_ = kShortest;
  double keptFor_ = 0.0;
};

}  // namespace lumo
