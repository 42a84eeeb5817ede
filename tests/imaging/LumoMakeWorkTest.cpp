// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <filesystem>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "imaging/BeamMomentAccumulator.h"
#include "imaging/GridGeometry.h"
#include "imaging/LumoMakeWork.h"
#include "imaging/Recorders.h"
#include "imaging/TestFile.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::TempFolder;
using test::TestFile;
using ::testing::ElementsAre;

// Frequencies and cells are powers of two, so that data can lie exactly on grid cells.
constexpr double kNu0 = 0x1p30;
constexpr double kCell = 0x1p12;          // wavelengths
constexpr double kCellSeconds = 0x1p-18;  // at kNu0
constexpr int kNx = 32;
constexpr int kNy = 16;
constexpr int kHalfNx = kNx / 2;
constexpr int kHalfNy = kNy / 2;
constexpr double kRadian = std::numbers::pi / 648000;
// Maps are stored in single precision; sums of a few hundred terms in double add nothing to that.
constexpr double kSingle = 1e-6;

/// Maps of 32 columns by 16 rows; u = 0 .. 32 cells, v = -16 .. 15 cells.
ABMakeParameters smallMaps() {
  ABMakeParameters p;
  p.halfSizeX = kNx;
  p.halfSizeY = kNy;
  p.uvLimitU = 2;
  p.uvScaleU = kHalfNx * kCell;
  p.uvLimitV = 1;
  p.uvScaleV = kNy * kCell;
  return p;
}

/// The sky of a test: point sources, offsets in arcseconds to the east and to the north.
struct Source {
  double x, y, flux;
};

using Sky = std::vector<Source>;

/// V(u, v) of the sky by the sign that visibility files have.
Complex visibility(const Sky& sky, double u, double v) {
  Complex sum;
  for (const Source& source : sky)
    sum += std::polar(source.flux, 2 * std::numbers::pi * (u * source.x + v * source.y) * kRadian);
  return sum;
}

/// Fills a group with the sky's visibilities at every IF, weight as given.
void observe(TestFile& file, double uSeconds, double vSeconds, const Sky& sky, double weight) {
  std::vector<AUVXComplex> values;
  for (const UvxSelection::Band& band : file.content.selections[0].bands) {
    const Complex value = visibility(sky, static_cast<float>(uSeconds) * band.frequency,
                                     static_cast<float>(vSeconds) * band.frequency);
    values.emplace_back(value.real(), value.imag(), weight);
  }
  file.add(uSeconds, vSeconds, values);
}

const std::vector<double> kThreeIfs = {kNu0, 1.25 * kNu0, 1.5 * kNu0};

/// Groups whose three IFs (factors 1, 5/4, 3/2) all lie exactly on cells inside the grid: multiples of four
/// cells at the first.
TestFile onCells(const Sky& sky) {
  TestFile file(kThreeIfs);
  int i = 0;
  for (int u = -20; u <= 20; u += 4)
    for (int v = -8; v <= 8; v += 4)
      if (u != 0 || v > 0) observe(file, u * kCellSeconds, v * kCellSeconds, sky, 0.5 + (i++ % 7));
  return file;
}

/// Groups anywhere inside the grid.
TestFile offCells(const Sky& sky, int count) {
  TestFile file(kThreeIfs);
  std::mt19937_64 engine(9);
  std::uniform_real_distribution<double> uniform(-1, 1);
  for (int i = 0; i < count; ++i)
    observe(file, 20 * kCellSeconds * uniform(engine), 9.5 * kCellSeconds * uniform(engine), sky,
            2 + uniform(engine));
  return file;
}

/// One weighted sample of the uv plane.
struct Sample {
  double u, v, weight, f;
  Complex value;
};

std::vector<Sample> samplesOf(const std::vector<TestFile>& files) {
  std::vector<Sample> samples;
  for (const TestFile& file : files) {
    for (const TestFile::Group& group : file.groups) {
      for (std::size_t j = 0; j < file.content.shape.ifs; ++j) {
        const double nu = file.content.selections[0].bands[j].frequency;
        const AUVXComplex& value = group.values[j];
        samples.push_back({group.record.u * nu, group.record.v * nu, value.Weight(), nu / kNu0 - 1,
                           Complex(value.Re(), value.Im())});
      }
    }
  }
  return samples;
}

