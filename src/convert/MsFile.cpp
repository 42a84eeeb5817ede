// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/MsFile.h"

#include <casacore/casa/Arrays/Array.h>
#include <casacore/casa/Arrays/Slicer.h>
#include <casacore/casa/Arrays/Vector.h>
#include <casacore/tables/Tables/ArrayColumn.h>
#include <casacore/tables/Tables/ScalarColumn.h>
#include <casacore/tables/Tables/TableDesc.h>
#include <casacore/tables/Tables/TableRecord.h>

#include <algorithm>
#include <exception>
#include <new>
#include <optional>

#include "convert/MsCasacore.h"
#include "core/TextForm.h"

namespace lumo {
namespace {

using casacore::ArrayColumn;
using casacore::IPosition;
using casacore::ScalarColumn;

/// A sentence's worth of what casacore says: its first line.
std::string firstLine(const std::exception& error) {
  const std::string text = error.what();
  return text.substr(0, text.find('\n'));
}

struct NothingToThrow {};

/// Calls work() while an exception is being handled. In damaged tables casacore comes to a "throw;" that has
/// nothing to throw, which would end the program; here it throws that exception.
template <typename Work>
Status handling(const Work& work) {
  try {
    throw NothingToThrow();
  } catch (const NothingToThrow&) {
    return work();
  }
}

/// Turns what casacore throws into a status. `work` returns a Status.
template <typename Work>
Status guarded(const std::string& doing, const Work& work) {
  try {
    return handling(work);
  } catch (const NothingToThrow&) {
    return {StatusCode::kReadFailed, doing + ": the table is damaged"};
  } catch (const std::bad_alloc&) {
    return {StatusCode::kOutOfMemory, doing + ": there is not enough memory"};
  } catch (const std::exception& error) {
    const std::string reason = firstLine(error);
    // A storage manager that is not built in is looked for as a library of its name.
    if (reason.find("Shared library") != std::string::npos)
      return {StatusCode::kUnsupported,
              doing + ": a column is stored in a way that the casacore of this program cannot read (" +
                  reason + ")"};
    return {StatusCode::kReadFailed, doing + ": " + reason};
  }
}

std::string rowName(std::uint64_t row) {
  return "row " + toStr(static_cast<std::int64_t>(row));
}

casacore::Slicer rowRange(std::uint64_t first, std::size_t count) {
  return casacore::Slicer(IPosition(1, static_cast<ssize_t>(first)),
                          IPosition(1, static_cast<ssize_t>(count)));
}

bool isVisibilityColumn(const casacore::ColumnDesc& column) {
  return column.isArray() && column.dataType() == casacore::TpComplex &&
         column.name().find("MODEL") == std::string::npos;
}

std::string upperCase(std::string text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return text;
}

std::string shapeText(const IPosition& shape) {
  std::string text;
  for (std::size_t i = 0; i < shape.nelements(); ++i)
    text += (i == 0 ? "" : " x ") + toStr(static_cast<std::int64_t>(shape[i]));
  return text.empty() ? "a single number" : text;
}

}  // namespace

struct MsFile::Columns {
  casacore::Table table;
  ScalarColumn<casacore::Int> field, description, antenna1, antenna2;
  ScalarColumn<casacore::Double> time;
  ScalarColumn<casacore::Bool> flagRow;
  ArrayColumn<casacore::Double> uvw;
  ArrayColumn<casacore::Complex> values;
  ArrayColumn<casacore::Bool> flag;
  std::optional<ArrayColumn<casacore::Float>> weight, spectrum;

  // Reused from row to row.
  casacore::Array<casacore::Complex> valueCell;
  casacore::Array<casacore::Bool> flagCell;
  casacore::Array<casacore::Float> weightCell;

