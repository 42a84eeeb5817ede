// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <string>

#include "core/Crc32.h"

namespace lumo {
namespace {

// The definition, bit by bit: reflected polynomial 0xEDB88320, all ones before and inverted after.
std::uint32_t slowCrc(const std::string& bytes) {
  std::uint32_t crc = 0xFFFFFFFFU;
  for (const char byte : bytes) {
    crc ^= static_cast<unsigned char>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
  }
  return ~crc;
}

TEST(Crc32Test, TheCheckValueOfThePolynomialIsTheCatalogueOne) {
  EXPECT_EQ(crc32Of("123456789", 9), 0xCBF43926U);
}

TEST(Crc32Test, AgreesWithTheDefinitionAtEveryLength) {
  std::string bytes;
  for (int i = 0; i < 200; ++i) {
    EXPECT_EQ(crc32Of(bytes.data(), bytes.size()), slowCrc(bytes)) << i;
    bytes.push_back(static_cast<char>(i * 77 + 13));
  }
}

TEST(Crc32Test, APieceContinuesTheCrcOfTheBytesBefore) {
  const std::string bytes = "visibilities";
  for (std::size_t cut = 0; cut <= bytes.size(); ++cut)
    EXPECT_EQ(crc32Of(bytes.data() + cut, bytes.size() - cut, crc32Of(bytes.data(), cut)), slowCrc(bytes));
}

TEST(Crc32Test, AnEmptyPieceLeavesTheCrcEvenWithoutAPointer) {
  EXPECT_EQ(crc32Of(nullptr, 0), 0U);
  EXPECT_EQ(crc32Of(nullptr, 0, 0x12345678U), 0x12345678U);
}

TEST(Crc32Test, TheCrcOfTwoPiecesIsThatOfTheWhole) {
  const std::string bytes = "visibilities";
  for (std::size_t cut = 0; cut <= bytes.size(); ++cut)
    EXPECT_EQ(crc32Joined(slowCrc(bytes.substr(0, cut)), slowCrc(bytes.substr(cut)), bytes.size() - cut),
              slowCrc(bytes));
}

}  // namespace
}  // namespace lumo
