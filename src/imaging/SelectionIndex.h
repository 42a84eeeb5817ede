// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "core/Progress.h"
#include "io/AUVXFile.h"

namespace lumo {

/// The frequency-selection ID of every group of a file, a byte each. Where not all selections share a pass,
/// gridding looks here and leaves the groups of the others alone, so that the time does not grow with passes
/// times groups.
class SelectionIndex {
 public:
  /// Longer files have no index: of them a selection's pass reads the head of every group.
  static constexpr std::uint64_t kMostGroups = std::uint64_t{1} << 26;

  /// Reads the heads of all groups; empty when cancelled (`cancel` may be null).
  void read(const AUVXFile& file, const CancelFlag* cancel);
  void clear() { ids_.clear(); }
  [[nodiscard]] bool empty() const { return ids_.empty(); }

  [[nodiscard]] std::int8_t operator[](std::uint64_t group) const { return ids_[group]; }
  /// Whether one of the groups begin .. end − 1 has one of these IDs.
  [[nodiscard]] bool holds(std::uint64_t begin, std::uint64_t end, const std::vector<std::int8_t>& ids) const;

 private:
  std::vector<std::int8_t> ids_;
};

}  // namespace lumo
