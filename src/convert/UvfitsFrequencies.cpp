// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <cmath>
#include <string>

#include "convert/UvfitsTables.h"
#include "core/TextForm.h"

namespace lumo {
namespace {

/// The channel increments of one row, from CH WIDTH and SIDEBAND or else from the FREQ axis.
Status readIncrements(const UvfitsFile& file, const UvfitsAxes& axes, std::uint64_t row, UvfitsSetup& setup,
                      ImportReport& report) {
  setup.increment.assign(axes.ifs, axes.increment);
  if (!file.hasColumn("CH WIDTH")) return {};
  std::vector<double> width;
  std::vector<double> sideband(axes.ifs, 0.0);
  if (Status status = file.cell("CH WIDTH", row, axes.ifs, width); !status.ok()) return status;
  if (file.hasColumn("SIDEBAND"))
    if (Status status = file.cell("SIDEBAND", row, axes.ifs, sideband); !status.ok()) return status;
  bool disagree = false;
  for (std::uint32_t i = 0; i < axes.ifs; ++i) {
    if (!std::isfinite(width[i]) || width[i] == 0.0) continue;
    setup.increment[i] = sideband[i] < 0 ? -std::abs(width[i]) : width[i];
    disagree = disagree || width[i] * sideband[i] < 0;
  }
  if (disagree)
    report.warnings.push_back(
        "FQ set-up " + toStr(setup.id) +
        ": CH WIDTH and SIDEBAND have opposite signs; the frequency is taken to fall with the channel");
  return {};
}

Status readSetup(const UvfitsFile& file, const UvfitsAxes& axes, std::uint64_t row, UvfitsSetup& setup,
                 ImportReport& report) {
  std::vector<double> id;
  if (Status status = file.cell("FRQSEL", row, 1, id); !status.ok()) return status;
  if (!(std::abs(id[0]) <= 1e9))
    return {StatusCode::kBadFormat, "table AIPS FQ, row " + toStr(static_cast<std::int64_t>(row) + 1) +
                                        ": FRQSEL is " + valToStr(id[0]) + "; expected a small whole number"};
  setup.id = static_cast<std::int32_t>(std::lround(id[0]));
  if (Status status = file.cell("IF FREQ", row, axes.ifs, setup.offset); !status.ok()) return status;
  return readIncrements(file, axes, row, setup, report);
}

}  // namespace

Status readUvfitsSetups(UvfitsFile& file, const UvfitsAxes& axes, std::vector<UvfitsSetup>& setups,
                        ImportReport& report) {
  constexpr std::uint64_t kMaxSetups = 10000;
  setups.clear();
  const auto tables = file.extensionsNamed("AIPS FQ");
  if (tables.empty()) {
    if (axes.ifs > 1)
      return {StatusCode::kBadFormat,
              "has " + toStr(axes.ifs) +
                  " IFs but no table AIPS FQ, which tells their frequencies; only one "
                  "IF can do without"};
    setups.push_back({1, {0.0}, {axes.increment}});
    return {};
  }
  if (Status status = file.moveTo(tables.front().hdu); !status.ok()) return status;
  std::uint64_t rows = 0;
  if (Status status = file.tableRows(rows); !status.ok()) return status;
  if (rows == 0 || rows > kMaxSetups)
    return {StatusCode::kBadFormat, "table AIPS FQ has " + toStr(static_cast<std::int64_t>(rows)) +
                                        " rows; expected 1 to " + toStr(kMaxSetups)};
  for (std::uint64_t row = 0; row < rows; ++row) {
    UvfitsSetup setup;
    if (Status status = readSetup(file, axes, row, setup, report); !status.ok()) return status;
    const bool known = std::any_of(setups.begin(), setups.end(),
                                   [&](const UvfitsSetup& other) { return other.id == setup.id; });
    if (!known) setups.push_back(std::move(setup));
  }
  if (!file.extensionsNamed("AIPS FO").empty())
    report.warnings.push_back("the Doppler offsets of table AIPS FO are not applied");
  return {};
}

Status uvfitsSelection(const UvfitsAxes& axes, const UvfitsSetup& setup, const UvfitsSource& source,
                       UvxSelection& selection) {
  selection = {};
  selection.id = setup.id;
  for (std::uint32_t i = 0; i < axes.ifs; ++i) {
    UvxSelection::Band band;
    band.increment = setup.increment[i];
    const double offset = source.frequencyOffset.empty() ? 0.0 : source.frequencyOffset[i];
    band.frequency = axes.frequency + setup.offset[i] + offset + (1.0 - axes.referencePixel) * band.increment;
    const double last = band.frequency + (axes.channels - 1.0) * band.increment;
    if (!std::isfinite(band.frequency) || !std::isfinite(last) || band.frequency <= 0 || last <= 0)
      return {StatusCode::kBadFormat,
              "IF " + toStr(i + 1) + " of frequency set-up " + toStr(setup.id) + " runs from " +
                  valToStr(band.frequency) + " to " + valToStr(last) +
                  " Hz; expected positive frequencies (CRVAL of the FREQ axis, IF FREQ and FREQOFF)"};
    if (band.increment == 0.0 && axes.channels > 1)
      return {StatusCode::kBadFormat,
              "IF " + toStr(i + 1) + " of frequency set-up " + toStr(setup.id) +
                  " has several channels of width 0; expected CH WIDTH or CDELT of the FREQ axis in Hz"};
    selection.bands.push_back(band);
  }
  return {};
}

}  // namespace lumo
