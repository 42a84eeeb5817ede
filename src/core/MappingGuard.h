// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

namespace lumo {

/// Keeps the program alive when it reads bytes of a mapped file that are no longer there, because another
/// program cut the file short or its disk failed: such a read then sees zeros, and lost() tells of it.
///
/// The system reports these reads as a signal (SIGBUS) and in no other way, so the first guard sets a handler
/// for the whole process. It does nothing about addresses outside guarded mappings, which end the program as
/// before. Reading costs nothing as long as all goes well.
class MappingGuard {
 public:
  MappingGuard() = default;
  MappingGuard(const MappingGuard&) = delete;
  MappingGuard& operator=(const MappingGuard&) = delete;
  ~MappingGuard() { forget(); }

  /// Guards the mapping of `size` bytes at `begin`, instead of another.
  void watch(const void* begin, std::size_t size);
  /// Before the mapping is taken down.
  void forget();
  /// Whether a read since watch() met bytes that were not there.
  [[nodiscard]] bool lost() const;

 private:
  struct Watched;
  struct Registry;
  static Registry& registry();

  Watched* watched_ = nullptr;
};

}  // namespace lumo
