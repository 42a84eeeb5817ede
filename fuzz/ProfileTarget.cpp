// SPDX-License-Identifier: GPL-3.0-or-later
// The profile ZELMFS.ini: without a binary file beside it, so that only what it says counts.
#include <cstdio>

#include "FuzzSupport.h"
#include "ParameterFiles.h"
#include "SampleFiles.h"
#include "run/ParameterStore.h"

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  lumo::fuzz::enterWorkFolder();
  for (const char* const name : {"a.uvx", "b.uvx"}) lumo::fuzz::writeSampleUvx(name);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lumo::fuzz;
  std::remove(lumo::ParameterStore::kBinaryName);
  putFile(lumo::ParameterStore::kProfileName, data, size);
  const MemoryWatch watch(size);
  useParameterFiles();
  return 0;
}
