// SPDX-License-Identifier: GPL-3.0-or-later
#include <casacore/casa/Arrays/Array.h>
#include <casacore/casa/Arrays/Vector.h>
#include <casacore/measures/Measures/MDirection.h>
#include <casacore/tables/Tables/ArrayColumn.h>
#include <casacore/tables/Tables/ScalarColumn.h>
#include <casacore/tables/Tables/TableAttr.h>
#include <casacore/tables/Tables/TableDesc.h>
#include <casacore/tables/Tables/TableLock.h>
#include <casacore/tables/Tables/TableRecord.h>

#include <algorithm>
#include <cmath>

#include "convert/MsCasacore.h"
#include "convert/UvfitsFile.h"
#include "core/TextForm.h"

namespace lumo {
namespace {

constexpr std::size_t kNameBytes = 64;
constexpr std::size_t kMaxLine = 4096;            // bytes of a history line
constexpr std::size_t kMaxHistory = 10000;        // lines taken over
constexpr casacore::rownr_t kMaxRows = 1U << 20;  // of a subtable
constexpr std::int64_t kMaxCells = 1 << 24;       // numbers in one of its cells
constexpr casacore::rownr_t kMaxAntennas = 65535;

bool has(const casacore::Table& table, const std::string& column) {
  return table.tableDesc().isColumn(column);
}

Status openCounted(const casacore::Table& main, const std::string& name, casacore::Table& table) {
  if (Status status = openMsSubtable(main, name, table); !status.ok()) return status;
  if (table.nrow() > kMaxRows)
    return {StatusCode::kBadFormat, "subtable " + name + " has " +
                                        toStr(static_cast<std::int64_t>(table.nrow())) +
                                        " rows; expected at most " + toStr(kMaxRows)};
  return {};
}

/// The numbers of an array cell, none when it is not there or absurdly large.
template <typename T>
std::vector<T> cell(const casacore::Table& table, const std::string& column, casacore::rownr_t row) {
  const casacore::ArrayColumn<T> cells(table, column);
  if (!cells.isDefined(row) || cells.shape(row).product() > kMaxCells) return {};
  const casacore::Array<T> values = cells(row);
  return std::vector<T>(values.begin(), values.end());
}

std::string text(const casacore::Table& table, const std::string& column, casacore::rownr_t row) {
  if (!has(table, column)) return {};
  return cleanText(casacore::ScalarColumn<casacore::String>(table, column)(row), kNameBytes);
}

std::int32_t whole(const casacore::Table& table, const std::string& column, casacore::rownr_t row,
                   std::int32_t absent) {
  return has(table, column) ? casacore::ScalarColumn<casacore::Int>(table, column)(row) : absent;
}

/// The frame of a direction. Its name stands in the column's keywords, or a further column has a code (or the
/// name) for every row and the keywords tell the codes' names.
std::string directionFrame(const casacore::Table& table, const casacore::TableColumn& column,
                           casacore::rownr_t row) {
  const casacore::TableRecord& keywords = column.keywordSet();
  if (!keywords.isDefined("MEASINFO")) return {};
  const casacore::RecordInterface& info = keywords.asRecord("MEASINFO");
  if (info.isDefined("RefOffMsr") || info.isDefined("RefOffCol")) return "relative to another direction";
  if (!info.isDefined("VarRefCol")) return msColumnReference(column);
  const std::string reference = info.asString("VarRefCol");
  if (!has(table, reference)) return "given by a missing column " + reference;
  if (casacore::TableColumn(table, reference).columnDesc().dataType() == casacore::TpString)
    return text(table, reference, row);
  const casacore::Int code = whole(table, reference, row, 0);
  if (!info.isDefined("TabRefTypes") || !info.isDefined("TabRefCodes"))
    return code >= 0 && code < static_cast<casacore::Int>(casacore::MDirection::N_Types)
               ? std::string(casacore::MDirection::showType(static_cast<casacore::uInt>(code)))
               : "code " + toStr(code);
  const casacore::Vector<casacore::String> names(info.asArrayString("TabRefTypes"));
  const casacore::Vector<casacore::uInt> codes(info.asArrayuInt("TabRefCodes"));
  for (std::size_t i = 0; i < std::min(names.size(), codes.size()); ++i)
    if (static_cast<std::int64_t>(codes[i]) == code) return names[i];
  return "code " + toStr(code);
}

Status readFields(const casacore::Table& main, std::vector<MsField>& fields) {
  casacore::Table table;
  Status status = openCounted(main, "FIELD", table);
  if (status.ok()) status = checkMsColumn(table, "FIELD", "PHASE_DIR", "rad");
  if (!status.ok()) return status;
  const casacore::TableColumn direction(table, "PHASE_DIR");
  for (casacore::rownr_t row = 0; row < table.nrow(); ++row) {
    MsField field;
    field.name = text(table, "NAME", row);
    field.direction = cell<casacore::Double>(table, "PHASE_DIR", row);
    field.frame = directionFrame(table, direction, row);
    field.ephemeris = whole(table, "EPHEMERIS_ID", row, -1);
    fields.push_back(std::move(field));
  }
  return {};
}

Status readWindows(const casacore::Table& main, std::vector<MsWindow>& windows) {
  casacore::Table table;
  Status status = openCounted(main, "SPECTRAL_WINDOW", table);
  if (status.ok()) status = checkMsColumn(table, "SPECTRAL_WINDOW", "CHAN_FREQ", "Hz");
  if (!status.ok()) return status;
  for (casacore::rownr_t row = 0; row < table.nrow(); ++row) {
    MsWindow window;
    window.name = text(table, "NAME", row);
    window.frequencies = cell<casacore::Double>(table, "CHAN_FREQ", row);
    if (has(table, "CHAN_WIDTH")) window.widths = cell<casacore::Double>(table, "CHAN_WIDTH", row);
    if (window.widths.size() != window.frequencies.size()) window.widths.clear();
    window.frame = whole(table, "MEAS_FREQ_REF", row, 0);
    windows.push_back(std::move(window));
  }
  return {};
}

Status readDescriptions(const casacore::Table& main, MsTables& tables) {
  casacore::Table polarizations;
  Status status = openCounted(main, "POLARIZATION", polarizations);
  if (status.ok()) status = checkMsColumn(polarizations, "POLARIZATION", "CORR_TYPE", "");
  if (!status.ok()) return status;
  for (casacore::rownr_t row = 0; row < polarizations.nrow(); ++row)
    tables.correlations.push_back(cell<casacore::Int>(polarizations, "CORR_TYPE", row));
  casacore::Table table;
  status = openCounted(main, "DATA_DESCRIPTION", table);
  for (const char* column : {"SPECTRAL_WINDOW_ID", "POLARIZATION_ID"})
    if (status.ok()) status = checkMsColumn(table, "DATA_DESCRIPTION", column, "");
  if (!status.ok()) return status;
  for (casacore::rownr_t row = 0; row < table.nrow(); ++row)
    tables.descriptions.push_back(
        {whole(table, "SPECTRAL_WINDOW_ID", row, -1), whole(table, "POLARIZATION_ID", row, -1)});
  return {};
}

/// Imaging does not need the antennas: what is missing stays out.
void readAntennas(const casacore::Table& main, std::vector<MsAntenna>& antennas) {
  casacore::Table table;
  if (!openCounted(main, "ANTENNA", table).ok() || table.nrow() > kMaxAntennas) return;
  for (casacore::rownr_t row = 0; row < table.nrow(); ++row) {
    MsAntenna antenna;
    antenna.name = text(table, "NAME", row);
    if (antenna.name.empty()) antenna.name = text(table, "STATION", row);
    const auto place =
        has(table, "POSITION") ? cell<casacore::Double>(table, "POSITION", row) : std::vector<double>();
    if (place.size() == 3 && std::isfinite(place[0]) && std::isfinite(place[1]) && std::isfinite(place[2])) {
      antenna.x = place[0];
      antenna.y = place[1];
      antenna.z = place[2];
    }
    antennas.push_back(std::move(antenna));
  }
}

void readDescriptiveTexts(const casacore::Table& main, MsTables& tables) {
  casacore::Table table;
  if (openCounted(main, "OBSERVATION", table).ok() && table.nrow() > 0) {
    tables.telescope = text(table, "TELESCOPE_NAME", 0);
    tables.observer = text(table, "OBSERVER", 0);
  }
  if (!openMsSubtable(main, "HISTORY", table).ok() || !has(table, "MESSAGE")) return;
  const casacore::ScalarColumn<casacore::String> messages(table, "MESSAGE");
  const auto rows = std::min<casacore::rownr_t>(table.nrow(), kMaxHistory);
  for (casacore::rownr_t row = 0; row < rows; ++row)
    tables.history.push_back(cleanText(messages(row), kMaxLine));
}

}  // namespace

casacore::Table openMsTable(const std::string& path) {
  return casacore::Table(path, casacore::TableLock(casacore::TableLock::NoLocking), casacore::Table::Old,
                         casacore::TSMOption(casacore::TSMOption::Cache, 0, -1));
}

Status openMsSubtable(const casacore::Table& main, const std::string& name, casacore::Table& subtable) {
  const casacore::TableRecord& keywords = main.keywordSet();
  if (!keywords.isDefined(name) || keywords.dataType(name) != casacore::TpTable)
    return {StatusCode::kBadFormat, "has no subtable " + name + ", which a Measurement Set must have"};
  subtable = openMsTable(keywords.tableAttributes(name).name());
  return {};
}

std::string msColumnUnit(const casacore::TableColumn& column) {
  const casacore::TableRecord& keywords = column.keywordSet();
  for (const char* name : {"QuantumUnits", "UNIT"}) {
    if (!keywords.isDefined(name)) continue;
    if (keywords.dataType(name) == casacore::TpString) return keywords.asString(name);
    if (keywords.dataType(name) != casacore::TpArrayString) continue;
    const casacore::Array<casacore::String> units(keywords.asArrayString(name));
    if (!units.empty()) return *units.begin();
  }
  return {};
}

Status checkMsColumn(const casacore::Table& table, const std::string& tableName, const std::string& column,
                     const std::string& unit) {
  if (!has(table, column))
    return {StatusCode::kBadFormat,
            tableName + " has no column " + column + ", which a Measurement Set must have"};
  const std::string stated = msColumnUnit(casacore::TableColumn(table, column));
  if (!unit.empty() && !stated.empty() && stated != unit)
    return {StatusCode::kUnsupported,
            tableName + ", column " + column + " is in '" + stated + "'; expected " + unit};
  return {};
}

std::string msColumnReference(const casacore::TableColumn& column) {
  const casacore::TableRecord& keywords = column.keywordSet();
  if (!keywords.isDefined("MEASINFO")) return {};
  const casacore::RecordInterface& info = keywords.asRecord("MEASINFO");
  return info.isDefined("Ref") ? std::string(info.asString("Ref")) : std::string();
}

Status readMsTables(const casacore::Table& main, MsTables& tables) {
  tables = {};
  Status status = readFields(main, tables.fields);
  if (status.ok()) status = readWindows(main, tables.windows);
  if (status.ok()) status = readDescriptions(main, tables);
  if (!status.ok()) return status;
  readAntennas(main, tables.antennas);
  readDescriptiveTexts(main, tables);
  return {};
}

}  // namespace lumo
