// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <filesystem>
#include <limits>
#include <vector>

#include "RunSample.h"
#include "core/Crc32.h"
#include "imaging/GridGeometry.h"
#include "run/InputScan.h"
#include "run/UvxFileList.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

class InputScanTest : public testing::Test {
 protected:
  void add(const std::string& name, const test::UvxSample& sample) {
    test::writeUvx(folder_.file(name), sample);
    ASSERT_EQ(files_.AddFile(folder_.file(name)), 1);
  }
  /// A file of many pieces: `count` groups of 64 IFs.
  void addLarge(const std::string& name, int count, double seed) {
    test::UvxSample sample;
    sample.selections = {{1, {}}};
    for (int i = 0; i < 64; ++i) sample.selections[0].frequencies.push_back(1e9 + 1e7 * i);
    sample.points.clear();
    for (int i = 0; i < count; ++i)
      sample.points.push_back({1e-6 * std::sin(seed + i), 1e-6 * std::cos(2 * seed + 1.7 * i)});
    sample.visibility = [](double u, double, double hertz) -> std::complex<double> {
      return u > 500 && hertz > 1.5e9 ? std::numeric_limits<double>::quiet_NaN() : 1.0;
    };
    add(name, sample);
  }
  Status scan(int threads) {
    files_.imaging().halfSizeX = files_.imaging().halfSizeY = 16;
    files_.imaging().uvLimitU = files_.imaging().uvLimitV = 0.8;
    results_.clear();
    return InputScan(files_.inputs(), files_.imaging(), threads, RunIndicators{.cancel = &cancel_})
        .run([this](std::int32_t file, const ScannedFile& found) {
          EXPECT_EQ(file, static_cast<std::int32_t>(results_.size()));
          results_.push_back(found);
        });
  }

  test::TempFolder folder_;
  UvxFileList files_;
  CancelFlag cancel_{0};
  std::vector<ScannedFile> results_;
};

TEST_F(InputScanTest, SizeAndChecksumOfEveryFileAreThoseOfItsBytes) {
  addLarge("large.uvx", 5000, 1);
  add("small.uvx", {});
  ASSERT_TRUE(scan(2).ok());
  ASSERT_EQ(results_.size(), 2u);
  for (const std::size_t i : {0u, 1u}) {
    const std::string content = test::readFile(files_.inputs().names[static_cast<std::int32_t>(i)]);
    EXPECT_EQ(results_[i].facts.bytes, content.size());
    EXPECT_EQ(results_[i].facts.crc, crc32Of(content.data(), content.size()));
  }
}

TEST_F(InputScanTest, TheTallyIsThatOfEveryGroup) {
  addLarge("a.uvx", 3000, 3);
  ASSERT_TRUE(scan(1).ok());
  const GroupTally& tally = results_[0].tally;
  EXPECT_EQ(tally.records(), 3000u);
  const GridGeometry grid(files_.imaging());
  std::uint64_t usable = 0;
  std::uint64_t outside = 0;
  double longest = 0;
  for (int i = 0; i < 3000; ++i) {
    // As the file stores them.
    const double u = static_cast<float>(1e-6 * std::sin(3. + i));
    const double v = static_cast<float>(1e-6 * std::cos(6. + 1.7 * i));
    for (int n = 0; n < 64; ++n) {
      const double hertz = 1e9 + 1e7 * n;
      if (u * hertz > 500 && hertz > 1.5e9) continue;
      ++usable;
      longest = std::max(longest, u * u + v * v);
      // The nearest cell of the half-plane with u >= 0, as a grid of rows from -vMax and columns from 0.
      const double turned = u < 0 ? -v : v;
      const double column = std::floor(std::abs(u) * hertz / grid.du + 0.5);
      const double row = std::floor((turned * hertz + grid.vMax) / grid.dv + 0.5);
      outside += column > grid.nx || row < 0 || row > 2 * grid.ny - 1 ? 1 : 0;
    }
  }
  EXPECT_EQ(tally.usable(), usable);
  EXPECT_EQ(tally.weight(), static_cast<double>(usable)) << "weights of 1";
  std::uint64_t points = 0;
  std::uint64_t foundOutside = 0;
  double onGrid = 0;
  double foundLongest = 0;
  for (const GroupTally::Band& band : tally.selections()[0].bands) {
    points += band.points;
    foundOutside += band.outside;
    onGrid += band.weight;
    foundLongest = std::max(foundLongest, band.longest);
  }
  EXPECT_EQ(points, usable);
  EXPECT_GT(outside, 100u);
  EXPECT_EQ(foundOutside, outside);
  EXPECT_EQ(onGrid, static_cast<double>(usable - outside));
  EXPECT_EQ(foundLongest, longest);
}

TEST_F(InputScanTest, TheResultIsTheSameToTheBitForAnyNumberOfThreads) {
  addLarge("a.uvx", 4000, 0.1);
  addLarge("b.uvx", 3, 0.2);
  addLarge("c.uvx", 2500, 0.3);
  ASSERT_TRUE(scan(1).ok());
  const std::vector<ScannedFile> alone = results_;
  for (const int threads : {2, 3, 7}) {
    ASSERT_TRUE(scan(threads).ok());
    ASSERT_EQ(results_.size(), alone.size());
    for (std::size_t f = 0; f < alone.size(); ++f) {
      EXPECT_EQ(results_[f].facts.crc, alone[f].facts.crc);
      EXPECT_EQ(results_[f].tally.usable(), alone[f].tally.usable());
      EXPECT_EQ(results_[f].tally.weight(), alone[f].tally.weight());
      const auto& now = results_[f].tally.selections()[0];
      const auto& then = alone[f].tally.selections()[0];
      EXPECT_EQ(now.cover.count(), then.cover.count());
      for (std::size_t i = 0; i < then.bands.size(); ++i) {
        EXPECT_EQ(now.bands[i].weight, then.bands[i].weight);
        EXPECT_EQ(now.bands[i].shortest, then.bands[i].shortest);
      }
    }
  }
}

TEST_F(InputScanTest, GroupsOfOtherSelectionsAreLeftOut) {
  test::UvxSample sample;
  sample.selections = {{1, {1.3e9}}, {-7, {1.5e9}}};
  add("a.uvx", sample);
  files_.setSelected(0, 0, false);
  ASSERT_TRUE(scan(1).ok());
  EXPECT_EQ(results_[0].tally.records(), 2u);
  EXPECT_TRUE(results_[0].tally.selections()[0].bands.empty());
  EXPECT_EQ(results_[0].tally.selections()[1].bands[0].points, 2u);
}

TEST_F(InputScanTest, AFileThatIsNoLongerWholeIsNamed) {
  addLarge("a.uvx", 100, 1);
  addLarge("b.uvx", 4000, 1);
  std::filesystem::resize_file(folder_.file("b.uvx"), std::filesystem::file_size(folder_.file("b.uvx")) / 2);
  const Status status = scan(2);
  EXPECT_EQ(status.code(), StatusCode::kBadFormat);
  EXPECT_EQ(status.file(), folder_.file("b.uvx"));
}

TEST_F(InputScanTest, ACancelEndsTheScan) {
  add("a.uvx", {});
  cancel_ = 1;
  EXPECT_EQ(scan(1).code(), StatusCode::kCancelled);
  EXPECT_TRUE(results_.empty());
}

}  // namespace
}  // namespace lumo
