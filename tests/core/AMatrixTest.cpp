// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <complex>
#include <set>
#include <utility>
#include <vector>

#include "core/AMatrix.h"
#include "core/AMatrixRect.h"
#include "core/ProcessFacts.h"
#include "core/TMinMax.h"

namespace lumo {
namespace {

TEST(AMatrixTest, ElementsLieRowByRow) {
  AMatrix<float> matrix(3, 5);
  for (std::uint32_t row = 0; row < 3; ++row)
    for (std::uint32_t column = 0; column < 5; ++column)
      matrix(row, column) = static_cast<float>(10 * row + column);
  EXPECT_EQ(matrix.rows(), 3u);
  EXPECT_EQ(matrix.columns(), 5u);
  ASSERT_EQ(matrix.size(), 15u);
  EXPECT_EQ(matrix.data()[5 * 2 + 4], 24.0F);
  EXPECT_EQ(matrix.data()[5 * 1 + 0], 10.0F);
  EXPECT_EQ(matrix.data()[4], 4.0F);
}

TEST(AMatrixTest, ElementsStartAtZero) {
  const AMatrix<std::complex<double>> matrix(2, 3);
  for (std::size_t i = 0; i < matrix.size(); ++i) EXPECT_EQ(matrix.data()[i], std::complex<double>());
}

TEST(AMatrixTest, CopiesAreDeep) {
  AMatrix<double> first(2, 2);
  AMatrix<double> second(first);
  AMatrix<double> third;
  third = first;
  first(1, 0) = 5.0;
  EXPECT_EQ(second(1, 0), 0.0);
  EXPECT_EQ(third(1, 0), 0.0);
  EXPECT_EQ(third.rows(), 2u);
}

TEST(AMatrixTest, MovingHandsOverTheStorageItself) {
  AMatrix<float> first(4, 4);
  const float* const storage = first.data();
  const AMatrix<float> second(std::move(first));
  EXPECT_EQ(second.data(), storage);
  EXPECT_EQ(second.rows(), 4u);
}

TEST(AMatrixTest, AMatrixMovedFromIsEmpty) {
  AMatrix<float> first(4, 4);
  AMatrix<float> second(std::move(first));
  EXPECT_EQ(first.rows(), 0u);  // NOLINT(bugprone-use-after-move): this state is what is tested
  EXPECT_EQ(first.columns(), 0u);
  EXPECT_EQ(first.size(), 0u);
  AMatrix<float> third(1, 1);
  third = std::move(second);
  EXPECT_EQ(second.rows(), 0u);  // NOLINT(bugprone-use-after-move): this state is what is tested
  EXPECT_EQ(third.size(), 16u);
}

TEST(AMatrixTest, ResizingSetsEveryElementToZero) {
  AMatrix<double> matrix(2, 2);
  matrix(0, 1) = 3.0;
  matrix.resize(3, 1);
  EXPECT_EQ(matrix.rows(), 3u);
  EXPECT_EQ(matrix.columns(), 1u);
  ASSERT_EQ(matrix.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(matrix.data()[i], 0.0);
}

TEST(AMatrixTest, ClearingLeavesNoRowsAndNoColumns) {
  AMatrix<float> matrix(7, 9);
  matrix.clear();
  EXPECT_EQ(matrix.rows(), 0u);
  EXPECT_EQ(matrix.columns(), 0u);
  EXPECT_EQ(matrix.size(), 0u);
}

TEST(AMatrixTest, AMatrixWithoutRowsOrColumnsHoldsNothing) {
  EXPECT_EQ(AMatrix<float>(0, 5).size(), 0u);
  EXPECT_EQ(AMatrix<float>(5, 0).size(), 0u);
  EXPECT_EQ(AMatrix<float>().size(), 0u);
}

TEST(AMatrixRectTest, TakesFirstRowFirstColumnLastRowLastColumn) {
  const AMatrixRect rect(1, 2, 3, 4);
  EXPECT_EQ(rect.firstRow, 1);
  EXPECT_EQ(rect.firstColumn, 2);
  EXPECT_EQ(rect.lastRow, 3);
  EXPECT_EQ(rect.lastColumn, 4);
}

TEST(TMinMaxTest, HoldsSixDoublesHorizontalVerticalValuesAndStartsUnset) {
  const TMinMax range{1, 2, 3, 4, 5, 6};
  static_assert(sizeof(TMinMax) == 6 * sizeof(double));
  EXPECT_EQ(range.xMin, 1);
  EXPECT_EQ(range.xMax, 2);
  EXPECT_EQ(range.yMin, 3);
  EXPECT_EQ(range.yMax, 4);
  EXPECT_EQ(range.vMin, 5);
  EXPECT_EQ(range.vMax, 6);
  const TMinMax unset;
  EXPECT_GT(unset.xMin, unset.xMax);
  EXPECT_GT(unset.yMin, unset.yMax);
  EXPECT_GT(unset.vMin, unset.vMax);
}

TEST(AMatrixTest, LargeMatricesStartAtZeroAndKeepTheirElements) {
  // In small pages, and in large ones with some bytes more.
  for (const std::uint32_t rows : {100U, 1500U}) {
    AMatrix<float> matrix(rows, 1000);
    ASSERT_GE(matrix.size() * sizeof(float), LargePages<float>::kLeast);
    ASSERT_EQ(matrix.size() * sizeof(float) >= LargePages<float>::kLarge, rows == 1500U);
    for (std::size_t i = 0; i < matrix.size(); ++i) ASSERT_EQ(matrix.data()[i], 0.0F) << i;
    matrix(rows - 1, 999) = 7.0F;
    const AMatrix<float> copy(matrix);
    matrix.resize(rows, 1000);
    for (std::size_t i = 0; i < matrix.size(); ++i) ASSERT_EQ(matrix.data()[i], 0.0F) << i;
    EXPECT_EQ(copy(rows - 1, 999), 7.0F);
    matrix = copy;
    EXPECT_EQ(matrix(rows - 1, 999), 7.0F);
    matrix.clear();
    EXPECT_EQ(matrix.size(), 0u);
  }
}

TEST(AMatrixTest, LargeMatricesBeginAtDifferentLinesOfTheirPages) {
  // For transforms every one begins at a multiple of the widest vector's size.
  for (const std::uint32_t rows : {100U, 1500U}) {
    const std::size_t stagger = nextStagger();
    const bool staggered = nextStagger() != stagger;  // not where a sanitizer watches
    std::set<std::size_t> places;
    std::vector<AMatrix<float>> matrices;
    for (int i = 0; i < 7; ++i) {
      const AMatrix<float>& matrix = matrices.emplace_back(rows, 1000);
      EXPECT_EQ(reinterpret_cast<std::size_t>(matrix.data()) % 64, 0u);
      places.insert(reinterpret_cast<std::size_t>(matrix.data()) % 4096);
    }
    EXPECT_EQ(places.size(), staggered ? matrices.size() : 1u);
  }
}

TEST(AMatrixTest, WhatIsNotTouchedTakesNoMemory) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the address sanitizer keeps account of all bytes";
#endif
  const std::uint64_t before = residentBytes();
  AMatrix<double> matrix(8192, 8192);
  matrix(4000, 4000) = 1.0;
  // Of 512 MB a large page at most, and what the test itself needs.
  EXPECT_LT(residentBytes(), before + (std::uint64_t{16} << 20U));
  EXPECT_EQ(matrix(4000, 4001), 0.0);
}

}  // namespace
}  // namespace lumo
