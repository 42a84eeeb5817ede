// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <numbers>
#include <random>

#include "RunSample.h"
#include "clean/HeadlessCleanWatcher.h"
#include "core/Units.h"
#include "numerics/ConditionNumber.h"
#include "run/RunDriver.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::TempFolder;
using test::UvxSample;
using test::writeUvx;
using testing::ElementsAre;

constexpr int kColumns = 32;
constexpr int kRows = 16;
constexpr double kFlux = 2.0;
constexpr double kIndex = -0.7;
constexpr double kReferenceMhz = 1500;
constexpr double kLargestUv = 0x1p-17;  // seconds
constexpr int kEast = 3;                // the source's offset in pixels
constexpr int kNorth = -2;

class TextRecorder : public StatusText {
 public:
  void setText(std::string_view text) override { last = text; }
  std::string last;
};

// A point source with a power-law spectrum, three pixels east and two south of the phase centre, seen on a
// disc of uv points at 1.4, 1.5 and 1.6 GHz.
class RunDriverTest : public testing::Test {
 protected:
  RunDriverTest() : watcher_(&cancel_, nullptr, nullptr) {
    parameters_.referenceMhz = kReferenceMhz;
    parameters_.iterations = 150;
    parameters_.folder = work_.path();
    // The pixel is 206265 / (2 uvLimit uvScale) arcseconds, uvScale being the largest |u| in wavelengths.
    const double pixel = 1.0 / (2 * ABMakeParameters::kDefaultUvLimit * kLargestUv * 1.6e9);  // radians
    std::mt19937 random(11);
    std::uniform_real_distribution<double> inside(-kLargestUv, kLargestUv);
    UvxSample sample;
    sample.points = {{kLargestUv, 0}, {0, kLargestUv}};
    while (sample.points.size() < 400) {
      const UvxSample::Point point{inside(random), inside(random)};
      if (std::hypot(point.u, point.v) < kLargestUv) sample.points.push_back(point);
    }
    sample.visibility = [pixel](double u, double v, double frequency) {
      const double flux = kFlux * std::pow(frequency / (kReferenceMhz * 1e6), kIndex);
      return std::polar(flux, 2 * std::numbers::pi * (u * kEast + v * kNorth) * pixel);
    };
    sample.selections = {{1, {1.4e9}}, {2, {1.5e9}}};
    writeUvx(data_.file("low.uvx"), sample);
    sample.selections = {{1, {1.6e9}}};
    writeUvx(data_.file("high.uvx"), sample);
    files_.AddFile(data_.file("low.uvx"));
    files_.AddFile(data_.file("high.uvx"));
    files_.imaging().halfSizeX = kColumns;
    files_.imaging().halfSizeY = kRows;
  }
  RunReport run() {
    RunCompany company;
    company.indicators = {.cancel = &cancel_, .statusText = &text_};
    company.clean = &watcher_;
    company.discardAreas = [this] { ++discarded_; };
    return RunDriver(company).Run(parameters_, files_);
  }
  [[nodiscard]] LoadedMap load(const std::string& suffix) const {
    LoadedMap map;
    EXPECT_TRUE(readMap(work_.file("MFS" + suffix), map).ok()) << suffix;
    return map;
  }
  static std::vector<std::string> names(const RunReport& report) {
    std::vector<std::string> result;
    for (const RunProduct& product : report.products) result.push_back(product.name);
    return result;
  }

  TempFolder data_;
  TempFolder work_;
  RunParameters parameters_;
  UvxFileList files_;
  CancelFlag cancel_{0};
  HeadlessCleanWatcher watcher_;
  TextRecorder text_;
  int discarded_ = 0;
};

