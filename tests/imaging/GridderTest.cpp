// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "imaging/Gridder.h"
#include "imaging/Recorders.h"
#include "imaging/StraightGridding.h"
#include "imaging/TestFile.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::StraightGrids;
using test::TempFolder;
using test::TestFile;
using ::testing::ElementsAre;

// Frequencies and cells are powers of two, so that positions in cells are exact where a test wants them to
// be.
constexpr double kNu0 = 0x1p30;
constexpr double kCell = 0x1p16;          // wavelengths
constexpr double kCellSeconds = 0x1p-14;  // of light travel, at kNu0
constexpr std::uint64_t kLots = std::uint64_t{1} << 28;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// A grid of 17 columns (u = 0 .. 16 cells) by 16 rows (v = -8 .. 7 cells), natural weighting, pill box.
ABMakeParameters smallGrid() {
  ABMakeParameters p;
  p.halfSizeX = 16;
  p.halfSizeY = 8;
  p.uvLimitU = 2;
  p.uvScaleU = 8 * kCell;
  p.uvLimitV = 1;
  p.uvScaleV = 8 * kCell;
  return p;
}

AUVXComplex randomVisibility(std::mt19937_64& engine) {
  std::uniform_real_distribution<double> uniform(-1, 1);
  return {uniform(engine), uniform(engine), 2 + uniform(engine)};
}

/// Groups all over the grid and somewhat beyond it, with everything that has to be left out in between.
void fill(TestFile& file, int count, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::uniform_real_distribution<double> uniform(-1, 1);
  const auto values = [&] {
    std::vector<AUVXComplex> list;
    for (std::uint64_t i = 0; i < file.content.shape.visibilities(); ++i)
      list.push_back(randomVisibility(engine));
    return list;
  };
  const auto selectionId = [&](int g) {
    const auto& selections = file.content.selections;
    return static_cast<std::int8_t>(selections[static_cast<std::size_t>(g) % selections.size()].id);
  };
  const double edge = 16 * kCellSeconds;
  for (int g = 0; g < count; ++g) {
    auto& group = file.add(1.2 * edge * uniform(engine), 0.7 * edge * uniform(engine), values());
    group.record.freqSel = selectionId(g);
    AUVXComplex& spoilt = group.values[static_cast<std::size_t>(g) % group.values.size()];
    switch (g % 13) {
      case 1:
        group.record.flag = 1;
        break;
      case 2:
        group.record.source = 77;
        break;
      case 3:
        spoilt = {kNaN, 0, 1};
        break;
      case 4:
        spoilt = {0, kInfinity, 1};
        break;
      case 5:
        spoilt = {1, 1, kNaN};
        break;
      case 6:
        spoilt = {1, 1, -1};
        break;
      case 7:
        spoilt = {1, 1, kInfinity};
        break;
      case 8:
        for (AUVXComplex& value : group.values) value = {1, 1, 0};
        break;
      default:
        break;
    }
  }
  // Far outside, not finite, exactly on u = 0, on cell edges and on the borders of the grid.
  const double positions[][2] = {{1e30, 0},
                                 {-1e30, 1e30},
                                 {3e38, -3e38},
                                 {kNaN, 0},
                                 {0, kInfinity},
                                 {0, 0},
                                 {0, 2.25 * kCellSeconds},
                                 {0, -8 * kCellSeconds},
                                 {2.5 * kCellSeconds, -1.5 * kCellSeconds},
                                 {-2.5 * kCellSeconds, 1.5 * kCellSeconds},
                                 {0.5 * kCellSeconds, 0.5 * kCellSeconds},
                                 {-0.5 * kCellSeconds, -0.5 * kCellSeconds},
                                 {16 * kCellSeconds, 7.5 * kCellSeconds},
                                 {-16.5 * kCellSeconds, 8 * kCellSeconds},
                                 {16.4 * kCellSeconds, -8.4 * kCellSeconds},
                                 {-17 * kCellSeconds, -9 * kCellSeconds},
                                 {1e-40, -1e-40}};
  int g = 0;
  for (const auto& [u, v] : positions) file.add(u, v, values()).record.freqSel = selectionId(g++);
}

