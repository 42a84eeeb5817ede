// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

namespace lumo {

/// The texts that show how far a CLEAN is, from snapshots of its worker.
class CleanDialogModel {
 public:
  /// What both texts read before the first iteration is done.
  static constexpr const char* kNoIteration = "Static";

  /// Takes a snapshot: iterations done and total flux in map units. Returns whether a text is another now.
  /// A snapshot without an iteration leaves the texts alone.
  bool update(std::int32_t iteration, double totalFlux);

  [[nodiscard]] const std::string& iterationText() const { return iterationText_; }
  [[nodiscard]] const std::string& fluxText() const { return fluxText_; }
  /// Title of the main window, "<n> - MFS"; empty (leave it alone) before the first iteration is done.
  [[nodiscard]] const std::string& mainTitle() const { return mainTitle_; }

 private:
  std::string iterationText_ = kNoIteration;
  std::string fluxText_ = kNoIteration;
  std::string mainTitle_;
};

}  // namespace lumo
