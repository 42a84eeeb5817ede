// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <array>
#include <bit>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <limits>
#include <thread>
#include <vector>

#include "MapSample.h"
#include "io/AMapFile.h"
#include "io/MapProduct.h"
#include "support/FullDisk.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::exists;
using test::fullHeader;
using test::fullRange;
using test::ramp;
using test::readFile;
using test::roundTrip;
using test::TempFolder;
using test::writeFile;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr float kNaNPixel = std::numeric_limits<float>::quiet_NaN();

bool sameBits(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) ||
         (std::isnan(a) && std::isnan(b));
}

void expectSameHeader(const AMapHeader& a, const AMapHeader& b) {
  EXPECT_EQ(a.kind, b.kind);
  EXPECT_EQ(a.unit, b.unit);
  EXPECT_EQ(a.sourceName, b.sourceName);
  EXPECT_EQ(a.frame, b.frame);
  EXPECT_TRUE(sameBits(a.rightAscension, b.rightAscension)) << a.rightAscension << " " << b.rightAscension;
  EXPECT_TRUE(sameBits(a.declination, b.declination)) << a.declination << " " << b.declination;
  EXPECT_TRUE(sameBits(a.epoch, b.epoch)) << a.epoch << " " << b.epoch;
  EXPECT_EQ(a.stokes, b.stokes);
  EXPECT_TRUE(sameBits(a.frequency, b.frequency)) << a.frequency << " " << b.frequency;
  EXPECT_TRUE(sameBits(a.bandwidth, b.bandwidth)) << a.bandwidth << " " << b.bandwidth;
  EXPECT_TRUE(sameBits(a.beamMajor, b.beamMajor)) << a.beamMajor << " " << b.beamMajor;
  EXPECT_TRUE(sameBits(a.beamMinor, b.beamMinor)) << a.beamMinor << " " << b.beamMinor;
  EXPECT_TRUE(sameBits(a.beamPa, b.beamPa)) << a.beamPa << " " << b.beamPa;
  EXPECT_TRUE(sameBits(a.beamArea, b.beamArea)) << a.beamArea << " " << b.beamArea;
  EXPECT_EQ(a.date, b.date);
  EXPECT_EQ(a.history, b.history);
}

void expectSamePixels(const AMatrix<float>& a, const AMatrix<float>& b) {
  ASSERT_EQ(a.rows(), b.rows());
  ASSERT_EQ(a.columns(), b.columns());
  for (std::size_t i = 0; i < a.size(); ++i)
    ASSERT_EQ(std::bit_cast<std::uint32_t>(a.data()[i]), std::bit_cast<std::uint32_t>(b.data()[i])) << i;
}

TEST(AMapFileTest, AWrittenMapReadBackYieldsTheSameMatrixTheSameTMinMaxAndTheSameUnitText) {
  const AMatrix<float> matrix = ramp(6, 4);
  for (const char* const unit : {"Jy/Beam", "Sp. Index", "", "JY/BEAM", "K", "100%"}) {
    AMapHeader header = fullHeader();
    header.unit = unit;
    const LoadedMap map = roundTrip(header, fullRange(6, 4), matrix);
    expectSamePixels(*map.matrix, matrix);
    EXPECT_EQ(map.range, fullRange(6, 4));
    EXPECT_EQ(map.header.Unit(), unit);
  }
}

