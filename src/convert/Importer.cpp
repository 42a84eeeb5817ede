// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/Importer.h"

#include <filesystem>
#include <system_error>

#include "convert/MsImporter.h"
#include "convert/UvfitsImporter.h"
#include "core/Leftovers.h"

namespace lumo {

Status importVisibilities(const std::string& input, const ImportOptions& options,
                          const RunIndicators& indicators, ImportReport& report) {
  namespace fs = std::filesystem;
  report = {};
  report.input = input;
  std::error_code error;
  removeLeftovers(options.outFolder);
  if (!fs::is_directory(input, error)) {
    if (!options.column.empty())
      return {StatusCode::kInvalidValue,
              "a column (" + options.column + ") can be chosen in Measurement Sets only, and this is none",
              input};
    return importUvfits(input, options, indicators, report);
  }
  if (!fs::exists(fs::path(input) / "table.dat", error))
    return {StatusCode::kUnsupported, "is a folder, but no Measurement Set: there is no file table.dat in it",
            input};
  return importMeasurementSet(input, options, indicators, report);
}

}  // namespace lumo
