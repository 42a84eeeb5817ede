// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "clean/CleanParameters.h"

namespace lumo {
namespace {

CleanParameters variable(double gain) {
  CleanParameters parameters;
  parameters.gain = gain;
  parameters.variableGain = true;
  return parameters;
}

TEST(CleanParametersTest, ConstantGainIsTheSameInEveryIteration) {
  CleanParameters parameters;
  parameters.gain = 0.37;
  EXPECT_EQ(loopGain(parameters, 1), 0.37);
  EXPECT_EQ(loopGain(parameters, 100000), 0.37);
}

TEST(CleanParametersTest, VariableGainIsOneFromTheFirstIterationWhenTheGainIsOneOrMore) {
  EXPECT_EQ(loopGain(variable(1.0), 1), 1.0);
  EXPECT_EQ(loopGain(variable(1.5), 1), 1.0);
  EXPECT_EQ(loopGain(variable(1.5), 20000), 1.0);
}

TEST(CleanParametersTest, VariableGainStartsJustAboveTheGainAndPassesTheMiddleAtIteration7000) {
  // 0.9 (1/2 - 1 / (6999 pi)) below the middle 0.55: 0.1 + 0.9 / (6999 pi) to first order.
  EXPECT_NEAR(loopGain(variable(0.1), 1), 0.1000409, 5e-8);
  EXPECT_EQ(loopGain(variable(0.1), 7000), 0.55);
  EXPECT_NEAR(loopGain(variable(0.1), 13999), 0.9999591, 5e-8);
}

TEST(CleanParametersTest, VariableGainDoesNotDependOnTheNumberOfIterations) {
  CleanParameters parameters = variable(0.2);
  parameters.iterations = 10;
  const double few = loopGain(parameters, 6990);
  parameters.iterations = 100000;
  EXPECT_EQ(loopGain(parameters, 6990), few);
}

}  // namespace
}  // namespace lumo
