// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/ABitArray.h"

#include <algorithm>
#include <bit>

#include "core/AFile.h"
#include "core/LittleEndian.h"

namespace lumo {

namespace {

std::size_t byteCount(std::int32_t bits) {
  return (static_cast<std::size_t>(bits) + 7) / 8;
}

}  // namespace

ABitArray::ABitArray(std::int32_t count) : count_(std::max(count, 0)), bytes_(byteCount(count_)) {}

ABitArray& ABitArray::operator=(int value) {
  std::fill(bytes_.begin(), bytes_.end(), static_cast<std::uint8_t>(value != 0 ? 0xFF : 0));
  // Unused bits of the last byte stay clear, so that equal arrays have equal bytes.
  if (count_ % 8 != 0 && value != 0) bytes_.back() = static_cast<std::uint8_t>((1u << (count_ % 8)) - 1);
  return *this;
}

int ABitArray::operator()(std::int32_t i) const {
  if (i < 0 || i >= count_) return 0;
  return (bytes_[static_cast<std::size_t>(i / 8)] >> (i % 8)) & 1;
}

void ABitArray::operator()(std::int32_t i, int value) {
  if (i < 0 || i >= count_) return;
  std::uint8_t& byte = bytes_[static_cast<std::size_t>(i / 8)];
  const auto bit = static_cast<std::uint8_t>(1u << (i % 8));
  byte = static_cast<std::uint8_t>(value != 0 ? byte | bit : byte & ~bit);
}

std::int32_t ABitArray::setCount() const {
  std::int32_t n = 0;
  for (const std::uint8_t byte : bytes_) n += std::popcount(byte);
  return n;
}

int ABitArray::Store(AFile& file) const {
  std::uint8_t head[4];
  storeLittle<std::int32_t>(head, count_);
  return file.Write(head, sizeof head) != 0 && file.Write(bytes_.data(), bytes_.size()) != 0 ? 1 : 0;
}

int ABitArray::Load(AFile& file) {
  *this = ABitArray();
  std::uint8_t head[4];
  if (file.Read(head, sizeof head) == 0) return 0;
  const auto count = loadLittle<std::int32_t>(head);
  if (count < 0 || byteCount(count) > file.remaining()) return 0;
  ABitArray loaded(count);
  if (file.Read(loaded.bytes_.data(), loaded.bytes_.size()) == 0) return 0;
  if (count % 8 != 0)
    loaded.bytes_.back() = static_cast<std::uint8_t>(loaded.bytes_.back() & ((1u << (count % 8)) - 1));
  *this = std::move(loaded);
  return 1;
}

}  // namespace lumo
