// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "core/Status.h"

namespace lumo {

/// A whole file mapped read-only into memory.
///
/// Reading costs no copy, and pages that were read can be given back with release(), so that a sequential
/// pass over a file larger than memory keeps only a small window of it resident.
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
  /// Gives the whole pages inside [begin, end) back to the system; they are read again when touched again.
  void release(std::uint64_t begin, std::uint64_t end) const;

 private:
  const std::uint8_t* data_ = nullptr;
  std::uint64_t size_ = 0;
};

}  // namespace lumo
