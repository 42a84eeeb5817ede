// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "clean/CleanProblem.h"
#include "clean/CleanStage.h"
#include "clean/HeadlessCleanWatcher.h"
#include "clean/Restoration.h"
#include "clean/StraightClean.h"
#include "io/MapProduct.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::CleanProblem;
using test::flatMap;
using test::sameBits;
using testing::ElementsAre;
using testing::HasSubstr;

/// A watcher made of one function.
class FunctionWatcher : public CleanWatcher {
 public:
  using Function = std::function<void(CleanWorker&, const CleanScene&)>;
  explicit FunctionWatcher(Function function) : function_(std::move(function)) {}
  void watch(CleanWorker& worker, const CleanScene& scene) override { function_(worker, scene); }

 private:
  Function function_;
};

class CleanStageTest : public testing::Test {
 protected:
  static constexpr std::uint32_t kRows = 12;
  static constexpr std::uint32_t kColumns = 10;

  CleanStageTest() {
    header_.unit = "Jy/Beam";
    header_.sourceName = "3C0";
    header_.stokes = "I";
    header_.rightAscension = 187.25;
    header_.declination = -12.5;
    header_.epoch = 2000.0;
    header_.frequency = 1.4e9;
    header_.bandwidth = 3e8;
    header_.beamMajor = 2.1;
    header_.beamMinor = 1.3;
    header_.beamPa = 37.0;
    header_.beamArea = 11.0 / 3.0;
    range_ = {-2.0, 2.5, -3.0, 2.5, -0.125, 7.5};
    input_.folder = temp_.path();
    input_.prefix = "MFS";
    input_.parameters.iterations = 25;
    input_.parameters.gain = 0.2;
  }

  void givenSources(std::int32_t terms) {
    problem_ =
        test::sourceProblem(terms, {kRows, kColumns}, {{3, 4, {3.0, -2.0, 0.5}}, {9, 9, {-1.0, 0.5, 0.25}}});
    givenFiles();
  }

  /// Writes the problem's maps and beams and names them in the input. Only the first dirty map has the header
  /// and the ranges that the products must carry.
  void givenFiles() {
    const TMinMax other{-1.0, 1.0, -1.0, 1.0, 0.0, 1.0};
    for (std::size_t m = 0; m < problem_.beams.size(); ++m) {
      const std::string name = temp_.file("MFS^bm" + std::to_string(m) + ".exm");
      ASSERT_TRUE(writeMap(name, AMapHeader(), other, problem_.beams[m]).ok());
      input_.beams.InsertAt(input_.beams.count(), name);
    }
    for (std::size_t k = 0; k < problem_.maps.size(); ++k) {
      const std::string name = temp_.file("MFS^dm" + std::to_string(k) + ".exm");
      ASSERT_TRUE(
          writeMap(name, k == 0 ? header_ : AMapHeader(), k == 0 ? range_ : other, problem_.maps[k]).ok());
      input_.dirtyMaps.InsertAt(input_.dirtyMaps.count(), name);
    }
  }

  [[nodiscard]] CleanReport run() {
    HeadlessCleanWatcher watcher(&cancel_, nullptr, nullptr);
    return CleanStage(input_).Run(watcher);
  }

  /// Names of the files in the folder that are not inputs, sorted.
  [[nodiscard]] std::vector<std::string> productFiles() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(temp_.path())) {
      const std::string name = entry.path().filename().string();
      if (name.starts_with("MFS^dm") || name.starts_with("MFS^bm")) continue;
      names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  [[nodiscard]] AMatrix<float> product(const std::string& suffix) const {
    LoadedMap map;
    EXPECT_TRUE(readMap(temp_.file("MFS" + suffix), map).ok()) << suffix;
    return map.matrix == nullptr ? AMatrix<float>() : *map.matrix;
  }

  /// Compares every product with the straight CLEAN of `iterations` iterations.
  void expectProductsAfter(std::int32_t iterations) {
    CleanParameters parameters = input_.parameters;
    parameters.iterations = iterations;
    const test::StraightResult expected = straightClean(problem_, parameters);
    const auto beam = makeRestoringBeam(header_, range_, kRows, kColumns);
    ASSERT_GT(beam->size(), 1U);
    EXPECT_TRUE(sameBits(product("^residual0.exm"), expected.residuals[0]));
    for (std::size_t k = 0; k < problem_.maps.size(); ++k) {
      AMatrix<float> restored = test::straightRestore(expected.components[k], *beam);
      EXPECT_TRUE(sameBits(product("^cln" + std::to_string(k) + ".exm"), restored)) << k;
      for (std::size_t i = 0; i < restored.size(); ++i) restored.data()[i] += expected.residuals[k].data()[i];
      EXPECT_TRUE(sameBits(product("^cln_res" + std::to_string(k) + ".exm"), restored)) << k;
    }
  }

  void expectFailure(const CleanReport& report, StatusCode code, const std::string& file) {
    EXPECT_EQ(report.status.code(), code) << report.status.text();
    EXPECT_EQ(report.status.file(), file);
    EXPECT_FALSE(report.status.message().empty());
    EXPECT_TRUE(report.products.empty());
    EXPECT_TRUE(productFiles().empty());
  }

  test::TempFolder temp_;
  AMapHeader header_;
  TMinMax range_;
  CleanInput input_;
  CleanProblem problem_;
  CancelFlag cancel_{0};
};