/// Dirty map of a term at an offset (arcseconds): the weighted mean of f^k V e^(-2 pi i (u x + v y)).
double directDirty(const std::vector<Sample>& samples, int term, double x, double y) {
  double sum = 0;
  double weights = 0;
  for (const Sample& s : samples) {
    const double phase = 2 * std::numbers::pi * (s.u * x + s.v * y) * kRadian;
    sum += std::pow(s.f, term) * s.weight * (s.value * std::polar(1.0, -phase)).real();
    weights += s.weight;
  }
  return sum / weights;
}

double directBeam(std::vector<Sample> samples, int term, double x, double y) {
  for (Sample& s : samples) s.value = 1;
  return directDirty(samples, term, x, y);
}

class LumoMakeWorkTest : public ::testing::Test {
 protected:
  void SetUp() override { parameters_ = smallMaps(); }

  /// A worker on the files, its products named "dm0", ..., "bm0", ... in the folder.
  std::unique_ptr<LumoMakeWork> makeWork(const std::vector<TestFile>& files, int order) {
    auto work = std::make_unique<LumoMakeWork>(order);
    work->SetInputs(&parameters_, test::listTestFiles(folder_, files));
    work->setReferenceFrequency(kNu0);
    for (int k = 0; k < work->order(); ++k) work->dirtyMapNames()[k] = name("^dm", k);
    for (int k = 0; k < work->beamCount(); ++k) work->beamNames()[k] = name("^bm", k);
    return work;
  }
  [[nodiscard]] std::string name(const std::string& kind, int k) const {
    return folder_.file("run" + kind + std::to_string(k) + ".exm");
  }
  static int run(LumoMakeWork& work) { return work.Run(nullptr, nullptr, nullptr, nullptr, nullptr); }
  void runAll(const std::vector<TestFile>& files, int order) {
    const auto work = makeWork(files, order);
    ASSERT_EQ(run(*work), 1) << work->status().text();
    for (const MapProduct& product : work->products()) ASSERT_TRUE(product.status.ok());
  }
  [[nodiscard]] LoadedMap load(const std::string& kind, int k) const {
    LoadedMap map;
    const Status status = readMap(name(kind, k), map);
    EXPECT_TRUE(status.ok()) << status.text();
    if (map.matrix == nullptr) map.matrix = std::make_unique<AMatrix<float>>(1, 1);
    return map;
  }
  /// Products (names ending in ".exm") in the folder.
  [[nodiscard]] int productCount() const {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
      count += entry.path().extension() == ".exm" ? 1 : 0;
    return count;
  }

  /// Calls compare(value, x, y) for every pixel.
  template <typename Compare>
  static void forEachPixel(const LoadedMap& map, Compare&& compare) {
    const AMatrix<float>& m = *map.matrix;
    for (std::uint32_t r = 0; r < m.rows(); ++r) {
      for (std::uint32_t c = 0; c < m.columns(); ++c) {
        const double x = map.range.xMin + c * (map.range.xMax - map.range.xMin) / (m.columns() - 1);
        const double y = map.range.yMin + r * (map.range.yMax - map.range.yMin) / (m.rows() - 1);
        ASSERT_NO_FATAL_FAILURE(compare(m(r, c), x, y));
      }
    }
  }
  void expectDirectDirty(const std::vector<TestFile>& files, int order) const {
    const std::vector<Sample> samples = samplesOf(files);
    for (int k = 0; k < order; ++k) {
      forEachPixel(load("^dm", k), [&](float value, double x, double y) {
        ASSERT_NEAR(value, directDirty(samples, k, x, y), kSingle)
            << "term " << k << " at " << x << ", " << y;
      });
    }
  }

  TempFolder folder_;
  ABMakeParameters parameters_;
};

const Sky kPoint = {{0, 0, 1.0}};
// Arcseconds of one pixel.
const double kPixelX = 1 / (2 * kNx * kCell) / kRadian;
const double kPixelY = 1 / (2 * kNy * kCell) / kRadian;
const Sky kField = {{5 * kPixelX, 3 * kPixelY, 1.0}, {-7.3 * kPixelX, 2.2 * kPixelY, 0.4}};

TEST_F(LumoMakeWorkTest, WithOrderOneMakesOneDirtyMapAndOneBeam) {
  runAll({onCells(kPoint)}, 1);
  EXPECT_EQ(productCount(), 2);
  EXPECT_TRUE(test::exists(name("^dm", 0)));
  EXPECT_TRUE(test::exists(name("^bm", 0)));
}

