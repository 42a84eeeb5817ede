// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>

#include "RunSample.h"
#include "core/Units.h"
#include "run/PreFlight.h"
#include "run/UvxFileList.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

class PreFlightTest : public testing::Test {
 protected:
  void add(const std::string& name, const test::UvxSample& sample) {
    test::writeUvx(folder_.file(name), sample);
    ASSERT_EQ(files_.AddFile(folder_.file(name)), 1);
  }
  void inspect(std::int32_t order, double uvLimit = 2) {
    parameters_.order = order;
    parameters_.referenceMhz = 1400;
    ABMakeParameters& p = files_.imaging();
    p.uvLimitU = p.uvLimitV = uvLimit;
    p.halfSizeX = p.halfSizeY = 16;
    const Status status = inspectRun(parameters_, files_.inputs(), p, {1, room_}, {}, result_, facts_);
    ASSERT_TRUE(status.ok()) << status.text();
  }

  test::TempFolder folder_;
  UvxFileList files_;
  RunParameters parameters_;
  MemoryRoom room_;
  PreFlight result_;
  std::vector<InputFileFacts> facts_;
};

TEST_F(PreFlightTest, FrequencyRecordsWeightsAndBaselinesOfEachFileAreTold) {
  test::UvxSample sample;
  sample.selections = {{1, {1.3e9, 1.5e9}}, {2, {2.0e9, 2.1e9}}};
  add("a.uvx", sample);
  files_.setSelected(0, 1, false);
  inspect(1);
  ASSERT_EQ(result_.files.size(), 1u);
  const PreFlightFile& file = result_.files[0];
  EXPECT_EQ(file.name, folder_.file("a.uvx"));
  EXPECT_EQ(file.minHz, 1.3e9);
  EXPECT_EQ(file.maxHz, 1.5e9);
  EXPECT_EQ(file.records, 2u);
  EXPECT_EQ(file.visibilities, 4u);
  EXPECT_EQ(file.usable, 4u);
  EXPECT_EQ(file.weightSum, 4.0);
  EXPECT_EQ(file.rejectedShare(), 0.0);
  // Both points of the sample have the same length; the shortest is that of the lower frequency.
  const double seconds = std::hypot(0x1p-20, 0x1p-21);
  EXPECT_DOUBLE_EQ(file.uvMin, seconds * 1.3e9);
  EXPECT_DOUBLE_EQ(file.uvMax, seconds * 1.5e9);
  EXPECT_EQ(result_.points, 4u);
  EXPECT_EQ(result_.distinctFrequencies, 2);
}

TEST_F(PreFlightTest, RejectedVisibilitiesAreCounted) {
  test::UvxSample sample;
  sample.selections = {{1, {1.4e9, 1.5e9}}};
  sample.visibility = [](double u, double, double hertz) -> std::complex<double> {
    return hertz > 1.45e9 && u > 0 ? std::numeric_limits<double>::quiet_NaN() : 1.0;
  };
  add("a.uvx", sample);
  inspect(1);
  EXPECT_EQ(result_.files[0].usable, 3u);
  EXPECT_EQ(result_.files[0].rejectedShare(), 0.25);
  EXPECT_EQ(result_.points, 3u);
}

