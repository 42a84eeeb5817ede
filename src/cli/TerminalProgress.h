// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <chrono>
#include <string>

#include "core/Progress.h"

namespace lumo {

/// Status text and progress bars on one line of standard error, redrawn in place at most ten times a second.
/// Where standard error is not a terminal, nothing is drawn. Used on one thread.
class TerminalProgress final : public StatusText {
 public:
  TerminalProgress();
  TerminalProgress(const TerminalProgress&) = delete;
  TerminalProgress& operator=(const TerminalProgress&) = delete;
  /// Clears the line.
  ~TerminalProgress() override;

  void setText(std::string_view text) override;
  /// For the imaging stages and the importers: everything, with the cancel flag.
  [[nodiscard]] RunIndicators indicators(const CancelFlag& cancel);
  [[nodiscard]] ProgressBar& readingBar() { return bars_[0]; }
  [[nodiscard]] ProgressBar& frequencyBar() { return bars_[1]; }
  [[nodiscard]] ProgressBar& fileBar() { return bars_[2]; }
  /// Clears the line, so that other output can follow.
  void clear();

 private:
  class Bar final : public ProgressBar {
   public:
    void setPos(int percent) override;
    TerminalProgress* owner = nullptr;
    int shown = 0;
  };

  void draw(bool now);

  bool onTerminal_;
  std::string text_;
  std::array<Bar, 3> bars_;
  std::chrono::steady_clock::time_point lastDraw_;
  bool drawn_ = false;
};

}  // namespace lumo
