// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/RegionText.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/TextForm.h"
#include "core/Units.h"

namespace lumo {

namespace {

constexpr double kDegreesPerHour = 15.0;

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\v\f";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// What closes a quoted text that this character opens; 0 when it opens none.
char closing(char c) {
  return c == '{' ? '}' : c == '"' || c == '\'' ? c : '\0';
}

// The next statement of a line, which is taken away with the semicolon behind it. Quotes guard only behind a
// "#": in front of it they are units.
RegionStatement takeStatement(std::string_view& line, std::size_t number) {
  std::size_t sign = std::string_view::npos;
  std::size_t end = 0;
  for (char guard = 0; end < line.size(); ++end) {
    const char c = line[end];
    if (guard != 0) {
      if (c == guard) guard = 0;
    } else if (c == ';') {
      break;
    } else if (sign != std::string_view::npos) {
      guard = closing(c);
    } else if (c == '#') {
      sign = end;
    }
  }
  const std::string_view whole = line.substr(0, end);
  line.remove_prefix(std::min(end + 1, line.size()));
  if (sign == std::string_view::npos) return {number, trimmed(whole), {}};
  return {number, trimmed(whole.substr(0, sign)), whole.substr(sign + 1)};
}

std::optional<double> finiteNumber(std::string_view text) {
  double value = 0.0;
  if (!parseDouble(text, value) || !std::isfinite(value)) return std::nullopt;
  return value;
}

// Fields of a sexagesimal angle without its sign; the first separator says hours or degrees.
struct Sexagesimal {
  std::array<double, 3> fields{};
  char first = 0;
};

std::optional<Sexagesimal> sexagesimal(std::string_view text) {
  Sexagesimal result;
  std::size_t count = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_not_of("0123456789."), text.size());
    const auto value = finiteNumber(text.substr(0, end));
    if (!value || count == result.fields.size()) return std::nullopt;
    result.fields[count] = *value;
    const char separator = end < text.size() ? text[end] : '\0';
    if (count == 0) result.first = separator;
    // Either colons between the fields or a letter behind each.
    constexpr std::array<char, 3> kLetters{0, 'm', 's'};
    const bool fits = result.first == ':'
                          ? separator == (count == 2 ? '\0' : ':') || (separator == '\0' && count > 0)
                      : count == 0 ? separator == 'h' || separator == 'd'
                                   : separator == kLetters[count];
    if (!fits) return std::nullopt;
    ++count;
    text.remove_prefix(separator == '\0' ? text.size() : end + 1);
  }
  if (count == 0 || result.fields[1] >= 60.0 || result.fields[2] >= 60.0) return std::nullopt;
  return result;
}

}  // namespace

Status forEachRegionStatement(std::string_view text,
                              const std::function<Status(const RegionStatement&)>& take) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    std::string_view line = text.substr(0, end);
    if (trimmed(line).starts_with('#')) line = {};
    while (!line.empty()) {
      const RegionStatement statement = takeStatement(line, number);
      if (statement.body.empty()) continue;
      if (Status status = take(statement); !status.ok()) return status;
    }
    const bool dos = text.substr(end).starts_with("\r\n");
    text.remove_prefix(std::min(end + (dos ? 2 : 1), text.size()));
  }
  return {};
}

std::string regionName(std::string_view properties) {
  constexpr std::string_view kKey = "text=";
  const std::size_t key = properties.find(kKey);
  const std::size_t open = key + kKey.size();
  if (key == std::string_view::npos || open >= properties.size() || closing(properties[open]) == 0) return {};
  const std::size_t end = properties.find(closing(properties[open]), open + 1);
  return end == std::string_view::npos ? std::string()
                                       : std::string(properties.substr(open + 1, end - open - 1));
}

std::string regionNameText(const std::string& name) {
  if (name.empty()) return {};
  std::string text;
  for (const char c : name) text += std::string_view("\r\n{}").find(c) != std::string_view::npos ? ' ' : c;
  return " # text={" + text + "}";
}

std::optional<RegionNumber> regionNumber(std::string_view text) {
  constexpr std::string_view kUnits = "\"'drip";
  RegionNumber number;
  if (!text.empty() && kUnits.find(text.back()) != std::string_view::npos) {
    number.unit = text.back();
    text.remove_suffix(1);
  }
  const auto value = finiteNumber(text);
  if (!value) return std::nullopt;
  number.value = *value;
  return number;
}

std::optional<double> regionAngle(std::string_view text, bool hours) {
  if (const auto number = regionNumber(text)) {
    if (number->unit == 'r') return number->value * kDegreePerRadian;
    if (number->unit == 'd' || number->unit == 0) return number->value;
    return std::nullopt;
  }
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  const auto parts = sexagesimal(text);
  if (!parts || (parts->first == 'h' && !hours)) return std::nullopt;
  const double value = parts->fields[0] + parts->fields[1] / 60.0 + parts->fields[2] / 3600.0;
  const double scale = parts->first == 'h' || (parts->first == ':' && hours) ? kDegreesPerHour : 1.0;
  return (negative ? -value : value) * scale;
}

}  // namespace lumo
