// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "io/MapProduct.h"
#include "run/SpectralIndexMap.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

const SpectralIndexRule kRule{.threshold = 0.5, .lowest = -3, .highest = 3};

TEST(SpectralIndexMapTest, IsTheFirstTermOverTheZerothInSinglePrecision) {
  EXPECT_EQ(spectralIndex(2.0f, -1.4f, kRule), -1.4f / 2.0f);
  EXPECT_EQ(spectralIndex(0.7f, 0.1f, kRule), 0.1f / 0.7f);
  EXPECT_EQ(spectralIndex(-2.0f, 1.0f, kRule), -0.5f) << "negative flux counts by its size";
}

TEST(SpectralIndexMapTest, APixelExactlyAtTheThresholdIsKept) {
  EXPECT_EQ(spectralIndex(0.5f, 0.25f, kRule), 0.5f);
  EXPECT_EQ(spectralIndex(-0.5f, 0.25f, kRule), -0.5f);
  EXPECT_TRUE(std::isnan(spectralIndex(std::nextafter(0.5f, 0.0f), 0.25f, kRule)));
}

TEST(SpectralIndexMapTest, IndicesOfExactlyTheBoundsAreKept) {
  EXPECT_EQ(spectralIndex(1.0f, -3.0f, kRule), -3.0f);
  EXPECT_EQ(spectralIndex(1.0f, 3.0f, kRule), 3.0f);
  EXPECT_TRUE(std::isnan(spectralIndex(1.0f, std::nextafter(-3.0f, -4.0f), kRule)));
  EXPECT_TRUE(std::isnan(spectralIndex(1.0f, std::nextafter(3.0f, 4.0f), kRule)));
}

TEST(SpectralIndexMapTest, WhatIsNotANumberBecomesNan) {
  const SpectralIndexRule all{.threshold = 0, .lowest = -1e38, .highest = 1e38};
  EXPECT_TRUE(std::isnan(spectralIndex(0.0f, 0.0f, all))) << "0/0";
  EXPECT_TRUE(std::isnan(spectralIndex(kNan, 1.0f, all)));
  EXPECT_TRUE(std::isnan(spectralIndex(1.0f, kNan, all)));
  EXPECT_TRUE(std::isnan(spectralIndex(kInf, kInf, all)));
  EXPECT_TRUE(std::isnan(spectralIndex(0.0f, 1.0f, all)));
  EXPECT_TRUE(std::isnan(spectralIndex(0.0f, -1.0f, all)));
}

TEST(SpectralIndexMapTest, WithAThresholdOfZeroEveryFiniteRatioInTheRangeIsKept) {
  const SpectralIndexRule rule{.threshold = 0, .lowest = -3, .highest = 3};
  EXPECT_EQ(spectralIndex(1e-30f, 2e-30f, rule), 2.0f);
  EXPECT_EQ(spectralIndex(-1e-30f, 1e-30f, rule), -1.0f);
  EXPECT_TRUE(std::isnan(spectralIndex(1e-30f, 4e-30f, rule)));
}

TEST(SpectralIndexMapTest, AMinimumAboveTheMaximumKeepsNothing) {
  const SpectralIndexRule rule{.threshold = 0, .lowest = 1, .highest = -1};
  for (const float index : {-2.0f, -1.0f, 0.0f, 1.0f, 2.0f})
    EXPECT_TRUE(std::isnan(spectralIndex(1.0f, index, rule)));
}

TEST(SpectralIndexMapTest, MapsOfDifferentSizesAreRefused) {
  AMatrix<float> zero(2, 3);
  zero(1, 2) = 7;
  EXPECT_EQ(makeSpectralIndexMap(zero, AMatrix<float>(3, 2), kRule).code(), StatusCode::kBadFormat);
  EXPECT_EQ(zero(1, 2), 7.0f);
}

class SpectralIndexFilesTest : public testing::Test {
 protected:
  SpectralIndexFilesTest() : zero_(2, 2), first_(2, 2) {
    header_.unit = "Jy/Beam";
    header_.sourceName = "0235+164";
    header_.frequency = 1.5e9;
    header_.beamMajor = 4;
    header_.beamMinor = 3;
    header_.beamPa = 20;
    range_ = {.xMin = -1, .xMax = 1, .yMin = -2, .yMax = 2, .vMin = -0.25, .vMax = 8};
    const float zeros[] = {8.0f, 4.0f, 3.9999f, -4.0f};
    const float firsts[] = {-8.0f, 3.0f, 1.0f, 20.0f};
    std::copy(std::begin(zeros), std::end(zeros), zero_.data());
    std::copy(std::begin(firsts), std::end(firsts), first_.data());
  }
  void write() {
    ASSERT_TRUE(writeMap(files_.zero, header_, range_, zero_).ok());
    ASSERT_TRUE(writeMap(files_.first, header_, range_, first_).ok());
  }

  test::TempFolder folder_;
  SpectralIndexFiles files_{folder_.file("a^cln0.exm"), folder_.file("a^cln1.exm"),
                            folder_.file("a^sindex.exm")};
  AMapHeader header_;
  TMinMax range_;
  AMatrix<float> zero_;
  AMatrix<float> first_;
};

TEST_F(SpectralIndexFilesTest, TheThresholdIsAFractionOfTheStoredMaximum) {
  write();
  ASSERT_TRUE(writeSpectralIndexMap(files_, 0.5, -3, 3).ok());
  LoadedMap index;
  ASSERT_TRUE(readMap(files_.index, index).ok());
  EXPECT_EQ((*index.matrix)(0, 0), -1.0f);
  EXPECT_EQ((*index.matrix)(0, 1), 0.75f) << "4 is exactly half of the stored maximum 8";
  EXPECT_TRUE(std::isnan((*index.matrix)(1, 0)));
  EXPECT_TRUE(std::isnan((*index.matrix)(1, 1))) << "-5 is below the range";
}

TEST_F(SpectralIndexFilesTest, HeaderAndRangesAreThoseOfTheZeroOrderMapButForTheUnit) {
  write();
  ASSERT_TRUE(writeSpectralIndexMap(files_, 0.5, -3, 3).ok());
  LoadedMap index;
  ASSERT_TRUE(readMap(files_.index, index).ok());
  EXPECT_EQ(index.header.Unit(), "Sp. Index");
  EXPECT_EQ(index.header.kind, MapKind::kSpectralIndex);
  EXPECT_EQ(index.header.sourceName, "0235+164");
  EXPECT_EQ(index.header.frequency, 1.5e9);
  EXPECT_EQ(index.header.beamMajor, 4.0);
  EXPECT_EQ(index.header.beamPa, 20.0);
  EXPECT_EQ(index.range, range_);
}

TEST_F(SpectralIndexFilesTest, AMissingMapIsAReasonAndNothingIsWritten) {
  ASSERT_TRUE(writeMap(files_.zero, header_, range_, zero_).ok());
  const Status status = writeSpectralIndexMap(files_, 0.5, -3, 3);
  EXPECT_FALSE(status.ok());
  EXPECT_EQ(status.file(), files_.first);
  EXPECT_FALSE(test::exists(files_.index));
}

}  // namespace
}  // namespace lumo
