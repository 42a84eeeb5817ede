// SPDX-License-Identifier: GPL-3.0-or-later
// A DS9 region file on maps of several kinds: its areas are laid over the map, written and read again.
#include <array>

#include "FuzzSupport.h"
#include "analysis/AreaList.h"
#include "analysis/RegionFile.h"

namespace lumo::fuzz {
namespace {

constexpr char kName[] = "input.reg";
constexpr std::uint32_t kRows = 24;
constexpr std::uint32_t kColumns = 32;
constexpr std::size_t kMostAreas = 16;  // of a file that are laid over the map

struct Sky {
  AMapHeader header;
  TMinMax range;
};

std::array<Sky, 3> makeSkies() {
  std::array<Sky, 3> skies;
  for (Sky& sky : skies) {
    sky.range.xMin = -16;
    sky.range.xMax = 15;
    sky.range.yMin = -12;
    sky.range.yMax = 11;
    sky.header.frame = UvxFrame::kIcrs;
    sky.header.epoch = 2000.0;
    sky.header.rightAscension = 359.999;
    sky.header.declination = 41.5;
  }
  // B1950, pixels that are not square, turned by a quarter.
  skies[1].header.frame = UvxFrame::kFk4;
  skies[1].header.epoch = 1950.0;
  skies[1].header.pixelOrder = {false, true, false};
  skies[1].range.yMax = 34;
  // No place on the sky.
  skies[2].header = AMapHeader();
  return skies;
}

Status readWatched(const RegionFrame& frame, std::size_t size, std::vector<AreaShape>& shapes) {
  const MemoryWatch watch(size);
  return readRegions(kName, frame, shapes);
}

void readOn(const Sky& sky, std::size_t size) {
  const RegionFrame frame(sky.header, sky.range, kRows, kColumns);
  std::vector<AreaShape> shapes;
  const Status status = readWatched(frame, size, shapes);
  if (!status.ok()) {
    require(!status.message().empty() && shapes.empty(), "a refusal without a reason, or with areas");
    return;
  }
  const AreaList areas(shapes);
  ABitMatrix mask(kRows, kColumns);
  for (std::size_t k = 0; k < std::min(areas.areaCount(), kMostAreas); ++k) {
    areas.makeMask(k, mask, sky.range);
    std::size_t seen = 0;
    areas.visitPixels(k, kRows, kColumns, sky.range, [&](std::uint32_t row, std::uint32_t column) {
      require(mask(row, column) != 0, "a pixel of an area is not in its mask");
      ++seen;
    });
    use(static_cast<double>(seen));
  }
  for (const AreaShape& shape : shapes) use(shape.bounds().xMin);
  for (const RegionSystem system : {RegionSystem::kImage, RegionSystem::kSky}) {
    std::string text;
    if (!formatRegions(shapes, frame, system, text).ok()) continue;
    std::vector<AreaShape> back;
    if (parseRegions(text, frame, back).ok())
      require(back.size() == shapes.size(), "areas were lost when they were written");
  }
}

}  // namespace
}  // namespace lumo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumo::fuzz;
  enterWorkFolder();
  putFile(kName, data, size);
  static const std::array<Sky, 3> kSkies = makeSkies();
  for (const Sky& sky : kSkies) readOn(sky, size);
  return 0;
}
