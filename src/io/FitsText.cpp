// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/FitsText.h"

namespace lumo {

namespace {

constexpr std::size_t kHistoryWidth = 72;
constexpr std::size_t kEscapeLength = 3;

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// True when a %XX starts at the position.
bool isEscape(std::string_view text, std::size_t at) {
  return text[at] == '%' && at + 2 < text.size() && hexDigit(text[at + 1]) >= 0 &&
         hexDigit(text[at + 2]) >= 0;
}

}  // namespace

std::string toFitsText(std::string_view bytes) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  std::string text;
  text.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    const bool lastBlank = byte == ' ' && i + 1 == bytes.size();
    if (byte >= 0x20 && byte <= 0x7E && byte != '%' && !lastBlank) {
      text += bytes[i];
    } else {
      text += '%';
      text += kDigits[byte >> 4];
      text += kDigits[byte & 15];
    }
  }
  return text;
}

std::string fromFitsText(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (isEscape(text, i)) {
      bytes += static_cast<char>(hexDigit(text[i + 1]) * 16 + hexDigit(text[i + 2]));
      i += kEscapeLength - 1;
    } else {
      bytes += text[i];
    }
  }
  return bytes;
}

std::string_view cutFitsText(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text;
  for (std::size_t back = 1; back < kEscapeLength && back <= limit; ++back)
    if (isEscape(text, limit - back)) return text.substr(0, limit - back);
  return text.substr(0, limit);
}

std::vector<std::string> toHistoryLines(std::string_view entry) {
  const std::string text = toFitsText(entry);
  std::string_view rest = text;
  std::vector<std::string> lines;
  while (rest.size() > kHistoryWidth) {
    const std::string_view part = cutFitsText(rest, kHistoryWidth - 1);
    lines.push_back(std::string(part) + '%');
    rest.remove_prefix(part.size());
  }
  lines.emplace_back(rest);
  return lines;
}

std::vector<std::string> fromHistoryLines(const std::vector<std::string>& lines) {
  std::vector<std::string> entries;
  std::string text;
  bool continued = false;
  for (const std::string& line : lines) {
    text += line;
    continued = line.ends_with('%');
    if (continued) {
      text.pop_back();
    } else {
      entries.push_back(fromFitsText(text));
      text.clear();
    }
  }
  if (continued) entries.push_back(fromFitsText(text));
  return entries;
}

}  // namespace lumo