TEST_F(CleanStageTest, OneTermWritesItsResidualAndItsTwoCleanMaps) {
  givenSources(1);
  const CleanReport report = run();
  ASSERT_TRUE(report.status.ok()) << report.status.text();
  EXPECT_THAT(productFiles(), ElementsAre("MFS^cln0.exm", "MFS^cln_res0.exm", "MFS^residual0.exm"));
  ASSERT_EQ(report.products.size(), 3U);
  EXPECT_EQ(report.products[0].path, temp_.file("MFS^residual0.exm"));
  EXPECT_EQ(report.products[1].path, temp_.file("MFS^cln0.exm"));
  EXPECT_EQ(report.products[2].path, temp_.file("MFS^cln_res0.exm"));
  for (const MapProduct& product : report.products) EXPECT_TRUE(product.status.ok());
  expectProductsAfter(25);
}

TEST_F(CleanStageTest, ThreeTermsAddTheirCleanMapsButNoFurtherResidual) {
  givenSources(3);
  const CleanReport report = run();
  ASSERT_TRUE(report.status.ok()) << report.status.text();
  EXPECT_THAT(productFiles(), ElementsAre("MFS^cln0.exm", "MFS^cln1.exm", "MFS^cln2.exm", "MFS^cln_res0.exm",
                                          "MFS^cln_res1.exm", "MFS^cln_res2.exm", "MFS^residual0.exm"));
  EXPECT_EQ(report.products.size(), 7U);
  expectProductsAfter(25);
}

TEST_F(CleanStageTest, EveryProductCarriesTheFirstDirtyMapsHeaderAndRanges) {
  givenSources(2);
  const CleanReport report = run();
  ASSERT_EQ(report.products.size(), 5U);
  for (const MapProduct& product : report.products) {
    LoadedMap map;
    ASSERT_TRUE(readMap(product.path, map).ok());
    EXPECT_EQ(map.range, range_) << product.path;
    EXPECT_EQ(map.header.unit, "Jy/Beam");
    EXPECT_EQ(map.header.sourceName, "3C0");
    EXPECT_EQ(map.header.stokes, "I");
    EXPECT_EQ(map.header.rightAscension, 187.25);
    EXPECT_EQ(map.header.declination, -12.5);
    EXPECT_EQ(map.header.frequency, 1.4e9);
    EXPECT_EQ(map.header.beamMajor, 2.1);
    EXPECT_EQ(map.header.beamMinor, 1.3);
    EXPECT_EQ(map.header.beamPa, 37.0);
    EXPECT_EQ(map.header.beamArea, 11.0 / 3.0);
  }
}

TEST_F(CleanStageTest, ReportTellsIterationsFluxAndPhases) {
  givenSources(2);
  const CleanReport report = run();
  EXPECT_EQ(report.iterations, 25);
  EXPECT_FALSE(report.stopped);
  EXPECT_EQ(report.totalFlux, straightClean(problem_, input_.parameters).totalFlux);
  // Centres are single precision numbers of order 1 and the matrix is far from singular.
  EXPECT_LT(report.inversionError, 1e-12);
  EXPECT_TRUE(report.priorityStatus.ok());
  EXPECT_GT(report.seconds.load, 0.0);
  EXPECT_GT(report.seconds.clean, 0.0);
  EXPECT_GT(report.seconds.restore, 0.0);
  EXPECT_GT(report.seconds.write, 0.0);
}