TEST_F(LumoMakeWorkTest, WithOrderTwoMakesDirtyMapsZeroAndOneAndBeamsZeroToTwo) {
  runAll({onCells(kPoint)}, 2);
  EXPECT_EQ(productCount(), 5);
  for (int k = 0; k < 2; ++k) EXPECT_TRUE(test::exists(name("^dm", k)));
  for (int k = 0; k < 3; ++k) EXPECT_TRUE(test::exists(name("^bm", k)));
}

TEST_F(LumoMakeWorkTest, TheProductsAreTheSameToTheBitForAnyNumberOfThreads) {
  std::vector<LoadedMap> expected;
  for (const int threads : {1, 2, 3, 8}) {
    const auto work = makeWork({offCells(kField, 300)}, 2);
    work->setThreads(threads);
    ASSERT_EQ(run(*work), 1) << work->status().text();
    std::vector<LoadedMap> maps;
    for (int k = 0; k < 2; ++k) maps.push_back(load("^dm", k));
    for (int k = 0; k < 3; ++k) maps.push_back(load("^bm", k));
    if (expected.empty()) {
      expected = std::move(maps);
      continue;
    }
    for (std::size_t i = 0; i < maps.size(); ++i)
      EXPECT_EQ(std::memcmp(maps[i].matrix->data(), expected[i].matrix->data(),
                            maps[i].matrix->size() * sizeof(float)),
                0)
          << threads << " threads, map " << i;
  }
}

TEST_F(LumoMakeWorkTest, BeamsAreTwiceAsLargeAsMapsInBothDirections) {
  runAll({onCells(kPoint)}, 3);
  for (int k = 0; k < 3; ++k) {
    EXPECT_EQ(load("^dm", k).matrix->rows(), static_cast<std::uint32_t>(kNy));
    EXPECT_EQ(load("^dm", k).matrix->columns(), static_cast<std::uint32_t>(kNx));
  }
  for (int k = 0; k < 5; ++k) {
    EXPECT_EQ(load("^bm", k).matrix->rows(), 2u * kNy);
    EXPECT_EQ(load("^bm", k).matrix->columns(), 2u * kNx);
  }
}

TEST_F(LumoMakeWorkTest, AxisRangesFollowThePixelSizeAndTheMapsTheShift) {
  parameters_.shiftX = 2.5;
  parameters_.shiftY = -1.25;
  runAll({onCells(kPoint)}, 1);
  const double tolerance = 1e-9 * kPixelX;
  const TMinMax beam = load("^bm", 0).range;
  EXPECT_NEAR(beam.xMin, -kNx * kPixelX, tolerance);
  EXPECT_NEAR(beam.xMax, (kNx - 1) * kPixelX, tolerance);
  EXPECT_NEAR(beam.yMin, -kNy * kPixelY, tolerance);
  EXPECT_NEAR(beam.yMax, (kNy - 1) * kPixelY, tolerance);
  const TMinMax map = load("^dm", 0).range;
  EXPECT_NEAR(map.xMin, -kHalfNx * kPixelX + 2.5, tolerance);
  EXPECT_NEAR(map.xMax, (kHalfNx - 1) * kPixelX + 2.5, tolerance);
  EXPECT_NEAR(map.yMin, -kHalfNy * kPixelY - 1.25, tolerance);
  EXPECT_NEAR(map.yMax, (kHalfNy - 1) * kPixelY - 1.25, tolerance);
}

TEST_F(LumoMakeWorkTest, BeamZeroIsExactlyOneAtItsCentre) {
  for (const std::int32_t kernel : {kKernelPillBox, kKernelGauss}) {
    parameters_.kernelType = kernel;
    runAll({offCells(kPoint, 37)}, 1);
    const LoadedMap beam = load("^bm", 0);
    EXPECT_EQ((*beam.matrix)(kNy, kNx), 1.0f);
    for (std::size_t i = 0; i < beam.matrix->size(); ++i) ASSERT_LE(beam.matrix->data()[i], 1.0f);
  }
}

