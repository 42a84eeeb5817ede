// SPDX-License-Identifier: GPL-3.0-or-later
// A UVFITS file as it is imported; what comes out is read as a visibility file.
#include <cstdio>

#include "FitsMutator.h"
#include "FuzzSupport.h"
#include "convert/ImportKind.h"
#include "convert/Importer.h"
#include "io/AUVXFile.h"
#include "io/UvxStatistics.h"
#include "io/UvxSummary.h"

namespace lumo::fuzz {
namespace {

constexpr char kName[] = "input.uvf";

void importIt(const ImportOptions& options) {
  ImportReport report;
  const Status status = importVisibilities(kName, options, RunIndicators{}, report);
  require(status.ok() || !status.message().empty(), "a refusal without a reason");
  require(!status.ok() || !report.files.empty(), "an import that wrote no file");
  for (const std::string& line : report.warnings) use(line);
  for (const ImportedFile& written : report.files) {
    {
      AUVXFile file;
      require(file.Open(written.path, AFile::kRead) != 0,
              "an imported file is refused: " + file.status().text());
      require(file.groupCount() == written.records, "an imported file has another number of records");
      use(uvxSummary(written.path, file, countGroups(file)));
    }
    std::remove(written.path.c_str());
  }
}

}  // namespace
}  // namespace lumo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumo::fuzz;
  enterWorkFolder();
  putFile(kName, data, size);
  const MemoryWatch watch(size);
  use(static_cast<double>(lumo::importableAt(kName).kind));
  lumo::ImportOptions options;
  options.outFolder = "out";
  importIt(options);
  options.average = 2;
  importIt(options);
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maximum,
                                               unsigned seed) {
  return lumo::fuzz::mutateFits(data, size, maximum, seed);
}