TEST_F(RunDriverTest, ARunOfTwoTermsWritesEveryProductAndReportsThemInOrder) {
  const RunReport report = run();
  ASSERT_TRUE(report.status.ok()) << report.status.text();
  EXPECT_THAT(names(report), ElementsAre("^bm0.exm", "^bm1.exm", "^bm2.exm", "^dm0.exm", "^dm1.exm",
                                         "^residual0.exm", "^cln0.exm", "^cln_res0.exm", "^cln1.exm",
                                         "^cln_res1.exm", "^freqrange.txt", "^sindex.exm"));
  for (const RunProduct& product : report.products) {
    EXPECT_TRUE(product.written) << product.path << product.why;
    EXPECT_EQ(product.path, work_.path() + "MFS" + product.name);
    EXPECT_TRUE(test::exists(product.path)) << product.path;
  }
  EXPECT_EQ(report.iterations, 150);
  EXPECT_FALSE(report.stopped);
  EXPECT_EQ(report.survey.number, 3);
  EXPECT_EQ(text_.last, "Success");
  EXPECT_EQ(discarded_, 1);
  EXPECT_DOUBLE_EQ(report.largestFrequencyOffset, std::abs(1.4e9 / 1.5e9 - 1));
}

// The names of a phase's parts.
std::vector<std::string> partsOf(const PhaseTime& phase) {
  std::vector<std::string> names;
  for (const PhaseTime& part : phase.parts) names.push_back(part.name);
  return names;
}

void expectPartsToAddUp(const PhaseTime& phase) {
  if (phase.parts.empty()) return;
  double sum = 0;
  for (const PhaseTime& part : phase.parts) {
    EXPECT_GE(part.seconds, 0) << part.name;
    sum += part.seconds;
    expectPartsToAddUp(part);
  }
  if (phase.parts.back().name == "other")
    EXPECT_NEAR(sum, phase.seconds, 1e-9) << phase.name << ": rounding of the sum";
  else
    EXPECT_LE(sum, phase.seconds + 1e-9) << phase.name;
}

TEST_F(RunDriverTest, TheTimeOfARunIsThatOfItsParts) {
  files_.imaging().weightingMode = kUniformWeighting;
  const RunReport report = run();
  ASSERT_TRUE(report.status.ok()) << report.status.text();
  EXPECT_THAT(partsOf(report.time), ElementsAre("check", "inspect", "image", "clean", "index", "other"));
  const PhaseTime& image = report.time.parts[2];
  EXPECT_THAT(partsOf(image), ElementsAre("grid", "beam", "transform", "write", "other"));
  EXPECT_THAT(partsOf(image.parts[0]), ElementsAre("prepare", "read", "add", "fold", "weight"));
  EXPECT_THAT(partsOf(report.time.parts[3]), ElementsAre("load", "iterate", "restore", "write", "other"));
  expectPartsToAddUp(report.time);
}

TEST_F(RunDriverTest, TheConditionToldBeforeTheRunIsThatOfTheBeamsItMakes) {
  parameters_.order = 3;
  const RunReport report = run();
  ASSERT_TRUE(report.status.ok()) << report.status.text();
  std::vector<double> centres;
  for (int k = 0; k < 5; ++k) {
    const LoadedMap beam = load("^bm" + std::to_string(k) + ".exm");
    centres.push_back((*beam.matrix)(beam.matrix->rows() / 2, beam.matrix->columns() / 2));
  }
  std::vector<double> matrix;
  for (std::size_t j = 0; j < 3; ++j)
    for (std::size_t k = 0; k < 3; ++k) matrix.push_back(centres[j + k]);
  const double condition = conditionNumber(matrix, 3);
  EXPECT_GT(condition, 1000);
  // The beams are rounded to 6e-8 of themselves, which the condition raises to some 1e-3 at most.
  EXPECT_NEAR(report.preFlight.condition, condition, 1e-2 * condition);
}

