// SPDX-License-Identifier: GPL-3.0-or-later
#include "MsWriter.h"

#include <casacore/casa/Arrays/Cube.h>
#include <casacore/casa/Arrays/Matrix.h>
#include <casacore/casa/Arrays/Vector.h>
#include <casacore/ms/MeasurementSets/MSColumns.h>
#include <casacore/ms/MeasurementSets/MeasurementSet.h>
#include <casacore/tables/DataMan/TiledColumnStMan.h>
#include <casacore/tables/Tables/SetupNewTab.h>
#include <casacore/tables/Tables/TableDesc.h>

#include <stdexcept>

namespace lumo::bench {
namespace {

using namespace casacore;

constexpr std::size_t kBlockRows = 8192;

MeasurementSet create(const std::string& path, const MsSetup& setup, std::size_t rows) {
  const IPosition shape(2, static_cast<ssize_t>(setup.products.size()),
                        static_cast<ssize_t>(setup.windows.at(0).frequencies.size()));
  TableDesc description = MS::requiredTableDesc();
  MS::addColumnToDesc(description, MS::DATA, 2);
  for (const char* column : {"DATA", "FLAG"}) {
    description.rwColumnDesc(column).setShape(shape);
    description.rwColumnDesc(column).setOptions(ColumnDesc::FixedShape);
  }
  description.defineHypercolumn("TiledData", 3, stringToVector("DATA"));
  description.defineHypercolumn("TiledFlag", 3, stringToVector("FLAG"));
  const IPosition tile(3, shape[0], shape[1], 1024);
  TiledColumnStMan data("TiledData", tile);
  TiledColumnStMan flag("TiledFlag", tile);
  SetupNewTable made(path, description, Table::NewNoReplace);
  made.bindColumn("DATA", data);
  made.bindColumn("FLAG", flag);
  MeasurementSet ms(made, rows);
  ms.createDefaultSubtables(Table::New);
  return ms;
}

void writeField(const MsSetup& setup, MeasurementSet& ms) {
  MSFieldColumns columns(ms.field());
  columns.setDirectionRef(MDirection::J2000);
  ms.field().addRow();
  columns.name().put(0, setup.field);
  columns.numPoly().put(0, 0);
  Matrix<Double> direction(2, 1);
  direction(0, 0) = setup.direction[0];
  direction(1, 0) = setup.direction[1];
  columns.delayDir().put(0, direction);
  columns.phaseDir().put(0, direction);
  columns.referenceDir().put(0, direction);
}

void writeWindows(const MsSetup& setup, MeasurementSet& ms) {
  MSSpWindowColumns columns(ms.spectralWindow());
  MSDataDescColumns descriptions(ms.dataDescription());
  for (std::size_t i = 0; i < setup.windows.size(); ++i) {
    const MsSetup::Window& window = setup.windows[i];
    const std::size_t channels = window.frequencies.size();
    ms.spectralWindow().addRow();
    columns.numChan().put(i, static_cast<Int>(channels));
    columns.measFreqRef().put(i, MFrequency::TOPO);
    columns.refFrequency().put(i, window.frequencies[0]);
    columns.totalBandwidth().put(i, window.width * static_cast<double>(channels));
    columns.chanFreq().put(i, Vector<Double>(window.frequencies));
    const Vector<Double> widths(channels, window.width);
    columns.chanWidth().put(i, widths);
    columns.effectiveBW().put(i, widths);
    columns.resolution().put(i, widths);
    ms.dataDescription().addRow();
    descriptions.spectralWindowId().put(i, static_cast<Int>(i));
    descriptions.polarizationId().put(i, 0);
  }
}

void writeOthers(const MsSetup& setup, MeasurementSet& ms) {
  ms.polarization().addRow();
  MSPolarizationColumns polarization(ms.polarization());
  polarization.numCorr().put(0, static_cast<Int>(setup.products.size()));
  polarization.corrType().put(0, Vector<Int>(setup.products));
  Matrix<Int> receptors(2, setup.products.size());
  for (std::size_t k = 0; k < setup.products.size(); ++k) receptors.column(k) = static_cast<Int>(k);
  polarization.corrProduct().put(0, receptors);
  MSAntennaColumns antennas(ms.antenna());
  for (std::size_t i = 0; i < setup.antennas.size(); ++i) {
    ms.antenna().addRow();
    antennas.name().put(i, setup.antennas[i].name);
    antennas.station().put(i, setup.antennas[i].name);
    antennas.position().put(
        i, Vector<Double>(setup.antennas[i].position.begin(), setup.antennas[i].position.end()));
  }
  ms.observation().addRow();
  MSObservationColumns(ms.observation()).telescopeName().put(0, "SIMULATED");
}

}  // namespace

/// The open set and the rows that wait.
struct MsWriter::Tables {
  Tables(const std::string& path, const MsSetup& given, std::size_t count)
      : setup(given), rows(count), ms(create(path, given, count)) {
    writeField(setup, ms);
    writeWindows(setup, ms);
    writeOthers(setup, ms);
    TableColumn(ms, "DATA").rwKeywordSet().define("UNIT", "Jy");
  }

