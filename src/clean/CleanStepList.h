// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "clean/ABCleanEngine.h"
#include "clean/CleanTileKernel.h"

namespace lumo {

/// The steps of a CLEAN that some tile has not subtracted yet, oldest first. Never holds more than its
/// capacity, so that its memory is bounded.
class CleanStepList {
 public:
  /// Empties the list. capacity 1 to kMostSteps; with `merging` the steps on one pixel are linked.
  void prepare(std::size_t capacity, bool merging);

  [[nodiscard]] std::size_t size() const { return steps_.size(); }
  [[nodiscard]] std::size_t capacity() const { return capacity_; }
  [[nodiscard]] const CleanUpdate* data() const { return steps_.data(); }
  [[nodiscard]] std::size_t bytes() const;

  /// Memory of a step of a list that merges.
  static constexpr std::size_t kBytesPerStep = sizeof(CleanUpdate) + 4 * sizeof(std::int32_t);

  /// Precondition: size() < capacity().
  void append(const CleanStep& step);
  /// Forgets the `count` oldest.
  void drop(std::size_t count);

  /// Sums the steps from `from` on that lie on one pixel, until there are kMaxTileUpdates pixels.
  /// @param merged room for kMaxTileUpdates; gets `count` steps in the order of the first on each pixel.
  /// @return the step after the last that was taken. Only with `merging`.
  std::size_t merge(std::size_t from, CleanUpdate* merged, std::size_t& count) const;

  static constexpr std::size_t kMostSteps = 8192;

 private:
  [[nodiscard]] std::int32_t& lastInBucket(std::uint32_t row, std::uint32_t column);

  std::size_t capacity_ = 0;
  bool merging_ = false;
  std::vector<CleanUpdate> steps_;
  std::vector<std::int32_t> before_;  ///< the step before on the same pixel; below 0 where it is none
  // To find it: the last step whose pixel falls into a bucket, and the step before that does so too.
  std::vector<std::int32_t> last_;
  std::vector<std::int32_t> chain_;
};

}  // namespace lumo