TEST_F(RunDriverTest, ARunThatCannotFitIntoMemoryIsRefusedBeforeAnythingIsTouched) {
  test::writeFile(work_.file("MFS^cln0.exm"), "of an earlier run");
  RunCompany company;
  company.clean = &watcher_;
  MemoryRoom room;
  room.mostIs = "the memory of this machine";
  company.memory = [&room] { return room; };
  company.discardAreas = [this] { ++discarded_; };
  bool told = false;
  company.tellPreFlight = [&told](const PreFlight&) { told = true; };
  // Two terms: five spectral grids of (2 kRows) x (kColumns + 1) complex numbers.
  room.most = std::uint64_t{5} * 2 * kRows * (kColumns + 1) * 16;
  RunReport report = RunDriver(company).Run(parameters_, files_);
  EXPECT_EQ(report.status.code(), StatusCode::kOutOfMemory);
  EXPECT_THAT(report.status.message(), testing::HasSubstr(bytesText(room.most)));
  EXPECT_THAT(report.status.message(), testing::HasSubstr("the memory of this machine"));
  EXPECT_FALSE(told);
  EXPECT_EQ(discarded_, 0);
  EXPECT_EQ(test::readFile(work_.file("MFS^cln0.exm")), "of an earlier run");
  // Work grids come on top, but how many tiles they take is not certain before the run.
  room.most += std::uint64_t{100} << 20;
  report = RunDriver(company).Run(parameters_, files_);
  EXPECT_TRUE(report.status.ok()) << report.status.text();
  EXPECT_TRUE(told);
}

TEST_F(RunDriverTest, FindsTheFluxPlaceAndSpectralIndexOfAPointSource) {
  const RunReport report = run();
  ASSERT_TRUE(report.status.ok()) << report.status.text();
  // The pill-box kernel dims a source at (x, y) pixels by sinc(x / 64) sinc(y / 32): 1% at this place.
  EXPECT_NEAR(report.totalFlux, kFlux, 0.02 * kFlux);
  const LoadedMap clean = load("^cln0.exm");
  const LoadedMap index = load("^sindex.exm");
  ASSERT_EQ(clean.matrix->rows(), static_cast<std::uint32_t>(kRows));
  ASSERT_EQ(clean.matrix->columns(), static_cast<std::uint32_t>(kColumns));
  std::uint32_t peakRow = 0, peakColumn = 0;
  for (std::uint32_t row = 0; row < kRows; ++row)
    for (std::uint32_t column = 0; column < kColumns; ++column)
      if ((*clean.matrix)(row, column) > (*clean.matrix)(peakRow, peakColumn))
        peakRow = row, peakColumn = column;
  EXPECT_EQ(peakRow, static_cast<std::uint32_t>(kRows / 2 + kNorth));
  EXPECT_EQ(peakColumn, static_cast<std::uint32_t>(kColumns / 2 + kEast));
  // Over +-7% in frequency a straight line through (nu/nu0)^-0.7 differs in slope by about 0.7 * 1.7 * 2.7 /
  // 6 * f^2.
  EXPECT_NEAR((*index.matrix)(peakRow, peakColumn), kIndex, 0.02);
  EXPECT_EQ(index.header.Unit(), "Sp. Index");
  EXPECT_EQ(index.range, clean.range);
  EXPECT_EQ(index.header.frequency, kReferenceMhz * 1e6);
}

TEST_F(RunDriverTest, ThresholdAndRangeOfTheIndexMapHold) {
  parameters_.indexThreshold = 0.3;
  parameters_.indexMin = -0.8;
  parameters_.indexMax = -0.6;
  ASSERT_TRUE(run().status.ok());
  const LoadedMap zero = load("^cln0.exm");
  const LoadedMap first = load("^cln1.exm");
  const LoadedMap index = load("^sindex.exm");
  int kept = 0;
  for (std::size_t i = 0; i < zero.matrix->size(); ++i) {
    const float flux = zero.matrix->data()[i];
    const float ratio = first.matrix->data()[i] / flux;
    const bool keep = std::abs(flux) >= 0.3 * zero.range.vMax && ratio <= -0.6 && ratio >= -0.8;
    if (keep) {
      ++kept;
      EXPECT_EQ(index.matrix->data()[i], ratio) << i;
    } else {
      EXPECT_TRUE(std::isnan(index.matrix->data()[i])) << i;
    }
  }
  EXPECT_GT(kept, 0);
  EXPECT_LT(kept, kRows * kColumns / 2);
}

