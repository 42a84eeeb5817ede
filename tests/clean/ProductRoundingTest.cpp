// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <limits>

#include "clean/ProductRounding.h"

namespace lumo {
namespace {

ProductRounding ofProducts(double smallestBeam, double first, double second) {
  CleanTileMaps maps;
  maps.terms = 2;
  maps.smallestBeam = smallestBeam;
  CleanUpdate steps[2];
  steps[0].increments[0] = 1.0;
  steps[0].increments[1] = -1.0;
  steps[1].increments[0] = first;
  steps[1].increments[1] = second;
  return roundingFor(maps, steps, 2);
}

TEST(ProductRoundingTest, AlignsTheProductsOfUsualMaps) {
  EXPECT_EQ(ofProducts(1e-12, 1e-3, -1e-9), ProductRounding::kAlign);
  EXPECT_EQ(ofProducts(1e-12, 0.0, -0.0), ProductRounding::kAlign);
  EXPECT_EQ(ofProducts(0x1p-50, 0x1p-45, 1.0), ProductRounding::kAlign);
}

TEST(ProductRoundingTest, ConvertsWhereAProductMayBeTooSmallOrBeamsAreNotKnown) {
  EXPECT_EQ(ofProducts(0x1p-50, -0x1p-46, 1.0), ProductRounding::kConvert);
  EXPECT_EQ(ofProducts(0x1p-50, 1.0, 0x1p-46), ProductRounding::kConvert);
  EXPECT_EQ(ofProducts(0.0, 1.0, 1.0), ProductRounding::kConvert);
  EXPECT_EQ(ofProducts(1e-12, std::numeric_limits<double>::quiet_NaN(), 1.0), ProductRounding::kConvert);
}

}  // namespace
}  // namespace lumo
