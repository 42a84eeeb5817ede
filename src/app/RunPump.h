// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <string_view>

#include "core/Progress.h"

namespace lumo {

/// Where the stages of a run show how far they are.
struct RunDisplay {
  StatusText& status;
  ProgressBar& reading;
  ProgressBar& frequency;
  ProgressBar& file;
};

/// Indicators of a run that works on the user-interface thread: hand everything on to the window's controls
/// and now and then let the event loop run, so that the window repaints and a click on "Cancel" arrives.
///
/// What the user could start meanwhile must be disabled before the run begins.
class RunPump {
 public:
  /// Milliseconds between two turns of the event loop: a screen's rate, and a small share of the work.
  static constexpr int kPeriod = 30;

  explicit RunPump(const RunDisplay& display);
  RunPump(const RunPump&) = delete;
  RunPump& operator=(const RunPump&) = delete;

  /// Valid as long as this lives.
  [[nodiscard]] RunIndicators indicators(const CancelFlag& cancel);

 private:
  class Text : public StatusText {
   public:
    Text(RunPump& pump, StatusText& target) : pump_(pump), target_(target) {}
    void setText(std::string_view text) override;

   private:
    RunPump& pump_;
    StatusText& target_;
  };
  class Bar : public ProgressBar {
   public:
    Bar(RunPump& pump, ProgressBar& target) : pump_(pump), target_(target) {}
    void setPos(int percent) override;

   private:
    RunPump& pump_;
    ProgressBar& target_;
  };

  void turn();

  QElapsedTimer sinceTurn_;
  Text text_;
  Bar reading_, frequency_, file_;
};

}  // namespace lumo
