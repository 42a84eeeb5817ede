// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>

namespace lumo {

/// Zeroed memory from the system, which becomes real page by page when it is touched; null when there is
/// none. With `large` it begins at a multiple of kLargePage and the system is asked for large pages.
[[nodiscard]] void* takePages(std::size_t bytes, bool large);
/// Gives all of it back.
void giveBackPages(void* block, std::size_t bytes);

constexpr std::size_t kLargePage = std::size_t{1} << 21U;

/// Bytes by which the next large array begins after the start of a page: another number of cache lines each
/// time. Caches find a line's place by its low address bits. Elements of the same index in arrays that all
/// begin with a page fall on the same places, of which there are few, and drive each other out.
[[nodiscard]] std::size_t nextStagger();
/// The same of an array that has begun so.
[[nodiscard]] std::size_t staggerOf(const void* array);

/// Allocator for large arrays of numbers that begin as zeros: blocks of kLeast bytes and more come zeroed
/// from the system, page by page when they are touched, so that a container of value-initialised elements
/// costs nothing before it is used, and what is never used never becomes memory. The system is asked for
/// large pages below blocks of kLarge bytes and more, which cost fewer page faults when they are filled and
/// fewer address translations when they are read across their rows; where it has none to give, blocks are as
/// any others.
///
/// For types that are zero where all their bytes are, as numbers and complex numbers.
template <typename T>
struct LargePages {
  static_assert(std::is_trivially_copyable_v<T>);
  using value_type = T;

  LargePages() = default;
  template <typename U>
  explicit LargePages(const LargePages<U>& /*other*/) {}

  static constexpr std::size_t kLarge = kLargePage;
  static constexpr std::size_t kLeast = std::size_t{1} << 18U;

  /// Throws std::bad_alloc.
  [[nodiscard]] T* allocate(std::size_t count) {
    if (count > static_cast<std::size_t>(-1) / 2 / sizeof(T)) throw std::bad_alloc();
    const std::size_t bytes = count * sizeof(T);
    const bool pages = bytes >= kLeast;
    const std::size_t before = pages ? nextStagger() : 0;
    void* const block = pages ? takePages(before + bytes, bytes >= kLarge) : std::calloc(count, sizeof(T));
    if (block == nullptr) throw std::bad_alloc();
    return reinterpret_cast<T*>(static_cast<std::byte*>(block) + before);
  }

  void deallocate(T* block, std::size_t count) noexcept {
    if (count * sizeof(T) < kLeast) return std::free(block);
    const std::size_t before = staggerOf(block);
    giveBackPages(reinterpret_cast<std::byte*>(block) - before, before + count * sizeof(T));
  }

  /// Of a new element: it is zero already.
  template <typename U>
  void construct(U* /*place*/) {}
  template <typename U, typename First, typename... More>
  void construct(U* place, First&& first, More&&... more) {
    ::new (static_cast<void*>(place)) U(std::forward<First>(first), std::forward<More>(more)...);
  }

  friend bool operator==(const LargePages&, const LargePages&) { return true; }
};

}  // namespace lumo
