// SPDX-License-Identifier: GPL-3.0-or-later
// A list of antennas as the simulator reads it.
#include <cmath>

#include "FuzzSupport.h"
#include "convert/AntennaArray.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumo::fuzz;
  constexpr char kName[] = "input.txt";
  enterWorkFolder();
  putFile(kName, data, size);
  const MemoryWatch watch(size);
  lumo::AntennaArray array;
  const lumo::Status status = array.select(kName);
  if (!status.ok()) {
    require(!status.message().empty(), "a refusal without a reason");
    return 0;
  }
  require(array.antennas().size() >= 2, "an array of fewer than two antennas");
  require(std::isfinite(array.longitude()), "an array without a meridian");
  for (std::size_t i = 0; i < array.antennas().size(); ++i) use(array.position(i).x);
  return 0;
}
