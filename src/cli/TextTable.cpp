// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/TextTable.h"

#include <algorithm>
#include <cstddef>

#include "core/TextForm.h"

namespace lumo {

namespace {

// Characters, not bytes: those that do not continue a UTF-8 sequence.
std::size_t width(const std::string& text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

std::string TextTable::aligned() const {
  std::vector<std::size_t> widths;
  for (const auto& row : rows_) {
    widths.resize(std::max(widths.size(), row.size()), 0);
    for (std::size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], width(row[c]));
  }
  std::string text;
  for (const auto& row : rows_) {
    std::string line;
    for (std::size_t c = 0; c < row.size(); ++c)
      line += printable(row[c]) + std::string(widths[c] - width(row[c]) + 2, ' ');
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  }
  return text;
}

std::string TextTable::csv() const {
  std::string text;
  for (const auto& row : rows_) {
    for (std::size_t c = 0; c < row.size(); ++c) text += (c == 0 ? "" : ",") + csvField(row[c]);
    text += "\n";
  }
  return text;
}

}  // namespace lumo
