// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/LargePages.h"

#include <atomic>
#include <cstring>

#ifdef __has_feature
#define LUMO_HAS_FEATURE(feature) __has_feature(feature)
#else
#define LUMO_HAS_FEATURE(feature) 0
#endif

// The address sanitizer sees only what comes from the C library.
#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__) && !LUMO_HAS_FEATURE(address_sanitizer)
#define LUMO_PAGES 1
#include <sys/mman.h>
#include <unistd.h>
#else
#define LUMO_PAGES 0
#endif

namespace lumo {

#if LUMO_PAGES

namespace {

/// All blocks begin at a multiple of it.
constexpr std::size_t kSmallPage = 4096;

}  // namespace

void* takePages(std::size_t bytes, bool large) {
  const std::size_t spare = large ? kLargePage : 0;
  if (bytes > static_cast<std::size_t>(-1) - 2 * kLargePage) return nullptr;
  void* const mapped =
      ::mmap(nullptr, bytes + spare, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) return nullptr;
  if (!large) return mapped;
  // What lies before the first large page and behind the block is given back.
  auto* const begin = static_cast<std::byte*>(mapped);
  const std::size_t before = (kLargePage - reinterpret_cast<std::size_t>(begin) % kLargePage) % kLargePage;
  if (before != 0) ::munmap(begin, before);
  std::byte* const block = begin + before;
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  ::munmap(block + (bytes + page - 1) / page * page, spare - before);
  // The pages that the block fills: a page that it shares would grow the process for nothing.
  static_cast<void>(::madvise(block, bytes / kLargePage * kLargePage, MADV_HUGEPAGE));
  return block;
}

void giveBackPages(void* block, std::size_t bytes) {
  ::munmap(block, bytes);
}

std::size_t nextStagger() {
  // An odd step, so that all lines of a page have their turn; five lines, so that those which are read with
  // the first few of an array do not meet those of the next.
  constexpr std::size_t kLine = 64;
  constexpr std::size_t kStep = 5 * kLine;
  static std::atomic<std::size_t> arrays = 0;
  return arrays++ * kStep % kSmallPage;
}

std::size_t staggerOf(const void* array) {
  return reinterpret_cast<std::size_t>(array) % kSmallPage;
}

#else

void* takePages(std::size_t bytes, bool large) {
  if (!large) return std::calloc(bytes, 1);
  void* const block = std::aligned_alloc(kLargePage, (bytes + kLargePage - 1) / kLargePage * kLargePage);
  if (block != nullptr) std::memset(block, 0, bytes);
  return block;
}

void giveBackPages(void* block, std::size_t /*bytes*/) {
  std::free(block);
}

std::size_t nextStagger() {
  return 0;
}

std::size_t staggerOf(const void* /*array*/) {
  return 0;
}

#endif

}  // namespace lumo
