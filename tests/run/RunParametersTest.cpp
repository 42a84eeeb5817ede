// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/TextForm.h"
#include "run/FrequencySurvey.h"
#include "run/RunParameters.h"

namespace lumo {
namespace {

FrequencySurvey survey(double minHz = 1.4e9, double maxHz = 1.6e9, int number = 3) {
  FrequencySurvey result;
  result.minHz = minHz;
  result.maxHz = maxHz;
  result.number = number;
  return result;
}

RunParameters good() {
  RunParameters parameters;
  parameters.referenceMhz = 1500;
  return parameters;
}

bool accepts(const RunParameters& parameters, const FrequencySurvey& found = survey()) {
  return validateRunParameters(parameters, found).empty();
}

RunField refusedField(const RunParameters& parameters, const FrequencySurvey& found = survey()) {
  const ParameterProblems problems = validateRunParameters(parameters, found);
  EXPECT_EQ(problems.size(), 1u);
  return problems.empty() ? RunField::kIndexMin : problems.front().field;
}

TEST(RunParametersTest, TheDefaultsNeedOnlyAReferenceInsideTheRange) {
  EXPECT_TRUE(accepts(good()));
  EXPECT_EQ(refusedField(RunParameters()), RunField::kReference);
}

TEST(RunParametersTest, IterationsAreFromOneToAMillion) {
  RunParameters parameters = good();
  for (const int value : {1, 1000000}) {
    parameters.iterations = value;
    EXPECT_TRUE(accepts(parameters)) << value;
  }
  for (const int value : {0, -1, 1000001}) {
    parameters.iterations = value;
    EXPECT_EQ(refusedField(parameters), RunField::kIterations) << value;
  }
}

TEST(RunParametersTest, AnErrorMapOfTheIndexNeedsTwoTerms) {
  RunParameters parameters = good();
  parameters.order = 1;
  EXPECT_TRUE(accepts(parameters));
  parameters.indexError = true;
  EXPECT_EQ(refusedField(parameters), RunField::kOrder);
  EXPECT_EQ(validateRunParameters(parameters, survey())[0].lower, 2);
  parameters.order = 0;
  EXPECT_EQ(refusedField(parameters), RunField::kOrder);
  parameters.order = 2;
  EXPECT_TRUE(accepts(parameters));
}

TEST(RunParametersTest, ThresholdIsFromZeroToOne) {
  RunParameters parameters = good();
  for (const double value : {0.0, 1.0}) {
    parameters.indexThreshold = value;
    EXPECT_TRUE(accepts(parameters)) << value;
  }
  for (const double value : {-1e-300, 1.0000000000000002}) {
    parameters.indexThreshold = value;
    EXPECT_EQ(refusedField(parameters), RunField::kIndexThreshold) << value;
  }
}

TEST(RunParametersTest, GainIsFromTenToTheMinusTenToTwo) {
  RunParameters parameters = good();
  for (const double value : {1e-10, 2.0}) {
    parameters.gain = value;
    EXPECT_TRUE(accepts(parameters)) << value;
  }
  for (const double value : {9.99e-11, 2.0000000000000004, -0.1}) {
    parameters.gain = value;
    EXPECT_EQ(refusedField(parameters), RunField::kGain) << value;
  }
}

TEST(RunParametersTest, IndexLimitsAreAnyNumberInAnyOrder) {
  RunParameters parameters = good();
  parameters.indexMin = 1e300;
  parameters.indexMax = -1e300;
  EXPECT_TRUE(accepts(parameters));
}

TEST(RunParametersTest, OrderCannotExceedTheNumberOfSelectedChannels) {
  RunParameters parameters = good();
  parameters.order = 3;
  EXPECT_TRUE(accepts(parameters));
  parameters.order = 4;
  EXPECT_EQ(refusedField(parameters), RunField::kOrder);
  parameters.order = 0;
  EXPECT_EQ(refusedField(parameters), RunField::kOrder);
}

TEST(RunParametersTest, WithNoFileLoadedAnyOrderFails) {
  for (const int order : {-1, 0, 1, 2, 1000000}) {
    RunParameters parameters = good();
    parameters.order = order;
    const ParameterProblems problems = validateRunParameters(parameters, FrequencySurvey());
    ASSERT_EQ(problems.size(), 2u) << order;
    EXPECT_EQ(problems[0].field, RunField::kOrder);
    EXPECT_EQ(problems[1].field, RunField::kReference);
  }
}

TEST(RunParametersTest, ReferenceRangeIsWidenedByAUnitOfTheSixthDigit) {
  // 15135.875 MHz shows as 15135.9, a tenth of a MHz being its sixth digit.
  const FrequencySurvey ku = survey(15.1e9, 15.135875e9);
  RunParameters parameters = good();
  for (const double value : {15135.9, 15135.97, 15099.9001}) {
    parameters.referenceMhz = value;
    EXPECT_TRUE(accepts(parameters, ku)) << value;
  }
  for (const double value : {15135.98, 15099.899}) {
    parameters.referenceMhz = value;
    EXPECT_EQ(refusedField(parameters, ku), RunField::kReference) << value;
  }
}

TEST(RunParametersTest, ReferenceRangeIsWidenedByAtLeastOneKilohertz) {
  const FrequencySurvey metre = survey(74e6, 74e6, 2);
  RunParameters parameters = good();
  for (const double value : {73.9991, 74.0009}) {
    parameters.referenceMhz = value;
    EXPECT_TRUE(accepts(parameters, metre)) << value;
  }
  for (const double value : {73.9989, 74.0011}) {
    parameters.referenceMhz = value;
    EXPECT_EQ(refusedField(parameters, metre), RunField::kReference) << value;
  }
}

TEST(RunParametersTest, WhatCenterShowsIsAlwaysAccepted) {
  for (double low = 3.1e7; low < 5e11; low *= 1.37) {
    for (const double width : {0.0, 100.0, 1.7e4, 0.031 * low}) {
      const FrequencySurvey found = survey(low, low + width, 2);
      RunParameters parameters = good();
      parameters.referenceMhz = textToDouble(generalText(found.centerMhz()));
      EXPECT_TRUE(accepts(parameters, found)) << low << " + " << width;
      parameters.referenceMhz = found.centerMhz();
      EXPECT_TRUE(accepts(parameters, found)) << low << " + " << width;
    }
  }
}

TEST(RunParametersTest, AReferenceOfZeroIsRefusedEvenInsideTheRange) {
  RunParameters parameters = good();
  parameters.referenceMhz = 0;
  EXPECT_EQ(refusedField(parameters, survey(-1e6, 1e6)), RunField::kReference);
}

TEST(RunParametersTest, NotANumberIsInNoRange) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  RunParameters parameters = good();
  parameters.indexThreshold = parameters.indexMin = parameters.indexMax = parameters.gain =
      parameters.referenceMhz = nan;
  EXPECT_EQ(validateRunParameters(parameters, survey()).size(), 5u);
}

TEST(RunParametersTest, AProblemNamesFieldBoundsAndValue) {
  RunParameters parameters = good();
  parameters.iterations = 2000000;
  const ParameterProblems problems = validateRunParameters(parameters, survey());
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_EQ(problems[0].lower, 1);
  EXPECT_EQ(problems[0].upper, 1000000);
  EXPECT_EQ(problems[0].hint, "Enter an integer between 1 and 1000000.");
  EXPECT_EQ(problems[0].message, "CLEAN Iterations must be an integer between 1 and 1000000; found 2000000");
  EXPECT_EQ(problemStatus(problems).code(), StatusCode::kInvalidValue);
}

}  // namespace
}  // namespace lumo
