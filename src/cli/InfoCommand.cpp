// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/InfoCommand.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "cli/BandTable.h"
#include "cli/Console.h"
#include "core/TextForm.h"
#include "io/AStokesMix.h"
#include "io/AUVXFile.h"
#include "io/AUVXHeader.h"
#include "io/AUVXSources.h"
#include "io/MapProduct.h"
#include "io/UvxStatistics.h"
#include "io/UvxSummary.h"

namespace lumo {

namespace {

/// Finite pixels of a map.
struct PixelSummary {
  explicit PixelSummary(const AMatrix<float>& matrix) {
    for (std::size_t i = 0; i < matrix.size(); ++i) {
      const float value = matrix.data()[i];
      if (!std::isfinite(value)) {
        ++blank;
        continue;
      }
      min = std::min(min, value);
      max = std::max(max, value);
    }
  }
  float min = INFINITY, max = -INFINITY;
  std::size_t blank = 0;
};

Json mapJson(const std::string& path, const LoadedMap& map) {
  const PixelSummary pixels(*map.matrix);
  const AMapHeader& h = map.header;
  return {{"file", path},
          {"type", "map"},
          {"columns", map.matrix->columns()},
          {"rows", map.matrix->rows()},
          {"unit", h.unit},
          {"source", h.sourceName},
          {"ra_deg", finiteOrNull(h.rightAscension)},
          {"dec_deg", finiteOrNull(h.declination)},
          {"epoch", finiteOrNull(h.epoch)},
          {"stokes", h.stokes},
          {"frequency_hz", finiteOrNull(h.frequency)},
          {"beam_arcsec", {finiteOrNull(h.beamMajor), finiteOrNull(h.beamMinor)}},
          {"beam_pa_deg", finiteOrNull(h.beamPa)},
          {"x_arcsec", {finiteOrNull(map.range.xMin), finiteOrNull(map.range.xMax)}},
          {"y_arcsec", {finiteOrNull(map.range.yMin), finiteOrNull(map.range.yMax)}},
          {"min", finiteOrNull(pixels.min)},
          {"max", finiteOrNull(pixels.max)},
          {"blank_pixels", pixels.blank},
          {"history", h.history}};
}

void printMap(const std::string& path, const LoadedMap& map) {
  const PixelSummary pixels(*map.matrix);
  const AMapHeader& h = map.header;
  std::printf("%s: map, %u columns x %u rows\n", path.c_str(), map.matrix->columns(), map.matrix->rows());
  std::printf("  source %s at RA %.9g Dec %.9g deg, epoch %g, Stokes %s\n", printable(h.sourceName).c_str(),
              h.rightAscension, h.declination, h.epoch, printable(h.stokes).c_str());
  std::printf("  frequency %.9g MHz, unit '%s'\n", h.frequency * 1e-6, printable(h.unit).c_str());
  std::printf("  beam %.6g x %.6g arcsec at %.4g deg\n", h.beamMajor, h.beamMinor, h.beamPa);
  std::printf("  x %.6g .. %.6g, y %.6g .. %.6g arcsec\n", map.range.xMin, map.range.xMax, map.range.yMin,
              map.range.yMax);
  if (pixels.min > pixels.max)
    std::printf("  no values, %zu blank pixels\n", pixels.blank);
  else
    std::printf("  values %.6g .. %.6g, %zu blank pixels\n", static_cast<double>(pixels.min),
                static_cast<double>(pixels.max), pixels.blank);
  for (const std::string& line : h.history) std::printf("  HISTORY %s\n", printable(line).c_str());
}

Json visibilityJson(const std::string& path, const AUVXFile& file, const UvxStatistics& statistics) {
  const AUVXHeader header(file);
  Json sources = Json::array();
  const AUVXSources list(file);
  for (std::int32_t i = 0; i < list.count(); ++i)
    sources.push_back({{"id", list[i].id},
                       {"name", list[i].name},
                       {"ra_deg", list[i].rightAscension},
                       {"dec_deg", list[i].declination},
                       {"epoch", list[i].epoch}});
  Json tables = Json::array();
  for (const AUVXFile::TableEntry& table : file.tables())
    tables.push_back({{"name", table.name}, {"rows", table.rows}, {"bytes", table.bytes}});
  return {{"file", path},
          {"type", "uvx"},
          {"groups", file.groupCount()},
          {"flagged_groups", statistics.flaggedRecords()},
          {"ifs", file.shape().ifs},
          {"channels", file.shape().channels},
          {"products", AUVXStokes(file).products()},
          {"unit", header.unit},
          {"u_seconds", {header.uMin, header.uMax}},
          {"v_seconds", {header.vMin, header.vMax}},
          {"sources", sources},
          {"tables", tables},
          {"bands", bandsJson(statistics.bands())}};
}

}  // namespace

void InfoCommand::declare(CLI::App& program) {
  CLI::App* const command = program.add_subcommand("info", "Describe UVX files and maps");
  command->add_option("files", files_, "UVX files or maps")->required();
  command->add_flag("--json", json_, "print one JSON object");
}

int InfoCommand::run() {
  int result = kExitDone;
  Json all = Json::array();
  for (const std::string& path : files_) {
    AUVXFile visibilities;
    LoadedMap map;
    if (visibilities.Open(path, AFile::kRead) != 0) {
      const UvxStatistics statistics = countGroups(visibilities);
      if (const Status intact = visibilities.intact(); !intact.ok()) {
        if (json_) all.push_back({{"file", path}, {"error", failureJson(intact)}});
        result = reportFailure(intact);
      } else if (json_) {
        all.push_back(visibilityJson(path, visibilities, statistics));
      } else {
        std::fputs(uvxSummary(path, visibilities, statistics).c_str(), stdout);
      }
    } else if (const Status asMap = readMap(path, map); asMap.ok()) {
      if (json_)
        all.push_back(mapJson(path, map));
      else
        printMap(path, map);
    } else {
      // A damaged UVX file is worth its own sentence; anything else is judged as a map.
      const bool uvx = path.ends_with(".uvx") || visibilities.status().code() == StatusCode::kNotFound;
      const Status& why = uvx ? visibilities.status() : asMap;
      if (json_) all.push_back({{"file", path}, {"error", failureJson(why)}});
      result = reportFailure(why);
    }
  }
  if (json_) printJson({{"files", all}});
  return result;
}

}  // namespace lumo
