// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "imaging/ABMakeParameters.h"
#include "imaging/TestFile.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::TempFolder;
using test::TestFile;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

class ABMakeParametersTest : public ::testing::Test {
 protected:
  void SetUp() override {
    test::writeTestFile(TestFile({1.4e9}), folder_.file("a.uvx"));
    ASSERT_EQ(file_.Open(folder_.file("a.uvx"), AFile::kRead), 1);
  }

  /// Expects that a change of the defaults is refused with the field's name and leaves the limits unset.
  void expectRefused(const std::string& field, const std::function<void(ABMakeParameters&)>& change) {
    ABMakeParameters p;
    change(p);
    EXPECT_EQ(p.Setup(file_, 1), 0) << field;
    EXPECT_EQ(p.status().code(), StatusCode::kInvalidValue) << field;
    EXPECT_EQ(p.status().message().rfind(field + " is ", 0), 0u) << p.status().message();
    EXPECT_EQ(p.validate().message(), p.status().message());
    EXPECT_NE(p.uvLimitU, ABMakeParameters::kDefaultUvLimit);
    EXPECT_NE(p.uvLimitV, ABMakeParameters::kDefaultUvLimit);
  }

  TempFolder folder_;
  AUVXFile file_;
};

template <typename T>
void appendBytes(std::string& bytes, T value) {
  char raw[sizeof value];
  std::memcpy(raw, &value, sizeof value);  // The tests run on little-endian machines only.
  bytes.append(raw, sizeof raw);
}

/// A block whose fields all differ.
ABMakeParameters distinctBlock() {
  ABMakeParameters p;
  p.uvLimitU = 1.25;
  p.uvLimitV = 1.5;
  p.uvScaleU = 3e6;
  p.uvScaleV = 4e6;
  p.shiftX = -0.25;
  p.shiftY = 7.5;
  p.halfSizeX = 512;
  p.halfSizeY = 1024;
  p.weightingMode = kUniformWeighting;
  p.uniformBoxU = 0.5;
  p.uniformBoxV = -3;
  p.kernelWidthU = 1.75;
  p.kernelWidthV = 2.25;
  p.kernelType = kKernelHat;
  p.taperWidthU = 1e5;
  p.taperWidthV = 2e5;
  p.taperParam3 = 0.125;
  p.taperParam4 = 0.0625;
  p.taperType = kTaperTh;
  p.useVisWeights = 0;
  return p;
}

std::string distinctBytes() {
  std::string bytes = "AMP1";
  for (const double v : {1.25, 1.5, 3e6, 4e6, -0.25, 7.5}) appendBytes(bytes, v);
  for (const std::int32_t v : {512, 1024, 2}) appendBytes(bytes, v);
  for (const double v : {0.5, -3.0, 1.75, 2.25}) appendBytes(bytes, v);
  appendBytes(bytes, std::int32_t{4});
  for (const double v : {1e5, 2e5, 0.125, 0.0625}) appendBytes(bytes, v);
  for (const std::int32_t v : {4, 0}) appendBytes(bytes, v);
  return bytes;
}

TEST_F(ABMakeParametersTest, StartsWithTheDocumentedDefaults) {
  const ABMakeParameters p;
  EXPECT_EQ(p.uvLimitU, 0);
  EXPECT_EQ(p.uvLimitV, 0);
  EXPECT_EQ(p.shiftX, 0);
  EXPECT_EQ(p.shiftY, 0);
  EXPECT_EQ(p.halfSizeX, 256);
  EXPECT_EQ(p.halfSizeY, 256);
  EXPECT_NE(p.weightingMode, kUniformWeighting);
  EXPECT_EQ(p.uniformBoxU, 1);
  EXPECT_EQ(p.uniformBoxV, 1);
  EXPECT_EQ(p.kernelWidthU, 1);
  EXPECT_EQ(p.kernelWidthV, 1);
  EXPECT_EQ(p.kernelType, 1);
  EXPECT_EQ(p.taperType, 1);
  EXPECT_EQ(p.useVisWeights, 1);
  EXPECT_TRUE(p.validate().ok());
}

