// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <complex>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "convert/MsTables.h"
#include "core/Status.h"

namespace lumo {

/// What a row of the main table belongs to.
struct MsRowKey {
  std::int32_t field = 0;
  std::int32_t description = 0;  ///< DATA_DESC_ID
  std::int32_t antenna1 = 0;     ///< row numbers of the antenna table, from 0
  std::int32_t antenna2 = 0;
};

/// When and where a row was measured.
struct MsRowPlace {
  double time = 0;             ///< seconds since modified Julian date 0
  double u = 0, v = 0, w = 0;  ///< metres
  bool flagged = false;        ///< FLAG_ROW
};

/// The visibilities of a row, [channel][correlation].
struct MsRowData {
  enum class Weights {
    kSpectrum,       ///< from WEIGHT_SPECTRUM
    kRow,            ///< from WEIGHT, the same for every channel
    kSpectrumShape,  ///< from WEIGHT, since WEIGHT_SPECTRUM has another shape
    kNone,           ///< neither is there: 1
  };
  std::vector<std::complex<float>> values;
  std::vector<float> weights;
  std::vector<std::uint8_t> flags;  ///< FLAG, 1 = not to be used
  Weights source = Weights::kNone;
};

/// A Measurement Set, open for reading through casacore.
///
/// Opened without locks, so that no byte of it changes and a set on a read-only medium opens too. Tiled
/// columns are read through casacore's caches, not mapped: memory holds the tiles that a row of each column
/// crosses, however large the set is, and a set that was cut short is a failed read. No exception of casacore
/// leaves the class. Nothing is allocated from a size before that was compared with what is expected.
class MsFile {
 public:
  MsFile();
  MsFile(const MsFile&) = delete;
  MsFile& operator=(const MsFile&) = delete;
  ~MsFile();

  /// Opens the set and its subtables. `column` as in ImportOptions.
  [[nodiscard]] Status open(const std::string& path, const std::string& column);

  [[nodiscard]] const MsTables& tables() const { return tables_; }
  [[nodiscard]] std::uint64_t rows() const { return rows_; }
  /// The column with the visibilities, and all that could have been chosen.
  [[nodiscard]] const std::string& column() const { return column_; }
  [[nodiscard]] const std::vector<std::string>& columns() const { return columns_; }
  /// Unit that the column states, "" when it states none.
  [[nodiscard]] const std::string& unit() const { return unit_; }
  /// Reference of the column TIME ("UTC").
  [[nodiscard]] const std::string& timeScale() const { return timeScale_; }

  /// Reads rows first..first + keys.size() − 1.
  [[nodiscard]] Status readKeys(std::uint64_t first, std::vector<MsRowKey>& keys) const;
  [[nodiscard]] Status readPlaces(std::uint64_t first, std::vector<MsRowPlace>& places) const;
  /// Reads a row of `channels` × `correlations`; fails when its cells have other shapes. `present` becomes
  /// false when the row has no visibilities, which is no failure.
  [[nodiscard]] Status readData(std::uint64_t row, std::uint32_t channels, std::uint32_t correlations,
                                MsRowData& data, bool& present) const;

 private:
  struct Columns;

  [[nodiscard]] Status chooseColumn(const std::string& wanted);

  std::unique_ptr<Columns> main_;
  MsTables tables_;
  std::uint64_t rows_ = 0;
  std::string column_;
  std::vector<std::string> columns_;
  std::string unit_;
  std::string timeScale_;
};

}  // namespace lumo
