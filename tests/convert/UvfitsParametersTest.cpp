// SPDX-License-Identifier: GPL-3.0-or-later
#include <limits>

#include "UvfitsFixture.h"

namespace lumo {
namespace {

using test::UvfitsBuilder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class UvfitsParametersTest : public test::UvfitsFixture {};

TEST_F(UvfitsParametersTest, ScalesAndZerosAreAppliedInDouble) {
  UvfitsBuilder builder;
  builder.parameterScales = {2.318e-11, 2.318e-11, 2.318e-11, 1, 1, 1};
  builder.parameterZeros[1] = 0.5;
  builder.add(12345678, -7654321, 258, 1, 0, 1);
  const auto back = imported(builder);
  // 12345678 and 7654321 are exact in single precision, so these are the correctly rounded results.
  EXPECT_EQ(back.groups.at(0).record.u, static_cast<float>(12345678 * 2.318e-11));
  EXPECT_EQ(back.groups.at(0).record.v, static_cast<float>(-7654321 * 2.318e-11 + 0.5));
}

TEST_F(UvfitsParametersTest, SuffixesOfTheCoordinatesAreAccepted) {
  for (const char* suffix : {"", "--", "---SIN", "-SIN"}) {
    UvfitsBuilder builder;
    for (std::size_t i = 0; i < 3; ++i) builder.parameterNames[i] += suffix;
    builder.add(0.5, 0.25, 258, 1, 0, 1);
    EXPECT_EQ(imported(builder).groups.at(0).record.u, 0.5F) << suffix;
  }
}

TEST_F(UvfitsParametersTest, TheirOrderIsFree) {
  UvfitsBuilder builder;
  builder.add(0.5, 0.25, 258, 1, 0, 1);
  builder.parameterNames = {"DATE", "BASELINE", "WW", "UU", "DATE", "VV"};
  builder.parameterZeros = {2450000.5, 0, 0, 0, 0, 0};
  builder.groups[0].parameters = {0.25, 1029, 0.125, 0.5, 0, -0.75};
  const auto record = imported(builder).groups.at(0).record;
  EXPECT_EQ(record.u, 0.5F);
  EXPECT_EQ(record.v, -0.75F);
  EXPECT_EQ(record.w, 0.125F);
  EXPECT_EQ(record.baseline, 1029);
  EXPECT_EQ(record.time, 50000.25);
}

TEST_F(UvfitsParametersTest, TwoDatesAddUpInDouble) {
  UvfitsBuilder builder;
  builder.parameterZeros[4] = 2456658.0;
  builder.parameterZeros[5] = 0.5;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  builder.groups[0].parameters[4] = 127;
  builder.groups[0].parameters[5] = 0.0009765625;
  EXPECT_EQ(imported(builder).groups.at(0).record.time, 56785 + 0.0009765625);
}

TEST_F(UvfitsParametersTest, AFullJulianDateMayStandInTheGroup) {
  UvfitsBuilder builder;
  builder.parameterZeros[4] = 0;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  builder.groups[0].parameters[4] = 2459792.5;  // exact in single precision
  builder.groups[0].parameters[5] = 0.375;
  EXPECT_EQ(imported(builder).groups.at(0).record.time, 59792.375);
}

TEST_F(UvfitsParametersTest, TheSubarrayDigitsAreNoPartOfTheBaseline) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258.01, 1, 0, 1);
  builder.add(0.1, 0.2, 255 * 256 + 254.04, 1, 0, 1);
  builder.add(0, 0, 257.02, 1, 0, 1);
  const auto back = imported(builder);
  ASSERT_EQ(back.groups.size(), 2U);
  EXPECT_EQ(back.groups[0].record.baseline, 258);
  EXPECT_EQ(back.groups[1].record.baseline, 255 * 256 + 254);
  EXPECT_EQ(report_.autocorrelations, 1U);
}

TEST_F(UvfitsParametersTest, AntennasMayHaveParametersOfTheirOwn) {
  UvfitsBuilder builder;
  builder.parameterNames[3] = "SUBARRAY";
  builder.addParameter("ANTENNA1");
  builder.addParameter("ANTENNA2");
  builder.add(0.1, 0.2, 1, 1, 0, 1, {3, 9});
  builder.add(0.1, 0.2, 1, 1, 0, 1, {3, 300});
  builder.add(0.1, 0.2, 1, 1, 0, 1, {300, 300});
  const auto back = imported(builder);
  ASSERT_EQ(back.groups.size(), 2U);
  EXPECT_EQ(back.groups[0].record.baseline, 3 * 256 + 9);
  EXPECT_EQ(back.groups[1].record.baseline, 0) << "antennas above 255 have no baseline number";
  EXPECT_EQ(back.groups[1].record.flag, 0);
  EXPECT_EQ(report_.autocorrelations, 1U);
}

