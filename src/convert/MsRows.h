// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "convert/ImportReport.h"
#include "convert/MsFile.h"
#include "convert/MsSetups.h"
#include "io/AUVXComplex.h"
#include "io/UvxTables.h"

namespace lumo {

/// Turns rows of a Measurement Set into groups and counts what was wrong with them.
///
/// For each row: read into data(), then record(), then visibilities().
class MsRows {
 public:
  MsRows(const MsTables& tables, std::string column) : tables_(tables), column_(std::move(column)) {}

  [[nodiscard]] MsRowData& data() { return data_; }
  /// Counts a row without visibilities.
  void countEmpty() { ++empty_; }
  [[nodiscard]] UvxRecord record(const MsRowKey& key, const MsRowPlace& place, std::int8_t selection);
  /// The row's visibilities, [IF][channel][product] of the set-up's shape; valid until the next call.
  [[nodiscard]] std::span<const AUVXComplex> visibilities(const MsSetup& setup);

  /// Adds a sentence for each kind of damage that came.
  void describe(ImportReport& report) const;

 private:
  [[nodiscard]] AUVXComplex visibility(std::size_t place);
  void countWeights();

  const MsTables& tables_;
  std::string column_;
  MsRowData data_;
  std::vector<AUVXComplex> channels_;
  std::vector<AUVXComplex> averages_;
  std::uint64_t usable_ = 0;
  std::uint64_t empty_ = 0;
  std::uint64_t badValues_ = 0;
  std::uint64_t badWeights_ = 0;
  std::uint64_t badPlaces_ = 0;
  std::uint64_t zeroPlaces_ = 0;
  std::uint64_t badTimes_ = 0;
  std::uint64_t badAntennas_ = 0;
  std::uint64_t unweighted_ = 0;
  std::uint64_t spectrumShapes_ = 0;
};

}  // namespace lumo