/// Two files of different shapes: three IFs of two channels and two hands in three selections, one of them
/// unused; one IF of stored I.
std::vector<TestFile> twoFiles() {
  TestFile wide({kNu0, 1.1e9, 1.21e9}, 2);
  wide.storeHands();
  wide.addSelection(-7, {0.9e9, 0.95e9, 1.3e9});
  wide.addSelection(5, {1.4e9, kNu0, 1.02e9});
  wide.used(1, 0);
  fill(wide, 60, 11);
  TestFile narrow({1.05e9});
  narrow.source = 70000;  // Groups hold its low 16 bits.
  narrow.content.sources[0].id = 70000;
  fill(narrow, 40, 12);
  return {wide, narrow};
}

template <typename Straight>
void expectSameBits(const AObjArray<AMatrix<Complex>>& grids, const Straight& expected, const char* kind) {
  ASSERT_EQ(static_cast<std::size_t>(grids.count()), expected.size());
  for (std::int32_t k = 0; k < grids.count(); ++k) {
    const auto& plain = expected[static_cast<std::size_t>(k)];
    ASSERT_EQ(grids[k].size(), plain.size());
    ASSERT_EQ(std::memcmp(grids[k].data(), plain.data(), plain.size() * sizeof(Complex)), 0)
        << kind << " grid " << k;
  }
}

class GridderTest : public ::testing::Test {
 protected:
  SpectralGridSet grid(const ABMakeParameters& parameters, const std::vector<TestFile>& files, int order = 1,
                       std::uint64_t workGridBytes = kLots, int threads = 1) {
    const VisibilityInputs inputs = test::listTestFiles(folder_, files);
    const RunIndicators indicators;
    Gridder gridder(parameters, inputs, {order, kNu0, workGridBytes, threads}, indicators);
    SpectralGridSet grids;
    EXPECT_EQ(gridder.run(grids), 1) << gridder.status().text();
    EXPECT_TRUE(gridder.status().ok());
    return grids;
  }

  /// Compares with the oracle by memory: one IF at a time, as many as little memory allows and all together,
  /// on one, two, three and eight threads.
  void expectStraight(const ABMakeParameters& parameters, const std::vector<TestFile>& files, int order) {
    const StraightGrids expected = test::gridStraight(parameters, files, order, kNu0);
    double total = 0;
    for (const auto& value : expected.beams[0]) total += value.real();
    ASSERT_GT(total, 0) << "the oracle gridded nothing";
    struct Way {
      std::uint64_t bytes;
      int threads;
    };
    const std::uint64_t little = 2 * TilePool::kPieceBytes;
    for (const Way& way : {Way{0, 1}, Way{0, 2}, Way{little, 1}, Way{little, 3}, Way{kLots, 1}, Way{kLots, 2},
                           Way{kLots, 3}, Way{kLots, 8}}) {
      SCOPED_TRACE(std::to_string(way.bytes) + " bytes, " + std::to_string(way.threads) + " threads");
      const SpectralGridSet grids = grid(parameters, files, order, way.bytes, way.threads);
      expectSameBits(grids.beams, expected.beams, "beam");
      expectSameBits(grids.dirty, expected.dirty, "dirty");
    }
  }

  TempFolder folder_;
};

TEST_F(GridderTest, GridsLikeTheStraightLoopsForEveryOrder) {
  for (const int order : {1, 2, 3, 4}) expectStraight(smallGrid(), twoFiles(), order);
}

TEST_F(GridderTest, GridsLikeTheStraightLoopsForEveryKernel) {
  for (const std::int32_t type : {1, 2, 3, 4}) {
    for (const double width : {0.3, 1.0, 2.7}) {
      ABMakeParameters p = smallGrid();
      p.kernelType = type;
      p.kernelWidthU = width;
      p.kernelWidthV = 1.5 * width;
      expectStraight(p, twoFiles(), 2);
    }
  }
}

TEST_F(GridderTest, GridsLikeTheStraightLoopsWithAKernelWiderThanTheGrid) {
  ABMakeParameters p = smallGrid();
  p.kernelType = kKernelLorentz;
  p.kernelWidthU = 150;
  p.kernelWidthV = 90;
  TestFile far({kNu0});
  far.add(250 * kCellSeconds, -150 * kCellSeconds, {{1, 2, 3}});
  expectStraight(p, {far}, 1);
}

TEST_F(GridderTest, GridsLikeTheStraightLoopsWithAKernelWithoutWidth) {
  ABMakeParameters p = smallGrid();
  p.kernelType = kKernelGauss;
  p.kernelWidthU = 0;
  p.kernelWidthV = 0;
  expectStraight(p, twoFiles(), 2);
}