TEST_F(ABMakeParametersTest, SetupGivesAnUnsetLimitTheValueTwo) {
  ABMakeParameters p;
  p.uvLimitV = 0.75;
  EXPECT_EQ(p.Setup(file_, 1), 1);
  EXPECT_TRUE(p.status().ok());
  EXPECT_EQ(p.uvLimitU, 2.0);
  EXPECT_EQ(p.uvLimitV, 0.75);
}

TEST_F(ABMakeParametersTest, SetupRefusesASourceThatTheFileDoesNotHave) {
  ABMakeParameters p;
  EXPECT_EQ(p.Setup(file_, 2), 0);
  EXPECT_EQ(p.status().file(), folder_.file("a.uvx"));
  EXPECT_NE(p.status().message().find('2'), std::string::npos);
  EXPECT_EQ(p.uvLimitU, 0);
}

TEST_F(ABMakeParametersTest, SetupRefusesKernelAndTaperTypesOutsideOneToFour) {
  for (const std::int32_t type : {-1, 0, 5}) {
    expectRefused("kernelType", [type](ABMakeParameters& p) { p.kernelType = type; });
    expectRefused("taperType", [type](ABMakeParameters& p) { p.taperType = type; });
  }
}

TEST_F(ABMakeParametersTest, SetupRefusesSizesWhoseTransformIsRefused) {
  for (const std::int32_t size : {-4, 0, 1, 3, 8, 64, 128, 300, 4096, 8192, 16384, 32768, 65536})
    expectRefused("halfSizeX", [size](ABMakeParameters& p) { p.halfSizeX = size; });
  for (const std::int32_t size : {-4, 0, 1, 3, 4, 32, 64, 300, 2048, 4096, 8192, 16384, 32768, 1 << 30})
    expectRefused("halfSizeY", [size](ABMakeParameters& p) { p.halfSizeY = size; });
}

TEST_F(ABMakeParametersTest, AcceptsEveryUsableSize) {
  for (const std::int32_t size : {2, 4, 16, 32, 256, 512, 1024, 2048})
    EXPECT_TRUE(ABMakeParameters::isUsableColumns(size)) << size;
  for (const std::int32_t size : {2, 8, 16, 128, 256, 512, 1024})
    EXPECT_TRUE(ABMakeParameters::isUsableRows(size)) << size;
}

TEST_F(ABMakeParametersTest, SetupRefusesLimitsThatAreNegativeOrNotFinite) {
  for (const double bad : {-1.0, kNaN, kInfinity}) {
    expectRefused("uvLimitU", [bad](ABMakeParameters& p) { p.uvLimitU = bad; });
    expectRefused("uvLimitV", [bad](ABMakeParameters& p) { p.uvLimitV = bad; });
  }
}

TEST_F(ABMakeParametersTest, SetupRefusesShiftsThatAreNotFiniteAndTakesNegativeOnes) {
  for (const double bad : {kNaN, kInfinity, -kInfinity}) {
    expectRefused("shiftX", [bad](ABMakeParameters& p) { p.shiftX = bad; });
    expectRefused("shiftY", [bad](ABMakeParameters& p) { p.shiftY = bad; });
  }
  ABMakeParameters p;
  p.shiftX = -12;
  EXPECT_EQ(p.Setup(file_, 1), 1);
}

TEST_F(ABMakeParametersTest, SetupRefusesWidthsThatAreNegativeOrNotFinite) {
  for (const double bad : {-0.5, kNaN, kInfinity}) {
    expectRefused("kernelWidthU", [bad](ABMakeParameters& p) { p.kernelWidthU = bad; });
    expectRefused("kernelWidthV", [bad](ABMakeParameters& p) { p.kernelWidthV = bad; });
    expectRefused("taperWidthU", [bad](ABMakeParameters& p) { p.taperWidthU = bad; });
    expectRefused("taperWidthV", [bad](ABMakeParameters& p) { p.taperWidthV = bad; });
  }
}

