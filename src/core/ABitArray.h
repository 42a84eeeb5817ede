// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

namespace lumo {

class AFile;

/// Fixed number of bits, set at construction; a file's frequency-selection mask. Bits start clear.
class ABitArray {
 public:
  ABitArray() = default;
  explicit ABitArray(std::int32_t count);

  /// Sets every bit to (value != 0).
  ABitArray& operator=(int value);
  /// Non-zero when bit i is set; 0 outside 0..count()-1, since a mask may come from a file of its own.
  int operator()(std::int32_t i) const;
  /// Writes bit i; nothing happens outside 0..count()-1.
  void operator()(std::int32_t i, int value);
  [[nodiscard]] std::int32_t count() const { return count_; }
  /// Number of set bits.
  [[nodiscard]] std::int32_t setCount() const;
  bool operator==(const ABitArray&) const = default;

  /// Writes i32 bit count and ceil(count/8) bytes, bit i at byte i/8, bit i%8 from the least significant.
  /// Returns 1, or 0 when the file could not take it.
  [[nodiscard]] int Store(AFile& file) const;
  /// Reads what Store wrote. Returns 0 (and leaves the array empty) on a short file, a negative count or one
  /// that the rest of the file cannot hold; nothing is allocated before that is known.
  [[nodiscard]] int Load(AFile& file);

 private:
  std::int32_t count_ = 0;
  std::vector<std::uint8_t> bytes_;
};

}  // namespace lumo
