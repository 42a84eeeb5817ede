// SPDX-License-Identifier: GPL-3.0-or-later
#include "FitsMutator.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <string_view>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maximum);

namespace lumo::fuzz {

namespace {

constexpr std::size_t kCardBytes = 80;
constexpr std::size_t kValueStart = 10;
constexpr std::size_t kValueBytes = 20;

// Values that readers stumble over.
constexpr std::array<std::string_view, 20> kValues = {
    "0",          "1",           "-1",    "2",          "3",
    "-32",        "8",           "16",    "2147483647", "2147483648",
    "4294967296", "-2147483648", "999",   "1E308",      "NaN",
    "'Jy'",       "1e-",         "1.5D3", "''",         "9223372036854775807"};

// Cards that lie in headers: those that start like a keyword.
std::size_t pickCard(const std::uint8_t* data, std::size_t size, std::minstd_rand& random) {
  const std::size_t cards = size / kCardBytes;
  for (int tries = 0; tries < 32; ++tries) {
    const std::size_t at = random() % cards * kCardBytes;
    if (data[at] >= 'A' && data[at] <= 'Z') return at;
  }
  return random() % cards * kCardBytes;
}

void putValue(std::uint8_t* card, std::string_view value) {
  std::memset(card + kValueStart, ' ', kCardBytes - kValueStart);
  const std::size_t at = value.starts_with('\'') ? kValueStart : kValueStart + kValueBytes - value.size();
  std::memcpy(card + at, value.data(), value.size());
}

}  // namespace

std::size_t mutateFits(std::uint8_t* data, std::size_t size, std::size_t maximum, unsigned seed) {
  std::minstd_rand random(seed + 1);
  const unsigned way = random() % 12;
  if (way < 5 || size < kCardBytes) return LLVMFuzzerMutate(data, size, maximum);
  const std::size_t card = pickCard(data, size, random);
  const std::size_t other = pickCard(data, size, random);
  const std::size_t blockEnd = std::min(size / kCardBytes * kCardBytes, (card / 2880 + 1) * 2880);
  switch (way) {
    case 5:
    case 6:
      putValue(data + card, kValues[random() % kValues.size()]);
      break;
    case 7:  // a digit
      for (std::size_t i = kValueStart; i < kValueStart + kValueBytes; ++i)
        if (data[card + i] >= '0' && data[card + i] <= '9' && random() % 2 == 0) {
          data[card + i] = static_cast<std::uint8_t>('0' + random() % 10);
          break;
        }
      break;
    case 8: {  // the value's bytes
      LLVMFuzzerMutate(data + card + kValueStart, kValueBytes, kValueBytes);
      break;
    }
    case 9:
      std::memmove(data + card, data + other, kCardBytes);
      break;
    case 10:  // out of its block, which ends in a blank card
      std::memmove(data + card, data + card + kCardBytes, blockEnd - card - kCardBytes);
      std::memset(data + blockEnd - kCardBytes, ' ', kCardBytes);
      break;
    default: {  // twice, which drops the block's last card, often a blank one
      std::array<std::uint8_t, kCardBytes> copy{};
      std::memcpy(copy.data(), data + other, kCardBytes);
      std::memmove(data + card + kCardBytes, data + card, blockEnd - card - kCardBytes);
      std::memcpy(data + card, copy.data(), kCardBytes);
    }
  }
  return size;
}

}  // namespace lumo::fuzz