TEST_F(CleanStageTest, StoppedCleanWritesTheProductsOfTheIterationsDone) {
  givenSources(2);
  input_.parameters.iterations = 1000000;
  FunctionWatcher watcher([](CleanWorker& worker, const CleanScene& scene) {
    worker.requestPause();
    ASSERT_TRUE(worker.start(scene.priority()).ok());
    worker.pause();
    worker.stop();
    worker.resume();
    worker.wait();
  });
  const CleanReport report = CleanStage(input_).Run(watcher);
  ASSERT_TRUE(report.status.ok()) << report.status.text();
  EXPECT_TRUE(report.stopped);
  EXPECT_EQ(report.iterations, 1);
  expectProductsAfter(1);
}

TEST_F(CleanStageTest, HistoryOfEveryProductTellsHowManyIterationsWereDoneAndWhyNoMore) {
  givenSources(1);
  ASSERT_TRUE(run().status.ok());
  for (const char* const suffix : {"^residual0.exm", "^cln0.exm", "^cln_res0.exm"}) {
    LoadedMap map;
    ASSERT_TRUE(readMap(temp_.file(std::string("MFS") + suffix), map).ok());
    EXPECT_THAT(map.header.history,
                testing::IsSupersetOf({"CLEAN.ITERATIONS = 25", "CLEAN.ENDED = all iterations done"}));
  }
  cancel_ = 1;
  ASSERT_TRUE(run().status.ok());
  LoadedMap map;
  ASSERT_TRUE(readMap(temp_.file("MFS^cln0.exm"), map).ok());
  EXPECT_THAT(map.header.history,
              testing::IsSupersetOf({"CLEAN.ITERATIONS = 0", "CLEAN.ENDED = stopped by the user"}));
}

TEST_F(CleanStageTest, CancelBeforeTheFirstIterationStillWritesTheProducts) {
  givenSources(1);
  cancel_ = 1;
  const CleanReport report = run();
  ASSERT_TRUE(report.status.ok());
  EXPECT_TRUE(report.stopped);
  EXPECT_EQ(report.iterations, 0);
  expectProductsAfter(0);
}

TEST_F(CleanStageTest, NoIterationsWriteTheDirtyMapAsResidual) {
  givenSources(1);
  input_.parameters.iterations = 0;
  const CleanReport report = run();
  ASSERT_TRUE(report.status.ok());
  EXPECT_FALSE(report.stopped);
  EXPECT_TRUE(sameBits(product("^residual0.exm"), problem_.maps[0]));
  EXPECT_TRUE(sameBits(product("^cln0.exm"), flatMap({kRows, kColumns}, 0.0F)));
  EXPECT_TRUE(sameBits(product("^cln_res0.exm"), problem_.maps[0]));
}

TEST_F(CleanStageTest, SceneShowsTheMapsTheRangesAndTheBeamOfThePausedRun) {
  givenSources(1);
  FunctionWatcher watcher([this](CleanWorker& worker, const CleanScene& scene) {
    worker.requestPause();
    ASSERT_TRUE(worker.start(scene.priority()).ok());
    worker.pause();
    CleanParameters once = input_.parameters;
    once.iterations = 1;
    const test::StraightResult expected = straightClean(problem_, once);
    EXPECT_TRUE(sameBits(scene.residual(), expected.residuals[0]));
    EXPECT_TRUE(sameBits(scene.component(), expected.components[0]));
    EXPECT_TRUE(sameBits(scene.restoringBeam(), *makeRestoringBeam(header_, range_, kRows, kColumns)));
    EXPECT_EQ(scene.range(), range_);
    EXPECT_EQ(scene.iterations(), 25);
    worker.resume();
    worker.wait();
  });
  ASSERT_TRUE(CleanStage(input_).Run(watcher).status.ok());
  expectProductsAfter(25);
}

TEST_F(CleanStageTest, WorkerLeftRunningByItsWatcherIsStopped) {
  givenSources(1);
  input_.parameters.iterations = 2147483647;
  FunctionWatcher watcher([](CleanWorker& worker, const CleanScene& scene) {
    worker.requestPause();
    ASSERT_TRUE(worker.start(scene.priority()).ok());
    worker.pause();
  });
  const CleanReport report = CleanStage(input_).Run(watcher);
  ASSERT_TRUE(report.status.ok());
  EXPECT_TRUE(report.stopped);
  expectProductsAfter(1);
}

TEST_F(CleanStageTest, WatcherThatStartsNothingFailsTheStage) {
  givenSources(1);
  FunctionWatcher watcher([](CleanWorker&, const CleanScene&) {});
  expectFailure(CleanStage(input_).Run(watcher), StatusCode::kCancelled, "");
}