TEST_F(LumoMakeWorkTest, HigherBeamsAndAllMapsAreDividedByTheNumberOfBeamZero) {
  // At the centre beam k is the weighted mean of f^k: 0, 1/4 and 1/2 with equal weights.
  TestFile file(kThreeIfs);
  observe(file, 8 * kCellSeconds, 4 * kCellSeconds, {{0, 0, 6.0}}, 1);
  observe(file, -4 * kCellSeconds, 8 * kCellSeconds, {{0, 0, 6.0}}, 1);
  runAll({file}, 2);
  EXPECT_NEAR((*load("^bm", 1).matrix)(kNy, kNx), 0.25, kSingle);
  EXPECT_NEAR((*load("^bm", 2).matrix)(kNy, kNx), (0.0625 + 0.25) / 3, kSingle);
  EXPECT_NEAR((*load("^dm", 0).matrix)(kNy / 2, kNx / 2), 6.0, 6 * kSingle);
  EXPECT_NEAR((*load("^dm", 1).matrix)(kNy / 2, kNx / 2), 1.5, 6 * kSingle);
}

TEST_F(LumoMakeWorkTest, MapsOfDataOnGridCellsAreTheDirectFourierSum) {
  const std::vector<TestFile> files = {onCells(kField)};
  runAll(files, 3);
  expectDirectDirty(files, 3);
}

TEST_F(LumoMakeWorkTest, BeamsOfDataOnGridCellsAreTheDirectFourierSum) {
  const std::vector<TestFile> files = {onCells(kField)};
  runAll(files, 2);
  const std::vector<Sample> samples = samplesOf(files);
  for (int k = 0; k < 3; ++k) {
    forEachPixel(load("^bm", k), [&](float value, double x, double y) {
      ASSERT_NEAR(value, directBeam(samples, k, x, y), kSingle) << "beam " << k << " at " << x << ", " << y;
    });
  }
}

TEST_F(LumoMakeWorkTest, MapsOfDataAtUZeroAreTheDirectFourierSum) {
  TestFile file(kThreeIfs);
  observe(file, 0, 4 * kCellSeconds, kField, 1);
  observe(file, 0, -8 * kCellSeconds, kField, 3);
  observe(file, 4 * kCellSeconds, 0, kField, 2);
  runAll({file}, 2);
  expectDirectDirty({file}, 2);
}

TEST_F(LumoMakeWorkTest, AShiftMovesTheMapOverTheSky) {
  const std::vector<TestFile> files = {onCells(kField)};
  parameters_.shiftX = 3.7 * kPixelX;
  parameters_.shiftY = -11.2 * kPixelY;
  runAll(files, 2);
  expectDirectDirty(files, 2);
}

TEST_F(LumoMakeWorkTest, SeveralFilesAddUp) {
  TestFile second({1.75 * kNu0});
  observe(second, 4 * kCellSeconds, -4 * kCellSeconds, kField, 9);
  const std::vector<TestFile> files = {onCells(kField), second};
  runAll(files, 2);
  expectDirectDirty(files, 2);
}

TEST_F(LumoMakeWorkTest, MapsOfDataBetweenCellsAreTheDirectSumWithinTheGriddingError) {
  const std::vector<TestFile> files = {offCells(kPoint, 150)};
  runAll(files, 1);
  const std::vector<Sample> samples = samplesOf(files);
  forEachPixel(load("^dm", 0), [&](float value, double x, double y) {
    // The nearest cell is at most half a cell off in u and in v, which turns the phase of a visibility of 1
    // Jy by at most this angle and so moves it by at most twice the sine of its half.
    const double turn = std::numbers::pi * kRadian * (std::abs(x) * kCell + std::abs(y) * kCell);
    ASSERT_LE(std::abs(value - directDirty(samples, 0, x, y)), 2 * std::sin(turn / 2) + kSingle)
        << x << ", " << y;
  });
  EXPECT_NEAR((*load("^dm", 0).matrix)(kNy / 2, kNx / 2), 1.0, kSingle);
}

TEST_F(LumoMakeWorkTest, ASourceToTheNorthEastLiesUpAndToHigherColumns) {
  runAll({onCells({{5 * kPixelX, 3 * kPixelY, 2.0}})}, 1);
  const LoadedMap map = load("^dm", 0);
  EXPECT_NEAR((*map.matrix)(kNy / 2 + 3, kNx / 2 + 5), 2.0, 2 * kSingle);
  EXPECT_LT(std::abs((*map.matrix)(kNy / 2 - 3, kNx / 2 - 5)), 1.9);
  EXPECT_LT(std::abs((*map.matrix)(kNy / 2 - 3, kNx / 2 + 5)), 1.9);
}

