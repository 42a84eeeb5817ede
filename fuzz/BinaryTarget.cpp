// SPDX-License-Identifier: GPL-3.0-or-later
// The binary parameter file ZELMFS.bin, beside a profile of two files with three selections each.
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
  putFile(lumo::ParameterStore::kProfileName, "[ZELMFS-FILES]\nNUVX=2\nUVX0=a.uvx\nUVX1=b.uvx\n");
  putFile(lumo::ParameterStore::kBinaryName, data, size);
  const MemoryWatch watch(size);
  useParameterFiles();
  return 0;
}