TEST_F(GridderTest, GridsLikeTheStraightLoopsForEveryTaper) {
  for (const std::int32_t type : {1, 2, 3, 4}) {
    ABMakeParameters p = smallGrid();
    p.taperType = type;
    p.taperWidthU = 9 * kCell;
    p.taperWidthV = 4 * kCell;
    p.taperParam3 = 0.75;
    p.taperParam4 = 0.25;
    expectStraight(p, twoFiles(), 2);
  }
}

TEST_F(GridderTest, GridsLikeTheStraightLoopsWithAndWithoutVisibilityWeights) {
  for (const std::int32_t use : {0, 1, -3}) {
    ABMakeParameters p = smallGrid();
    p.useVisWeights = use;
    p.taperType = kTaperGauss;
    p.taperWidthU = 9 * kCell;
    expectStraight(p, twoFiles(), 2);
  }
}

TEST_F(GridderTest, GridsLikeTheStraightLoopsWithShifts) {
  for (const double x : {0.0, 0.06, -0.11}) {
    for (const double y : {0.0, 0.09}) {
      ABMakeParameters p = smallGrid();
      p.shiftX = x;
      p.shiftY = y;
      expectStraight(p, twoFiles(), 2);
    }
  }
}

TEST_F(GridderTest, GridsLikeTheStraightLoopsWithUniformWeighting) {
  const double boxes[][2] = {{1, 1},     {2, 2}, {0.5, 0.25}, {0.3, 0.13},
                             {0.001, 1}, {0, 0}, {-1, 0.5},   {1.7, -2}};
  for (const auto& [boxU, boxV] : boxes) {
    for (const std::int32_t kernel : {kKernelPillBox, kKernelGauss}) {
      ABMakeParameters p = smallGrid();
      p.weightingMode = kUniformWeighting;
      p.uniformBoxU = boxU;
      p.uniformBoxV = boxV;
      p.kernelType = kernel;
      expectStraight(p, twoFiles(), 2);
    }
  }
}

TEST_F(GridderTest, EveryWeightingModeButTwoIsNatural) {
  for (const std::int32_t mode : {-1, 0, 1, 3}) {
    ABMakeParameters p = smallGrid();
    p.weightingMode = mode;
    expectStraight(p, twoFiles(), 1);
  }
}

TEST_F(GridderTest, GridsLikeTheStraightLoopsForEverySetOfSelections) {
  for (int mask = 1; mask < 8; ++mask) {
    std::vector<TestFile> files = twoFiles();
    for (int bit = 0; bit < 3; ++bit) files[0].used(bit, mask >> bit & 1);
    expectStraight(smallGrid(), files, 2);
  }
}

TEST_F(GridderTest, GridsLikeTheStraightLoopsOverManyBlocksOfRecords) {
  TestFile file({kNu0, 1.07e9, 1.1e9, 1.13e9, 1.16e9}, 3);
  fill(file, 9000, 21);
  for (const std::int32_t kernel : {kKernelPillBox, kKernelGauss}) {
    ABMakeParameters p = smallGrid();
    p.kernelType = kernel;
    p.shiftX = 0.05;
    expectStraight(p, {file}, 2);
  }
}

/// Selections of so many IFs each; their groups take turns.
TestFile fourSelections(std::size_t ifs) {
  const std::vector<double> highest = {1.3e9, 1.31e9, 1.32e9};
  const auto offset = [&](double factor) {
    std::vector<double> frequencies;
    for (std::size_t i = 0; i < ifs; ++i) frequencies.push_back(factor * highest[i]);
    return frequencies;
  };
  TestFile file(offset(1), 2);
  file.addSelection(-128, offset(0.9));
  file.addSelection(127, offset(0.7));
  file.addSelection(-1, offset(0.8));
  fill(file, 4000, 31);
  return file;
}

void sortBySelection(TestFile& file) {
  std::stable_sort(file.groups.begin(), file.groups.end(),
                   [](const auto& a, const auto& b) { return a.record.freqSel < b.record.freqSel; });
}