TEST_F(PreFlightTest, PointsOffTheGridAreCountedAndTheCellThatKeepsThemIsTold) {
  add("a.uvx", {});
  // u and v reach 2^-20 s: with a limit of 0.75 each point has one coordinate beyond the grid.
  inspect(1, 0.75);
  EXPECT_EQ(result_.points, 2u);
  EXPECT_EQ(result_.outside, 2u);
  EXPECT_EQ(result_.outsideShare(), 1.0);
  EXPECT_THAT(preFlightWarnings(result_, 1), Contains(HasSubstr("2 of 2 points lie off the uv grid")));
  const double reach = 0x1p-20 * 1.4e9;
  EXPECT_DOUBLE_EQ(result_.cellX, kArcsecPerRadian / (2 * 0.75 * reach));
  EXPECT_DOUBLE_EQ(result_.cellXAll, kArcsecPerRadian / (2 * reach));

  // A cell just below the one told keeps everything, in both directions.
  ABMakeParameters p = files_.imaging();
  p.uvLimitU = 1.0001 * kArcsecPerRadian / (2 * result_.cellXAll) / p.uvScaleU;
  p.uvLimitV = 1.0001 * kArcsecPerRadian / (2 * result_.cellYAll) / p.uvScaleV;
  ASSERT_TRUE(inspectRun(parameters_, files_.inputs(), p, {}, {}, result_, facts_).ok());
  EXPECT_EQ(result_.outside, 0u);
  EXPECT_THAT(preFlightWarnings(result_, 1), IsEmpty());
}

TEST_F(PreFlightTest, ConditionIsThatOfTheMomentsOfTheFrequencies) {
  test::UvxSample sample;
  sample.selections = {{1, {1.26e9, 1.54e9}}};
  add("a.uvx", sample);
  inspect(2);
  // Offsets -0.1 and +0.1 in equal numbers: M = (1 0; 0 0.01).
  EXPECT_NEAR(result_.condition, 100, 1e-9) << "rounding of the frequency ratios";
  EXPECT_THAT(preFlightWarnings(result_, 2), IsEmpty());
  EXPECT_THAT(preFlightLines(result_), Contains(HasSubstr("2 different frequencies")));
}

TEST_F(PreFlightTest, AnOrderBeyondTheFrequenciesIsWarnedOf) {
  test::UvxSample sample;
  sample.selections = {{1, {1.3e9, 1.3e9}}};
  add("a.uvx", sample);
  inspect(2);
  EXPECT_TRUE(std::isinf(result_.condition));
  EXPECT_THAT(preFlightWarnings(result_, 2), Contains(HasSubstr("needs as many different frequencies")));
}

TEST_F(PreFlightTest, FrequenciesTooCloseForTheOrderAreWarnedOf) {
  test::UvxSample sample;
  sample.selections = {{1, {1.3999e9, 1.4001e9}}};
  add("a.uvx", sample);
  inspect(2);
  EXPECT_THAT(preFlightWarnings(result_, 2), Contains(HasSubstr("more than these frequencies can carry")));
}

TEST_F(PreFlightTest, AFileWithoutUsableDataIsNamed) {
  test::UvxSample sample;
  sample.visibility = [](double, double, double) -> std::complex<double> {
    return std::numeric_limits<double>::infinity();
  };
  add("a.uvx", sample);
  add("b.uvx", {});
  inspect(1);
  EXPECT_EQ(result_.files[0].uvMax, 0.0);
  EXPECT_THAT(preFlightWarnings(result_, 1), Contains(HasSubstr("a.uvx: no visibility")));
}

TEST_F(PreFlightTest, AFileOfWhichNoFrequencyIsChosenTakesPartInNothing) {
  test::UvxSample sample;
  sample.selections = {{1, {1.4e9}}};
  add("a.uvx", sample);
  add("b.uvx", sample);
  files_.setSelected(0, 0, false);
  inspect(1);
  EXPECT_EQ(result_.files[0].usable, 0u);
  EXPECT_EQ(result_.files[1].usable, 2u);
  EXPECT_EQ(result_.points, 2u);
  files_.setSelected(1, 0, false);
  inspect(1);
  EXPECT_EQ(result_.points, 0u);
}