  template <typename Value, typename Get>
  void scalars(const char* column, const Slicer& range, Get get) {
    Vector<Value> values(waiting.size());
    for (std::size_t i = 0; i < waiting.size(); ++i) values[i] = get(waiting[i]);
    ScalarColumn<Value>(ms, column).putColumnRange(range, values);
  }
  /// `get` gives the row's values, the first axis of `shape` fastest.
  template <typename Value, typename Get>
  void arrays(const char* column, const Slicer& range, IPosition shape, Get get) {
    shape.append(IPosition(1, static_cast<ssize_t>(waiting.size())));
    Array<Value> values(shape);
    Value* at = values.data();
    for (const MsRow& row : waiting) {
      const auto& from = get(row);
      at = std::copy(from.begin(), from.end(), at);
    }
    ArrayColumn<Value>(ms, column).putColumnRange(range, values);
  }

  void flush() {
    if (waiting.empty()) return;
    const Slicer range(IPosition(1, static_cast<ssize_t>(written)),
                       IPosition(1, static_cast<ssize_t>(waiting.size())));
    scalars<Double>("TIME", range, [](const MsRow& row) { return row.time; });
    scalars<Double>("TIME_CENTROID", range, [](const MsRow& row) { return row.time; });
    for (const char* column : {"INTERVAL", "EXPOSURE"})
      scalars<Double>(column, range, [this](const MsRow&) { return setup.intervalSeconds; });
    scalars<Int>("ANTENNA1", range, [](const MsRow& row) { return row.antenna1; });
    scalars<Int>("ANTENNA2", range, [](const MsRow& row) { return row.antenna2; });
    scalars<Int>("DATA_DESC_ID", range, [](const MsRow& row) { return row.window; });
    for (const char* column : {"FIELD_ID", "ARRAY_ID", "OBSERVATION_ID", "FEED1", "FEED2"})
      scalars<Int>(column, range, [](const MsRow&) { return 0; });
    for (const char* column : {"SCAN_NUMBER", "STATE_ID", "PROCESSOR_ID"})
      scalars<Int>(column, range, [](const MsRow&) { return -1; });
    scalars<Bool>("FLAG_ROW", range, [](const MsRow&) { return false; });
    arrays<Double>(
        "UVW", range, IPosition(1, 3), [](const MsRow& row) -> auto& { return row.uvw; });
    const auto products = static_cast<ssize_t>(setup.products.size());
    const auto channels = static_cast<ssize_t>(setup.windows[0].frequencies.size());
    for (const char* column : {"WEIGHT", "SIGMA"})
      arrays<Float>(column, range, IPosition(1, products), [column](const MsRow& row) {
        std::vector<float> values = row.weights;
        if (*column == 'S')
          for (float& value : values) value = 1 / std::sqrt(value);
        return values;
      });
    arrays<Bool>(
        "FLAG", range, IPosition(2, products, channels), [](const MsRow& row) -> auto& { return row.flags; });
    arrays<Complex>(
        "DATA", range, IPosition(2, products, channels), [](const MsRow& row) -> auto& { return row.data; });
    written += waiting.size();
    waiting.clear();
  }

  MsSetup setup;
  std::size_t rows;
  MeasurementSet ms;
  std::vector<MsRow> waiting;
  std::size_t written = 0;
};

MsWriter::MsWriter(const std::string& path, const MsSetup& setup, std::size_t rows)
    : tables_(std::make_unique<Tables>(path, setup, rows)) {}

MsWriter::~MsWriter() = default;

void MsWriter::add(const MsRow& row) {
  if (tables_->written + tables_->waiting.size() == tables_->rows)
    throw std::logic_error("more rows than announced");
  tables_->waiting.push_back(row);
  if (tables_->waiting.size() == kBlockRows) tables_->flush();
}

void MsWriter::finish() {
  tables_->flush();
  if (tables_->written != tables_->rows) throw std::logic_error("fewer rows than announced");
  tables_->ms.flush();
}

}  // namespace lumo::bench
