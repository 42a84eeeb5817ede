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
  report.phases = {{"grid", 1.0}, {"clean", 2.26}};
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

TEST(RunSummaryTest, ARunThatNeverReachedCleanHasNothingToWarnOf) {
  RunReport report;
  report.inversionError = std::nan("");
  EXPECT_TRUE(areTermsTold(report));
  EXPECT_THAT(runSummaryLines(report), ElementsAre("Run ended after 0 s, 0 products written"));
}

}  // namespace
}  // namespace lumo