TEST_F(LumoMakeWorkTest, UniformWeightingOfSingleCellsCountsEveryCellOnceWhateverItsData) {
  parameters_.weightingMode = kUniformWeighting;
  parameters_.useVisWeights = 0;
  // Cells (4, 4) with five visibilities and (8, -4) with one: both weigh the same.
  TestFile file({kNu0});
  for (int i = 0; i < 5; ++i) observe(file, 4 * kCellSeconds, 4 * kCellSeconds, kField, 1);
  observe(file, 8 * kCellSeconds, -4 * kCellSeconds, kField, 1);
  runAll({file}, 1);
  TestFile once({kNu0});
  observe(once, 4 * kCellSeconds, 4 * kCellSeconds, kField, 1);
  observe(once, 8 * kCellSeconds, -4 * kCellSeconds, kField, 1);
  expectDirectDirty({once}, 1);
}

TEST_F(LumoMakeWorkTest, TheHeaderDescribesTheMap) {
  const TestFile file = onCells(kPoint);
  const auto work = makeWork({file}, 1);
  work->setBandwidth(0.5 * kNu0);
  ASSERT_EQ(run(*work), 1);
  const AMapHeader header = load("^dm", 0).header;
  EXPECT_EQ(header.sourceName, "0716+714");
  EXPECT_EQ(header.rightAscension, 110.472702);
  EXPECT_EQ(header.declination, 71.343434);
  EXPECT_EQ(header.epoch, 2000.0);
  EXPECT_EQ(header.unit, "Jy/Beam");
  EXPECT_EQ(header.stokes, "I");
  EXPECT_EQ(header.frequency, kNu0);

  // Moments of the samples and their mirror images; on-cell data lie at their own positions.
  BeamMomentAccumulator moments;
  for (const Sample& s : samplesOf({file})) {
    moments.add(s.u, s.v, s.weight);
    moments.add(-s.u, -s.v, s.weight);
  }
  ASSERT_EQ(moments.solve(), 1);
  EXPECT_NEAR(header.beamMajor, moments.firstWidth(), 1e-9 * moments.firstWidth());
  EXPECT_NEAR(header.beamMinor, moments.secondWidth(), 1e-9 * moments.secondWidth());
  EXPECT_NEAR(header.beamPa, moments.positionAngle(), 1e-6);
  // Four times the area pi w1 w2 / (4 ln 2) of the Gaussian.
  const double area = std::numbers::pi * header.beamMajor * header.beamMinor / std::numbers::ln2;
  EXPECT_NEAR(header.beamArea, area / (kPixelX * kPixelY), 1e-9 * header.beamArea);
}

TEST_F(LumoMakeWorkTest, UncalibratedDataGiveMapsWithoutUnit) {
  TestFile file = onCells(kPoint);
  file.content.unit = "";
  runAll({file}, 1);
  EXPECT_EQ(load("^dm", 0).header.unit, "");
}

TEST_F(LumoMakeWorkTest, AnEmptyNameSkipsThatProductWithoutAffectingTheOthers) {
  const std::vector<TestFile> files = {onCells(kField)};
  const auto work = makeWork(files, 2);
  work->beamNames()[0].clear();
  work->dirtyMapNames()[1].clear();
  ASSERT_EQ(run(*work), 1);
  EXPECT_EQ(productCount(), 3);
  EXPECT_EQ(work->products().size(), 3u);
  EXPECT_FALSE(test::exists(name("^bm", 0)));
  EXPECT_FALSE(test::exists(name("^dm", 1)));
  expectDirectDirty(files, 1);
}

TEST_F(LumoMakeWorkTest, ARunWithNoUsableVisibilityStopsAndWritesNothing) {
  TestFile flagged = onCells(kPoint);
  for (TestFile::Group& group : flagged.groups) group.record.flag = 1;
  TestFile rejected = onCells(kPoint);
  for (TestFile::Group& group : rejected.groups)
    for (AUVXComplex& value : group.values) value = {1, 0, 0};
  TestFile outside({kNu0});
  observe(outside, 1000 * kCellSeconds, 1000 * kCellSeconds, kPoint, 1);
  for (const TestFile& file : {flagged, rejected, outside, TestFile({kNu0})}) {
    const auto work = makeWork({file}, 2);
    EXPECT_EQ(run(*work), 0);
    EXPECT_EQ(work->status().code(), StatusCode::kNoData);
    EXPECT_EQ(productCount(), 0);
  }
}

