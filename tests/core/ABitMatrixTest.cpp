// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "core/ABitMatrix.h"

namespace lumo {
namespace {

TEST(ABitMatrixTest, BitsStartClear) {
  const ABitMatrix mask(3, 4);
  EXPECT_EQ(mask.rows(), 3u);
  EXPECT_EQ(mask.columns(), 4u);
  for (std::uint32_t row = 0; row < 3; ++row)
    for (std::uint32_t column = 0; column < 4; ++column) EXPECT_EQ(mask(row, column), 0);
}

TEST(ABitMatrixTest, SettingABitChangesThatBitAlone) {
  ABitMatrix mask(3, 9);
  mask.set(1, 8, 1);
  for (std::uint32_t row = 0; row < 3; ++row)
    for (std::uint32_t column = 0; column < 9; ++column)
      EXPECT_EQ(mask(row, column) != 0, row == 1 && column == 8) << row << " " << column;
}

TEST(ABitMatrixTest, AssigningANumberSetsOrClearsEveryBit) {
  ABitMatrix mask(2, 5);
  mask = 256;  // its low byte is 0
  for (std::uint32_t row = 0; row < 2; ++row)
    for (std::uint32_t column = 0; column < 5; ++column) EXPECT_NE(mask(row, column), 0);
  mask.set(0, 0, 256);
  EXPECT_NE(mask(0, 0), 0);
  mask = 0;
  for (std::uint32_t row = 0; row < 2; ++row)
    for (std::uint32_t column = 0; column < 5; ++column) EXPECT_EQ(mask(row, column), 0);
}

}  // namespace
}  // namespace lumo