TEST_F(RunDriverTest, FastCleanGivesTheMapsOfTheExactOneButForRounding) {
  ASSERT_TRUE(run().status.ok());
  const LoadedMap exact = load("^cln0.exm");
  parameters_.fastClean = true;
  ASSERT_TRUE(run().status.ok());
  const LoadedMap fast = load("^cln0.exm");
  EXPECT_THAT(fast.header.history, testing::Contains("FASTCLEAN = 1"));
  float peak = 0;
  float difference = 0;
  for (std::size_t i = 0; i < exact.matrix->size(); ++i) {
    peak = std::max(peak, std::fabs(exact.matrix->data()[i]));
    difference = std::max(difference, std::fabs(exact.matrix->data()[i] - fast.matrix->data()[i]));
  }
  // A millionth for a component; a restored pixel is a sum over some of them.
  EXPECT_LE(difference, 1e-5F * peak);
}

TEST_F(RunDriverTest, AnErrorMapIsMadeWhereAskedForAndHasValuesWhereTheIndexHas) {
  parameters_.indexError = true;
  const RunReport report = run();
  ASSERT_TRUE(report.status.ok()) << report.status.text();
  EXPECT_EQ(report.products.size(), 13u);
  EXPECT_EQ(report.products.back().name, "^sindex_err.exm");
  EXPECT_EQ(text_.last, "Success");
  const LoadedMap index = load("^sindex.exm");
  const LoadedMap error = load("^sindex_err.exm");
  int kept = 0;
  for (std::size_t i = 0; i < index.matrix->size(); ++i) {
    EXPECT_EQ(std::isnan(error.matrix->data()[i]), std::isnan(index.matrix->data()[i])) << i;
    if (!std::isnan(error.matrix->data()[i])) ++kept;
  }
  EXPECT_GT(kept, 0);
  EXPECT_THAT(error.header.history, testing::Contains("INDEXERROR = 1"));
}

TEST_F(RunDriverTest, TheErrorMapTakesAllTermsOfARunOfThree) {
  parameters_.indexError = true;
  parameters_.order = 3;
  const RunReport report = run();
  ASSERT_TRUE(report.status.ok()) << report.status.text();
  EXPECT_EQ(report.products.back().name, "^sindex_err.exm");
}

TEST_F(RunDriverTest, AnErrorMapOfAnEarlierRunIsRemoved) {
  test::writeFile(work_.file("MFS^sindex_err.exm"), "of an earlier run");
  ASSERT_TRUE(run().status.ok());
  EXPECT_FALSE(test::exists(work_.file("MFS^sindex_err.exm")));
}

TEST_F(RunDriverTest, AnErrorMapIsNotMadeFromAMapThatWasNotWritten) {
  parameters_.indexError = true;
  std::filesystem::create_directories(work_.file("MFS^cln_res1.exm/stays"));
  const RunReport report = run();
  ASSERT_EQ(report.products.back().name, "^sindex_err.exm");
  EXPECT_FALSE(report.products.back().written);
  EXPECT_FALSE(test::exists(work_.file("MFS^sindex_err.exm")));
  EXPECT_TRUE(test::exists(work_.file("MFS^sindex.exm")));
  EXPECT_NE(text_.last, "Success");
}

TEST_F(RunDriverTest, OrderOneHasNoIndexMapAndItsFrequencyLineEndsWithOne) {
  test::writeFile(work_.file("MFS^sindex.exm"), "of an earlier run");
  parameters_.order = 1;
  const RunReport report = run();
  ASSERT_TRUE(report.status.ok()) << report.status.text();
  EXPECT_FALSE(test::exists(work_.file("MFS^sindex.exm")));
  EXPECT_EQ(test::readFile(work_.file("MFS^freqrange.txt")), "1.4e+09 1.6e+09 1\n");
  EXPECT_THAT(names(report), ElementsAre("^bm0.exm", "^dm0.exm", "^residual0.exm", "^cln0.exm",
                                         "^cln_res0.exm", "^freqrange.txt"));
  EXPECT_NE(text_.last, "Success");
}

