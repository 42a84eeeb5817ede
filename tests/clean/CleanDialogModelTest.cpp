// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <limits>

#include "clean/CleanDialogModel.h"

namespace lumo {
namespace {

TEST(CleanDialogModelTest, TextsReadStaticAndTheTitleIsLeftAloneBeforeTheFirstIteration) {
  CleanDialogModel model;
  EXPECT_FALSE(model.update(0, 0.0));
  EXPECT_EQ(model.iterationText(), "Static");
  EXPECT_EQ(model.fluxText(), "Static");
  EXPECT_EQ(model.mainTitle(), "");
}

TEST(CleanDialogModelTest, FluxWithoutAnIterationIsNotShown) {
  CleanDialogModel model;
  EXPECT_FALSE(model.update(0, 1.5));
  EXPECT_EQ(model.fluxText(), "Static");
}

TEST(CleanDialogModelTest, SnapshotGivesTheNumberTheShortestFluxAndTheTitle) {
  CleanDialogModel model;
  EXPECT_TRUE(model.update(1234, 0.1 + 0.2));
  EXPECT_EQ(model.iterationText(), "1234");
  EXPECT_EQ(model.fluxText(), "0.30000000000000004");
  EXPECT_EQ(model.mainTitle(), "1234 - MFS");
}

TEST(CleanDialogModelTest, SameSnapshotAgainChangesNothing) {
  CleanDialogModel model;
  ASSERT_TRUE(model.update(7, std::numeric_limits<double>::quiet_NaN()));
  EXPECT_EQ(model.fluxText(), "nan");
  EXPECT_FALSE(model.update(7, std::numeric_limits<double>::quiet_NaN()));
  EXPECT_TRUE(model.update(7, -2.0));
  EXPECT_EQ(model.fluxText(), "-2");
}

}  // namespace
}  // namespace lumo
