// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/SkyText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace lumo {
namespace {

constexpr int kMostDecimals = 9;

std::string padded(std::int64_t value, int digits) {
  std::string text = std::to_string(value);
  if (static_cast<int>(text.size()) < digits) text.insert(0, digits - text.size(), '0');
  return text;
}

std::int64_t powerOfTen(int exponent) {
  std::int64_t power = 1;
  for (int i = 0; i < exponent; ++i) power *= 10;
  return power;
}

/// "dd:mm:ss.s" of `units`, each 10^-decimals seconds.
std::string sexagesimal(std::int64_t units, int decimals) {
  const std::int64_t perSecond = powerOfTen(decimals);
  const std::int64_t seconds = units / perSecond;
  std::string text =
      padded(seconds / 3600, 2) + ':' + padded(seconds / 60 % 60, 2) + ':' + padded(seconds % 60, 2);
  if (decimals > 0) text += '.' + padded(units % perSecond, decimals);
  return text;
}

}  // namespace

int arcsecDecimals(double cellArcsec) {
  if (!std::isfinite(cellArcsec) || cellArcsec <= 0.0) return 1;
  constexpr double kRounding = 1e-9;  // 0.01 must not count as a little less than 0.01
  return static_cast<int>(std::clamp(std::ceil(1.0 - std::log10(cellArcsec) - kRounding), 0.0,
                                     static_cast<double>(kMostDecimals)));
}

std::string fixedText(double value, int decimals) {
  if (!std::isfinite(value)) return "nan";
  std::array<char, 400> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                 std::chars_format::fixed, std::clamp(decimals, 0, kMostDecimals));
  std::string text(buffer.data(), end.ptr);
  if (text.find_first_not_of("-0.") == std::string::npos && text.front() == '-') text.erase(0, 1);
  return text;
}

std::string raText(double raDeg, int decimals) {
  if (!std::isfinite(raDeg)) return {};
  const int shown = std::clamp(decimals, 0, kMostDecimals);
  double turn = std::fmod(raDeg, 360.0);
  if (turn < 0.0) turn += 360.0;
  const std::int64_t perSecond = powerOfTen(shown);
  const std::int64_t units = std::llround(turn * 240.0 * static_cast<double>(perSecond));
  return sexagesimal(units % (86400 * perSecond), shown);
}

std::string decText(double decDeg, int decimals) {
  if (!std::isfinite(decDeg)) return {};
  const int shown = std::clamp(decimals, 0, kMostDecimals);
  const double size = std::min(std::abs(decDeg), 90.0);
  const std::int64_t units = std::llround(size * 3600.0 * static_cast<double>(powerOfTen(shown)));
  return (decDeg < 0.0 && units > 0 ? '-' : '+') + sexagesimal(units, shown);
}

}  // namespace lumo