TEST_F(RunDriverTest, TheMapsTellHowTheyWereMade) {
  ASSERT_TRUE(run().status.ok());
  for (const char* suffix : {"^dm0.exm", "^cln1.exm", "^sindex.exm"}) {
    const std::vector<std::string> history = load(suffix).header.history;
    EXPECT_THAT(history, testing::Contains("ITER = 150")) << suffix;
    EXPECT_THAT(history, testing::Contains("UVX1 = " + data_.file("high.uvx"))) << suffix;
    EXPECT_THAT(history, testing::Contains("uvLimitU = 2")) << suffix;
  }
}

TEST_F(RunDriverTest, InvalidParametersTouchNothing) {
  test::writeFile(work_.file("MFS^cln0.exm"), "of an earlier run");
  parameters_.order = 4;
  const RunReport report = run();
  EXPECT_EQ(report.status.code(), StatusCode::kInvalidValue);
  EXPECT_TRUE(report.products.empty());
  EXPECT_EQ(test::readFile(work_.file("MFS^cln0.exm")), "of an earlier run");
  EXPECT_EQ(discarded_, 0);
}

TEST_F(RunDriverTest, WhatAKilledRunLeftIsRemovedAndFilesOfOtherNamesStay) {
  const std::string left = work_.file(".lumo-0123456789abcdef.tmp");
  test::writeFile(left, "half");
  test::writeFile(work_.file("notes.tmp"), "of the user");
  EXPECT_TRUE(run().status.ok());
  EXPECT_FALSE(test::exists(left));
  EXPECT_TRUE(test::exists(work_.file("notes.tmp")));
}

TEST_F(RunDriverTest, AnInputThatCannotBeUsedTouchesNothing) {
  test::writeFile(work_.file("MFS^cln0.exm"), "of an earlier run");
  std::filesystem::remove(data_.file("high.uvx"));
  const RunReport report = run();
  EXPECT_EQ(report.status.code(), StatusCode::kNotFound);
  EXPECT_EQ(report.status.file(), data_.file("high.uvx"));
  EXPECT_EQ(test::readFile(work_.file("MFS^cln0.exm")), "of an earlier run");
}

TEST_F(RunDriverTest, ARunWithoutFilesEndsSilentlyAfterRemovingOldProducts) {
  files_.DeleteFile();
  files_.DeleteFile();
  test::writeFile(work_.file("MFS^cln0.exm"), "of an earlier run");
  parameters_.order = 1;
  parameters_.referenceMhz = files_.frequencies().centerMhz();
  const RunReport report = run();
  EXPECT_TRUE(report.status.ok()) << report.status.text();
  EXPECT_TRUE(report.products.empty());
  EXPECT_FALSE(test::exists(work_.file("MFS^cln0.exm")));
}

// Cancels as soon as the imaging shows its first text, the checks being done.
class Canceller : public StatusText {
 public:
  explicit Canceller(CancelFlag& flag) : flag_(flag) {}
  void setText(std::string_view) override { flag_ = 1; }

 private:
  CancelFlag& flag_;
};

TEST_F(RunDriverTest, ACancelWhileImagingEndsTheRunWithTheOldProductsGone) {
  test::writeFile(work_.file("MFS^cln0.exm"), "of an earlier run");
  Canceller canceller(cancel_);
  RunCompany company;
  company.indicators = {.cancel = &cancel_, .statusText = &canceller};
  company.clean = &watcher_;
  const RunReport report = RunDriver(company).Run(parameters_, files_);
  EXPECT_EQ(report.status.code(), StatusCode::kCancelled);
  EXPECT_FALSE(test::exists(work_.file("MFS^cln0.exm")));
  EXPECT_FALSE(test::exists(work_.file("MFS^freqrange.txt")));
}