TEST_F(GridderTest, GridsLikeTheStraightLoopsWhereSelectionsTakeTurnsAndWhereTheyFollowEachOther) {
  for (const std::size_t ifs : {1, 3}) {
    for (const bool sorted : {false, true}) {
      TestFile file = fourSelections(ifs);
      if (sorted) sortBySelection(file);
      for (const std::int32_t kernel : {kKernelPillBox, kKernelGauss}) {
        ABMakeParameters p = smallGrid();
        p.kernelType = kernel;
        p.weightingMode = kUniformWeighting;
        const StraightGrids expected = test::gridStraight(p, {file}, 2, kNu0);
        // From one IF a pass to all: a grid of 12 tiles takes a piece or more.
        for (const std::uint64_t pieces : {0, 2, 3, 5, 9, 100}) {
          for (const int threads : {1, 2, 3}) {
            SCOPED_TRACE(std::to_string(ifs) + " IFs, sorted " + std::to_string(sorted) + ", kernel " +
                         std::to_string(kernel) + ", " + std::to_string(pieces) + " pieces, " +
                         std::to_string(threads) + " threads");
            const SpectralGridSet grids = grid(p, {file}, 2, pieces * TilePool::kPieceBytes, threads);
            expectSameBits(grids.beams, expected.beams, "beam");
            expectSameBits(grids.dirty, expected.dirty, "dirty");
          }
        }
      }
    }
  }
}

TEST_F(GridderTest, GridsLikeTheStraightLoopsWhenRowsOfTheFrequencyTableShareAnId) {
  TestFile file({kNu0});
  file.addSelection(3, {0.9e9});
  file.addSelection(3, {1.1e9});
  fill(file, 300, 41);
  expectStraight(smallGrid(), {file}, 2);
}

TEST_F(GridderTest, GridsLikeTheStraightLoopsAtAndNextToTheEdgesOfCells) {
  TestFile file({kNu0});
  for (int u = -18; u <= 18; ++u) {
    for (int v = -9; v <= 9; ++v) {
      // Half a cell, the next smaller and larger single, and a thousandth of a millionth of a cell beside it.
      for (const double step : {0.0, 0x1p-23, -0x1p-23, 0x1p-20, -0x1p-20}) {
        const double side = (0.5 + step) * kCellSeconds;
        file.add(u * kCellSeconds + side, v * kCellSeconds, {{1, 2, 3}});
        file.add(u * kCellSeconds, v * kCellSeconds - side, {{3, -1, 2}});
        file.add(u * kCellSeconds - side, v * kCellSeconds + side, {{-2, 1, 1}});
      }
    }
  }
  expectStraight(smallGrid(), {file}, 1);
  // Cells whose size is no power of two: positions and edges are rounded.
  ABMakeParameters p = smallGrid();
  p.uvScaleU *= 1 + 1e-7;
  p.uvScaleV *= 1 - 1e-7;
  expectStraight(p, {file}, 1);
}

TEST_F(GridderTest, GridsLikeTheStraightLoopsInTheColumnOfUZeroWhereAPointAndItsConjugateHaveACellEach) {
  TestFile file({kNu0});
  for (int v = -10; v <= 10; ++v) {
    for (const double u : {-0.49, -0.2, -0x1p-30, -0.0, 0.0, 0x1p-30, 0.3, 0.49, 0.51}) {
      for (const double beside : {-0.45, -0x1p-20, 0.0, 0.1, 0.5}) {
        file.add(u * kCellSeconds, (v + beside) * kCellSeconds, {{1 + 0.1 * v, u + 0.7, 1.5 + beside}});
        file.add(u * kCellSeconds, -(v + beside) * kCellSeconds, {{0.3, 0.1 * v - u, 1.1}});
      }
    }
  }
  expectStraight(smallGrid(), {file}, 1);
  ABMakeParameters p = smallGrid();
  p.halfSizeY = 128;  // Several rows of tiles, cells of a sixteenth.
  expectStraight(p, {file}, 1);
}

TEST_F(GridderTest, GridsLikeTheStraightLoopsOnGridsOfManyTiles) {
  ABMakeParameters p = smallGrid();
  p.halfSizeX = 256;
  p.halfSizeY = 128;
  for (const std::int32_t kernel : {kKernelPillBox, kKernelHat}) {
    p.kernelType = kernel;
    p.kernelWidthU = p.kernelWidthV = 3;
    expectStraight(p, twoFiles(), 2);
  }
}

