// SPDX-License-Identifier: GPL-3.0-or-later
#include "MsBuilder.h"

#include <casacore/casa/Arrays/Matrix.h>
#include <casacore/casa/Arrays/Vector.h>
#include <casacore/measures/Measures/MDirection.h>
#include <casacore/measures/Measures/MEpoch.h>
#include <casacore/ms/MeasurementSets/MSColumns.h>
#include <casacore/ms/MeasurementSets/MeasurementSet.h>
#include <casacore/tables/DataMan/StandardStMan.h>
#include <casacore/tables/DataMan/TiledShapeStMan.h>
#include <casacore/tables/Tables/ScaColDesc.h>
#include <casacore/tables/Tables/SetupNewTab.h>
#include <casacore/tables/Tables/TableDesc.h>

namespace lumo::test {
namespace {

using namespace casacore;

template <typename To, typename From>
Vector<To> vectorOf(const std::vector<From>& values) {
  Vector<To> vector(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) vector[i] = static_cast<To>(values[i]);
  return vector;
}

/// casacore's matrices have the correlation first and fastest, like the rows here.
template <typename To, typename From>
Matrix<To> matrixOf(const std::vector<From>& values, std::size_t correlations) {
  Matrix<To> matrix(correlations, values.size() / correlations);
  for (std::size_t i = 0; i < values.size(); ++i)
    matrix(i % correlations, i / correlations) = static_cast<To>(values[i]);
  return matrix;
}

MeasurementSet create(const MsBuilder& builder, const std::string& path) {
  TableDesc description = MS::requiredTableDesc();
  if (builder.hasData) MS::addColumnToDesc(description, MS::DATA, 2);
  if (builder.hasCorrected) MS::addColumnToDesc(description, MS::CORRECTED_DATA, 2);
  if (builder.hasModel) MS::addColumnToDesc(description, MS::MODEL_DATA, 2);
  if (builder.hasSpectrum) MS::addColumnToDesc(description, MS::WEIGHT_SPECTRUM, 2);
  if (builder.hasFloat) MS::addColumnToDesc(description, MS::FLOAT_DATA, 2);
  if (builder.tiled) {
    description.defineHypercolumn("TiledData", 3, stringToVector("DATA"));
    description.defineHypercolumn("TiledFlag", 3, stringToVector("FLAG"));
  }
  SetupNewTable setup(path, description, Table::New);
  if (builder.tiled) {
    TiledShapeStMan data("TiledData", IPosition(3, 4, 2, 4));
    TiledShapeStMan flag("TiledFlag", IPosition(3, 4, 2, 4));
    setup.bindColumn("DATA", data);
    setup.bindColumn("FLAG", flag);
  }
  MeasurementSet ms(setup, builder.rows.size());
  ms.createDefaultSubtables(Table::New);
  return ms;
}

void writeFields(const MsBuilder& builder, MeasurementSet& ms) {
  MSField& table = ms.field();
  if (builder.framePerField) {
    MSFieldColumns columns(table);
    columns.setDirectionRef(MDirection::J2000);
    // A code per row, named by the keywords.
    table.addColumn(ScalarColumnDesc<Int>("PhaseDir_Ref"));
    TableRecord& info = TableColumn(table, "PHASE_DIR").rwKeywordSet().rwSubRecord("MEASINFO");
    if (info.isDefined("Ref")) info.removeField("Ref");
    info.define("VarRefCol", "PhaseDir_Ref");
    info.define("TabRefTypes", stringToVector("J2000,ICRS,B1950,GALACTIC"));
    info.define("TabRefCodes", vectorOf<uInt>(std::vector<int>{0, 21, 4, 8}));
  } else {
    MDirection::Types frame = MDirection::J2000;
    if (!MDirection::getType(frame, builder.frame)) throw AipsError("frame");
    MSFieldColumns(table).setDirectionRef(frame);
  }
  table.addColumn(ScalarColumnDesc<Int>("EPHEMERIS_ID"));
  for (std::size_t i = 0; i < builder.fields.size(); ++i) {
    const MsBuilder::Field& field = builder.fields[i];
    table.addRow();
    ScalarColumn<String>(table, "NAME").put(i, field.name);
    ScalarColumn<Int>(table, "NUM_POLY").put(i, static_cast<Int>(field.direction.size()) / 2 - 1);
    const Matrix<Double> direction = matrixOf<Double>(field.direction, 2);
    for (const char* column : {"DELAY_DIR", "PHASE_DIR", "REFERENCE_DIR"})
      ArrayColumn<Double>(table, column).put(i, direction);
    ScalarColumn<Int>(table, "EPHEMERIS_ID").put(i, field.ephemeris);
    const int code = field.frame == "ICRS"       ? 21
                     : field.frame == "B1950"    ? 4
                     : field.frame == "GALACTIC" ? 8
                                                 : 0;
    if (builder.framePerField) ScalarColumn<Int>(table, "PhaseDir_Ref").put(i, code);
  }
}

void writeWindows(const MsBuilder& builder, MeasurementSet& ms) {
  MSSpectralWindow& table = ms.spectralWindow();
  for (std::size_t i = 0; i < builder.windows.size(); ++i) {
    const MsBuilder::Window& window = builder.windows[i];
    table.addRow();
    ScalarColumn<String>(table, "NAME").put(i, window.name);
    ScalarColumn<Int>(table, "NUM_CHAN").put(i, static_cast<Int>(window.frequencies.size()));
    ScalarColumn<Int>(table, "MEAS_FREQ_REF").put(i, window.frame);
    ArrayColumn<Double>(table, "CHAN_FREQ").put(i, vectorOf<Double>(window.frequencies));
    for (const char* column : {"CHAN_WIDTH", "EFFECTIVE_BW", "RESOLUTION"})
      ArrayColumn<Double>(table, column).put(i, vectorOf<Double>(window.widths));
  }
}

void writeDescriptions(const MsBuilder& builder, MeasurementSet& ms) {
  for (std::size_t i = 0; i < builder.correlations.size(); ++i) {
    MSPolarization& table = ms.polarization();
    table.addRow();
    const std::vector<int>& codes = builder.correlations[i];
    ScalarColumn<Int>(table, "NUM_CORR").put(i, static_cast<Int>(codes.size()));
    ArrayColumn<Int>(table, "CORR_TYPE").put(i, vectorOf<Int>(codes));
    ArrayColumn<Int>(table, "CORR_PRODUCT").put(i, Matrix<Int>(2, codes.size(), 0));
  }
  for (std::size_t i = 0; i < builder.descriptions.size(); ++i) {
    MSDataDescription& table = ms.dataDescription();
    table.addRow();
    const auto row = static_cast<int>(i);
    ScalarColumn<Int>(table, "SPECTRAL_WINDOW_ID")
        .put(i, row == builder.danglingWindow ? 99 : builder.descriptions[i].first);
    ScalarColumn<Int>(table, "POLARIZATION_ID")
        .put(i, row == builder.danglingPolarization ? 99 : builder.descriptions[i].second);
  }
}

void writeOthers(const MsBuilder& builder, MeasurementSet& ms) {
  for (int i = 0; i < builder.antennas; ++i) {
    MSAntenna& table = ms.antenna();
    table.addRow();
    const auto row = static_cast<rownr_t>(i);
    ScalarColumn<String>(table, "NAME").put(row, i == 0 ? "" : "ANT" + std::to_string(i));
    ScalarColumn<String>(table, "STATION").put(row, "PAD" + std::to_string(i));
    ArrayColumn<Double>(table, "POSITION")
        .put(row, vectorOf<Double>(std::vector<double>{1.0 + i, 2.0 + i, 3.0 + i}));
  }
  ms.observation().addRow();
  ScalarColumn<String>(ms.observation(), "TELESCOPE_NAME").put(0, "SCOPE");
  ms.history().addRow();
  ScalarColumn<String>(ms.history(), "MESSAGE").put(0, "flagged by hand");
}

void writeRow(const MsBuilder& builder, const MsBuilder::Row& row, rownr_t i, MeasurementSet& ms) {
  const auto whole = [&](const char* column, Int value) { ScalarColumn<Int>(ms, column).put(i, value); };
  whole("FIELD_ID", row.field);
  whole("DATA_DESC_ID", row.description);
  whole("ANTENNA1", row.antenna1);
  whole("ANTENNA2", row.antenna2);
  ScalarColumn<Double>(ms, "TIME").put(i, row.time);
  ScalarColumn<Bool>(ms, "FLAG_ROW").put(i, row.flagged);
  ArrayColumn<Double>(ms, "UVW").put(i, Vector<Double>(std::vector<double>(row.uvw.begin(), row.uvw.end())));
  const std::size_t correlations = builder.shape(row.description).second;
  if (!row.data.empty() && builder.hasData)
    ArrayColumn<Complex>(ms, "DATA").put(i, matrixOf<Complex>(row.data, correlations));
  if (!row.corrected.empty())
    ArrayColumn<Complex>(ms, "CORRECTED_DATA").put(i, matrixOf<Complex>(row.corrected, correlations));
  if (builder.hasModel)
    ArrayColumn<Complex>(ms, "MODEL_DATA").put(i, matrixOf<Complex>(row.data, correlations));
  const auto channels =
      row.flags.empty() ? builder.shape(row.description).first : row.flags.size() / correlations;
  Matrix<Bool> flags(correlations, channels, false);
  if (!row.flags.empty()) flags = matrixOf<Bool>(row.flags, correlations);
  ArrayColumn<Bool>(ms, "FLAG").put(i, flags);
  const Vector<Float> weight =
      row.weight.empty() ? Vector<Float>(correlations, 1.0F) : vectorOf<Float>(row.weight);
  ArrayColumn<Float>(ms, "WEIGHT").put(i, weight);
  ArrayColumn<Float>(ms, "SIGMA").put(i, Vector<Float>(correlations, 1.0F));
  if (!row.spectrum.empty())
    ArrayColumn<Float>(ms, "WEIGHT_SPECTRUM").put(i, matrixOf<Float>(row.spectrum, correlations));
}

}  // namespace

MsBuilder::Row& MsBuilder::add(double u, double v, std::complex<float> value, int description) {
  Row row;
  row.description = description;
  row.uvw = {u, v, 0};
  const auto [channels, correlations_] = shape(description);
  row.data.assign(channels * correlations_, value);
  rows.push_back(row);
  return rows.back();
}

std::pair<std::size_t, std::size_t> MsBuilder::shape(int description) const {
  const auto [window, polarization] = descriptions.at(static_cast<std::size_t>(description));
  return {windows.at(static_cast<std::size_t>(window)).frequencies.size(),
          correlations.at(static_cast<std::size_t>(polarization)).size()};
}

void MsBuilder::write(const std::string& path) const {
  MeasurementSet ms = create(*this, path);
  writeFields(*this, ms);
  writeWindows(*this, ms);
  writeDescriptions(*this, ms);
  writeOthers(*this, ms);
  for (std::size_t i = 0; i < rows.size(); ++i) writeRow(*this, rows[i], i, ms);
  if (!unit.empty()) TableColumn(ms, "DATA").rwKeywordSet().define("UNIT", unit);
  TableColumn(ms, "TIME").rwKeywordSet().rwSubRecord("MEASINFO").define("Ref", timeScale);
  for (const std::string& column : removedColumns) ms.removeColumn(column);
  for (const std::string& name : removedSubtables) ms.rwKeywordSet().removeField(name);
}

}  // namespace lumo::test

/// casacore loses what it has opened when it throws on a table that is damaged; the address sanitizer calls
/// this for the leaks that are known.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming): the sanitizer's name for it
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libcasa_casa\nleak:libcasa_tables\n";
}
