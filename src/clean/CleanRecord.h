// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "clean/CleanObserver.h"
#include "core/Status.h"

namespace lumo {

/// Keeps how a CLEAN went on: every iteration of a short one, evenly spaced ones of a long one, and always
/// the last. One CLEAN each. Read it only when the CLEAN does not run.
class CleanRecord final : public CleanObserver {
 public:
  static constexpr std::size_t kMostLines = 2000;

  void iterationDone(const CleanProgress& progress) override;

  /// At most kMostLines, in their order.
  [[nodiscard]] const std::vector<CleanProgress>& lines() const { return lines_; }
  /// A heading and a line for each entry, columns separated by tabs: iteration, residual of term 0 at the
  /// pixel chosen, total flux, score, gain.
  [[nodiscard]] std::string text() const;
  /// The text as a file.
  [[nodiscard]] Status write(const std::string& path) const;

 private:
  std::vector<CleanProgress> lines_;
  std::int32_t stride_ = 1;   ///< lines but the last are those of multiples of it
  bool lastIsExtra_ = false;  ///< the last line is there as the latest only
};

}  // namespace lumo