/// Four IFs on a grid of some two thousand tiles, and how often gridding them passes over the
/// file.
class GridderMemoryTest : public GridderTest {
 protected:
  GridderMemoryTest() {
    parameters_.halfSizeX = parameters_.halfSizeY = 256;
    onePoints_ = WorkGrid::emptyBytes(GridGeometry(parameters_)) +
                 std::uint64_t{Stretch::kCapacity} * WorkGrid::kTileCells * sizeof(WorkGrid::Cell);
  }
  std::int64_t passes(const TestFile& file, std::uint64_t workGridBytes) {
    const VisibilityInputs inputs = test::listTestFiles(folder_, {file});
    test::RecordingBar reading;
    RunIndicators indicators;
    indicators.readingBar = &reading;
    Gridder gridder(parameters_, inputs, {1, kNu0, workGridBytes}, indicators);
    SpectralGridSet grids;
    EXPECT_EQ(gridder.run(grids), 1);
    return std::count(reading.positions.begin(), reading.positions.end(), 100);
  }
  TestFile file_{{kNu0, 1.1e9, 1.2e9, 1.3e9}};
  ABMakeParameters parameters_ = smallGrid();
  std::uint64_t onePoints_;  ///< of an IF each of whose first points takes a tile
};

TEST_F(GridderMemoryTest, IfsShareAPassWhileEachPointOfAFirstBlockMayTakeATile) {
  fill(file_, 100, 5);
  EXPECT_EQ(passes(file_, kLots), 1);
  EXPECT_EQ(passes(file_, 0), 4);
  // Lists of tiles for all four are not enough, even though the few visibilities would have taken little.
  EXPECT_EQ(passes(file_, 4 * WorkGrid::emptyBytes(GridGeometry(parameters_))), 4);
  EXPECT_EQ(passes(file_, 2 * onePoints_), 2);
  EXPECT_EQ(passes(file_, 4 * onePoints_), 1);
  expectStraight(parameters_, {file_}, 1);
}

TEST_F(GridderMemoryTest, WhatDoesNotFitAfterABlockWaitsForTheNextPass) {
  // More visibilities than were reckoned with, for a block of few IFs is longer.
  fill(file_, 3000, 5);
  EXPECT_EQ(passes(file_, kLots), 1);
  EXPECT_GT(passes(file_, 4 * onePoints_), 1);
  EXPECT_LT(passes(file_, 4 * onePoints_), 5);
  expectStraight(parameters_, {file_}, 1);
}

TEST_F(GridderMemoryTest, SelectionsShareAPassAsFarAsAllTheirIfsMay) {
  file_.addSelection(7, {0.8e9, 0.9e9, 1.0e9, 1.4e9});
  file_.addSelection(-9, {0.7e9, 0.75e9, 1.5e9, 1.6e9});
  fill(file_, 100, 5);
  for (const bool sorted : {false, true}) {
    if (sorted) sortBySelection(file_);
    EXPECT_EQ(passes(file_, kLots), 1);
    EXPECT_EQ(passes(file_, 12 * onePoints_), 1);
    EXPECT_EQ(passes(file_, 11 * onePoints_), 2);
    EXPECT_EQ(passes(file_, 8 * onePoints_), 2);
    EXPECT_EQ(passes(file_, 7 * onePoints_), 3);
    EXPECT_EQ(passes(file_, 2 * onePoints_), 6);
    EXPECT_EQ(passes(file_, 0), 12);
  }
}

TEST_F(GridderMemoryTest, SelectionsThatDoNotFitAfterABlockWaitForTheNextPass) {
  file_.addSelection(7, {0.8e9, 0.9e9, 1.0e9, 1.4e9});
  fill(file_, 6000, 5);
  EXPECT_EQ(passes(file_, kLots), 1);
  EXPECT_GT(passes(file_, 8 * onePoints_), 1);
  EXPECT_LT(passes(file_, 8 * onePoints_), 9);
  const StraightGrids expected = test::gridStraight(parameters_, {file_}, 1, kNu0);
  for (const int threads : {1, 2, 3}) {
    const SpectralGridSet grids = grid(parameters_, {file_}, 1, 8 * onePoints_, threads);
    expectSameBits(grids.dirty, expected.dirty, "dirty");
  }
}

TEST_F(GridderTest, AVisibilityAtUZeroIsGriddedTwiceInItsColumnEachTimeWithTheFullWeight) {
  TestFile file({kNu0});
  file.add(0, 3 * kCellSeconds, {{5, 7, 2}});
  const SpectralGridSet grids = grid(smallGrid(), {file});
  EXPECT_EQ(grids.beams[0](11, 0), Complex(2, 0));
  EXPECT_EQ(grids.beams[0](5, 0), Complex(2, 0));
  EXPECT_EQ(grids.dirty[0](11, 0), Complex(10, 14));
  EXPECT_EQ(grids.dirty[0](5, 0), Complex(10, -14));
  double total = 0;
  for (std::size_t i = 0; i < grids.beams[0].size(); ++i) total += grids.beams[0].data()[i].real();
  EXPECT_EQ(total, 4);
}

