// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <string_view>

namespace lumo {

/// Where a stage of the run puts its status text. A window, a terminal or a test recorder implements it.
class StatusText {
 public:
  virtual ~StatusText() = default;
  /// Replaces the text shown; empty clears it. Called on the thread that runs the stage.
  virtual void setText(std::string_view text) = 0;
};

/// One progress bar.
class ProgressBar {
 public:
  virtual ~ProgressBar() = default;
  /// Sets the position in percent, 0..100. Called on the thread that runs the stage, only on a change.
  virtual void setPos(int percent) = 0;
};

/// Non-zero asks the work to stop. Set by any thread (or a signal handler), polled by the stages.
using CancelFlag = std::atomic<int>;

/// Whatever watches a stage of the imaging; every member may be null. Nothing is owned.
struct RunIndicators {
  const CancelFlag* cancel = nullptr;
  StatusText* statusText = nullptr;
  ProgressBar* readingBar = nullptr;
  ProgressBar* frequencyBar = nullptr;
  ProgressBar* fileBar = nullptr;

  [[nodiscard]] bool cancelled() const {
    return cancel != nullptr && cancel->load(std::memory_order_relaxed);
  }
  void setText(std::string_view text) const {
    if (statusText != nullptr) statusText->setText(text);
  }
  /// Sets a bar back to 0; `bar` may be null.
  static void resetBar(ProgressBar* bar) {
    if (bar != nullptr) bar->setPos(0);
  }
};

/// Turns done / range into the percentage trunc(done / range * 100 + 0.5) and hands it to a bar only when it
/// differs from the last one sent.
class AProgress {
 public:
  /// `bar` may be null; it is not owned. `range` is what counts as done.
  AProgress(ProgressBar* bar, double range) : bar_(bar), range_(range) {}
  void SetPos(double done);

 private:
  ProgressBar* bar_;
  double range_;
  int last_ = -1;
};

}  // namespace lumo
