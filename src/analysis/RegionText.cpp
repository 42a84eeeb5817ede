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

// One line into its statements. Quotes guard only behind a "#": in front of it they are units.
void splitLine(std::string_view line, std::size_t number, std::vector<RegionStatement>& statements) {
  if (trimmed(line).starts_with('#')) return;
  RegionStatement current{number, {}, {}};
  bool inProperties = false;
  char guard = 0;
  const auto finish = [&] {
    current.body = trimmed(current.body);
    if (!current.body.empty()) statements.push_back(current);
    current = RegionStatement{number, {}, {}};
    inProperties = false;
    guard = 0;
  };
  for (const char c : line) {
    if (guard != 0) {
      if (c == guard) guard = 0;
    } else if (c == ';') {
      finish();
      continue;
    } else if (inProperties) {
      guard = closing(c);
    } else if (c == '#') {
      inProperties = true;
      continue;
    }
    (inProperties ? current.properties : current.body) += c;
  }
  finish();
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

std::vector<RegionStatement> regionStatements(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  std::vector<RegionStatement> statements;
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    splitLine(text.substr(0, end), number, statements);
    const bool dos = text.substr(end).starts_with("\r\n");
    text.remove_prefix(std::min(end + (dos ? 2 : 1), text.size()));
  }
  return statements;
}

std::string regionName(const std::string& properties) {
  constexpr std::string_view kKey = "text=";
  const std::size_t key = properties.find(kKey);
  const std::size_t open = key + kKey.size();
  if (key == std::string::npos || open >= properties.size() || closing(properties[open]) == 0) return {};
  const std::size_t end = properties.find(closing(properties[open]), open + 1);
  return end == std::string::npos ? std::string() : properties.substr(open + 1, end - open - 1);
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
