// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "imaging/UvPlanePoints.h"
#include "imaging/UvPlaneSample.h"

namespace lumo {
namespace {

using test::ones;
using test::TestFile;
using test::uvPlaneOf;

constexpr UvRange kAll{-1e9, 1e9, -1e9, 1e9};

std::vector<UvPoint> pointsOf(const UvPlaneData& data, const UvRange& visible, Status* status = nullptr) {
  std::vector<UvPoint> all;
  Status read = readUvPoints(data, visible, [&all](std::span<const UvPoint> points) {
    all.insert(all.end(), points.begin(), points.end());
  });
  if (status != nullptr) *status = std::move(read);
  return all;
}

class UvPlanePointsTest : public testing::Test {
 protected:
  UvPlaneData list(const std::vector<TestFile>& files) {
    return uvPlaneOf(test::listTestFiles(folder_, files));
  }

  test::TempFolder folder_;
};

TEST_F(UvPlanePointsTest, EveryChannelOfEveryIfIsDrawnAtItsOwnFrequencyWithBothSignsTurned) {
  TestFile file({1e9, 2e9}, 2);  // channels are 1 MHz apart
  file.add(3e-6, -5e-6, ones(4));
  const auto points = pointsOf(list({file}), kAll);
  const double frequencies[] = {1e9, 1.001e9, 2e9, 2.001e9};
  ASSERT_EQ(points.size(), 4U);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(points[i].u, -(frequencies[i] * static_cast<double>(3e-6F)));
    EXPECT_EQ(points[i].v, -(frequencies[i] * static_cast<double>(-5e-6F)));
  }
}

TEST_F(UvPlanePointsTest, GroupsWhoseFirstByteIsNonZeroNeverAppear) {
  TestFile file({1e9});
  for (const int flag : {0, 1, 2, 128, 255}) {
    auto& group = file.add(1e-6 * (1 + flag), 0, ones(1));
    group.record.flag = static_cast<std::uint8_t>(flag);
  }
  const auto points = pointsOf(list({file}), kAll);
  ASSERT_EQ(points.size(), 1U);
  EXPECT_EQ(points[0].u, -(1e9 * static_cast<double>(1e-6F)));
}

TEST_F(UvPlanePointsTest, APointExactlyOnTheRangeBorderIsDrawn) {
  TestFile file({1.0});
  // At 1 Hz u and v are their own wavelengths; every corner of the range and just beyond.
  for (const float u : {-4.0F, 4.0F})
    for (const float v : {-2.0F, 2.0F}) file.add(u, v, ones(1));
  file.add(std::nextafter(4.0F, 5.0F), 0, ones(1));
  file.add(std::nextafter(-4.0F, -5.0F), 0, ones(1));
  file.add(0, std::nextafter(2.0F, 3.0F), ones(1));
  file.add(0, std::nextafter(-2.0F, -3.0F), ones(1));
  EXPECT_EQ(pointsOf(list({file}), {-4.0, 4.0, -2.0, 2.0}).size(), 4U);
}

TEST_F(UvPlanePointsTest, ThePointStreamHoldsPWherePItselfLiesInTheRangeWhereverItsMirrorIs) {
  TestFile file({1.0});
  file.add(-3, 0, ones(1));  // P = (3, 0), mirror (-3, 0)
  file.add(3, 0, ones(1));   // P = (-3, 0), mirror (3, 0)
  const auto points = pointsOf(list({file}), {1.0, 4.0, -1.0, 1.0});
  ASSERT_EQ(points.size(), 1U);
  EXPECT_EQ(points[0].u, 3.0);
}

TEST_F(UvPlanePointsTest, WithAnEmptyFileListNothingIsDrawn) {
  Status status;
  EXPECT_TRUE(pointsOf(UvPlaneData(), kAll, &status).empty());
  EXPECT_TRUE(status.ok());
}

TEST_F(UvPlanePointsTest, OnlyRowsWhoseBitIsSetAreDrawn) {
  TestFile file({1e9});
  file.addSelection(7, {3e9});
  file.addSelection(-5, {4e9});
  for (const int id : {1, 7, -5, 99})
    file.add(1e-6, 0, ones(1)).record.freqSel = static_cast<std::int8_t>(id);
  file.used = ABitArray(3);
  file.used(0, 1);
  file.used(2, 1);
  const auto points = pointsOf(list({file}), kAll);
  ASSERT_EQ(points.size(), 2U);
  EXPECT_EQ(points[0].u, -(1e9 * static_cast<double>(1e-6F)));
  EXPECT_EQ(points[1].u, -(4e9 * static_cast<double>(1e-6F)));
}

TEST_F(UvPlanePointsTest, GroupsOfAnotherSourceAreLeftOut) {
  TestFile file({1e9});
  file.add(1e-6, 0, ones(1)).record.source = 2;
  file.add(2e-6, 0, ones(1));
  EXPECT_EQ(pointsOf(list({file}), kAll).size(), 1U);
}

TEST_F(UvPlanePointsTest, TheFirstFileThatDoesNotOpenEndsTheDrawing) {
  TestFile file({1e9});
  file.add(1e-6, 0, ones(1));
  UvPlaneData data = list({file, file, file});
  data.names[1] = folder_.file("gone.uvx");
  Status status;
  EXPECT_EQ(pointsOf(data, kAll, &status).size(), 1U);
  EXPECT_EQ(status.code(), StatusCode::kNotFound);
  EXPECT_EQ(status.file(), data.names[1]);
}

TEST_F(UvPlanePointsTest, NonFiniteCoordinatesAddNothing) {
  TestFile file({1e9});
  const float infinity = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (const float bad : {infinity, -infinity, nan}) {
    file.add(bad, 0, ones(1));
    file.add(0, bad, ones(1));
  }
  const double most = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(pointsOf(list({file}), {-most, most, -most, most}).empty());
}

TEST_F(UvPlanePointsTest, RejectedVisibilitiesAreCoverageAllTheSame) {
  TestFile file({1e9});
  file.add(1e-6, 0, {AUVXComplex(0, 0, 0)});
  EXPECT_EQ(pointsOf(list({file}), kAll).size(), 1U);
}

TEST_F(UvPlanePointsTest, MasksAndTablesThatDoNotFitTheFileDrawNothingThere) {
  TestFile file({1e9});
  file.addSelection(2, {2e9});
  file.add(1e-6, 0, ones(1));
  file.add(1e-6, 0, ones(1)).record.freqSel = 2;
  UvPlaneData data = list({file});
  data.selections[0] = ABitArray(1);
  data.selections[0] = 1;
  EXPECT_EQ(pointsOf(data, kAll).size(), 1U);
  data.selections.Clear();
  EXPECT_TRUE(pointsOf(data, kAll).empty());
}

TEST_F(UvPlanePointsTest, ManyGroupsComeInOrderAndAllOfThem) {
  TestFile file({1.0});
  constexpr int kCount = 150000;  // more than a batch of records and more than a batch of points
  for (int i = 0; i < kCount; ++i) file.add(-i, i, ones(1));
  std::size_t batches = 0;
  int next = 0;
  const Status status = readUvPoints(list({file}), kAll, [&](std::span<const UvPoint> points) {
    ++batches;
    for (const UvPoint& point : points) ASSERT_EQ(point.u, next++);
  });
  EXPECT_TRUE(status.ok()) << status.text();
  EXPECT_EQ(next, kCount);
  EXPECT_GT(batches, 1U);
}

TEST_F(UvPlanePointsTest, CancellingEndsTheReadingWithinABatch) {
  TestFile file({1.0});
  for (int i = 0; i < 200000; ++i) file.add(i, i, ones(1));
  CancelFlag cancel{0};
  int batches = 0;
  const Status status = readUvPoints(
      list({file}), kAll,
      [&](std::span<const UvPoint>) {
        ++batches;
        cancel = 1;
      },
      &cancel);
  EXPECT_EQ(status.code(), StatusCode::kCancelled);
  EXPECT_EQ(batches, 1);
}

TEST(UvPlaneDataTest, TheRangeIsASquareFivePerCentLargerThanTheLargerExtent) {
  UvPlaneData data;
  data.uExtent = 200.0;
  data.vExtent = 400.0;
  EXPECT_EQ(data.range(), (UvRange{-1.05 * 400.0, 1.05 * 400.0, -1.05 * 400.0, 1.05 * 400.0}));
  data.uExtent = 500.0;
  EXPECT_EQ(data.range(), (UvRange{-1.05 * 500.0, 1.05 * 500.0, -1.05 * 500.0, 1.05 * 500.0}));
}

TEST(UvPlaneDataTest, WithoutASelectionTheRangeIsStillOneThatCanBeDrawn) {
  UvPlaneData data;
  data.uExtent = data.vExtent = -1e38;
  EXPECT_EQ(data.range(), (UvRange{-1.0, 1.0, -1.0, 1.0}));
}

}  // namespace
}  // namespace lumo
