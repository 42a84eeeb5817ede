// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <string>

#include "core/Status.h"

namespace lumo {

/// What a program has to say about its work besides message boxes: lines with the time they were written, the
/// newest kMaxLines of them. Belongs to one thread.
class Log {
 public:
  static constexpr std::size_t kMaxLines = 2000;
  /// Bytes of a line's text that are kept.
  static constexpr std::size_t kMaxLineBytes = 4096;

  struct Line {
    std::chrono::system_clock::time_point time;
    std::string text;

    /// "2031-05-06 07:08:09  TEXT", local time.
    [[nodiscard]] std::string format() const;
  };

  Log() = default;
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  /// Adds a line, forgetting the oldest one when there are too many. Line ends within the text become blanks.
  void add(const std::string& text);
  /// "WHAT: reason" for a failure; nothing for a status that is ok.
  void add(const std::string& what, const Status& status);

  [[nodiscard]] const std::deque<Line>& lines() const { return lines_; }
  /// Called after every add, null for nobody. It must not add.
  void setListener(std::function<void()> listener) { listener_ = std::move(listener); }

 private:
  std::deque<Line> lines_;
  std::function<void()> listener_;
};

}  // namespace lumo
