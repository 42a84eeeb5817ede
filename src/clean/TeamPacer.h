// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

namespace lumo {

/// Decides, while a long computation runs, whether its short parallel loops are worth sharing between
/// threads. On a machine whose cores are taken by others they are not: a thread that loses its processor
/// within a loop lets all others wait. Nor are loops that take less time than threads need to meet. So what
/// a shared loop took is compared with what one thread would have taken, going by its own part; sharing that
/// does not pay for some milliseconds is given up for a while, longer each time it fails again.
///
/// All times are in seconds.
class TeamPacer {
 public:
  /// Whether the next loop should be shared.
  [[nodiscard]] bool together() const { return together_; }
  /// Tells that a shared loop of `parts` like parts took `all`, and one thread `own` for `ownParts` of them.
  void shared(double all, double own, std::size_t ownParts, std::size_t parts);
  /// Tells that a loop that was not shared took `all`.
  void alone(double all);

  /// Of shared loops between two decisions.
  static constexpr double kTrial = 4e-3;
  static constexpr double kShortest = 0.016;
  static constexpr double kLongest = 1.6;

 private:
  bool together_ = true;
  double shared_ = 0.0;  ///< what shared loops took since the last decision
  double byOne_ = 0.0;   ///< what one thread would have taken for them
  double leaveFor_ = kShortest;
  double left_ = 0.0;  ///< of the time for which sharing is given up
};

}  // namespace lumo
