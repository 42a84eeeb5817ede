// SPDX-License-Identifier: GPL-3.0-or-later
#include "FuzzSupport.h"

#include <sanitizer/allocator_interface.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace lumo::fuzz {

namespace {

std::atomic<std::int64_t> liveBytes = 0;
std::atomic<std::int64_t> peakBytes = 0;
std::atomic<bool> watching = false;

void onTake(const volatile void* /*block*/, std::size_t size) {
  if (!watching.load(std::memory_order_relaxed)) return;
  const std::int64_t live = liveBytes += static_cast<std::int64_t>(size);
  std::int64_t peak = peakBytes.load();
  while (live > peak && !peakBytes.compare_exchange_weak(peak, live)) {
  }
}

void onGiveBack(const volatile void* block) {
  if (!watching.load(std::memory_order_relaxed) || block == nullptr) return;
  liveBytes -= static_cast<std::int64_t>(__sanitizer_get_allocated_size(const_cast<const void*>(block)));
}

std::string& workFolder() {
  static std::string folder;
  return folder;
}

void removeWorkFolder() {
  std::error_code ignored;
  std::filesystem::current_path("/", ignored);
  std::filesystem::remove_all(workFolder(), ignored);
}

std::atomic<double> sink = 0;

}  // namespace

void enterWorkFolder() {
  if (!workFolder().empty()) return;
  const char* const given = std::getenv("TMPDIR");
  std::string path =
      std::string(given != nullptr && *given != '\0' ? given : "/dev/shm") + "/lumo-fuzz-XXXXXX";
  require(::mkdtemp(path.data()) != nullptr, "no work folder can be made: " + path);
  workFolder() = path;
  require(::chdir(path.c_str()) == 0, "the work folder cannot be entered: " + path);
  std::atexit(removeWorkFolder);
}

void putFile(const std::string& name, const std::uint8_t* data, std::size_t size) {
  std::FILE* const file = std::fopen(name.c_str(), "wb");
  require(file != nullptr, "cannot create " + name);
  require(size == 0 || std::fwrite(data, 1, size, file) == size, "cannot write " + name);
  require(std::fclose(file) == 0, "cannot write " + name);
}

void putFile(const std::string& name, const std::string& content) {
  putFile(name, reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
}

void require(bool holds, const std::string& sentence) {
  if (holds) return;
  std::fprintf(stderr, "fuzz: %s\n", sentence.c_str());
  std::abort();
}

void use(double value) {
  sink.store(value, std::memory_order_relaxed);
}

void use(const std::string& text) {
  sink.store(static_cast<double>(text.size()), std::memory_order_relaxed);
}

MemoryWatch::MemoryWatch(std::size_t inputBytes) : inputBytes_(inputBytes) {
  static const int installed = __sanitizer_install_malloc_and_free_hooks(onTake, onGiveBack);
  require(installed > 0, "the heap cannot be watched");
  liveBytes = 0;
  peakBytes = 0;
  watching = true;
}

MemoryWatch::~MemoryWatch() {
  watching = false;
  static const bool tells = std::getenv("LUMO_FUZZ_MEMORY") != nullptr;
  const auto peak = static_cast<std::size_t>(peakBytes.load());
  if (tells) std::fprintf(stderr, "memory: %zu bytes for an input of %zu\n", peak, inputBytes_);
  require(peak <= kBaseBytes + kBytesPerByte * inputBytes_,
          "took " + std::to_string(peak) + " bytes of memory for an input of " + std::to_string(inputBytes_));
}

}  // namespace lumo::fuzz
