// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/Progress.h"

namespace lumo::test {

/// Keeps every position sent; `onPos`, when set, is called with each.
class RecordingBar : public ProgressBar {
 public:
  void setPos(int percent) override {
    positions.push_back(percent);
    if (onPos) onPos(percent);
  }
  std::vector<int> positions;
  std::function<void(int)> onPos;
};

/// Keeps every text sent; `onText`, when set, is called with each.
class RecordingText : public StatusText {
 public:
  void setText(std::string_view text) override {
    texts.emplace_back(text);
    if (onText) onText(texts.back());
  }
  std::vector<std::string> texts;
  std::function<void(const std::string&)> onText;
};

}  // namespace lumo::test
