// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <string>

#include "analysis/AreaList.h"
#include "core/Status.h"
#include "io/MapProduct.h"

namespace lumo {

enum class OutputForm { kTable, kCsv, kJson };

/// The options that the commands which measure areas share.
struct AreaOptions {
  std::string regions;  ///< path of a region file; empty: the whole map is the one area
  std::string format = "table";

  /// Adds --regions and --format.
  void declare(CLI::App& command);
  /// Adds --regions alone.
  void declareRegions(CLI::App& command);
  [[nodiscard]] OutputForm form() const;
  /// The areas of the region file on a map. Fails when the file cannot be read or holds no region.
  [[nodiscard]] Status areasOn(const AMapHeader& header, const TMinMax& range, const AMatrix<float>& map,
                               AreaList& areas) const;
};

/// Why area `k` (from 0) cannot be measured on a map, "" if it can: it covers no pixel of the map, or only
/// pixels that are zero or not finite.
[[nodiscard]] std::string emptyAreaText(const AreaList& areas, std::size_t k, const AMatrix<float>& map,
                                        const TMinMax& range);
/// "2", or "2 core" for an area with a name.
[[nodiscard]] std::string areaLabel(const AreaList& areas, std::size_t k);

/// Units of what is summed over an area of a map, in words for a heading and for a column name of a script.
struct AreaUnits {
  /// @param mapUnit  that of the map's values.
  explicit AreaUnits(const std::string& mapUnit);

  std::string flux;             ///< " [Jy]" for "Jy/Beam"; empty when the map's unit is not one per beam
  std::string deviation;        ///< " [Jy/Beam]", the map's own; empty without one
  std::string fluxColumn;       ///< "_jy"
  std::string deviationColumn;  ///< "_jy_per_beam"
};

}  // namespace lumo
