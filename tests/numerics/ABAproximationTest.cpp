// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "numerics/ABAproximation.h"

namespace lumo {
namespace {

TEST(ABAproximationTest, TheBaseFitsNothingAndIsZeroEverywhere) {
  ABAproximation base;
  EXPECT_EQ(base.fit(nullptr, nullptr, 0, 5), 0);
  EXPECT_EQ(base.valueAt(3.0F), 0.0);
}

}  // namespace
}  // namespace lumo
