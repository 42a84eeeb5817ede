// SPDX-License-Identifier: GPL-3.0-or-later
// A visibility file as "lumo-cli info", the file list and the check before a run read it.
#include <algorithm>
#include <memory>
#include <vector>

#include "FuzzSupport.h"
#include "UvxChecksums.h"
#include "io/AStokesMix.h"
#include "io/AUVXFile.h"
#include "io/AUVXFqTbl.h"
#include "io/AUVXHeader.h"
#include "io/AUVXPosIndex.h"
#include "io/AUVXRead_FqS.h"
#include "io/AUVXSources.h"
#include "io/UvxStatistics.h"
#include "io/UvxSummary.h"
#include "run/PreFlight.h"
#include "run/RunChecks.h"
#include "run/UvxFileList.h"

namespace lumo::fuzz {
namespace {

constexpr char kName[] = "input.uvx";
// Every pair of source and selection reads the whole file: a few tell as much as all.
constexpr std::int32_t kMostSources = 3;
constexpr int kMostSelections = 3;

void readSelection(AUVXFile& file, const AUVXFqTbl& table, const AStokesMix* mix, std::int32_t source,
                   int selection) {
  AUVXRead_FqS reader(&file, source, table.GetFreqSelID(selection), nullptr);
  AUVXGroup group;
  AUVXVisibility visibility(file);
  int flag = 0;
  double sum = 0;
  while (reader.GetUVGVis(group, visibility, flag) != 0) {
    sum += group.u() + group.v() + flag;
    if (mix == nullptr) continue;
    for (int i = 0; i < table.GetIFs(); ++i)
      for (int c = 0; c < table.GetChannels(); ++c)
        sum += mix->GetVisible(visibility.values().data() + visibility.index(i, c, 0), 0).Weight();
  }
  use(sum);
}

void readAll(AUVXFile& file) {
  const AUVXSources sources(file);
  const AUVXFqTbl table(file, sources.count() > 0 ? sources[0].id : 0);
  const std::unique_ptr<const AArray<AStokesMix>> mixes(toListMix(AUVXStokes(file)));
  const AStokesMix* const mix = mixes->empty() ? nullptr : &(*mixes)[0];
  use(uvxSummary(kName, file, countGroups(file)));
  for (std::int32_t s = 0; s < std::min(sources.count(), kMostSources); ++s) {
    require(sources.ForID(sources[s].id) != nullptr, "a source is not found under its own ID");
    AUVXPosIndex index(file, sources[s].id, nullptr);
    std::uint64_t position = 0;
    while (index.GetIndex(position) != 0)
      require(file.SeekUVGroup(position) != 0, "the index names a group that is not there");
    for (int i = 0; i < std::min(table.GetFreqSels(), kMostSelections); ++i)
      readSelection(file, table, mix, sources[s].id, i);
  }
  for (const AUVXFile::TableEntry& entry : file.tables()) {
    const auto bytes = file.GetTable(entry.name);
    require(bytes.has_value(), "a table of the list is not there");
    double sum = 0;
    for (const std::uint8_t byte : *bytes) sum += byte;
    use(sum);
  }
}

void prepareRun() {
  UvxFileList list;
  if (list.AddFile(kName) == 0) return use(list.status().text());
  use(list.frequencies().minText() + list.frequencies().maxText() + list.frequencies().numberText());
  for (std::int64_t row = 0; row < std::min<std::int64_t>(list.idTable().rowCount(), 8); ++row)
    use(list.idTable().rowText(row));
  RunParameters parameters;
  parameters.folder = "";
  parameters.referenceMhz = list.frequencies().centerMhz();
  const VisibilityInputs inputs = inStep(list.inputs());
  use(checkInputs(parameters, inputs, list.imaging()).text());
  AUVXFile file;
  if (file.Open(kName, AFile::kRead) == 0 || list.imaging().Setup(file, inputs.sources[0]) == 0) return;
  PreFlight preFlight;
  std::vector<InputFileFacts> facts;
  if (!inspectRun(parameters, inputs, list.imaging(), {}, RunIndicators{}, preFlight, facts).ok()) return;
  for (const std::string& line : preFlightLines(preFlight)) use(line);
  for (const std::string& line : preFlightWarnings(preFlight, parameters.order)) use(line);
}

}  // namespace
}  // namespace lumo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumo::fuzz;
  enterWorkFolder();
  putFile(kName, data, size);
  const MemoryWatch watch(size);
  lumo::AUVXFile file;
  if (file.Open(kName, lumo::AFile::kRead) == 0) {
    require(!file.status().message().empty(), "a refusal without a reason");
    return 0;
  }
  readAll(file);
  file.Close();
  prepareRun();
  return 0;
}

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maximum);

// Without this nearly every change would end at a checksum. Some keep the wrong one.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maximum,
                                               unsigned seed) {
  size = LLVMFuzzerMutate(data, size, maximum);
  if (seed % 16 != 0) lumo::fuzz::mendChecksums(data, size);
  return size;
}
