// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace lumo {

/// Allocator that asks the system for large pages below blocks of kLeast bytes and more, which cost fewer
/// page faults when they are filled and fewer address translations when they are read across their rows.
/// Where the system has none to give, blocks are as any others.
template <typename T>
struct LargePages {
  using value_type = T;

  LargePages() = default;
  template <typename U>
  explicit LargePages(const LargePages<U>& /*other*/) {}

  static constexpr std::size_t kPage = std::size_t{1} << 21U;
  static constexpr std::size_t kLeast = 2 * kPage;

  /// Throws std::bad_alloc.
  [[nodiscard]] T* allocate(std::size_t count) {
    if (count > static_cast<std::size_t>(-1) / 2 / sizeof(T)) throw std::bad_alloc();
    const std::size_t bytes = count * sizeof(T);
    const bool large = bytes >= kLeast;
    void* const block =
        large ? std::aligned_alloc(kPage, (bytes + kPage - 1) / kPage * kPage) : std::malloc(bytes);
    if (block == nullptr) throw std::bad_alloc();
#ifdef __linux__
    // The pages that the block fills: a page that it shares would grow the process for nothing.
    if (large) static_cast<void>(::madvise(block, bytes / kPage * kPage, MADV_HUGEPAGE));
#endif
    return static_cast<T*>(block);
  }

  void deallocate(T* block, std::size_t /*count*/) noexcept {
    std::free(block);
  }

  friend bool operator==(const LargePages&, const LargePages&) {
    return true;
  }
};

}  // namespace lumo