TEST_F(PreFlightTest, OnlyPointsOnTheGridCountForTheTerms) {
  test::UvxSample sample;
  sample.selections = {{1, {1.26e9, 1.4e9, 1.54e9}}};
  add("a.uvx", sample);
  // The grid ends between the second and the third frequency: what is left are offsets -0.1 and 0.
  inspect(2, 1.4 / 1.54 * 1.04);
  EXPECT_EQ(result_.outside, 2u);
  EXPECT_EQ(result_.distinctFrequencies, 2);
  // M = (1 -0.05; -0.05 0.005): eigenvalues of a 2 x 2 matrix.
  const double mean = (1 + 0.005) / 2;
  const double root = std::hypot((1 - 0.005) / 2, 0.05);
  EXPECT_NEAR(result_.condition, (mean + root) / (mean - root), 1e-6 * result_.condition)
      << "rounding of the frequency ratios, raised by the condition";
}

TEST_F(PreFlightTest, AReferenceBesideTheUsableDataIsWarnedOf) {
  test::UvxSample sample;
  sample.selections = {{1, {1.3e9, 1.5e9}}};
  sample.visibility = [](double, double, double hertz) -> std::complex<double> {
    return hertz < 1.4e9 ? std::numeric_limits<double>::quiet_NaN() : 1.0;
  };
  add("a.uvx", sample);
  inspect(1);  // at 1400 MHz
  EXPECT_THAT(preFlightWarnings(result_, 1),
              Contains(HasSubstr("1400.000000 MHz lies outside the usable data (1500")));
  sample.visibility = {};
  add("b.uvx", sample);
  inspect(1);
  EXPECT_THAT(preFlightWarnings(result_, 1), IsEmpty());
}

TEST_F(PreFlightTest, AReferenceRoundedDownFromTheOnlyFrequencyIsNotWarnedOf) {
  test::UvxSample sample;
  sample.selections = {{1, {1.4000004e9}}};
  add("a.uvx", sample);
  inspect(1);  // at 1400 MHz
  EXPECT_THAT(preFlightWarnings(result_, 1), Not(Contains(HasSubstr("reference frequency"))));
}

TEST_F(PreFlightTest, FilesOfDifferentSourcesAreWarnedOf) {
  add("a.uvx", {});
  add("b.uvx", {});
  add("c.uvx", {});
  inspect(1);
  EXPECT_THAT(preFlightWarnings(result_, 1), IsEmpty());
  const double cell = std::min(result_.cellX, result_.cellY);
  // At 60 degrees of declination a step in right ascension is half as long on the sky.
  for (PreFlightFile& file : result_.files) file.source.declination = 60;
  result_.files[1].source.name = "3C 84";
  result_.files[2].source.rightAscension += 2 * 0.6 * cell / 3600;
  EXPECT_THAT(preFlightWarnings(result_, 1), testing::ElementsAre(HasSubstr("b.uvx: its source is 3C 84"),
                                                                  HasSubstr("c.uvx: its phase centre is")));
  result_.files[2].source.rightAscension -= 2 * 0.2 * cell / 3600;
  result_.files[1].source = result_.files[0].source;
  EXPECT_THAT(preFlightWarnings(result_, 1), IsEmpty()) << "0.4 cells";
  result_.files[1].source.epoch = 1950;
  EXPECT_THAT(preFlightWarnings(result_, 1),
              testing::ElementsAre(HasSubstr("b.uvx: its position is in another frame")));
}

TEST_F(PreFlightTest, LittleFreeMemoryIsWarnedOf) {
  room_.most = std::uint64_t{1} << 40;
  room_.free = 1000;
  room_.mostIs = "the memory of this machine";
  add("a.uvx", {});
  inspect(1);
  EXPECT_THAT(preFlightWarnings(result_, 1), testing::ElementsAre(HasSubstr("1 kB are free now")));
  result_.memory.room.most = result_.memory.peak - 1;
  EXPECT_THAT(preFlightWarnings(result_, 1), testing::ElementsAre(HasSubstr("more than there is")));
  EXPECT_THAT(preFlightLines(result_), Contains(HasSubstr("memory up to " + bytesText(result_.memory.peak))));
}

}  // namespace
}  // namespace lumo
