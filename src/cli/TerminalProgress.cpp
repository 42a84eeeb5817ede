// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/TerminalProgress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace lumo {

namespace {

constexpr int kBarCells = 24;
constexpr auto kInterval = std::chrono::milliseconds(100);

std::size_t terminalWidth() {
  winsize size{};
  if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

std::string barText(int percent) {
  const int filled = percent * kBarCells / 100;
  char number[8];
  std::snprintf(number, sizeof number, "%3d%%", percent);
  return "[" + std::string(static_cast<std::size_t>(filled), '#') +
         std::string(static_cast<std::size_t>(kBarCells - filled), '.') + "] " + number;
}

}  // namespace

void TerminalProgress::Bar::setPos(int percent) {
  shown = std::clamp(percent, 0, 100);
  owner->draw(false);
}

TerminalProgress::TerminalProgress() : onTerminal_(::isatty(STDERR_FILENO) == 1) {
  for (Bar& bar : bars_) bar.owner = this;
}

TerminalProgress::~TerminalProgress() {
  clear();
}

void TerminalProgress::setText(std::string_view text) {
  text_ = text;
  draw(true);
}

RunIndicators TerminalProgress::indicators(const CancelFlag& cancel) {
  return {&cancel, this, &readingBar(), &frequencyBar(), &fileBar()};
}

void TerminalProgress::clear() {
  if (!drawn_) return;
  std::fputs("\r\033[K", stderr);
  std::fflush(stderr);
  drawn_ = false;
}

void TerminalProgress::draw(bool now) {
  if (!onTerminal_) return;
  const auto time = std::chrono::steady_clock::now();
  if (!now && time - lastDraw_ < kInterval) return;
  lastDraw_ = time;
  std::string line = barText(bars_[0].shown);
  if (bars_[2].shown != 0) {
    line += "  IFs " + std::to_string(bars_[1].shown) + "%  files " + std::to_string(bars_[2].shown) + "%";
  }
  line += "  " + text_;
  // A line that wrapped could not be redrawn in place.
  line.resize(std::min(line.size(), terminalWidth() - 1));
  std::fprintf(stderr, "\r\033[K%s", line.c_str());
  std::fflush(stderr);
  drawn_ = true;
}

}  // namespace lumo
