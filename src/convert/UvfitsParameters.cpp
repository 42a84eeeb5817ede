// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/UvfitsParameters.h"

#include <cmath>
#include <string>

#include "core/TextForm.h"

namespace lumo {
namespace {

constexpr double kMjdZero = 2400000.5;  // Julian date of modified Julian date 0
constexpr double kMaxAntenna = 1e6;
// BASELINE = 256 a1 + a2 + 0.01 (subarray - 1) in single precision: near 65536 the grain is 0.0078, and
// scaled integers may fall just below the whole number.
constexpr double kBaselineGrain = 0.004;
// Above this a baseline is 65536 + 2048 a1 + a2, the form for more than 255 antennas.
constexpr double kWideBaseline = 65536.0;

/// True when `type` is `name` with a projection suffix (or none), which goes to `suffix` without its dashes.
bool isCoordinate(const std::string& type, const std::string& name, std::string& suffix) {
  if (type.compare(0, name.size(), name) != 0) return false;
  if (type.size() > name.size() && type[name.size()] != '-') return false;
  const auto start = type.find_first_not_of('-', name.size());
  suffix = start == std::string::npos ? std::string() : type.substr(start);
  return true;
}

template <typename Terms>
double sum(const Terms& terms, std::span<const double> stored, double start = 0.0) {
  // The zero points first: they cancel the large part of a date before its small part is added.
  for (const auto& term : terms) start += term.zero;
  for (const auto& term : terms) start += term.scale * stored[term.index];
  return start;
}

/// A whole number near `value` within +-limit, 0 for anything else.
std::int32_t wholeOrZero(double value, double limit) {
  return std::abs(value) <= limit ? static_cast<std::int32_t>(std::lround(value)) : 0;
}

}  // namespace

Status UvfitsParameters::read(const UvfitsFile& file, std::uint32_t count) {
  *this = {};
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::string number = toStr(i + 1);
    Term term{i, 1.0, 0.0};
    if (Status status = file.number("PSCAL" + number, 1.0, term.scale); !status.ok()) return status;
    if (Status status = file.number("PZERO" + number, 0.0, term.zero); !status.ok()) return status;
    if (Status status = take(file.text("PTYPE" + number), term); !status.ok())
      return {status.code(), "PTYPE" + number + status.message()};
  }
  return checkComplete();
}

Status UvfitsParameters::take(const std::string& type, const Term& term) {
  std::string suffix;
  for (const auto& [name, terms] : {std::pair{"UU", &u_}, std::pair{"VV", &v_}, std::pair{"WW", &w_}}) {
    if (!isCoordinate(type, name, suffix)) continue;
    if (suffix == "NCP")
      return {StatusCode::kUnsupported,
              " is '" + type +
                  "': u, v, w of the NCP projection lie in another frame. Convert the file to the SIN "
                  "projection first (for example with UVFIX in AIPS)"};
    if (!suffix.empty() && suffix != "SIN")
      return {StatusCode::kUnsupported,
              " is '" + type + "'; expected " + name + ", " + name + "-- or " + name + "---SIN in seconds"};
    if (term.scale == 0.0)
      return {StatusCode::kBadFormat, " (" + type + ") has PSCAL 0, which would make every value the same"};
    terms->push_back(term);
    return {};
  }
  if (type == "WEIGHT" || type == "SCALE")
    return {StatusCode::kUnsupported,
            " is '" + type + "': the compressed form is not supported. Write the file uncompressed"};
  if (type == "DATE" || type == "_DATE") date_.push_back(term);
  if (type == "BASELINE") baseline_.push_back(term);
  if (type == "ANTENNA1") antenna1_.push_back(term);
  if (type == "ANTENNA2") antenna2_.push_back(term);
  if (type == "SUBARRAY") subarray_.push_back(term);
  if (type == "SOURCE") source_.push_back(term);
  if (type == "FREQSEL") selection_.push_back(term);
  return {};
}

Status UvfitsParameters::checkComplete() const {
  for (const auto& [name, terms] :
       {std::pair{"UU", &u_}, std::pair{"VV", &v_}, std::pair{"WW", &w_}, std::pair{"DATE", &date_}}) {
    if (terms->empty())
      return {StatusCode::kBadFormat,
              std::string("has no random parameter ") + name + "; expected UU, VV, WW and DATE among PTYPEn"};
  }
  if (baseline_.empty() && (antenna1_.empty() || antenna2_.empty()))
    return {StatusCode::kBadFormat,
            "names no antennas: expected the random parameter BASELINE, or ANTENNA1 and ANTENNA2"};
  return {};
}

UvfitsGroupHead UvfitsParameters::decode(std::span<const double> stored) const {
  UvfitsGroupHead head;
  head.u = sum(u_, stored);
  head.v = sum(v_, stored);
  head.w = sum(w_, stored);
  head.time = sum(date_, stored, -kMjdZero);
  head.source = wholeOrZero(sum(source_, stored), 2e9);
  head.selection = wholeOrZero(sum(selection_, stored), 2e9);
  decodeBaseline(stored, head);
  return head;
}

void UvfitsParameters::decodeBaseline(std::span<const double> stored, UvfitsGroupHead& head) const {
  if (!antenna1_.empty() && !antenna2_.empty()) {
    head.antenna1 = wholeOrZero(sum(antenna1_, stored), kMaxAntenna);
    head.antenna2 = wholeOrZero(sum(antenna2_, stored), kMaxAntenna);
    if (!subarray_.empty()) head.subarray = wholeOrZero(sum(subarray_, stored), kMaxAntenna);
  } else {
    const double value = sum(baseline_, stored);
    if (!(value >= 0 && value <= 2048 * kMaxAntenna)) return;
    const double pair = std::floor(value + kBaselineGrain);
    head.subarray = 1 + static_cast<std::int32_t>(std::lround(100 * std::max(0.0, value - pair)));
    const bool wide = pair > kWideBaseline;
    const auto code = static_cast<std::int64_t>(wide ? pair - kWideBaseline : pair);
    const std::int64_t base = wide ? 2048 : 256;
    head.antenna1 = static_cast<std::int32_t>(code / base);
    head.antenna2 = static_cast<std::int32_t>(code % base);
  }
  if (head.antenna1 <= 0 || head.antenna2 <= 0) head.antenna1 = head.antenna2 = 0;
}

}  // namespace lumo
