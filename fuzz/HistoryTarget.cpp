// SPDX-License-Identifier: GPL-3.0-or-later
// The history of a map, from which "lumo-cli run --from" repeats a run: one line of the input is one entry.
#include <algorithm>
#include <string_view>
#include <vector>

#include "FuzzSupport.h"
#include "SampleFiles.h"
#include "run/RunHistory.h"
#include "run/RunRecall.h"

namespace lumo::fuzz {
namespace {

constexpr std::size_t kMostInputs = 4;

std::vector<std::string> linesOf(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

void recall(std::string_view text) {
  RecalledRun run;
  const Status status = recallRun(linesOf(text), run);
  if (!status.ok()) return require(!status.message().empty(), "a refusal without a reason");
  require(!run.inputs.empty(), "a run without inputs");
  use(run.imaging.validate().text());
  if (run.inputs.size() > kMostInputs) return;
  UvxFileList list;
  for (std::size_t i = 0; i < run.inputs.size(); ++i)
    require(list.AddFile("file" + std::to_string(i) + ".uvx") != 0, "a sample file is refused");
  if (!recallSelections(run, list).ok()) return;
  std::vector<InputFileFacts> facts;
  std::vector<std::string> names;
  for (const RecalledInput& input : run.inputs) {
    facts.push_back(input.facts);
    names.push_back(input.name);
  }
  require(compareInputs(run, names, facts).ok(), "inputs differ from themselves");
  use(problemStatus(validateRunParameters(run.parameters, list.frequencies())).text());
  RecalledRun again;
  require(recallRun(runHistory(run.parameters, run.imaging, list.inputs(), facts), again).ok(),
          "a run that was recalled cannot be recalled from its own history");
}

}  // namespace
}  // namespace lumo::fuzz

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  using namespace lumo::fuzz;
  enterWorkFolder();
  for (std::size_t i = 0; i < kMostInputs; ++i) writeSampleUvx("file" + std::to_string(i) + ".uvx");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumo::fuzz;
  const MemoryWatch watch(size);
  recall({reinterpret_cast<const char*>(data), size});
  return 0;
}