TEST(AMapFileTest, ADiskThatIsFullAtAnyByteKeepsTheOldMapWhole) {
  const TempFolder folder;
  const std::string path = folder.file("x.exm");
  const AMatrix<float> matrix = ramp(50, 40);
  ASSERT_TRUE(writeMap(path, fullHeader(), fullRange(50, 40), matrix).ok());
  const std::string whole = readFile(path);
  for (const std::size_t missing :
       {std::size_t{1}, std::size_t{288}, std::size_t{2880}, std::size_t{8000}, whole.size() - 1}) {
    Status status;
    {
      const test::FullDisk full(whole.size() - missing);
      status = writeMap(path, fullHeader(), fullRange(50, 40), ramp(50, 40));
    }
    EXPECT_EQ(status.code(), StatusCode::kWriteFailed) << missing;
    EXPECT_EQ(status.file(), path);
    EXPECT_EQ(readFile(path) == whole, true) << missing;
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(AMapFileTest, NaNPixelsSurviveAWriteAndARead) {
  AMatrix<float> matrix = ramp(4, 4);
  matrix(0, 3) = kNaNPixel;
  matrix(2, 1) = std::bit_cast<float>(0xFFC12345U);  // another sign and payload
  const LoadedMap map = roundTrip(fullHeader(), fullRange(4, 4), matrix);
  expectSamePixels(*map.matrix, matrix);
}

TEST(AMapFileTest, InfinitePixelsSubnormalsAndNegativeZerosSurvive) {
  AMatrix<float> matrix = ramp(2, 4);
  matrix(0, 0) = std::numeric_limits<float>::infinity();
  matrix(0, 1) = -std::numeric_limits<float>::infinity();
  matrix(1, 0) = -0.0F;
  matrix(1, 1) = std::numeric_limits<float>::denorm_min();
  matrix(1, 2) = std::numeric_limits<float>::max();
  const LoadedMap map = roundTrip(fullHeader(), fullRange(2, 4), matrix);
  expectSamePixels(*map.matrix, matrix);
}

TEST(AMapFileTest, EveryHeaderFieldComesBackToTheBit) {
  const AMapHeader header = fullHeader();
  expectSameHeader(roundTrip(header, fullRange(4, 4), ramp(4, 4)).header, header);
}

TEST(AMapFileTest, UnusualHeaderValuesComeBackToTheBit) {
  AMapHeader header = fullHeader();
  header.rightAscension = -0.1 / 3.0;
  header.beamMajor = 0.001;  // the first width may be the smaller one
  header.beamMinor = 0.002 / 3.0 * 7.0;
  header.bandwidth = 0.0;
  header.frequency = -1.0 / 3.0;
  header.epoch = 1950.0;
  header.stokes = "RR";
  for (const UvxFrame frame : {UvxFrame::kByEpoch, UvxFrame::kFk5, UvxFrame::kIcrs, UvxFrame::kFk4}) {
    header.frame = frame;
    expectSameHeader(roundTrip(header, fullRange(4, 4), ramp(4, 4)).header, header);
  }
  header.beamMajor = -0.0;
  header.bandwidth = -1e6 / 3.0;
  header.rightAscension = 360.0;
  header.stokes = "none of these";
  expectSameHeader(roundTrip(header, fullRange(4, 4), ramp(4, 4)).header, header);
}

TEST(AMapFileTest, AnEmptyHeaderComesBackEmptyButForItsDate) {
  AMapHeader header;
  AMapHeader read = roundTrip(header, TMinMax(), ramp(4, 4)).header;
  EXPECT_FALSE(read.date.empty());
  read.date.clear();
  expectSameHeader(read, header);
}

TEST(AMapFileTest, ValuesThatAreNotFiniteReadBackAsUnset) {
  AMapHeader header = fullHeader();
  header.frequency = std::numeric_limits<double>::infinity();
  header.beamPa = -std::numeric_limits<double>::infinity();
  TMinMax range = fullRange(4, 4);
  range.vMin = kNaN;
  range.xMax = std::numeric_limits<double>::infinity();
  AMatrix<float> matrix(4, 4);
  for (std::size_t i = 0; i < matrix.size(); ++i) matrix.data()[i] = kNaNPixel;
  const LoadedMap map = roundTrip(header, range, matrix);
  EXPECT_TRUE(std::isnan(map.header.frequency));
  EXPECT_TRUE(std::isnan(map.header.beamPa));
  EXPECT_EQ(map.range.vMin, TMinMax::kUnsetMin);
  EXPECT_EQ(map.range.xMax, TMinMax::kUnsetMax);
  EXPECT_EQ(map.range.xMin, range.xMin);
}

TEST(AMapFileTest, RangesOfEveryShapeComeBackToTheBit) {
  TMinMax onePixel;
  onePixel.xMin = onePixel.xMax = 1.0 / 3.0;
  onePixel.yMin = onePixel.yMax = -2.0 / 3.0;
  onePixel.vMin = 1.0;
  onePixel.vMax = 2.0;
  EXPECT_EQ(roundTrip(fullHeader(), onePixel, ramp(1, 1)).range, onePixel);
  EXPECT_EQ(roundTrip(fullHeader(), onePixel, ramp(3, 5)).range, onePixel);
  TMinMax tiny = onePixel;
  tiny.xMin = 0.0;
  tiny.xMax = 1e-300;
  tiny.yMin = -1e300;
  tiny.yMax = 1e300;
  EXPECT_EQ(roundTrip(fullHeader(), tiny, ramp(3, 5)).range, tiny);
  TMinMax unset;
  unset.vMin = 0.0;
  unset.vMax = 0.0;
  EXPECT_EQ(roundTrip(fullHeader(), unset, ramp(3, 5)).range, unset);
}

TEST(AMapFileTest, OnlyTheRectangleIsWritten) {
  const AMatrix<float> matrix = ramp(8, 6);
  const TempFolder folder;
  ASSERT_TRUE(
      writeMap(folder.file("m"), fullHeader(), fullRange(4, 3), matrix, AMatrixRect(2, 1, 5, 3)).ok());
  LoadedMap map;
  ASSERT_TRUE(readMap(folder.file("m"), map).ok());
  ASSERT_EQ(map.matrix->rows(), 4U);
  ASSERT_EQ(map.matrix->columns(), 3U);
  for (std::uint32_t r = 0; r < 4; ++r)
    for (std::uint32_t c = 0; c < 3; ++c) EXPECT_EQ((*map.matrix)(r, c), matrix(r + 2, c + 1));
}

TEST(AMapFileTest, ARectangleOutsideTheMatrixIsRefusedAndNoFileAppears) {
  const AMatrix<float> matrix = ramp(4, 4);
  const TempFolder folder;
  for (const AMatrixRect& rect :
       {AMatrixRect(0, 0, 4, 3), AMatrixRect(0, 0, 3, 4), AMatrixRect(-1, 0, 3, 3), AMatrixRect(0, -1, 3, 3),
        AMatrixRect(2, 0, 1, 3), AMatrixRect(0, 2, 3, 1)}) {
    const Status status = writeMap(folder.file("m"), fullHeader(), fullRange(4, 4), matrix, rect);
    EXPECT_EQ(status.code(), StatusCode::kInvalidValue);
    EXPECT_EQ(status.file(), folder.file("m"));
    EXPECT_FALSE(exists(folder.file("m")));
  }
  EXPECT_FALSE(writeMap(folder.file("m"), fullHeader(), TMinMax(), AMatrix<float>()).ok());
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(AMapFileTest, TheMatrixStaysValidAfterClose) {
  const TempFolder folder;
  ASSERT_TRUE(writeMap(folder.file("m"), fullHeader(), fullRange(4, 4), ramp(4, 4)).ok());
  AMapFile file;
  ASSERT_NE(file.Open(folder.file("m"), AFile::kRead), 0);
  const auto matrix = file.GetMatrix();
  ASSERT_NE(matrix, nullptr);
  ASSERT_NE(file.Close(), 0);
  expectSamePixels(*matrix, ramp(4, 4));
}

TEST(AMapFileTest, TheDestructorFinishesAWrittenFile) {
  const TempFolder folder;
  {
    AMapFile file;
    ASSERT_NE(file.Open(folder.file("m"), AFile::kCreate), 0);
    ASSERT_NE(fullHeader().Store(file), 0);
    ASSERT_NE(file.PutMinMax(fullRange(4, 4)), 0);
    ASSERT_NE(file.PutMatrix(ramp(4, 4), AMatrixRect(0, 0, 3, 3)), 0);
    EXPECT_FALSE(exists(folder.file("m")));
  }
  EXPECT_TRUE(exists(folder.file("m")));
}

TEST(AMapFileTest, FileNamesWithCaretsBracketsAndBlanksAreTakenAsTheyStand) {
  const TempFolder folder;
  for (const char* const name : {"MFS^cln0.exm", "a[1:2].exm", "b(c).exm", "d+1.exm", "!e.exm", "  f .exm",
                                 "~g.exm", "mem:h.exm", "i.exm.gz", "j\xC3\xA9.exm"}) {
    ASSERT_TRUE(writeMap(folder.file(name), fullHeader(), fullRange(4, 4), ramp(4, 4)).ok()) << name;
    EXPECT_TRUE(exists(folder.file(name))) << name;
    LoadedMap map;
    const Status status = readMap(folder.file(name), map);
    EXPECT_TRUE(status.ok()) << status.text();
  }
}

TEST(AMapFileTest, RelativeNamesThatLookLikeSpecialOnesWork) {
  const TempFolder folder;
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  for (const char* const name : {"~map", " map", "-", "!map"}) {
    EXPECT_TRUE(writeMap(name, fullHeader(), fullRange(4, 4), ramp(4, 4)).ok()) << name;
    LoadedMap map;
    const Status status = readMap(name, map);
    EXPECT_TRUE(status.ok()) << status.text();
    EXPECT_TRUE(exists(folder.file(name)));
  }
  std::filesystem::current_path(before);
}

TEST(AMapFileTest, AFileThatCannotBeCreatedStaysAbsentAndTheReasonIsKept) {
  const TempFolder folder;
  AMapFile file;
  EXPECT_EQ(file.Open(folder.file("none/m.exm"), AFile::kCreate), 0);
  EXPECT_EQ(file.status().code(), StatusCode::kWriteFailed);
  EXPECT_EQ(file.status().file(), folder.file("none/m.exm"));
  EXPECT_EQ(fullHeader().Store(file), 0);
  EXPECT_EQ(file.PutMinMax(TMinMax()), 0);
  EXPECT_EQ(file.PutMatrix(ramp(2, 2), AMatrixRect(0, 0, 1, 1)), 0);
}

TEST(AMapFileTest, CallsOutOfOrderFailAndLeaveNoFile) {
  const TempFolder folder;
  AMapFile file;
  ASSERT_NE(file.Open(folder.file("m"), AFile::kCreate), 0);
  EXPECT_EQ(file.PutMinMax(TMinMax()), 0);
  EXPECT_EQ(file.PutMatrix(ramp(2, 2), AMatrixRect(0, 0, 1, 1)), 0);
  AMapHeader header;
  EXPECT_EQ(header.Load(file), 0);
  EXPECT_EQ(file.GetMatrix(), nullptr);
  EXPECT_EQ(file.Close(), 0);
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
  EXPECT_EQ(file.GetMinMax(), TMinMax());
}

TEST(AMapFileTest, AnUnfinishedFileLeavesTheOldOneWhole) {
  const TempFolder folder;
  writeFile(folder.file("m"), "old");
  {
    AMapFile file;
    ASSERT_NE(file.Open(folder.file("m"), AFile::kCreate), 0);
    ASSERT_NE(fullHeader().Store(file), 0);
    ASSERT_NE(file.PutMinMax(TMinMax()), 0);
  }
  EXPECT_EQ(readFile(folder.file("m")), "old");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(AMapFileTest, ADiskThatFillsUpFailsTheWriteAndLeavesTheOldFileWhole) {
  const TempFolder folder;
  writeFile(folder.file("m"), "old");
  const AMatrix<float> matrix = ramp(512, 512);
  const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  rlimit small = before;
  small.rlim_cur = 300000;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const Status status = writeMap(folder.file("m"), fullHeader(), fullRange(512, 512), matrix);
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, oldHandler);
  EXPECT_EQ(status.code(), StatusCode::kWriteFailed);
  EXPECT_EQ(readFile(folder.file("m")), "old");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(AMapFileTest, AStoredHeaderKeepsTheDateOfTheFileItWasLoadedFrom) {
  const AMapHeader first = roundTrip(fullHeader(), fullRange(4, 4), ramp(4, 4)).header;
  EXPECT_EQ(roundTrip(first, fullRange(4, 4), ramp(4, 4)).header.date, "2014-05-08T01:02:03");
}

TEST(AMapFileTest, AMapLoadedAndWrittenAgainHasTheSameBytes) {
  const TempFolder folder;
  ASSERT_TRUE(writeMap(folder.file("a"), fullHeader(), fullRange(4, 4), ramp(4, 4)).ok());
  LoadedMap map;
  ASSERT_TRUE(readMap(folder.file("a"), map).ok());
  ASSERT_TRUE(writeMap(folder.file("b"), map.header, map.range, *map.matrix).ok());
  EXPECT_EQ(readFile(folder.file("a")), readFile(folder.file("b")));
}

TEST(AMapFileTest, ThreadsMayEachUseTheirOwnFile) {
  const TempFolder folder;
  std::array<bool, 4> good{};
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < good.size(); ++t)
    threads.emplace_back([&, t] {
      good[t] = true;
      for (int round = 0; round < 20; ++round) {
        const std::string path = folder.file(std::to_string(t) + ".exm");
        AMatrix<float> matrix(16, 16);
        matrix(3, 5) = static_cast<float>(t * 100) + static_cast<float>(round);
        LoadedMap map;
        good[t] = good[t] && writeMap(path, fullHeader(), fullRange(16, 16), matrix).ok() &&
                  readMap(path, map).ok() && (*map.matrix)(3, 5) == matrix(3, 5);
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_THAT(good, testing::Each(true));
}

}  // namespace
}  // namespace lumo
