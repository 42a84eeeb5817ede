// SPDX-License-Identifier: GPL-3.0-or-later
// A map, of this program or another, as it is shown and measured; then written and read again.
#include <bit>
#include <cmath>

#include "FitsMutator.h"
#include "FuzzSupport.h"
#include "analysis/MapSelector.h"
#include "analysis/RegionFrame.h"
#include "analysis/ResultsPresenter.h"
#include "io/AMapFile.h"
#include "io/MapProduct.h"
#include "run/RunRecall.h"

namespace lumo::fuzz {
namespace {

constexpr char kName[] = "input.fits";
constexpr char kCopy[] = "copy.exm";
constexpr std::size_t kMostPixelsCopied = 1024;

// Pixels have their bits; what is no number stays none, whatever its bits.
void requireSame(const AMatrix<float>& a, const AMatrix<float>& b) {
  require(a.rows() == b.rows() && a.columns() == b.columns(), "a map changed its size");
  for (std::size_t i = 0; i < a.size(); ++i) {
    const float before = a.data()[i];
    const float after = b.data()[i];
    if (std::isnan(before) && std::isnan(after)) continue;
    require(std::bit_cast<std::uint32_t>(before) == std::bit_cast<std::uint32_t>(after), "a pixel changed");
  }
}

void measure(const LoadedMap& map) {
  MapSelector selector;
  require(selector.add(kName).ok(), "a map that was read is refused to measure");
  AreaList areas;
  areas.add(AreaShape::circle({0, 0}, (map.range.xMax - map.range.xMin) / 4));
  MapMeasurement measurement;
  require(selector.measure(areas, measurement).ok(), "a map that was read cannot be measured");
  use(measurement.sums(0, 0) + measurement.deviations(0, 0));
  use(mapDeviation(*map.matrix));
  const RegionFrame frame(map.header, map.range, map.matrix->rows(), map.matrix->columns());
  if (const auto sky = frame.skyOf(frame.ofPixel({1, 1}))) use(sky->x + sky->y);
  double freqMin = 0, freqMax = 0;
  require(headerFrequencies(kName, freqMin, freqMax).ok(), "a map that was read tells no frequencies");
  RecalledRun run;
  use(recallRun(map.header.history, run).text());
}

void writeAgain(const LoadedMap& map) {
  if (map.matrix->size() > kMostPixelsCopied) return;
  if (!writeMap(kCopy, map.header, map.range, *map.matrix).ok()) return;
  LoadedMap copy;
  const Status status = readMap(kCopy, copy);
  require(status.ok(), "a map that was written cannot be read: " + status.text());
  requireSame(*map.matrix, *copy.matrix);
}

}  // namespace
}  // namespace lumo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumo::fuzz;
  enterWorkFolder();
  putFile(kName, data, size);
  const MemoryWatch watch(size);
  lumo::LoadedMap map;
  const lumo::Status status = lumo::readMap(kName, map);
  if (!status.ok()) {
    require(!status.message().empty(), "a refusal without a reason");
    return 0;
  }
  measure(map);
  writeAgain(map);
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maximum,
                                               unsigned seed) {
  return lumo::fuzz::mutateFits(data, size, maximum, seed);
}
