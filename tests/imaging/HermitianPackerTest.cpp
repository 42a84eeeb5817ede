// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "imaging/Fft.h"
#include "imaging/HermitianPacker.h"
#include "support/TargetGuard.h"

namespace lumo {
namespace {

bool sameBits(const Complex* a, const Complex* b, std::int64_t count) {
  return std::memcmp(a, b, sizeof(Complex) * static_cast<std::size_t>(count)) == 0;
}

TEST(HermitianPackerTest, EveryInstructionSetGivesTheBitsOfThePlainLoop) {
  std::mt19937 random(9);
  std::normal_distribution<double> value;
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    const test::TargetGuard guard(target);
    // Lengths of no vector, of a part of one, of some and of some with others left over; odd ones too.
    for (const std::int64_t n : {1, 2, 3, 4, 5, 8, 16, 31, 32, 64, 512})
      for (const int direction : {-1, 1}) {
        std::vector<Complex> row(static_cast<std::size_t>(n) + 1);
        for (Complex& element : row) element = Complex(value(random), value(random));
        std::vector<Complex> plain = row;
        PackHermitianRow(plain.data(), n, direction);
        std::vector<Complex> packed(static_cast<std::size_t>(n));
        HermitianPacker(n, direction).pack(row.data(), packed.data());
        EXPECT_TRUE(sameBits(packed.data(), plain.data(), n))
            << hwy::TargetName(target) << ", length " << n << ", direction " << direction;
        EXPECT_TRUE(sameBits(&row.back(), &plain.back(), 1)) << hwy::TargetName(target) << ", length " << n;
      }
  }
}

}  // namespace
}  // namespace lumo