TEST_F(LumoMakeWorkTest, CoverageWithoutExtentInUOrInVStopsAndWritesNothing) {
  TestFile alongU({kNu0});
  TestFile alongV({kNu0});
  for (int i = 1; i < 5; ++i) {
    observe(alongU, i * kCellSeconds, 0, kPoint, 1);
    observe(alongV, 0, i * kCellSeconds, kPoint, 1);
  }
  for (const TestFile& file : {alongU, alongV}) {
    const auto work = makeWork({file}, 1);
    EXPECT_EQ(run(*work), 0);
    EXPECT_EQ(work->status().code(), StatusCode::kNoData);
    EXPECT_EQ(productCount(), 0);
  }
}

TEST_F(LumoMakeWorkTest, ARunWithoutFilesOrParametersStops) {
  LumoMakeWork work(1);
  EXPECT_EQ(run(work), 0);
  EXPECT_EQ(work.status().code(), StatusCode::kNoData);
  work.SetInputs(&parameters_, VisibilityInputs());
  EXPECT_EQ(run(work), 0);
  EXPECT_EQ(work.status().code(), StatusCode::kNoData);
}

TEST_F(LumoMakeWorkTest, AProductThatCannotBeWrittenIsReportedAndTheOthersAreWritten) {
  const auto work = makeWork({onCells(kPoint)}, 2);
  work->beamNames()[1] = folder_.file("no/such/folder/bm1.exm");
  EXPECT_EQ(run(*work), 1);
  ASSERT_EQ(work->products().size(), 5u);
  for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(work->products()[i].status.ok(), i != 1) << i;
  EXPECT_EQ(productCount(), 4);
}

TEST_F(LumoMakeWorkTest, CancelledWhileGriddingItWritesNothing) {
  const auto work = makeWork({onCells(kPoint)}, 2);
  const CancelFlag cancel{1};
  EXPECT_EQ(work->Run(&cancel, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(work->status().code(), StatusCode::kCancelled);
  EXPECT_EQ(productCount(), 0);
}

TEST_F(LumoMakeWorkTest, CancelledInATransformTheFilesAlreadySavedStay) {
  const auto work = makeWork({onCells(kPoint)}, 2);
  CancelFlag cancel{0};
  test::RecordingText text;
  text.onText = [&](const std::string& shown) {
    if (shown == "Save Beam map in file " + name("^bm", 1) + " ...") cancel = 1;
  };
  EXPECT_EQ(work->Run(&cancel, &text, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(work->status().code(), StatusCode::kCancelled);
  EXPECT_EQ(productCount(), 2);
}

TEST_F(LumoMakeWorkTest, ShowsWhatItDoes) {
  const auto work = makeWork({onCells(kPoint)}, 1);
  test::RecordingText text;
  ASSERT_EQ(work->Run(nullptr, &text, nullptr, nullptr, nullptr), 1);
  EXPECT_THAT(text.texts,
              ElementsAre("Gridding.  Working...", "", "Fast Fourier Transform...", "",
                          "Save Beam map in file " + name("^bm", 0) + " ...", "Fast Fourier Transform...", "",
                          "Save dirty map in file " + name("^dm", 0) + " ...", ""));
}

TEST_F(LumoMakeWorkTest, TheGridCorrectionLeavesTheImageAlone) {
  LumoMakeWork work(1);
  AMatrix<double> image(2, 2);
  image(0, 1) = 3;
  EXPECT_EQ(work.ApplyGridCorrection(image, TMinMax(), parameters_), 1);
  EXPECT_EQ(image(0, 0), 0);
  EXPECT_EQ(image(0, 1), 3);
}

TEST_F(LumoMakeWorkTest, AGroupIsFlaggedWhenItsFirstByteIsNotZero) {
  const LumoMakeWork work(1);
  UvxRecord record;
  EXPECT_FALSE(work.IsGroupFlagged(record));
  record.flag = 128;
  EXPECT_TRUE(work.IsGroupFlagged(record));
}

}  // namespace
}  // namespace lumo