TEST_F(ABMakeParametersTest, SetupRefusesTaperParametersThatAreNotFinite) {
  for (const double bad : {kNaN, -kInfinity}) {
    expectRefused("taperParam3", [bad](ABMakeParameters& p) { p.taperParam3 = bad; });
    expectRefused("taperParam4", [bad](ABMakeParameters& p) { p.taperParam4 = bad; });
  }
}

TEST_F(ABMakeParametersTest, SetupRefusesAUniformBoxAboveTwoAndTakesOneBelowZero) {
  for (const double bad : {2.0000001, kNaN, kInfinity}) {
    expectRefused("uniformBoxU", [bad](ABMakeParameters& p) { p.uniformBoxU = bad; });
    expectRefused("uniformBoxV", [bad](ABMakeParameters& p) { p.uniformBoxV = bad; });
  }
  ABMakeParameters p;
  p.uniformBoxU = 2;
  p.uniformBoxV = -1;
  EXPECT_EQ(p.Setup(file_, 1), 1);
}

TEST_F(ABMakeParametersTest, StoreWritesTheMarkAndThePackedFieldsInTheirOrder) {
  AFile out;
  ASSERT_EQ(out.Open(folder_.file("block"), AFile::kCreate), 1);
  EXPECT_EQ(distinctBlock().Store(out), 1);
  ASSERT_EQ(out.Close(), 1);
  const std::string expected = distinctBytes();
  ASSERT_EQ(expected.size(), 4u + 14 * 8 + 6 * 4);
  EXPECT_EQ(test::readFile(folder_.file("block")), expected);
}

TEST_F(ABMakeParametersTest, LoadReadsWhatTheBytesSay) {
  test::writeFile(folder_.file("block"), distinctBytes());
  AFile in;
  ASSERT_EQ(in.Open(folder_.file("block"), AFile::kRead), 1);
  ABMakeParameters p;
  EXPECT_EQ(p.Load(in), 1);
  EXPECT_EQ(p.uvScaleV, 4e6);
  EXPECT_EQ(p.shiftX, -0.25);
  EXPECT_EQ(p.halfSizeY, 1024);
  EXPECT_EQ(p.uniformBoxV, -3);
  EXPECT_EQ(p.kernelType, kKernelHat);
  EXPECT_EQ(p.taperParam4, 0.0625);
  EXPECT_EQ(p.taperType, kTaperTh);
  EXPECT_EQ(p.useVisWeights, 0);
}

TEST_F(ABMakeParametersTest, LoadOfATruncatedBlockFailsAtEveryLengthAndChangesNothing) {
  const std::string bytes = distinctBytes();
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    test::writeFile(folder_.file("block"), bytes.substr(0, length));
    AFile in;
    ASSERT_EQ(in.Open(folder_.file("block"), AFile::kRead), 1);
    ABMakeParameters p;
    p.halfSizeX = 16;
    ASSERT_EQ(p.Load(in), 0) << length;
    ASSERT_EQ(p.halfSizeX, 16) << length;
    ASSERT_EQ(p.uvLimitU, 0) << length;
  }
}

TEST_F(ABMakeParametersTest, LoadRefusesAnotherMark) {
  std::string bytes = distinctBytes();
  bytes[3] = '2';
  test::writeFile(folder_.file("block"), bytes);
  AFile in;
  ASSERT_EQ(in.Open(folder_.file("block"), AFile::kRead), 1);
  ABMakeParameters p;
  EXPECT_EQ(p.Load(in), 0);
  EXPECT_EQ(p.halfSizeX, 256);
}

}  // namespace
}  // namespace lumo
