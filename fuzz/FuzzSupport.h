// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace lumo::fuzz {

/// A folder of the process in memory (TMPDIR, /dev/shm where that is not set), entered by the first call and
/// removed at its ordinary end. Files of a target are named by plain names in it.
void enterWorkFolder();

/// Writes a file whole.
void putFile(const std::string& name, const std::uint8_t* data, std::size_t size);
void putFile(const std::string& name, const std::string& content);

/// Ends the process as a finding unless `holds`, with a sentence.
void require(bool holds, const std::string& sentence);

/// Keeps the compiler from leaving out the work that made a value.
void use(double value);
void use(const std::string& text);

/// Watches the heap while a reader works: the peak of what is taken and not given back must stay below
/// kBaseBytes + kBytesPerByte times the size of the input, otherwise the destructor ends the process as a
/// finding. Mappings of the file itself are not counted. One at a time.
class MemoryWatch {
 public:
  /// What a reader may take for any file: the block of 1 MiB in which a run checks its inputs is the
  /// largest buffer, cfitsio's 40 blocks of 2880 bytes come next.
  static constexpr std::size_t kBaseBytes = std::size_t{2} << 20;
  /// The parts of a text take most: an empty "{}" of a sky model is an object in memory. A map of 8-bit
  /// pixels takes 4.
  static constexpr std::size_t kBytesPerByte = 40;

  explicit MemoryWatch(std::size_t inputBytes);
  MemoryWatch(const MemoryWatch&) = delete;
  MemoryWatch& operator=(const MemoryWatch&) = delete;
  ~MemoryWatch();

 private:
  std::size_t inputBytes_;
};

}  // namespace lumo::fuzz
