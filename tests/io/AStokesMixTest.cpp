// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "io/AStokesMix.h"

namespace lumo {
namespace {

std::vector<std::string> offered(const UvxProducts& products) {
  const std::unique_ptr<AArray<AStokesMix>> list(toListMix(AUVXStokes(products)));
  std::vector<std::string> names;
  for (const AStokesMix& mix : *list) names.emplace_back(mix.name());
  return names;
}

AStokesMix firstMix(const UvxProducts& products) {
  const std::unique_ptr<AArray<AStokesMix>> list(toListMix(AUVXStokes(products)));
  return (*list)[0];
}

using Names = std::vector<std::string>;

TEST(AStokesMixTest, MixesAreOfferedInTheirOrderAndOnlyWhenStored) {
  EXPECT_EQ(offered({-1, -2, -3, -4}), (Names{"I", "RR", "LL"}));
  EXPECT_EQ(offered({-8, -6, -5}), (Names{"I", "XX", "YY"}));
  EXPECT_EQ(offered({1, 2, 3, 4}), (Names{"I", "V", "Q", "U"}));
  EXPECT_EQ(offered({-3, -4}), Names{});
}

TEST(AStokesMixTest, OneHandIsOfferedUnderItsOwnName) {
  EXPECT_EQ(offered({-2}), Names{"LL"});
  EXPECT_EQ(offered({-5, -8}), Names{"XX"});
}

TEST(AStokesMixTest, StoredIntensityWinsOverTheMeanOfHands) {
  const AUVXComplex values[] = {{1, 0, 1}, {3, 0, 1}, {9, 0, 5}};
  EXPECT_EQ(firstMix({-1, -2, 1}).GetVisible(values, 0).Re(), 9.0f);
}

TEST(AStokesMixTest, MeanOfTwoProductsHasTheWeightOfTheirMean) {
  // Variances 1/4 and 1/12 give a mean of variance (1/4 + 1/12)/4 = 1/12.
  const AUVXComplex values[] = {{1, 2, 4}, {3, -4, 12}};
  const AUVXComplex mean = firstMix({-1, -2}).GetVisible(values, 0);
  EXPECT_EQ(mean.Re(), 2.0f);
  EXPECT_EQ(mean.Im(), -1.0f);
  EXPECT_EQ(mean.Weight(), 12.0f);
}

TEST(AStokesMixTest, MeanNeedsBothProductsUsable) {
  const AStokesMix mix = firstMix({-1, -2});
  const float infinite = std::numeric_limits<float>::infinity();
  for (const AUVXComplex& bad : {AUVXComplex(1, 1, 0), AUVXComplex(1, 1, -3), AUVXComplex(1, 1, infinite),
                                 AUVXComplex(std::nan(""), 1, 1), AUVXComplex(1, infinite, 1)}) {
    const AUVXComplex one[] = {{1, 1, 1}, bad};
    const AUVXComplex other[] = {bad, {1, 1, 1}};
    EXPECT_EQ(mix.GetVisible(one, 0).Weight(), 0.0f);
    EXPECT_EQ(mix.GetVisible(other, 0).Weight(), 0.0f);
  }
}

TEST(AStokesMixTest, ProductsAreFoundWhereTheyAreStored) {
  const AUVXComplex values[] = {{9, 9, 9}, {1, 0, 1}, {9, 9, 9}, {5, 0, 1}};
  EXPECT_EQ(firstMix({-3, -2, -4, -1}).GetVisible(values, 0).Re(), 3.0f);
  EXPECT_TRUE(firstMix({-3, -2, -4, -1}).fits(4));
  EXPECT_FALSE(firstMix({-3, -2, -4, -1}).fits(3));
}

TEST(AStokesMixTest, NamesMapToFitsStokesCodes) {
  EXPECT_EQ(stokesFitsCode("I"), 1);
  EXPECT_EQ(stokesFitsCode("V"), 4);
  EXPECT_EQ(stokesFitsCode("LL"), -2);
  EXPECT_EQ(stokesFitsCode("YY"), -6);
  EXPECT_EQ(stokesFitsCode("nonsense"), 0);
}

}  // namespace
}  // namespace lumo
