// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "imaging/MakeParametersModel.h"

namespace lumo {
namespace {

using testing::ElementsAre;

/// Every field with a value of its own, all valid.
ABMakeParameters distinctBlock() {
  ABMakeParameters p;
  p.uvLimitU = 1.25, p.uvLimitV = 1.5, p.uvScaleU = 1e5 / 3, p.uvScaleV = 2e5;
  p.shiftX = -0.75, p.shiftY = 0.1, p.halfSizeX = 512, p.halfSizeY = 128;
  p.weightingMode = kUniformWeighting, p.uniformBoxU = 0.25, p.uniformBoxV = -1;
  p.kernelWidthU = 2.5, p.kernelWidthV = 3.5, p.kernelType = kKernelHat;
  p.taperWidthU = 7e4, p.taperWidthV = 8e4, p.taperParam3 = 0.6, p.taperParam4 = 0.2;
  p.taperType = kTaperTh, p.useVisWeights = 0;
  return p;
}

void expectSameFields(const ABMakeParameters& a, const ABMakeParameters& b) {
  const MakeParametersModel left(a);
  const MakeParametersModel right(b);
  for (std::size_t i = 0; i < kMakeFieldCount; ++i) {
    const auto field = static_cast<MakeField>(i);
    EXPECT_EQ(left.text(field), right.text(field)) << MakeParametersModel::name(field);
  }
}

class MakeParametersModelTest : public testing::Test {
 protected:
  void expectRefused(MakeField field, const std::string& text, const std::string& message) {
    MakeParametersModel model(distinctBlock());
    model.setText(field, text);
    const MakeParametersModel::Result result = model.read();
    EXPECT_EQ(result.status.code(), StatusCode::kInvalidValue) << message;
    EXPECT_EQ(result.field, field) << message;
    EXPECT_EQ(result.status.message(), message);
  }
};

TEST_F(MakeParametersModelTest, TextsReadBackToTheSameBlock) {
  const ABMakeParameters block = distinctBlock();
  const MakeParametersModel::Result result = MakeParametersModel(block).read();
  ASSERT_TRUE(result.status.ok()) << result.status.text();
  EXPECT_EQ(result.block.uvLimitU, 1.25);
  EXPECT_EQ(result.block.uvLimitV, 1.5);
  EXPECT_EQ(result.block.uvScaleU, 1e5 / 3);
  EXPECT_EQ(result.block.uvScaleV, 2e5);
  EXPECT_EQ(result.block.shiftX, -0.75);
  EXPECT_EQ(result.block.shiftY, 0.1);
  EXPECT_EQ(result.block.halfSizeX, 512);
  EXPECT_EQ(result.block.halfSizeY, 128);
  EXPECT_EQ(result.block.weightingMode, kUniformWeighting);
  EXPECT_EQ(result.block.uniformBoxU, 0.25);
  EXPECT_EQ(result.block.uniformBoxV, -1);
  EXPECT_EQ(result.block.kernelWidthU, 2.5);
  EXPECT_EQ(result.block.kernelWidthV, 3.5);
  EXPECT_EQ(result.block.kernelType, kKernelHat);
  EXPECT_EQ(result.block.taperWidthU, 7e4);
  EXPECT_EQ(result.block.taperWidthV, 8e4);
  EXPECT_EQ(result.block.taperParam3, 0.6);
  EXPECT_EQ(result.block.taperParam4, 0.2);
  EXPECT_EQ(result.block.taperType, kTaperTh);
  EXPECT_EQ(result.block.useVisWeights, 0);
}

TEST_F(MakeParametersModelTest, EveryTextSetsItsOwnField) {
  MakeParametersModel model;
  const MakeParametersModel wanted(distinctBlock());
  for (std::size_t i = 0; i < kMakeFieldCount; ++i)
    model.setText(static_cast<MakeField>(i), wanted.text(static_cast<MakeField>(i)));
  const MakeParametersModel::Result result = model.read();
  ASSERT_TRUE(result.status.ok());
  expectSameFields(result.block, distinctBlock());
}

TEST_F(MakeParametersModelTest, DefaultsAreAccepted) {
  EXPECT_TRUE(MakeParametersModel().read().status.ok());
}

TEST_F(MakeParametersModelTest, BlanksAroundANumberDoNotMatter) {
  MakeParametersModel model;
  model.setText(MakeField::kShiftX, "  -2.5e1\t");
  ASSERT_TRUE(model.read().status.ok());
  EXPECT_EQ(model.read().block.shiftX, -25.0);
}

TEST_F(MakeParametersModelTest, TextThatIsNoNumberIsRefusedByField) {
  expectRefused(MakeField::kShiftY, "1,5", "shiftY is 1,5; expected a number");
  expectRefused(MakeField::kTaperParam4, "", "taperParam4 is empty; expected a number");
  expectRefused(MakeField::kUvLimitU, "2 x", "uvLimitU is 2 x; expected a number");
  expectRefused(MakeField::kKernelType, "2.5", "kernelType is 2.5; expected a whole number");
  expectRefused(MakeField::kHalfSizeX, "4294967298", "halfSizeX is 4294967298; expected a whole number");
}

TEST_F(MakeParametersModelTest, ValueThatGriddingCannotUseIsRefusedByField) {
  expectRefused(MakeField::kUvLimitV, "-1", "uvLimitV is -1; expected a number not below 0");
  expectRefused(MakeField::kHalfSizeX, "128",
                "halfSizeX is 128; expected one of 2, 4, 16, 32, 256, 512, 1024, 2048");
  expectRefused(MakeField::kHalfSizeY, "32",
                "halfSizeY is 32; expected one of 2, 8, 16, 128, 256, 512, 1024");
  expectRefused(MakeField::kShiftX, "inf", "shiftX is inf; expected a finite number");
  expectRefused(MakeField::kKernelWidthV, "-0.5", "kernelWidthV is -0.5; expected a number not below 0");
  expectRefused(MakeField::kTaperWidthU, "nan", "taperWidthU is nan; expected a number not below 0");
  expectRefused(MakeField::kUniformBoxV, "2.5", "uniformBoxV is 2.5; expected a number not above 2");
  expectRefused(MakeField::kTaperType, "5",
                "taperType is 5; expected 1 (none), 2 (Gauss), 3 (Lorentz) or 4 (th)");
}

TEST_F(MakeParametersModelTest, NegativeOrInfiniteScaleIsRefused) {
  expectRefused(MakeField::kUvScaleU, "-3", "uvScaleU is -3; expected a number not below 0");
  expectRefused(MakeField::kUvScaleV, "inf", "uvScaleV is inf; expected a number not below 0");
}

TEST_F(MakeParametersModelTest, CellIsOneOverTwiceTheGridLimitAndTheFieldIsSoManyCells) {
  ABMakeParameters block;
  // A grid to 2 x 103132.403... wavelengths has cells of half an arcsecond: 1 rad / (2 Umax).
  block.uvLimitU = 2.0;
  block.uvScaleU = 206264.80624709636 / 2.0;
  block.uvLimitV = 1.0;
  block.uvScaleV = 206264.80624709636 * 5.0;
  block.halfSizeX = 512;
  block.halfSizeY = 256;
  const MakeParametersModel model(block);
  EXPECT_DOUBLE_EQ(model.extentX().gridLimit, 206264.80624709636);
  EXPECT_DOUBLE_EQ(model.extentX().cell, 0.5);
  EXPECT_DOUBLE_EQ(model.extentX().field, 256.0);
  EXPECT_DOUBLE_EQ(model.extentY().cell, 0.1);
  EXPECT_DOUBLE_EQ(model.extentY().field, 25.6);
}

TEST_F(MakeParametersModelTest, UnsetLimitCountsWithTheValueThatSetupGivesIt) {
  ABMakeParameters block;
  block.uvScaleU = 1000.0;
  EXPECT_EQ(MakeParametersModel(block).extentX().gridLimit, 2000.0);
}

TEST_F(MakeParametersModelTest, ExtentIsUnknownWithoutASurveyOrWithABadText) {
  MakeParametersModel model;
  EXPECT_TRUE(std::isnan(model.extentX().cell));
  model.setText(MakeField::kUvScaleU, "1000");
  EXPECT_FALSE(std::isnan(model.extentX().field));
  EXPECT_TRUE(std::isnan(model.extentY().field));
  model.setText(MakeField::kUvLimitU, "two");
  EXPECT_TRUE(std::isnan(model.extentX().cell));
}

TEST_F(MakeParametersModelTest, FieldsThatTheChoicesDoNotUseAreTold) {
  MakeParametersModel model;  // natural weighting, pill box, no taper
  for (const MakeField field : {MakeField::kUniformBoxU, MakeField::kKernelWidthV, MakeField::kTaperWidthU,
                                MakeField::kTaperWidthV, MakeField::kTaperParam3})
    EXPECT_FALSE(model.isUsed(field)) << MakeParametersModel::name(field);
  EXPECT_TRUE(model.isUsed(MakeField::kUvLimitU));
  model.setText(MakeField::kWeightingMode, "2");
  model.setText(MakeField::kKernelType, "3");
  model.setText(MakeField::kTaperType, "2");
  EXPECT_TRUE(model.isUsed(MakeField::kUniformBoxU));
  EXPECT_TRUE(model.isUsed(MakeField::kKernelWidthV));
  EXPECT_TRUE(model.isUsed(MakeField::kTaperWidthV));
  EXPECT_FALSE(model.isUsed(MakeField::kTaperParam4));
}

TEST_F(MakeParametersModelTest, TheThTaperHasOneWidthAndTwoParameters) {
  MakeParametersModel model;
  model.setText(MakeField::kTaperType, "4");
  EXPECT_TRUE(model.isUsed(MakeField::kTaperWidthU));
  EXPECT_FALSE(model.isUsed(MakeField::kTaperWidthV));
  EXPECT_TRUE(model.isUsed(MakeField::kTaperParam3));
  EXPECT_TRUE(model.isUsed(MakeField::kTaperParam4));
}

TEST_F(MakeParametersModelTest, OffersTheUsableSizes) {
  EXPECT_THAT(MakeParametersModel::usableColumns(), ElementsAre(2, 4, 16, 32, 256, 512, 1024, 2048));
  EXPECT_THAT(MakeParametersModel::usableRows(), ElementsAre(2, 8, 16, 128, 256, 512, 1024));
}

TEST_F(MakeParametersModelTest, AnglesAndBaselinesAreShownInAFittingUnit) {
  EXPECT_EQ(angleText(0.00123456), "1.235 mas");
  EXPECT_EQ(angleText(0.1), "0.1 arcsec");
  EXPECT_EQ(angleText(25.6), "25.6 arcsec");
  EXPECT_EQ(angleText(7200.0), "2 deg");
  EXPECT_EQ(angleText(std::nan("")), "unknown");
  EXPECT_EQ(wavelengthText(250.0), "250 λ");
  EXPECT_EQ(wavelengthText(206264.8), "206.3 kλ");
  EXPECT_EQ(wavelengthText(3.5e6), "3.5 Mλ");
  EXPECT_EQ(wavelengthText(INFINITY), "unknown");
}

}  // namespace
}  // namespace lumo
