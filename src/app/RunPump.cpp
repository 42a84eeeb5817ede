// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RunPump.h"

#include <QCoreApplication>

namespace lumo {

RunPump::RunPump(const RunDisplay& display)
    : text_(*this, display.status),
      reading_(*this, display.reading),
      frequency_(*this, display.frequency),
      file_(*this, display.file) {}

RunIndicators RunPump::indicators(const CancelFlag& cancel) {
  return {.cancel = &cancel,
          .statusText = &text_,
          .readingBar = &reading_,
          .frequencyBar = &frequency_,
          .fileBar = &file_};
}

void RunPump::turn() {
  if (sinceTurn_.isValid() && sinceTurn_.elapsed() < kPeriod) return;
  QCoreApplication::processEvents();
  sinceTurn_.start();
}

void RunPump::Text::setText(std::string_view text) {
  target_.setText(text);
  pump_.turn();
}

void RunPump::Bar::setPos(int percent) {
  target_.setPos(percent);
  pump_.turn();
}

}  // namespace lumo