// Stops the worker before its first iteration.
class Stopper : public CleanWatcher {
 public:
  void watch(CleanWorker& worker, const CleanScene& scene) override {
    worker.stop();
    EXPECT_TRUE(worker.start(scene.priority()).ok());
    worker.wait();
  }
};

TEST_F(RunDriverTest, AStoppedCleanStillWritesItsProducts) {
  Stopper stopper;
  RunCompany company;
  company.clean = &stopper;
  const RunReport report = RunDriver(company).Run(parameters_, files_);
  ASSERT_TRUE(report.status.ok()) << report.status.text();
  EXPECT_TRUE(report.stopped);
  EXPECT_EQ(report.iterations, 0);
  EXPECT_EQ(report.products.size(), 12u);
  const LoadedMap index = load("^sindex.exm");
  for (std::size_t i = 0; i < index.matrix->size(); ++i) ASSERT_TRUE(std::isnan(index.matrix->data()[i]));
}

TEST_F(RunDriverTest, AProductThatCannotBeWrittenIsReportedAfterTheOthers) {
  std::filesystem::create_directory(work_.file("MFS^residual0.exm"));
  const RunReport report = run();
  EXPECT_EQ(report.status.code(), StatusCode::kWriteFailed);
  EXPECT_EQ(report.status.file(), work_.file("MFS^residual0.exm"));
  ASSERT_EQ(report.products.size(), 12u);
  for (const RunProduct& product : report.products) {
    EXPECT_EQ(product.written, product.name != "^residual0.exm") << product.name;
    EXPECT_EQ(product.why.empty(), product.written);
  }
}

TEST_F(RunDriverTest, WithoutABeamTheCleanIsNotDoneAndItsProductsAreReported) {
  std::filesystem::create_directories(work_.file("MFS^bm1.exm/stays"));
  const RunReport report = run();
  EXPECT_EQ(report.status.file(), work_.file("MFS^bm1.exm"));
  EXPECT_FALSE(report.cleaned);
  std::vector<std::string> missing;
  for (const RunProduct& product : report.products)
    if (!product.written) missing.push_back(product.name);
  EXPECT_EQ(missing, (std::vector<std::string>{"^bm1.exm", "^residual0.exm", "^cln0.exm", "^cln_res0.exm",
                                               "^cln1.exm", "^cln_res1.exm", "^sindex.exm"}));
}

TEST_F(RunDriverTest, AnIndexMapIsNotMadeFromACleanMapThatWasNotWritten) {
  std::filesystem::create_directories(work_.file("MFS^cln1.exm/stays"));
  const RunReport report = run();
  EXPECT_EQ(report.status.file(), work_.file("MFS^cln1.exm"));
  ASSERT_EQ(report.products.back().name, "^sindex.exm");
  EXPECT_FALSE(report.products.back().written);
  EXPECT_NE(text_.last, "Success");
}

TEST_F(RunDriverTest, WithAnEmptyPrefixAndFolderZeroTheProductsLieInTheCurrentFolder) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(work_.path());
  parameters_.folder = "0";
  parameters_.prefix = "";
  const RunReport report = run();
  std::filesystem::current_path(before);
  EXPECT_TRUE(report.status.ok()) << report.status.text();
  EXPECT_TRUE(test::exists(work_.file("0^cln0.exm")));
  EXPECT_TRUE(test::exists(work_.file("0^freqrange.txt")));
}

TEST_F(RunDriverTest, MasksOfOtherLengthsThanTheTablesAreNoDanger) {
  AObjArray<ABitArray> masks(1);
  masks[0] = ABitArray(40);
  masks[0] = 1;
  files_.replaceSelections(masks);
  files_.imaging().halfSizeX = kColumns;
  files_.imaging().halfSizeY = kRows;
  const RunReport report = run();
  EXPECT_TRUE(report.status.ok()) << report.status.text();
  EXPECT_EQ(report.survey.number, 2) << "the first file's two selections";
}

}  // namespace
}  // namespace lumo
