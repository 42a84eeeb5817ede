// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "convert/UvfitsTables.h"
#include "core/TextForm.h"

namespace lumo {
namespace {

constexpr std::size_t kNameBytes = 16;
constexpr std::uint64_t kMaxSources = 32767;  // what the groups of a UVX file can tell apart

/// Frame and epoch that the primary header states.
struct HeaderFrame {
  UvxFrame frame = UvxFrame::kByEpoch;
  std::optional<double> epoch;
};

Status exactEpoch(const std::string& where, double value, double& epoch) {
  for (const double known : {2000.0, 1950.0}) {
    if (std::abs(value - known) > 0.01) continue;
    epoch = known;
    return {};
  }
  return {StatusCode::kUnsupported,
          where + " is " + valToStr(value) + "; positions can be of epoch 2000 or 1950"};
}

/// EQUINOX or EPOCH as a number, also when it is a text such as 'J2000'; 0 counts as not given.
Status readEpochCard(const UvfitsFile& file, const std::string& card, std::optional<double>& epoch) {
  std::string text = file.text(card);
  if (text.empty()) return {};
  if (text[0] == 'J' || text[0] == 'B') text.erase(0, 1);
  const double value = textToDouble(text);
  double known = 0;
  if (value == 0.0) {
    if (file.number(card, epoch).ok()) return {};
    return {StatusCode::kUnsupported,
            "card " + card + " is '" + file.text(card) + "'; positions can be of epoch 2000 or 1950"};
  }
  if (Status status = exactEpoch("card " + card, value, known); !status.ok()) return status;
  epoch = known;
  return {};
}

Status readHeaderFrame(UvfitsFile& file, HeaderFrame& header) {
  if (Status status = file.moveTo(1); !status.ok()) return status;
  for (const char* card : {"EQUINOX", "EPOCH"}) {
    if (header.epoch && *header.epoch != 0.0) break;
    header.epoch.reset();
    if (Status status = readEpochCard(file, card, header.epoch); !status.ok()) return status;
  }
  if (header.epoch && *header.epoch == 0.0) header.epoch.reset();
  std::string name = file.text("RADESYS");
  if (name.empty()) name = file.text("RADECSYS");
  if (name == "FK5")
    header.frame = UvxFrame::kFk5;
  else if (name == "ICRS")
    header.frame = UvxFrame::kIcrs;
  else if (name == "FK4" || name == "FK4-NO-E")
    header.frame = UvxFrame::kFk4;
  else if (!name.empty())
    return {StatusCode::kUnsupported, "card RADESYS is '" + name + "'; expected FK5, FK4 or ICRS"};
  return {};
}

double epochOrDefault(const HeaderFrame& header, ImportReport& report) {
  if (header.epoch) return *header.epoch;
  if (header.frame == UvxFrame::kFk4) return 1950.0;
  if (header.frame == UvxFrame::kByEpoch)
    report.warnings.push_back("no card EQUINOX, EPOCH or RADESYS: the position is taken as J2000");
  return 2000.0;
}

Status setPosition(const std::string& where, double rightAscension, double declination,
                   AUVXSourceItem& item) {
  if (!std::isfinite(rightAscension) || std::abs(rightAscension) > 720 || !(std::abs(declination) <= 90))
    return {StatusCode::kBadFormat, where + " puts source '" + item.name + "' at right ascension " +
                                        valToStr(rightAscension) + ", declination " + valToStr(declination) +
                                        "; expected degrees"};
  item.rightAscension = rightAscension - 360.0 * std::floor(rightAscension / 360.0);
  item.declination = declination;
  return {};
}

Status readSourceRow(const UvfitsFile& file, const UvfitsAxes& axes, std::uint64_t row,
                     const HeaderFrame& header, UvfitsSource& source, ImportReport& report) {
  std::vector<double> value;
  const std::string idColumn = file.hasColumn("ID. NO.") ? "ID. NO." : "ID_NO.";
  if (Status status = file.cell(idColumn, row, 1, value); !status.ok()) return status;
  if (!(std::abs(value[0]) <= kMaxSources))
    return {StatusCode::kUnsupported, "table AIPS SU: source number " + valToStr(value[0]) +
                                          "; expected at most " + toStr(kMaxSources)};
  source.item.id = static_cast<std::int32_t>(std::lround(value[0]));
  std::string name;
  if (Status status = file.cellText("SOURCE", row, name); !status.ok()) return status;
  source.item.name = cleanText(name, kNameBytes);
  std::vector<double> declination;
  if (Status status = file.cell("RAEPO", row, 1, value); !status.ok()) return status;
  if (Status status = file.cell("DECEPO", row, 1, declination); !status.ok()) return status;
  if (Status status = setPosition("table AIPS SU", value[0], declination[0], source.item); !status.ok())
    return status;
  source.item.frame = header.frame;
  std::vector<double> epoch(1, 0.0);
  if (file.hasColumn("EPOCH"))
    if (Status status = file.cell("EPOCH", row, 1, epoch); !status.ok()) return status;
  if (epoch[0] == 0.0)
    source.item.epoch = epochOrDefault(header, report);
  else if (Status status = exactEpoch("table AIPS SU, column EPOCH", epoch[0], source.item.epoch);
           !status.ok())
    return status;
  if (!file.hasColumn("FREQOFF")) return {};
  if (Status status = file.cell("FREQOFF", row, axes.ifs, source.frequencyOffset); !status.ok())
    return status;
  return {};
}

}  // namespace

Status readUvfitsSources(UvfitsFile& file, const UvfitsAxes& axes, std::vector<UvfitsSource>& sources,
                         ImportReport& report) {
  sources.clear();
  const auto tables = file.extensionsNamed("AIPS SU");
  if (tables.empty()) return {};
  HeaderFrame header;
  if (Status status = readHeaderFrame(file, header); !status.ok()) return status;
  if (Status status = file.moveTo(tables.front().hdu); !status.ok()) return status;
  std::uint64_t rows = 0;
  if (Status status = file.tableRows(rows); !status.ok()) return status;
  if (rows > kMaxSources)
    return {StatusCode::kUnsupported, "table AIPS SU has " + toStr(static_cast<std::int64_t>(rows)) +
                                          " rows; expected at most " + toStr(kMaxSources)};
  for (std::uint64_t row = 0; row < rows; ++row) {
    UvfitsSource source;
    if (Status status = readSourceRow(file, axes, row, header, source, report); !status.ok()) return status;
    const bool known = std::any_of(sources.begin(), sources.end(), [&](const UvfitsSource& other) {
      return other.item.id == source.item.id;
    });
    if (!known) sources.push_back(std::move(source));
  }
  return {};
}

Status readUvfitsHeaderSource(UvfitsFile& file, const UvfitsAxes& axes, UvfitsSource& source,
                              ImportReport& report) {
  HeaderFrame header;
  if (Status status = readHeaderFrame(file, header); !status.ok()) return status;
  source = {};
  source.item.id = 1;
  source.item.name = cleanText(file.text("OBJECT"), kNameBytes);
  source.item.frame = header.frame;
  source.item.epoch = epochOrDefault(header, report);
  if (!axes.rightAscension || !axes.declination)
    return {StatusCode::kBadFormat,
            "has no position: expected axes with CTYPE 'RA' and 'DEC' whose CRVAL are the phase centre in "
            "degrees, or a table AIPS SU"};
  return setPosition("the header (CRVAL of the RA and DEC axes)", *axes.rightAscension, *axes.declination,
                     source.item);
}

}  // namespace lumo