TEST_F(UvfitsParametersTest, BaselinesOfMoreThan255AntennasAreUnderstood) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 65536 + 2048 * 12 + 300, 1, 0, 1);
  builder.add(0.1, 0.2, 65536 + 2048 * 12 + 12, 1, 0, 1);
  EXPECT_EQ(imported(builder).groups.size(), 1U);
  EXPECT_EQ(report_.autocorrelations, 1U);
}

TEST_F(UvfitsParametersTest, RecordsWithoutAFinitePositionAreFlagged) {
  UvfitsBuilder builder;
  builder.add(std::numeric_limits<double>::quiet_NaN(), 0.2, 258, 1, 0, 1);
  builder.add(0.1, -std::numeric_limits<double>::infinity(), 258, 1, 0, 1);
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  const auto back = imported(builder);
  ASSERT_EQ(back.groups.size(), 3U);
  EXPECT_EQ(back.groups[0].record.flag, 1);
  EXPECT_EQ(back.groups[1].record.flag, 1);
  EXPECT_EQ(back.groups[2].record.flag, 0);
  EXPECT_EQ(back.groups[0].record.u, 0.0F);
  EXPECT_EQ(back.uMax, static_cast<double>(0.1F));
  EXPECT_EQ(report_.files[0].flaggedRecords, 2U);
  EXPECT_EQ(report_.files[0].bands.at(0).usable, 1U);
  EXPECT_THAT(report_.warnings, ElementsAre(HasSubstr("2 records have a u or v")));
}

TEST_F(UvfitsParametersTest, RecordsWithoutLegibleAntennasAreFlagged) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, -5, 1, 0, 1);
  builder.add(0.1, 0.2, std::numeric_limits<double>::quiet_NaN(), 1, 0, 1);
  builder.add(0.1, 0.2, 256, 1, 0, 1);
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  const auto back = imported(builder);
  ASSERT_EQ(back.groups.size(), 4U);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(back.groups[i].record.flag, 1) << i;
  EXPECT_EQ(back.groups[3].record.flag, 0);
}

TEST_F(UvfitsParametersTest, NonsenseInAnUnusedParameterDoesNoHarm) {
  UvfitsBuilder builder;
  builder.addParameter("INTTIM");
  builder.add(0.1, 0.2, 258, 1, 0, 1, {std::numeric_limits<double>::quiet_NaN()});
  EXPECT_EQ(imported(builder).groups.at(0).record.flag, 0);
}

TEST_F(UvfitsParametersTest, TheNcpProjectionIsRefusedWithAdvice) {
  UvfitsBuilder builder;
  builder.parameterNames[0] = "UU---NCP";
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  const std::string sentence = refusal(builder);
  EXPECT_THAT(sentence, HasSubstr("PTYPE1"));
  EXPECT_THAT(sentence, HasSubstr("UVFIX"));
}

TEST_F(UvfitsParametersTest, CoordinatesInOtherUnitsAreRefused) {
  UvfitsBuilder builder;
  builder.parameterNames[1] = "VV-L-SIN";
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  EXPECT_THAT(refusal(builder), HasSubstr("PTYPE2 is 'VV-L-SIN'"));
}

TEST_F(UvfitsParametersTest, AMissingParameterIsNamed) {
  for (const auto& [index, name] : {std::pair{0, "UU"}, {1, "VV"}, {2, "WW"}, {3, "BASELINE"}}) {
    UvfitsBuilder builder;
    builder.parameterNames[static_cast<std::size_t>(index)] = "OTHER";
    builder.add(0.1, 0.2, 258, 1, 0, 1);
    EXPECT_THAT(refusal(builder), HasSubstr(name));
  }
  UvfitsBuilder builder;
  builder.parameterNames[4] = builder.parameterNames[5] = "OTHER";
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  EXPECT_THAT(refusal(builder), HasSubstr("DATE"));
}

}  // namespace
}  // namespace lumo
