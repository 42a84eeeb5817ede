// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/MapForm.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "core/TextForm.h"
#include "io/AStokesMix.h"

namespace lumo {

namespace {

constexpr double kFarthestPixel = 1e12;
constexpr double kSmallestStep = 1e-30;  // arcseconds
constexpr double kLargestStep = 1e30;

// Letters in upper case, blanks left out.
std::string folded(const std::string& text) {
  std::string result;
  for (const char c : text)
    if (c != ' ') result += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return result;
}

}  // namespace

PixelAxis pixelAxis(double min, double max, std::uint32_t count) {
  const std::uint32_t middlePixel = count / 2 + 1;
  const double middle = middlePixel;
  if (!std::isfinite(min) || !std::isfinite(max) || min > max) return {middle, 1.0};
  double step = count > 1 ? (max - min) / (count - 1.0) : 1.0;
  if (!(step >= kSmallestStep && step < kLargestStep)) step = 1.0;
  double reference = 1.0 - min / step;
  if (!(std::abs(reference) < kFarthestPixel)) return {middle, 1.0};
  // Rounding of the range must not show in a reference pixel that is a whole or half one.
  constexpr double kRounding = 1e-9;
  const double half = std::round(2.0 * reference) / 2.0;
  if (std::abs(reference - half) < kRounding) reference = half;
  return {reference, step};
}

std::optional<FitsBeam> fitsBeam(const AMapHeader& header) {
  double major = header.beamMajor;
  double minor = header.beamMinor;
  double pa = std::isfinite(header.beamPa) ? header.beamPa : 0.0;
  if (!std::isfinite(major) || !std::isfinite(minor) || !(major > 0) || !(minor > 0)) return std::nullopt;
  if (minor > major) {
    std::swap(major, minor);
    pa += pa > 0 ? -90.0 : 90.0;
  }
  return FitsBeam{major, minor, pa};
}

std::string fitsUnit(const std::string& unit) {
  const std::string plain = folded(unit);
  if (plain == "SP.INDEX") return {};
  return plain == "JY/BEAM" ? "Jy/beam" : unit;
}

std::string unitOfFits(const std::string& bunit) {
  const std::string plain = folded(bunit);
  const bool jyPerBeam = plain == "JY/BEAM" || plain == "JYBEAM-1" || plain == "BEAM-1JY" ||
                         plain == "JYBEAM^-1" || plain == "JYBEAM**-1" || plain == "JY.BEAM-1";
  return jyPerBeam ? "Jy/Beam" : bunit;
}

const char* fitsKind(MapKind kind) {
  switch (kind) {
    case MapKind::kIntensity:
      return "Intensity";
    case MapKind::kBeam:
      return "Beam";
    case MapKind::kSpectralIndex:
      return "Spectral Index";
    case MapKind::kSpectralIndexError:
      return "Spectral Index Error";
  }
  return "Intensity";
}

std::string fitsFrame(UvxFrame frame, double epoch) {
  constexpr double kFirstFk5Epoch = 1984.0;
  if (frame != UvxFrame::kByEpoch) return frameName(frame);
  if (!std::isfinite(epoch)) return {};
  return epoch < kFirstFk5Epoch ? "FK4" : "FK5";
}

double fitsLongitude(double degrees) {
  constexpr double kTurn = 360.0;
  double result = std::fmod(degrees, kTurn);
  if (result < 0) result += kTurn;
  return result == kTurn ? 0.0 : result + 0.0;  // no negative zero
}

double fitsBandwidth(double bandwidth) {
  return std::isfinite(bandwidth) && bandwidth != 0.0 ? bandwidth : 1.0;
}

int fitsStokes(const std::string& name) {
  const int code = stokesFitsCode(name);
  return code == 0 ? 1 : code;
}

std::string stokesOfFits(int code) {
  constexpr std::array<const char*, 13> kNames{"YX", "XY", "YY", "XX", "LR", "RL", "LL",
                                               "RR", "",   "I",  "Q",  "U",  "V"};
  constexpr int kFirst = -8;
  const int index = code - kFirst;
  return index >= 0 && index < static_cast<int>(kNames.size()) ? kNames[static_cast<std::size_t>(index)] : "";
}

std::string fitsDate(const std::string& given) {
  using std::chrono::sys_seconds;
  if (!given.empty()) return given;
  auto moment = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  constexpr std::int64_t kLastSecond = 253402300799;  // of the year 9999
  std::int64_t fixed = -1;
  const char* const setting = std::getenv("SOURCE_DATE_EPOCH");
  if (setting != nullptr && parseInt(setting, fixed) && fixed >= 0 && fixed <= kLastSecond)
    moment = sys_seconds(std::chrono::seconds(fixed));
  const std::chrono::year_month_day day(std::chrono::floor<std::chrono::days>(moment));
  const auto digits = [](auto number, std::size_t width) {
    const std::string text = std::to_string(number);
    return std::string(width - std::min(width, text.size()), '0') + text;
  };
  return digits(static_cast<int>(day.year()), 4) + '-' + digits(static_cast<unsigned>(day.month()), 2) + '-' +
         digits(static_cast<unsigned>(day.day()), 2);
}

const char* frameName(UvxFrame frame) {
  switch (frame) {
    case UvxFrame::kByEpoch:
      return "EPOCH";
    case UvxFrame::kFk5:
      return "FK5";
    case UvxFrame::kIcrs:
      return "ICRS";
    case UvxFrame::kFk4:
      return "FK4";
  }
  return "EPOCH";
}

UvxFrame frameOfName(const std::string& name) {
  if (name == "FK5") return UvxFrame::kFk5;
  if (name == "ICRS") return UvxFrame::kIcrs;
  return name.starts_with("FK4") ? UvxFrame::kFk4 : UvxFrame::kByEpoch;
}

}  // namespace lumo
