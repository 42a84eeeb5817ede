// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "run/FrequencySurvey.h"
#include "run/RunParameterTexts.h"

namespace lumo {
namespace {

FrequencySurvey survey() {
  FrequencySurvey result;
  result.minHz = 1.4e9;
  result.maxHz = 1.6e9;
  result.number = 3;
  return result;
}

RunParameterTexts goodTexts() {
  RunParameters parameters;
  parameters.referenceMhz = 1500;
  return textsOf(parameters);
}

TEST(RunParameterTextsTest, TextsReadBackToTheSameParameters) {
  RunParameters parameters;
  parameters.indexThreshold = 1.0 / 3.0;
  parameters.referenceMhz = 1499.9999999999998;
  parameters.nonNegative = true;
  parameters.prefix = "a^b";
  RunParameters back;
  EXPECT_TRUE(takeChecked(textsOf(parameters), survey(), back).empty());
  EXPECT_EQ(back.indexThreshold, parameters.indexThreshold);
  EXPECT_EQ(back.referenceMhz, parameters.referenceMhz);
  EXPECT_EQ(back.prefix, "a^b");
  EXPECT_TRUE(back.nonNegative);
  EXPECT_FALSE(back.variableGain);
}

TEST(RunParameterTextsTest, ClosingWithAbcInTheGainFieldSavesZero) {
  RunParameterTexts texts = goodTexts();
  texts.gain = "abc";
  texts.order = "999999";
  RunParameters parameters;
  takeUnchecked(texts, parameters);
  EXPECT_EQ(parameters.gain, 0.0);
  EXPECT_EQ(parameters.order, 999999);
  EXPECT_EQ(parameters.referenceMhz, 1500.0);
}

TEST(RunParameterTextsTest, AFieldThatIsNotANumberKeepsItsOldValue) {
  RunParameterTexts texts = goodTexts();
  texts.gain = "abc";
  texts.iterations = "12.5";
  texts.indexMin = "-1.5";
  RunParameters parameters;
  parameters.gain = 0.25;
  const ParameterProblems problems = takeChecked(texts, survey(), parameters);
  ASSERT_EQ(problems.size(), 2u);
  EXPECT_EQ(problems[0].field, RunField::kIterations);
  EXPECT_EQ(problems[1].field, RunField::kGain);
  EXPECT_NE(problems[1].message.find("'abc'"), std::string::npos) << problems[1].message;
  EXPECT_EQ(parameters.gain, 0.25);
  EXPECT_EQ(parameters.iterations, 1000);
  EXPECT_EQ(parameters.indexMin, -1.5);
}

TEST(RunParameterTextsTest, AFieldOutOfRangeKeepsItsOldValueAndTheOthersAreTaken) {
  RunParameterTexts texts = goodTexts();
  texts.order = "4";
  texts.iterations = "77";
  RunParameters parameters;
  const ParameterProblems problems = takeChecked(texts, survey(), parameters);
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_EQ(problems[0].field, RunField::kOrder);
  EXPECT_EQ(parameters.order, 2);
  EXPECT_EQ(parameters.iterations, 77);
}

TEST(RunParameterTextsTest, AnIntegerBeyond32BitsIsOutOfRangeAndDoesNotWrap) {
  RunParameterTexts texts = goodTexts();
  texts.iterations = "4294967297";
  RunParameters parameters;
  const ParameterProblems problems = takeChecked(texts, survey(), parameters);
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_EQ(problems[0].field, RunField::kIterations);
}

TEST(RunParameterTextsTest, BlanksAroundANumberAreAccepted) {
  RunParameterTexts texts = goodTexts();
  texts.gain = " 0.5 ";
  texts.order = "\t3";
  RunParameters parameters;
  EXPECT_TRUE(takeChecked(texts, survey(), parameters).empty());
  EXPECT_EQ(parameters.gain, 0.5);
  EXPECT_EQ(parameters.order, 3);
}

}  // namespace
}  // namespace lumo