  [[nodiscard]] Status attach(const std::string& column);
  [[nodiscard]] bool readWeights(const std::optional<ArrayColumn<casacore::Float>>& cells, std::uint64_t row,
                                 const IPosition& shape);
};

Status MsFile::Columns::attach(const std::string& column) {
  field.attach(table, "FIELD_ID");
  description.attach(table, "DATA_DESC_ID");
  antenna1.attach(table, "ANTENNA1");
  antenna2.attach(table, "ANTENNA2");
  time.attach(table, "TIME");
  flagRow.attach(table, "FLAG_ROW");
  uvw.attach(table, "UVW");
  flag.attach(table, "FLAG");
  values.attach(table, column);
  if (table.tableDesc().isColumn("WEIGHT")) weight.emplace(table, "WEIGHT");
  if (table.tableDesc().isColumn("WEIGHT_SPECTRUM")) spectrum.emplace(table, "WEIGHT_SPECTRUM");
  return {};
}

/// Reads a row's weights into weightCell, if there are any of that shape.
bool MsFile::Columns::readWeights(const std::optional<ArrayColumn<casacore::Float>>& cells, std::uint64_t row,
                                  const IPosition& shape) {
  if (!cells || !cells->isDefined(row) || !cells->shape(row).isEqual(shape)) return false;
  cells->get(row, weightCell, true);
  return true;
}

MsFile::MsFile() = default;
MsFile::~MsFile() = default;

Status MsFile::open(const std::string& path, const std::string& column) {
  return guarded("cannot be opened", [&]() -> Status {
    main_ = std::make_unique<Columns>();
    main_->table = openMsTable(path);
    const casacore::Table& table = main_->table;
    const casacore::TableRecord& keywords = table.keywordSet();
    if (!keywords.isDefined("SPECTRAL_WINDOW") && !table.tableDesc().isColumn("UVW"))
      return {StatusCode::kUnsupported, "is a casacore table of type '" +
                                            std::string(table.tableInfo().type()) +
                                            "'; expected a Measurement Set"};
    if (keywords.isDefined("MS_VERSION") && keywords.asDouble("MS_VERSION") < 2)
      return {StatusCode::kUnsupported, "is a Measurement Set of version " +
                                            valToStr(keywords.asDouble("MS_VERSION")) +
                                            "; expected version 2"};
    for (const char* name :
         {"TIME", "ANTENNA1", "ANTENNA2", "DATA_DESC_ID", "FIELD_ID", "FLAG", "FLAG_ROW", "UVW"}) {
      const std::string unit = name == std::string("UVW") ? "m" : name == std::string("TIME") ? "s" : "";
      if (Status status = checkMsColumn(table, "the main table", name, unit); !status.ok()) return status;
    }
    if (Status status = chooseColumn(column); !status.ok()) return status;
    if (Status status = main_->attach(column_); !status.ok()) return status;
    if (Status status = checkMsTiles(table, {column_, "FLAG", "UVW", "WEIGHT", "WEIGHT_SPECTRUM"});
        !status.ok())
      return status;
    rows_ = table.nrow();
    unit_ = msColumnUnit(main_->values);
    timeScale_ = msColumnReference(main_->time);
    return readMsTables(table, tables_);
  });
}

Status MsFile::chooseColumn(const std::string& wanted) {
  columns_.clear();
  const casacore::TableDesc& description = main_->table.tableDesc();
  for (casacore::uInt i = 0; i < description.ncolumn(); ++i)
    if (isVisibilityColumn(description[i])) columns_.push_back(description[i].name());
  std::sort(columns_.begin(), columns_.end());
  const auto holds = [&](const std::string& name) {
    return std::find(columns_.begin(), columns_.end(), name) != columns_.end();
  };
  if (columns_.empty())
    return {StatusCode::kUnsupported,
            description.isColumn("FLOAT_DATA")
                ? "has no complex visibilities, only FLOAT_DATA of single dishes"
                : "has neither a column DATA nor CORRECTED_DATA of complex visibilities"};
  if (wanted.empty()) {
    column_ = holds("CORRECTED_DATA") ? "CORRECTED_DATA" : holds("DATA") ? "DATA" : columns_.front();
    return {};
  }
  column_ = upperCase(wanted);
  if (column_ == "CORRECTED" || column_ == "MODEL") column_ += "_DATA";
  if (holds(wanted)) column_ = wanted;
  if (holds(column_)) return {};
  if (column_.find("MODEL") != std::string::npos && description.isColumn(column_))
    return {StatusCode::kInvalidValue, "column " + column_ + " holds a model, not the observation"};
  std::string names;
  for (const std::string& name : columns_) names += (names.empty() ? "" : ", ") + name;
  return {StatusCode::kInvalidValue,
          "has no column " + column_ + " of complex visibilities; it has " + names};
}

Status MsFile::readKeys(std::uint64_t first, std::vector<MsRowKey>& keys) const {
  return guarded("the main table cannot be read from " + rowName(first) + " on", [&]() -> Status {
    const casacore::Slicer rows = rowRange(first, keys.size());
    const auto copy = [&](const ScalarColumn<casacore::Int>& column, std::int32_t MsRowKey::*member) {
      const casacore::Vector<casacore::Int> values = column.getColumnRange(rows);
      for (std::size_t i = 0; i < keys.size(); ++i) keys[i].*member = values[i];
    };
    copy(main_->field, &MsRowKey::field);
    copy(main_->description, &MsRowKey::description);
    copy(main_->antenna1, &MsRowKey::antenna1);
    copy(main_->antenna2, &MsRowKey::antenna2);
    return {};
  });
}

Status MsFile::readPlaces(std::uint64_t first, std::vector<MsRowPlace>& places) const {
  return guarded("the main table cannot be read from " + rowName(first) + " on", [&]() -> Status {
    const casacore::Slicer rows = rowRange(first, places.size());
    const casacore::Vector<casacore::Double> times = main_->time.getColumnRange(rows);
    const casacore::Vector<casacore::Bool> flags = main_->flagRow.getColumnRange(rows);
    casacore::Vector<casacore::Double> uvw;
    for (std::size_t i = 0; i < places.size(); ++i) {
      const std::uint64_t row = first + i;
      if (!main_->uvw.isDefined(row) || !main_->uvw.shape(row).isEqual(IPosition(1, 3)))
        return {StatusCode::kBadFormat, rowName(row) + ": UVW is not there or not three numbers"};
      main_->uvw.get(row, uvw, true);
      places[i] = {times[i], uvw[0], uvw[1], uvw[2], flags[i]};
    }
    return {};
  });
}

Status MsFile::readData(std::uint64_t row, std::uint32_t channels, std::uint32_t correlations,
                        MsRowData& data, bool& present) const {
  return guarded(rowName(row) + " cannot be read", [&]() -> Status {
    Columns& main = *main_;
    const IPosition shape(2, correlations, channels);
    present = main.values.isDefined(row);
    if (!present) return {};
    const auto wrongShape = [&](const std::string& column, const IPosition& found) -> Status {
      return {StatusCode::kBadFormat, rowName(row) + ": " + column + " has " + shapeText(found) +
                                          " numbers; expected " + shapeText(shape) +
                                          " (correlations x channels)"};
    };
    if (!main.values.shape(row).isEqual(shape)) return wrongShape(column_, main.values.shape(row));
    if (!main.flag.isDefined(row)) return {StatusCode::kBadFormat, rowName(row) + " has no FLAG"};
    if (!main.flag.shape(row).isEqual(shape)) return wrongShape("FLAG", main.flag.shape(row));
    main.values.get(row, main.valueCell, true);
    main.flag.get(row, main.flagCell, true);
    data.values.assign(main.valueCell.begin(), main.valueCell.end());
    data.flags.assign(main.flagCell.begin(), main.flagCell.end());
    if (main.readWeights(main.spectrum, row, shape)) {
      data.weights.assign(main.weightCell.begin(), main.weightCell.end());
      data.source = MsRowData::Weights::kSpectrum;
      return {};
    }
    data.source = MsRowData::Weights::kNone;
    std::vector<float> each(correlations, 1.0F);
    if (main.readWeights(main.weight, row, IPosition(1, correlations))) {
      each.assign(main.weightCell.begin(), main.weightCell.end());
      const bool hasSpectrum = main.spectrum && main.spectrum->isDefined(row);
      data.source = hasSpectrum ? MsRowData::Weights::kSpectrumShape : MsRowData::Weights::kRow;
    }
    data.weights.resize(data.values.size());
    for (std::size_t i = 0; i < data.weights.size(); ++i) data.weights[i] = each[i % correlations];
    return {};
  });
}

}  // namespace lumo