TEST_F(GridderTest, AVisibilityAtNegativeULandsAsItsConjugate) {
  TestFile file({kNu0});
  file.add(-4 * kCellSeconds, 3 * kCellSeconds, {{5, 7, 2}});
  const SpectralGridSet grids = grid(smallGrid(), {file});
  EXPECT_EQ(grids.dirty[0](5, 4), Complex(10, -14));
  EXPECT_EQ(grids.beams[0](5, 4), Complex(2, 0));
  double total = 0;
  for (std::size_t i = 0; i < grids.beams[0].size(); ++i) total += grids.beams[0].data()[i].real();
  EXPECT_EQ(total, 2);
}

TEST_F(GridderTest, TheSupportIsRoundedWithSevenTenthsSoAHalfWidthOfThreeTenthsReachesTheNeighbours) {
  for (const double width : {0.3 + 1e-9, 0.3 - 1e-9}) {
    ABMakeParameters p = smallGrid();
    p.kernelType = kKernelGauss;
    p.kernelWidthU = width;
    p.kernelWidthV = width;
    TestFile file({kNu0});
    file.add(5 * kCellSeconds, 2 * kCellSeconds, {{1, 0, 1}});
    const SpectralGridSet grids = grid(p, {file});
    const bool reaches = width > 0.3;
    EXPECT_EQ(grids.beams[0](10, 5).real(), 1);
    for (const int step : {-1, 1}) {
      EXPECT_EQ(grids.beams[0](10, static_cast<std::uint32_t>(5 + step)).real() > 0, reaches);
      EXPECT_EQ(grids.beams[0](static_cast<std::uint32_t>(10 + step), 5).real() > 0, reaches);
      EXPECT_EQ(grids.beams[0](static_cast<std::uint32_t>(10 + 2 * step), 5).real(), 0);
    }
  }
}

TEST_F(GridderTest, DataAtTheReferenceFrequencyReachOnlyTheGridsOfTermZero) {
  TestFile file({kNu0});
  fill(file, 30, 3);
  const SpectralGridSet grids = grid(smallGrid(), {file}, 3);
  double zero = 0;
  for (std::size_t i = 0; i < grids.beams[0].size(); ++i) {
    zero += grids.beams[0].data()[i].real();
    for (const std::int32_t k : {1, 2, 3, 4}) ASSERT_EQ(grids.beams[k].data()[i], Complex());
    for (const std::int32_t k : {1, 2}) ASSERT_EQ(grids.dirty[k].data()[i], Complex());
  }
  EXPECT_GT(zero, 0);
}

TEST_F(GridderTest, TermsCarryThePowersOfTheFractionalFrequencyOffset) {
  TestFile file({1.25 * kNu0});
  file.add(4 * kCellSeconds, kCellSeconds * 1.6, {{3, -4, 2}});  // 5 and 2 cells at this frequency
  const SpectralGridSet grids = grid(smallGrid(), {file}, 3);
  double power = 1;
  for (std::int32_t k = 0; k < 5; ++k, power *= 0.25) {
    EXPECT_EQ(grids.beams[k](10, 5), Complex(2 * power, 0)) << k;
    if (k < 3) {
      EXPECT_EQ(grids.dirty[k](10, 5), Complex(6 * power, -8 * power)) << k;
    }
  }
}

TEST_F(GridderTest, WithOrderOneThereIsOneDirtyGridAndOneBeamGrid) {
  TestFile file({kNu0});
  fill(file, 5, 1);
  const SpectralGridSet grids = grid(smallGrid(), {file}, 1);
  EXPECT_EQ(grids.dirty.count(), 1);
  EXPECT_EQ(grids.beams.count(), 1);
  EXPECT_EQ(grids.dirty[0].rows(), 16u);
  EXPECT_EQ(grids.dirty[0].columns(), 17u);
}

TEST_F(GridderTest, UniformWeightingWithBothBoxesNotAboveZeroMakesTheWholeGridOneValue) {
  for (const double box : {0.0, -1.0}) {
    ABMakeParameters p = smallGrid();
    p.weightingMode = kUniformWeighting;
    p.uniformBoxU = p.uniformBoxV = box;
    const SpectralGridSet grids = grid(p, twoFiles(), 2);
    const auto expectFlat = [](const AMatrix<Complex>& flat) {
      ASSERT_NE(flat(0, 0), Complex());
      for (std::size_t i = 0; i < flat.size(); ++i) ASSERT_EQ(flat.data()[i], flat(0, 0));
    };
    for (const AMatrix<Complex>& beam : grids.beams) expectFlat(beam);
    for (const AMatrix<Complex>& dirty : grids.dirty) expectFlat(dirty);
  }
}

