// SPDX-License-Identifier: GPL-3.0-or-later
// Writes the settings of the desktop program over and over, for tools/reliability.py to kill.
//
//   lumo_store_writer FOLDER WHICH TIMES: WHICH is "a", "b" or "ab" (in turn); TIMES 0 is for ever.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "io/UvxWriter.h"
#include "run/ParameterStore.h"

namespace {

using namespace lumo;

/// A file with `selections` frequency selections, to be listed.
bool writeListed(const std::string& path, int selections) {
  UvxContent content;
  content.shape = {1, 1, 1};
  content.unit = "JY";
  content.sources.resize(1);
  content.sources[0].name = "SRC";
  for (int i = 0; i < selections; ++i) content.selections.push_back({i + 1, {{1.4e9 + i * 1e6, 1e6}}});
  content.products = {1};
  UvxWriter writer;
  if (!writer.begin(path, content).ok()) return false;
  for (int i = 0; i < selections; ++i) {
    UvxRecord record;
    record.source = static_cast<std::int16_t>(content.sources[0].id);
    record.freqSel = static_cast<std::int8_t>(i + 1);
    record.u = 1e-6F * static_cast<float>(i + 1);
    record.v = -1e-6F;
    const AUVXComplex value(1.0F, 0.0F, 1.0);
    if (!writer.append(record, {&value, 1}).ok()) return false;
  }
  return writer.finish().ok();
}

/// Saves one of two settings, which differ in every number and in the files listed.
Status save(const std::string& folder, const std::string& listed, bool second) {
  UvxFileList files;
  const std::vector<std::string> names{listed};
  if (const auto failures = files.AddFiles(names); !failures.empty()) return failures.front();
  files.imaging().halfSizeX = files.imaging().halfSizeY = second ? 512 : 256;
  RunParameters parameters;
  parameters.iterations = second ? 222222 : 1111;
  parameters.gain = second ? 0.22 : 0.1111;
  parameters.referenceMhz = second ? 2222.5 : 1111.25;
  parameters.prefix = second ? "SECOND" : "FIRST";
  parameters.folder = second ? "/second/" : std::string(300, 'f') + "/";
  ParameterStore store(folder);
  return store.SaveParameters(parameters, files) != 0 ? Status() : store.status();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const std::string folder = std::string(argv[1]) + "/";
  const bool first = std::strchr(argv[2], 'a') != nullptr;
  const bool second = std::strchr(argv[2], 'b') != nullptr;
  const long times = std::atol(argv[3]);
  const std::string listed = folder + "listed";
  if (!writeListed(listed + "1.uvx", 3) || !writeListed(listed + "2.uvx", 100)) return 2;
  std::puts("ready");
  std::fflush(stdout);
  for (long i = 0; times == 0 || i < times; ++i) {
    for (const bool b : {false, true}) {
      if (!(b ? second : first)) continue;
      if (const Status status = save(folder, listed + (b ? "2.uvx" : "1.uvx"), b); !status.ok()) {
        std::fprintf(stderr, "%s\n", status.text().c_str());
        return 1;
      }
    }
  }
  return 0;
}
