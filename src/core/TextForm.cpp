// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/TextForm.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <system_error>

namespace lumo {

namespace {

// The largest general form: sign, 17 digits, point, leading zeros or exponent.
constexpr std::size_t kBufferSize = 64;

std::string_view skipSpace(std::string_view text) {
  const auto start = text.find_first_not_of(" \t\r\n\v\f");
  return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

// from_chars knows no plus sign; one is skipped where a digit, point or name follows.
std::string_view skipPlus(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-' && text[1] != '+') text.remove_prefix(1);
  return text;
}

// Reads the longest number at the start. Numbers beyond double's range become infinity or 0, as strtod's do.
std::from_chars_result readDouble(std::string_view text, double& value) {
  auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::result_out_of_range) {
    const std::string_view number(text.data(), static_cast<std::size_t>(result.ptr - text.data()));
    const auto exponent = number.find_first_of("eE");
    const bool tiny = exponent != std::string_view::npos
                          ? number.substr(exponent + 1).starts_with('-')
                          : number.find_first_of("123456789") > number.find('.');
    value = tiny ? 0.0 : std::numeric_limits<double>::infinity();
    if (number.starts_with('-')) value = -value;
    result.ec = std::errc();
  }
  return result;
}

}  // namespace

std::string valToStr(double value) {
  char buffer[kBufferSize];
  if (std::isnan(value)) return "nan";
  const auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
  return {buffer, end};
}

std::string nValToStr(double value, int digits) {
  char buffer[kBufferSize];
  if (std::isnan(value)) return "nan";
  const auto end = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general,
                                 std::clamp(digits, 1, 17))
                       .ptr;
  return {buffer, end};
}

std::string generalText(double value) {
  return nValToStr(value, 6);
}

std::string toStr(std::int64_t value) {
  return std::to_string(value);
}

std::string formatted(const char* format, ...) {
  char line[512];
  std::va_list values;
  va_start(values, format);
  std::vsnprintf(line, sizeof line, format, values);
  va_end(values);
  return line;
}

std::string printable(std::string_view text) {
  std::string safe(text);
  for (char& c : safe)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
  return safe;
}

std::string csvField(std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
  std::string quoted = "\"";
  for (const char one : text) {
    if (one == '"') quoted += '"';
    quoted += one;
  }
  return quoted + "\"";
}

double textToDouble(std::string_view text) {
  text = skipPlus(skipSpace(text));
  double value = 0.0;
  return readDouble(text, value).ec == std::errc() ? value : 0.0;
}

std::int32_t textToInt(std::string_view text) {
  text = skipPlus(skipSpace(text));
  std::int32_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::result_out_of_range)
    return text.starts_with('-') ? std::numeric_limits<std::int32_t>::min()
                                 : std::numeric_limits<std::int32_t>::max();
  return result.ec == std::errc() ? value : 0;
}

bool parseDouble(std::string_view text, double& value) {
  text = skipPlus(text);
  double read = 0.0;
  const auto result = readDouble(text, read);
  if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size()) return false;
  value = read;
  return true;
}

bool parseInt(std::string_view text, std::int64_t& value) {
  text = skipPlus(text);
  std::int64_t read = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), read);
  if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size()) return false;
  value = read;
  return true;
}

}  // namespace lumo
