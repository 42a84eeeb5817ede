// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "analysis/MeanSigmaTable.h"

namespace lumo {
namespace {

MeanSigmaTable oneArea() {
  AMatrix<double> mean(1, 3);
  AMatrix<double> rms(1, 3);
  mean(0, 0) = 1.23456789;
  mean(0, 1) = 2.0;
  rms(0, 0) = 0.00123456789;
  rms(0, 2) = 5e-9;
  MeanSigmaTable table;
  table.setData(mean, rms, {1234567.0, 1235000.0, 1.4e9});
  return table;
}

TEST(MeanSigmaTableTest, OneAreaAndThreePointsMakeThreeColumnsAndFourRows) {
  const MeanSigmaTable table = oneArea();
  EXPECT_EQ(table.columnCount(), 3);
  EXPECT_EQ(table.rowCount(), 4);
  EXPECT_EQ(table.headerText(0, 0), "");
  EXPECT_EQ(table.headerText(0, 1), "Mean (1)");
  EXPECT_EQ(table.headerText(0, 2), "RMS (1)");
}

TEST(MeanSigmaTableTest, FrequenciesAreRoundedHalfUpToTwoDecimals) {
  const MeanSigmaTable table = oneArea();
  EXPECT_EQ(table.headerText(1, 0), "1.23 [MHz]");
  EXPECT_EQ(table.headerText(2, 0), "1.24 [MHz]");
  EXPECT_EQ(table.headerText(3, 0), "1400 [MHz]");
}

TEST(MeanSigmaTableTest, FluxHasSixDigitsAndErrorFour) {
  const MeanSigmaTable table = oneArea();
  EXPECT_EQ(table.cellText(1, 1), "1.23457");
  EXPECT_EQ(table.cellText(1, 2), "0.001235");
  EXPECT_EQ(table.cellText(3, 2), "5e-09");
}

TEST(MeanSigmaTableTest, ColumnsOfTheSecondAreaFollowThoseOfTheFirst) {
  AMatrix<double> mean(2, 1);
  AMatrix<double> rms(2, 1);
  mean(1, 0) = 7.0;
  rms(1, 0) = 8.0;
  MeanSigmaTable table;
  table.setData(mean, rms, {1e9});
  EXPECT_EQ(table.headerText(0, 3), "Mean (2)");
  EXPECT_EQ(table.headerText(0, 4), "RMS (2)");
  EXPECT_EQ(table.cellText(1, 3), "7");
  EXPECT_EQ(table.cellText(1, 4), "8");
}

TEST(MeanSigmaTableTest, ValuesAndFrequenciesAreThereWithAllDigits) {
  const MeanSigmaTable table = oneArea();
  EXPECT_EQ(table.value(1, 1), 1.23456789);
  EXPECT_EQ(table.value(1, 2), 0.00123456789);
  EXPECT_EQ(table.frequency(2), 1235000.0);
}

}  // namespace
}  // namespace lumo
