// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/MsRows.h"

#include <cmath>
#include <limits>

#include "core/TextForm.h"
#include "core/Units.h"

namespace lumo {
namespace {

constexpr double kSecondsPerDay = 86400.0;

}  // namespace

UvxRecord MsRows::record(const MsRowKey& key, const MsRowPlace& place, std::int8_t selection) {
  constexpr double kMaxFloat = std::numeric_limits<float>::max();
  UvxRecord entry;
  entry.freqSel = selection;
  entry.source = static_cast<std::int16_t>(key.field + 1);
  entry.flag = place.flagged ? 1 : 0;
  const double u = place.u / kSpeedOfLight;
  const double v = place.v / kSpeedOfLight;
  const double w = place.w / kSpeedOfLight;
  if (std::abs(u) <= kMaxFloat && std::abs(v) <= kMaxFloat) {
    entry.u = static_cast<float>(u);
    entry.v = static_cast<float>(v);
  } else {
    entry.flag = 1;
    ++badPlaces_;
  }
  // w and the time are not needed for imaging: what is not finite becomes 0.
  if (std::abs(w) <= kMaxFloat) entry.w = static_cast<float>(w);
  if (u == 0 && v == 0 && w == 0) {
    // Two antennas are not at one place: the coordinates were never computed.
    entry.flag = 1;
    ++zeroPlaces_;
  }
  if (std::isfinite(place.time))
    entry.time = place.time / kSecondsPerDay;
  else
    ++badTimes_;
  const auto isListed = [&](std::int32_t antenna) {
    return antenna >= 0 && static_cast<std::size_t>(antenna) < tables_.antennas.size();
  };
  if (!tables_.antennas.empty() && (!isListed(key.antenna1) || !isListed(key.antenna2))) {
    entry.flag = 1;
    ++badAntennas_;
  } else if (key.antenna1 >= 0 && key.antenna1 < 255 && key.antenna2 >= 0 && key.antenna2 < 255) {
    entry.baseline = static_cast<std::uint16_t>(256 * (key.antenna1 + 1) + key.antenna2 + 1);
  }
  return entry;
}

AUVXComplex MsRows::visibility(std::size_t place) {
  const std::complex<float> value = data_.values[place];
  const float weight = data_.weights[place];
  const bool flagged = data_.flags[place] != 0;
  const bool valueFinite = std::isfinite(value.real()) && std::isfinite(value.imag());
  if (!flagged) {
    badValues_ += valueFinite ? 0 : 1;
    badWeights_ += std::isfinite(weight) ? 0 : 1;
  }
  if (!valueFinite) return {};
  if (!std::isfinite(weight)) return {value.real(), value.imag(), 0};
  return {value.real(), value.imag(), flagged ? -std::abs(weight) : weight};
}

void MsRows::countWeights() {
  unweighted_ += data_.source == MsRowData::Weights::kNone ? 1 : 0;
  spectrumShapes_ += data_.source == MsRowData::Weights::kSpectrumShape ? 1 : 0;
}

std::span<const AUVXComplex> MsRows::visibilities(const MsSetup& setup) {
  const std::size_t products = setup.correlations.size();
  channels_.resize(std::size_t{setup.channels} * products);
  for (std::size_t c = 0; c < setup.channels; ++c)
    for (std::size_t p = 0; p < products; ++p) {
      const AUVXComplex value = visibility(c * products + setup.correlations[p]);
      channels_[c * products + p] = value;
      usable_ += value.isUsable() ? 1 : 0;
    }
  countWeights();
  if (!setup.average) return channels_;
  averages_.resize(std::size_t{setup.average->ifs()} * products);
  setup.average->apply(channels_, averages_);
  return averages_;
}

void MsRows::describe(ImportReport& report) const {
  const auto add = [](std::vector<std::string>& list, std::uint64_t count, const std::string& what) {
    if (count != 0) list.push_back(toStr(static_cast<std::int64_t>(count)) + what);
  };
  add(report.warnings, badWeights_,
      " visibilities have a weight that is not finite; they are taken as no data");
  add(report.warnings, badValues_, " visibilities are not finite; they are taken as no data");
  add(report.warnings, badPlaces_, " records have a u or v that is not finite; they are flagged");
  add(report.warnings, zeroPlaces_,
      " records between different antennas have UVW 0: it was never computed; they are flagged");
  add(report.warnings, badAntennas_, " records have antennas that are not listed; they are flagged");
  add(report.warnings, badTimes_, " records have no finite time; it is stored as 0");
  add(report.warnings, empty_, " rows have nothing in column " + column_ + "; they were left out");
  add(report.notes, unweighted_, " records have no weights; each is 1");
  add(report.notes, spectrumShapes_,
      " records have a WEIGHT_SPECTRUM of another shape than the visibilities; WEIGHT was used");
  if (usable_ == 0)
    report.warnings.push_back("no visibility of column " + column_ + " is unflagged with a weight above 0");
}

}  // namespace lumo
