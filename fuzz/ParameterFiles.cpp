// SPDX-License-Identifier: GPL-3.0-or-later
#include "ParameterFiles.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "FuzzSupport.h"
#include "run/ParameterStore.h"
#include "run/RunChecks.h"
#include "run/RunParameterTexts.h"

namespace lumo::fuzz {

namespace {

constexpr std::int64_t kMostRows = 64;

bool same(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) ||
         (std::isnan(a) && std::isnan(b));
}

void requireSame(const RunParameters& a, const RunParameters& b) {
  require(a.iterations == b.iterations && a.order == b.order && a.prefix == b.prefix &&
              a.nonNegative == b.nonNegative && a.variableGain == b.variableGain && a.folder == b.folder,
          "a parameter was not saved");
  require(same(a.indexThreshold, b.indexThreshold) && same(a.indexMin, b.indexMin) &&
              same(a.indexMax, b.indexMax) && same(a.gain, b.gain) && same(a.referenceMhz, b.referenceMhz),
          "a number was not saved to its last bit");
}

void lookAt(UvxFileList& files) {
  const FrequencyIdTable& table = files.idTable();
  for (std::int64_t row = 0; row < std::min(table.rowCount(), kMostRows); ++row) {
    use(table.rowText(row));
    use(table.checkImage(row));
  }
  const std::int64_t last = table.rowCount() - 1;
  if (files.changeCell(last) != 0) files.changeCell(last);
  files.changeCell(last + 1);
  use(files.frequencies().minText() + files.frequencies().maxText() + files.frequencies().numberText());
  use(largestFrequencyOffset(files.inputs(), files.frequencies()));
  use(inStep(files.inputs()).count());
  use(files.imaging().validate().text());
}

}  // namespace

void useParameterFiles() {
  RunParameters parameters;
  UvxFileList files;
  {
    ParameterStore store("");
    store.LoadParameters(parameters, files);
    use(store.status().text());
  }
  lookAt(files);
  const RunParameterTexts texts = textsOf(parameters);
  RunParameters checked = parameters;
  use(static_cast<double>(takeChecked(texts, files.frequencies(), checked).size()));
  use(problemStatus(validateRunParameters(parameters, files.frequencies())).text());

  ParameterStore store("");
  RunParameters saved = parameters;
  if (store.SaveParameters(saved, files) == 0) return use(store.status().text());
  RunParameters back;
  UvxFileList filesBack;
  ParameterStore reader("");
  reader.LoadParameters(back, filesBack);
  require(reader.status().ok(), "files that were saved cannot be read: " + reader.status().text());
  requireSame(parameters, back);
  require(files.inputs().names.count() == filesBack.inputs().names.count(),
          "a file of the list was not saved");
  require(files.inputs().selections.count() == filesBack.inputs().selections.count(), "a mask was not saved");
  for (std::int32_t i = 0; i < files.inputs().selections.count(); ++i)
    require(files.inputs().selections[i] == filesBack.inputs().selections[i], "a mask changed");
  while (filesBack.hasFiles()) {
    filesBack.select(0);
    filesBack.DeleteFile();
  }
}

}  // namespace lumo::fuzz
