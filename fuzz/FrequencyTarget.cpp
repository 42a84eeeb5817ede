// SPDX-License-Identifier: GPL-3.0-or-later
// The frequency file of a run, beside its maps, as the measurement of areas reads it.
#include <cmath>

#include "FuzzSupport.h"
#include "SampleFiles.h"
#include "analysis/ResultsPresenter.h"
#include "io/ProductNames.h"

namespace {
constexpr char kPrefix[] = "M";
}

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  using namespace lumo::fuzz;
  enterWorkFolder();
  for (const int term : {0, 1}) writeSampleMap(lumo::cleanName("", kPrefix, term), 4, 4);
  writeSampleMap(lumo::indexName("", kPrefix), 4, 4);
  writeSampleMap(lumo::residualName("", kPrefix), 4, 4);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumo::fuzz;
  putFile(lumo::freqRangeName("", kPrefix), data, size);
  const MemoryWatch watch(size);
  lumo::ResultsPresenter results("", kPrefix, 1e9, 2e9);
  require(results.load().ok(), "the maps are refused for the sake of their frequency file");
  require(results.freqMin() > 0 && results.freqMin() <= results.freqMax() && std::isfinite(results.freqMax()),
          "a range that is none");
  require(results.rangeStatus().ok() || (results.freqMin() == 1e9 && results.freqMax() == 2e9),
          "a damaged frequency file counts");
  lumo::AreaSpectra spectra;
  require(results.measure(lumo::AreaSettings(), spectra).ok(), "the maps cannot be measured");
  use(lumo::spectraTable(spectra).cellText(1, 1));
  return 0;
}
