// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>
#include <limits>

#include "UvfitsFixture.h"

namespace lumo {
namespace {

using test::FitsHeader;
using test::UvfitsBuilder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

class UvfitsGroupsTest : public test::UvfitsFixture {};

TEST_F(UvfitsGroupsTest, EveryNumberFormatIsScaled) {
  for (const int bitpix : {8, 16, 32, -32, -64}) {
    UvfitsBuilder builder;
    builder.bitpix = bitpix;
    builder.parameterNames[3] = "ANTENNA1";
    builder.addParameter("ANTENNA2");
    builder.parameterScales[0] = 0.01;
    builder.add(40, 60, 1, 100, 50, 12, {2});
    builder.groups[0].parameters[5] = 0;
    builder.edit = [](FitsHeader& header) { header.number("BSCALE", 0.5).number("BZERO", -4); };
    const auto group = imported(builder).groups.at(0);
    EXPECT_EQ(group.record.u, static_cast<float>(40 * 0.01)) << bitpix;
    EXPECT_EQ(group.record.v, 60.0F) << bitpix;
    EXPECT_EQ(group.record.baseline, 258) << bitpix;
    EXPECT_EQ(group.visibilities.at(0).Re(), 46.0F) << bitpix;
    EXPECT_EQ(group.visibilities.at(0).Im(), 21.0F) << bitpix;
    EXPECT_EQ(group.visibilities.at(0).Weight(), 2.0F) << bitpix;
  }
}

TEST_F(UvfitsGroupsTest, NegativeIntegersKeepTheirSign) {
  for (const int bitpix : {16, 32}) {
    UvfitsBuilder builder;
    builder.bitpix = bitpix;
    builder.add(-40, 60, 258, -100, 50, 12);
    builder.groups[0].parameters[5] = 0;
    const auto group = imported(builder).groups.at(0);
    EXPECT_EQ(group.record.u, -40.0F) << bitpix;
    EXPECT_EQ(group.visibilities.at(0).Re(), -100.0F) << bitpix;
  }
}

TEST_F(UvfitsGroupsTest, ABlankIntegerIsNoData) {
  UvfitsBuilder builder;
  builder.bitpix = 16;
  builder.axis("STOKES").pixels = 2;
  builder.add(4, 6, 258, 7, 8, 9).array[1] = -32768;
  builder.groups[0].parameters[5] = 0;
  builder.edit = [](FitsHeader& header) { header.whole("BLANK", -32768); };
  const auto group = imported(builder).groups.at(0);
  EXPECT_EQ(group.visibilities.at(0).Weight(), 0.0F);
  EXPECT_EQ(group.visibilities.at(1).Weight(), 9.0F);
}

TEST_F(UvfitsGroupsTest, WithoutStoredWeightsEveryWeightIsOne) {
  UvfitsBuilder builder;
  builder.axis("COMPLEX").pixels = 2;
  builder.axis("FREQ").pixels = 2;
  builder.add(0.1, 0.2, 258, 3, -4, 0);
  const auto group = imported(builder).groups.at(0);
  ASSERT_EQ(group.visibilities.size(), 2U);
  EXPECT_EQ(group.visibilities[1].Re(), 3.0F);
  EXPECT_EQ(group.visibilities[1].Im(), -4.0F);
  EXPECT_EQ(group.visibilities[1].Weight(), 1.0F);
}

TEST_F(UvfitsGroupsTest, RejectedWeightsStayAsTheyAre) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 2, -1e16);
  builder.add(0.1, 0.2, 258, 1, 2, 0);
  const auto back = imported(builder);
  EXPECT_EQ(back.groups.at(0).visibilities.at(0).Weight(), -1e16F);
  EXPECT_EQ(back.groups.at(0).visibilities.at(0).Re(), 1.0F);
  EXPECT_EQ(back.groups.at(1).visibilities.at(0).Weight(), 0.0F);
  EXPECT_EQ(report_.files[0].bands.at(0).usable, 0U);
}

TEST_F(UvfitsGroupsTest, WeightsThatAreNotFiniteAreNoData) {
  UvfitsBuilder builder;
  for (const double weight : {kNan, kInf, -kInf}) builder.add(0.1, 0.2, 258, 1, 2, weight);
  builder.add(0.1, 0.2, 258, 1, 2, 5);
  const auto back = imported(builder);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(back.groups.at(i).visibilities.at(0).Weight(), 0.0F) << i;
    EXPECT_EQ(back.groups.at(i).visibilities.at(0).Re(), 1.0F) << i;
  }
  EXPECT_EQ(report_.files[0].bands.at(0).usable, 1U);
  EXPECT_EQ(report_.files[0].bands.at(0).weightSum, 5.0);
  EXPECT_THAT(report_.warnings, ElementsAre(HasSubstr("3 visibilities have a weight that is not finite")));
}

TEST_F(UvfitsGroupsTest, VisibilitiesThatAreNotFiniteAreNoData) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, kNan, 2, 5);
  builder.add(0.1, 0.2, 258, 1, kInf, 5);
  builder.add(0.1, 0.2, 258, kNan, kNan, -3);
  builder.add(0.1, 0.2, 258, kNan, 1, kInf);
  const auto back = imported(builder);
  for (const auto& group : back.groups) {
    EXPECT_EQ(group.visibilities.at(0).Re(), 0.0F);
    EXPECT_EQ(group.visibilities.at(0).Im(), 0.0F);
    EXPECT_EQ(group.visibilities.at(0).Weight(), 0.0F);
  }
  EXPECT_THAT(report_.warnings, UnorderedElementsAre(HasSubstr("4 visibilities are not finite"),
                                                     HasSubstr("1 visibilities have a weight")));
}

TEST_F(UvfitsGroupsTest, DoublesBeyondSinglePrecisionAreNoData) {
  UvfitsBuilder builder;
  builder.bitpix = -64;
  builder.add(0.1, 0.2, 258, 1e300, 2, 5);
  builder.add(1e300, 0.2, 258, 1, 2, 5);
  const auto back = imported(builder);
  EXPECT_EQ(back.groups.at(0).visibilities.at(0).Weight(), 0.0F);
  EXPECT_EQ(back.groups.at(1).record.flag, 1);
}

TEST_F(UvfitsGroupsTest, APromiseBeyondTheFilesEndIsRefused) {
  for (const char* claim : {"3", "1000000", "9007199254740992"}) {
    UvfitsBuilder builder;
    builder.add(0.1, 0.2, 258, 1, 2, 5);
    const std::string groups = claim;
    builder.edit = [&](FitsHeader& header) { header.set("GCOUNT", groups == "3" ? "400" : groups); };
    EXPECT_THAT(refusal(builder), HasSubstr("cut short")) << claim;
  }
}

TEST_F(UvfitsGroupsTest, AnAbsurdAxisIsRefusedBeforeAnythingIsAllocated) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 2, 5);
  builder.edit = [](FitsHeader& header) { header.whole("NAXIS4", 2000000000).whole("NAXIS5", 2000000000); };
  EXPECT_THAT(refusal(builder), HasSubstr("more numbers a group than the file has bytes"));
}

TEST_F(UvfitsGroupsTest, AFileWithoutGroupsIsNoData) {
  EXPECT_THAT(refusal(UvfitsBuilder()), HasSubstr("GCOUNT is 0"));
}

}  // namespace
}  // namespace lumo
