// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>

#include <cmath>

#include "run/RunSummary.h"

namespace lumo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

RunReport soundReport() {
  RunReport report;
  report.products = {{"^bm0.exm", "/m/MFS^bm0.exm", true, ""},
                     {"^dm0.exm", "/m/MFS^dm0.exm", false, "disk full"}};
  report.iterations = 20;
  report.totalFlux = 1.25;
  report.inversionError = 1e-15;
  report.time = {"run", 3.26, {{"image", 1.0}, {"clean", 2.26}}};
  return report;
}

TEST(RunSummaryTest, LinesTellWhatIsMissingWhatWasDoneAndHowLongItTook) {
  EXPECT_THAT(runSummaryLines(soundReport()),
              ElementsAre("Not written: /m/MFS^dm0.exm: disk full", "CLEAN: 20 iterations, total flux 1.25",
                          "Run ended after 3.3 s, 1 products written"));
}

TEST(RunSummaryTest, AStoppedCleanSaysSo) {
  RunReport report = soundReport();
  report.stopped = true;
  EXPECT_THAT(runSummaryLines(report)[1], HasSubstr("20 iterations, stopped"));
}

TEST(RunSummaryTest, NumbersThatMeanNothingAreWarnedOf) {
  RunReport report = soundReport();
  EXPECT_TRUE(areTermsTold(report));
  report.inversionError = 0.5;
  EXPECT_FALSE(areTermsTold(report));
  report.inversionError = std::nan("");
  EXPECT_FALSE(areTermsTold(report));
  report.inversionError = 0;
  report.totalFlux = INFINITY;
  EXPECT_FALSE(areTermsTold(report));
  EXPECT_THAT(runSummaryLines(report)[2], HasSubstr("cannot tell the spectral terms apart"));
}

TEST(RunSummaryTest, AResidualThatDidNotFallIsWarnedOf) {
  RunReport report = soundReport();
  report.residualBefore = 1.5;
  report.residualAfter = 0.1;
  EXPECT_TRUE(isResidualLowered(report));
  report.residualAfter = 1.5;
  EXPECT_FALSE(isResidualLowered(report));
  EXPECT_THAT(runSummaryLines(report)[2], HasSubstr("largest value was 1.5 and is 1.5"));
  report.residualAfter = 40;
  EXPECT_FALSE(isResidualLowered(report));
  // One step tells nothing, and an empty map has nothing to lower.
  report.iterations = 1;
  EXPECT_TRUE(isResidualLowered(report));
  report.iterations = 20;
  report.residualBefore = report.residualAfter = 0;
  EXPECT_TRUE(isResidualLowered(report));
}

TEST(RunSummaryTest, ARunThatNeverReachedCleanHasNothingToWarnOf) {
  RunReport report;
  report.inversionError = std::nan("");
  EXPECT_TRUE(areTermsTold(report));
  EXPECT_THAT(runSummaryLines(report), ElementsAre("Run ended after 0 s, 0 products written"));
}

}  // namespace
}  // namespace lumo
