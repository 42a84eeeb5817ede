// SPDX-License-Identifier: GPL-3.0-or-later
// A sky model as the simulator reads it.
#include "FuzzSupport.h"
#include "convert/SkyModel.h"

namespace lumo::fuzz {
namespace {

constexpr char kName[] = "input.json";

void readModel() {
  SkyModel sky;
  const Status status = sky.load(kName);
  if (!status.ok()) return require(!status.message().empty(), "a refusal without a reason");
  require(!sky.components().empty(), "a model without components");
  require(sky.referenceFrequency() > 0, "a model without a reference frequency");
  for (const double frequency : {1e6, 5e9, 1e12}) {
    const auto value = sky.visibility(1e8, -3e5, frequency);
    use(value.real() + value.imag());
    use(sky.components()[0].indexAt(frequency, sky.referenceFrequency()));
  }
}

}  // namespace
}  // namespace lumo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumo::fuzz;
  enterWorkFolder();
  putFile(kName, data, size);
  const MemoryWatch watch(size);
  readModel();
  return 0;
}