TEST_F(CleanStageTest, MissingBeamFailsByNameAndWritesNothing) {
  givenSources(2);
  std::filesystem::remove(temp_.file("MFS^bm1.exm"));
  expectFailure(run(), StatusCode::kNotFound, temp_.file("MFS^bm1.exm"));
}

TEST_F(CleanStageTest, DamagedDirtyMapFailsByNameAndWritesNothing) {
  givenSources(2);
  test::writeFile(temp_.file("MFS^dm1.exm"), "not a map");
  const CleanReport report = run();
  EXPECT_FALSE(report.status.ok());
  expectFailure(report, report.status.code(), temp_.file("MFS^dm1.exm"));
}

TEST_F(CleanStageTest, DirtyMapsOfDifferentSizesFail) {
  problem_ = test::randomProblem(2, {6, 5}, {12, 10}, 1);
  problem_.maps[1] = flatMap({5, 6}, 1.0F);
  givenFiles();
  const CleanReport report = run();
  expectFailure(report, StatusCode::kInvalidValue, temp_.file("MFS^dm1.exm"));
  EXPECT_THAT(report.status.message(), HasSubstr("5 rows x 6 columns"));
  EXPECT_THAT(report.status.message(), HasSubstr("6 rows x 5 columns"));
}

TEST_F(CleanStageTest, BeamsOfDifferentSizesFail) {
  problem_ = test::randomProblem(2, {6, 5}, {12, 10}, 1);
  problem_.beams[2] = flatMap({12, 11}, 1.0F);
  givenFiles();
  expectFailure(run(), StatusCode::kInvalidValue, temp_.file("MFS^bm2.exm"));
}

TEST_F(CleanStageTest, BeamsSmallerThanTheMapsFail) {
  problem_ = test::randomProblem(1, {6, 5}, {12, 4}, 1);
  givenFiles();
  expectFailure(run(), StatusCode::kInvalidValue, temp_.file("MFS^bm0.exm"));
}

TEST_F(CleanStageTest, WrongNumberOfBeamsFails) {
  givenSources(2);
  input_.beams.RemoveAt(2);
  expectFailure(run(), StatusCode::kInvalidValue, "");
}

TEST_F(CleanStageTest, NoDirtyMapFails) {
  expectFailure(run(), StatusCode::kInvalidValue, "");
}

TEST_F(CleanStageTest, ProductThatCannotBeWrittenIsReportedAndTheOthersAreWritten) {
  givenSources(1);
  // A folder that is not empty stands where the product should go.
  std::filesystem::create_directories(temp_.file("MFS^cln0.exm/inside"));
  const CleanReport report = run();
  ASSERT_TRUE(report.status.ok());
  ASSERT_EQ(report.products.size(), 3U);
  EXPECT_TRUE(report.products[0].status.ok());
  EXPECT_FALSE(report.products[1].status.ok());
  EXPECT_TRUE(report.products[2].status.ok());
}

TEST_F(CleanStageTest, MissingWorkFolderFailsEveryProduct) {
  givenSources(1);
  input_.folder = temp_.file("nowhere/");
  const CleanReport report = run();
  ASSERT_TRUE(report.status.ok());
  ASSERT_EQ(report.products.size(), 3U);
  for (const MapProduct& product : report.products) EXPECT_FALSE(product.status.ok());
}

TEST_F(CleanStageTest, MapOfOnePixelRunsAndRestoresToZero) {
  problem_ = test::randomProblem(1, {1, 1}, {2, 2}, 1);
  range_ = {0.5, 0.5, 0.5, 0.5, -1.0, 1.0};
  givenFiles();
  const CleanReport report = run();
  ASSERT_TRUE(report.status.ok()) << report.status.text();
  EXPECT_EQ(report.iterations, 25);
  EXPECT_TRUE(sameBits(product("^cln0.exm"), flatMap({1, 1}, 0.0F)));
}

TEST_F(CleanStageTest, UnusableBeamMatrixShowsAsNotANumberInTheProducts) {
  problem_ = test::randomProblem(1, {kRows, kColumns}, {2 * kRows, 2 * kColumns}, 1);
  problem_.beams[0](kRows, kColumns) = -1.0F;
  givenFiles();
  const CleanReport report = run();
  ASSERT_TRUE(report.status.ok());
  EXPECT_TRUE(std::isnan(report.inversionError));
  EXPECT_TRUE(std::isnan(product("^residual0.exm")(0, 0)));
  EXPECT_TRUE(std::isnan(product("^cln0.exm")(kRows - 1, kColumns - 1)));
}

}  // namespace
}  // namespace lumo