TEST_F(GridderTest, ARecordWhoseChannelsAllHaveWeightZeroIsIgnoredEvenIfTheTaperIsNotZero) {
  ABMakeParameters p = smallGrid();
  p.useVisWeights = 0;
  TestFile file({kNu0}, 2);
  file.add(3 * kCellSeconds, 0, {{1, 1, 0}, {1, 1, 0}});
  file.add(6 * kCellSeconds, 0, {{1, 1, 0}, {1, 1, 4}});
  const SpectralGridSet grids = grid(p, {file});
  EXPECT_EQ(grids.beams[0](8, 3), Complex());
  EXPECT_EQ(grids.dirty[0](8, 3), Complex());
  EXPECT_EQ(grids.beams[0](8, 6), Complex(1, 0));
}

TEST_F(GridderTest, ReadingAgainStartsFromEmptyGrids) {
  const std::vector<TestFile> files = twoFiles();
  const VisibilityInputs inputs = test::listTestFiles(folder_, files);
  const ABMakeParameters p = smallGrid();
  const RunIndicators indicators;
  SpectralGridSet grids;
  for (int run = 0; run < 2; ++run) {
    Gridder gridder(p, inputs, {2, kNu0, kLots}, indicators);
    ASSERT_EQ(gridder.run(grids), 1);
  }
  expectSameBits(grids.dirty, test::gridStraight(p, files, 2, kNu0).dirty, "dirty");
}

TEST_F(GridderTest, AMissingFileIsRefusedByName) {
  VisibilityInputs inputs = test::listTestFiles(folder_, twoFiles());
  inputs.names[1] = folder_.file("gone.uvx");
  const ABMakeParameters p = smallGrid();
  const RunIndicators indicators;
  Gridder gridder(p, inputs, {1, kNu0, kLots}, indicators);
  SpectralGridSet grids;
  EXPECT_EQ(gridder.run(grids), 0);
  EXPECT_EQ(gridder.status().code(), StatusCode::kNotFound);
  EXPECT_EQ(gridder.status().file(), folder_.file("gone.uvx"));
}

TEST_F(GridderTest, AFileThatIsCutShortMeanwhileIsRefusedByName) {
  // Read group by group through the map with all but one of many IFs left to later passes, or copied.
  for (const std::uint64_t workGridBytes : {std::uint64_t{0}, kLots}) {
    TestFile file({kNu0, 1.1e9, 1.2e9, 1.3e9});
    fill(file, 20000, 5);
    const VisibilityInputs inputs = test::listTestFiles(folder_, {file});
    test::RecordingBar reading;
    reading.onPos = [&](int percent) {
      if (percent == 50) std::filesystem::resize_file(inputs.names[0], 4096);
    };
    RunIndicators indicators;
    indicators.readingBar = &reading;
    const ABMakeParameters parameters = smallGrid();
    Gridder gridder(parameters, inputs, {1, kNu0, workGridBytes}, indicators);
    SpectralGridSet grids;
    EXPECT_EQ(gridder.run(grids), 0);
    EXPECT_EQ(gridder.status().code(), StatusCode::kReadFailed);
    EXPECT_EQ(gridder.status().file(), inputs.names[0]);
  }
}

TEST_F(GridderTest, AFileWhoseShapeChangedSinceItWasListedIsRefused) {
  std::vector<TestFile> changes = {TestFile({kNu0, kNu0}), TestFile({kNu0}, 2), TestFile({kNu0})};
  TestFile listed({kNu0});
  listed.storeHands();
  changes[2].content.products = {1};
  for (const TestFile& change : changes) {
    const VisibilityInputs inputs = test::listTestFiles(folder_, {listed});
    test::writeTestFile(change, inputs.names[0]);
    const ABMakeParameters p = smallGrid();
    const RunIndicators indicators;
    Gridder gridder(p, inputs, {1, kNu0, kLots}, indicators);
    SpectralGridSet grids;
    EXPECT_EQ(gridder.run(grids), 0);
    EXPECT_EQ(gridder.status().code(), StatusCode::kBadFormat);
    EXPECT_EQ(gridder.status().file(), inputs.names[0]);
  }
}

