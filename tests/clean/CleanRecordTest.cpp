// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "clean/CleanRecord.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

CleanRecord recordOf(std::int32_t iterations) {
  CleanRecord record;
  for (std::int32_t n = 1; n <= iterations; ++n) {
    CleanProgress progress;
    progress.iteration = n;
    progress.residual = 1.0 / n;
    record.iterationDone(progress);
  }
  return record;
}

TEST(CleanRecordTest, AShortCleanIsKeptWhole) {
  const CleanRecord record = recordOf(2000);
  ASSERT_EQ(record.lines().size(), 2000u);
  for (std::size_t i = 0; i < 2000; ++i) EXPECT_EQ(record.lines()[i].iteration, static_cast<int>(i) + 1);
}

TEST(CleanRecordTest, ALongCleanIsThinnedEvenlyAndTheLastIterationIsAlwaysThere) {
  for (const std::int32_t iterations : {2001, 3999, 4000, 4001, 12345, 1000000}) {
    const CleanRecord record = recordOf(iterations);
    const auto& lines = record.lines();
    EXPECT_LE(lines.size(), CleanRecord::kMostLines);
    EXPECT_GE(lines.size(), CleanRecord::kMostLines / 2);
    EXPECT_EQ(lines.back().iteration, iterations);
    const std::int32_t stride = lines[0].iteration;
    for (std::size_t i = 0; i + 1 < lines.size(); ++i)
      EXPECT_EQ(lines[i].iteration, stride * (static_cast<std::int32_t>(i) + 1)) << iterations;
  }
}

TEST(CleanRecordTest, NothingDoneIsAHeadingAlone) {
  EXPECT_EQ(CleanRecord().text(), "iteration\tresidual\ttotal_flux\tscore\tgain\n");
}

TEST(CleanRecordTest, ColumnsAreReadBackAsTheyWere) {
  CleanRecord record;
  record.iterationDone({7, 1.25, 0.1, true, 3, 4, 0.0625, -1e-3});
  EXPECT_THAT(record.text(), testing::EndsWith("\n7\t-0.001\t1.25\t0.0625\t0.1\n"));
  const test::TempFolder folder;
  ASSERT_TRUE(record.write(folder.file("log.tsv")).ok());
  EXPECT_EQ(test::readFile(folder.file("log.tsv")), record.text());
}

}  // namespace
}  // namespace lumo
