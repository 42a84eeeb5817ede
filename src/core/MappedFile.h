// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "core/MappingGuard.h"
#include "core/Status.h"

namespace lumo {

/// A whole file mapped read-only into memory.
///
/// Reading through data() costs no copy, and pages that were read can be given back with release(), so that a
/// sequential pass over a file larger than memory keeps only a small window of it resident.
///
/// A file that another program cuts short, or that its disk no longer gives, reads as zeros from there on; so
/// whoever takes bytes from it asks check() before relying on them.
class MappedFile {
 public:
  MappedFile() = default;
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;
  ~MappedFile() { close(); }

  [[nodiscard]] Status open(const std::string& name);
  void close();
  /// First byte; null for an empty or closed file. Valid until close().
  [[nodiscard]] const std::uint8_t* data() const { return data_; }
  [[nodiscard]] std::uint64_t size() const { return size_; }
  /// Whether everything that was read so far came from the file: kReadFailed when it is shorter than it was
  /// when opened, or could not be read. Costs a system call.
  [[nodiscard]] Status check() const;
  /// Copies bytes from the file past the map, which costs less than pages that are mapped to be read once.
  /// Errors as of lumo::readAt; kReadFailed for a closed file. Several threads may do so at once.
  [[nodiscard]] Status readAt(std::uint64_t offset, void* bytes, std::size_t size) const;
  /// What a pass over a file may read before it gives pages back: enough that giving back costs little.
  static constexpr std::uint64_t kResidentBytes = std::uint64_t{16} << 20U;
  /// Gives the whole pages inside [begin, end) back to the system; they are read again when touched again.
  void release(std::uint64_t begin, std::uint64_t end) const;

 private:
  const std::uint8_t* data_ = nullptr;
  std::uint64_t size_ = 0;
  std::string name_;
  int descriptor_ = -1;
  MappingGuard guard_;
};

}  // namespace lumo
