// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/AreaOptions.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "analysis/RegionFile.h"
#include "core/TextForm.h"

namespace lumo {

namespace {

// Lower case, with "_per_" for the stroke and "_" for what a column name cannot hold.
std::string columnText(const std::string& unit) {
  std::string text;
  for (const char c : unit) {
    if (c == '/')
      text += "_per_";
    else
      text += std::isalnum(static_cast<unsigned char>(c)) != 0
                  ? static_cast<char>(std::tolower(static_cast<unsigned char>(c)))
                  : '_';
  }
  return text.empty() ? text : "_" + text;
}

}  // namespace

void AreaOptions::declare(CLI::App& command) {
  declareRegions(command);
  command.add_option("--format", format, "of the output")
      ->check(CLI::IsMember({"table", "csv", "json"}))
      ->capture_default_str();
}

void AreaOptions::declareRegions(CLI::App& command) {
  command.add_option("--regions", regions, "DS9 region file with the areas; default the whole map");
}

OutputForm AreaOptions::form() const {
  return format == "json" ? OutputForm::kJson : format == "csv" ? OutputForm::kCsv : OutputForm::kTable;
}

Status AreaOptions::areasOn(const AMapHeader& header, const TMinMax& range, const AMatrix<float>& map,
                            AreaList& areas) const {
  areas.clear();
  if (regions.empty()) return {};
  std::vector<AreaShape> shapes;
  const RegionFrame frame(header, range, map.rows(), map.columns());
  if (Status status = readRegions(regions, frame, shapes); !status.ok()) return status;
  if (shapes.empty()) return {StatusCode::kNoData, "holds no region", regions};
  areas = AreaList(std::move(shapes));
  return {};
}

std::string emptyAreaText(const AreaList& areas, std::size_t k, const AMatrix<float>& map,
                          const TMinMax& range) {
  ABitMatrix mask(map.rows(), map.columns());
  areas.makeMask(k, mask, range);
  const auto label = "area " + areaLabel(areas, k);
  bool covers = false;
  for (std::uint32_t row = 0; row < map.rows(); ++row) {
    for (std::uint32_t column = 0; column < map.columns(); ++column) {
      if (mask(row, column) == 0) continue;
      const float value = map(row, column);
      if (std::isfinite(value) && value != 0.0F) return {};
      covers = true;
    }
  }
  return label + (covers ? " holds no pixel with a value (all are zero or blank)"
                         : " covers no pixel of the map: it lies outside, or between the pixel centres");
}

std::string areaLabel(const AreaList& areas, std::size_t k) {
  const std::string number = toStr(static_cast<std::int64_t>(k) + 1);
  if (k >= areas.shapes().size() || areas.shapes()[k].name.empty()) return number;
  return number + " " + areas.shapes()[k].name;
}

AreaUnits::AreaUnits(const std::string& mapUnit) {
  constexpr std::size_t kPerBeam = 5;
  std::string lower = mapUnit;
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const std::string summed = lower.ends_with("/beam") ? mapUnit.substr(0, mapUnit.size() - kPerBeam) : "";
  if (!summed.empty()) flux = " [" + summed + "]";
  if (!mapUnit.empty()) deviation = " [" + mapUnit + "]";
  fluxColumn = columnText(summed);
  deviationColumn = columnText(mapUnit);
}

}  // namespace lumo
