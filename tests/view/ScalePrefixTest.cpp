// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <limits>

#include "view/ScalePrefix.h"

namespace lumo {
namespace {

TEST(ScalePrefixTest, NumbersFromOneToTenThousandNeedNone) {
  EXPECT_EQ(scalePrefixFor(1.0).symbol, "");
  EXPECT_EQ(scalePrefixFor(9999.0).symbol, "");
  EXPECT_EQ(scalePrefixFor(-1800.0).factor, 1.0);
}

TEST(ScalePrefixTest, SmallNumbersGetMilliMicroNano) {
  EXPECT_EQ(scalePrefixFor(0.05).symbol, "m");
  EXPECT_DOUBLE_EQ(scalePrefixFor(0.05).factor, 1e-3);
  EXPECT_EQ(scalePrefixFor(2e-6).symbol, "µ");
  EXPECT_EQ(scalePrefixFor(3e-9).symbol, "n");
}

TEST(ScalePrefixTest, LargeNumbersGetKiloMegaGiga) {
  EXPECT_EQ(scalePrefixFor(1e4).symbol, "k");
  EXPECT_EQ(scalePrefixFor(1.42e9).symbol, "M");
  EXPECT_DOUBLE_EQ(scalePrefixFor(1.42e9).factor, 1e6);
  EXPECT_EQ(scalePrefixFor(8.6e10).symbol, "G");
}

TEST(ScalePrefixTest, ZeroAndWhatIsNotFiniteGetNone) {
  EXPECT_EQ(scalePrefixFor(0.0).factor, 1.0);
  EXPECT_EQ(scalePrefixFor(std::numeric_limits<double>::quiet_NaN()).symbol, "");
  EXPECT_EQ(scalePrefixFor(std::numeric_limits<double>::infinity()).symbol, "");
}

TEST(ScalePrefixTest, TheOutermostPrefixGoesOnBeyondTheRange) {
  EXPECT_EQ(scalePrefixFor(1e-40).symbol, "q");
  EXPECT_EQ(scalePrefixFor(1e40).symbol, "Q");
}

TEST(ScalePrefixTest, TheTitleGetsThePrefixInItsPlace) {
  EXPECT_EQ(axisTitle("Right ascent [%sas]", {"m", 1e-3}), "Right ascent [mas]");
  EXPECT_EQ(axisTitle("Right ascent [%sas]", {}), "Right ascent [as]");
  EXPECT_EQ(axisTitle("[%sJy/beam]", {"µ", 1e-6}), "[µJy/beam]");
}

TEST(ScalePrefixTest, ATitleWithoutAPlaceStaysAsItIs) {
  EXPECT_EQ(axisTitle("100 %", {"k", 1e3}), "100 %");
  EXPECT_EQ(axisTitle("", {"k", 1e3}), "");
}

}  // namespace
}  // namespace lumo
