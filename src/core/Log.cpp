// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Log.h"

#include <algorithm>
#include <ctime>

namespace lumo {

std::string Log::Line::format() const {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm local{};
  localtime_r(&seconds, &local);
  char stamp[32];
  const std::size_t length = std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S  ", &local);
  return std::string(stamp, length) + text;
}

void Log::add(const std::string& text) {
  Line line{std::chrono::system_clock::now(), text.substr(0, kMaxLineBytes)};
  const auto isLineEnd = [](char c) { return c == '\n' || c == '\r'; };
  std::replace_if(line.text.begin(), line.text.end(), isLineEnd, ' ');
  lines_.push_back(std::move(line));
  if (lines_.size() > kMaxLines) lines_.pop_front();
  if (listener_) listener_();
}

void Log::add(const std::string& what, const Status& status) {
  if (!status.ok()) add(what + ": " + status.text());
}

}  // namespace lumo
