// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "io/VisibilityInputs.h"

namespace lumo {

/// The table of frequency selections: one row for each bit of each file's mask, set or not, files in list
/// order. Texts and images are made when asked for, so rows cost nothing.
class FrequencyIdTable {
 public:
  // Numbers of the check images before a row's text.
  static constexpr int kCheckedImage = 10;
  static constexpr int kUncheckedImage = 11;
  static constexpr int kLoneCheckedImage = 12;
  static constexpr int kLoneUncheckedImage = 13;

  /// `inputs` must outlive the table.
  explicit FrequencyIdTable(const VisibilityInputs& inputs) : inputs_(inputs) {}

  /// Counts the rows anew; to be called after files or masks were added, removed or replaced.
  void rebuild();

  [[nodiscard]] std::int64_t rowCount() const { return starts_.empty() ? 0 : starts_.back(); }
  /// Which mask bit a row stands for.
  struct Cell {
    std::int32_t file = 0;
    std::int32_t selection = 0;
  };
  /// `row` in 0..rowCount()-1. Logarithmic in the number of files.
  [[nodiscard]] Cell cellAt(std::int64_t row) const;
  /// "File 2,  Fq. ID 3": file number from 1 and the selection's ID; "?" for a bit of a mask that was loaded
  /// with more bits than the file has selections.
  [[nodiscard]] std::string rowText(std::int64_t row) const;
  [[nodiscard]] int checkImage(std::int64_t row) const;
  /// False for a row outside, and for the row of a table that has only one.
  [[nodiscard]] bool canToggle(std::int64_t row) const;

 private:
  const VisibilityInputs& inputs_;
  std::vector<std::int64_t> starts_;  ///< first row of each mask, then the number of rows
};

}  // namespace lumo