TEST_F(GridderTest, AKernelOrTaperTypeOutsideOneToFourIsRefused) {
  const VisibilityInputs inputs = test::listTestFiles(folder_, twoFiles());
  const RunIndicators indicators;
  for (const std::int32_t type : {0, 5}) {
    for (std::int32_t ABMakeParameters::*field :
         {&ABMakeParameters::kernelType, &ABMakeParameters::taperType}) {
      ABMakeParameters p = smallGrid();
      p.*field = type;
      Gridder gridder(p, inputs, {1, kNu0, kLots}, indicators);
      SpectralGridSet grids;
      EXPECT_EQ(gridder.run(grids), 0);
      EXPECT_EQ(gridder.status().code(), StatusCode::kInvalidValue);
    }
  }
}

TEST_F(GridderTest, AGridWithoutExtentIsRefused) {
  const VisibilityInputs inputs = test::listTestFiles(folder_, twoFiles());
  const RunIndicators indicators;
  for (double ABMakeParameters::*field : {&ABMakeParameters::uvScaleU, &ABMakeParameters::uvScaleV}) {
    for (const double scale : {0.0, std::numeric_limits<double>::quiet_NaN()}) {
      ABMakeParameters p = smallGrid();
      p.*field = scale;
      Gridder gridder(p, inputs, {1, kNu0, kLots}, indicators);
      SpectralGridSet grids;
      EXPECT_EQ(gridder.run(grids), 0);
      EXPECT_EQ(gridder.status().code(), StatusCode::kNoData);
    }
  }
}

TEST_F(GridderTest, CancelIsTestedOncePerRecordAndReturnsZero) {
  const VisibilityInputs inputs = test::listTestFiles(folder_, twoFiles());
  const ABMakeParameters p = smallGrid();
  CancelFlag cancel{1};
  test::RecordingText text;
  RunIndicators indicators;
  indicators.cancel = &cancel;
  indicators.statusText = &text;
  Gridder gridder(p, inputs, {1, kNu0, kLots}, indicators);
  SpectralGridSet grids;
  EXPECT_EQ(gridder.run(grids), 0);
  EXPECT_EQ(gridder.status().code(), StatusCode::kCancelled);
  EXPECT_THAT(text.texts, ElementsAre("Gridding.  Working..."));
}

TEST_F(GridderTest, CancelInTheMiddleOfTheSecondFileReturnsZero) {
  const VisibilityInputs inputs = test::listTestFiles(folder_, twoFiles());
  const ABMakeParameters p = smallGrid();
  CancelFlag cancel{0};
  test::RecordingBar fileBar;
  test::RecordingBar readingBar;
  readingBar.onPos = [&](int percent) {
    if (!fileBar.positions.empty() && fileBar.positions.back() == 100 && percent > 50) cancel = 1;
  };
  RunIndicators indicators;
  indicators.cancel = &cancel;
  indicators.readingBar = &readingBar;
  indicators.fileBar = &fileBar;
  Gridder gridder(p, inputs, {1, kNu0, kLots}, indicators);
  SpectralGridSet grids;
  EXPECT_EQ(gridder.run(grids), 0);
  EXPECT_THAT(fileBar.positions, ElementsAre(50, 100));
}

TEST_F(GridderTest, ShowsTextsAndProgressAndClearsThem) {
  const VisibilityInputs inputs = test::listTestFiles(folder_, twoFiles());
  const ABMakeParameters p = smallGrid();
  test::RecordingText text;
  test::RecordingBar reading;
  test::RecordingBar frequency;
  test::RecordingBar file;
  const RunIndicators indicators{nullptr, &text, &reading, &frequency, &file};
  Gridder gridder(p, inputs, {1, kNu0, 0}, indicators);
  SpectralGridSet grids;
  ASSERT_EQ(gridder.run(grids), 1);
  EXPECT_THAT(text.texts, ElementsAre("Gridding.  Working...", ""));
  EXPECT_THAT(file.positions, ElementsAre(50, 100, 0));
  // Six of the nine IFs of the first file are used (one of three selections is not), then the only one.
  EXPECT_THAT(frequency.positions, ElementsAre(11, 22, 33, 44, 56, 67, 100, 0));
  EXPECT_EQ(reading.positions.front(), 0);
  EXPECT_EQ(reading.positions.back(), 0);
  EXPECT_THAT(reading.positions, ::testing::Contains(100));
}

}  // namespace
}  // namespace lumo
