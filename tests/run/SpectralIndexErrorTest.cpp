// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <random>

#include "io/MapProduct.h"
#include "run/SpectralIndexError.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
// Standard deviation of a normal distribution over its median distance from the median: 1 / 0.67448975...
const double kUnit = 1 / 0.6744897501960817;

template <typename T>
AMatrix<T> row(std::initializer_list<T> values) {
  AMatrix<T> matrix(1, static_cast<std::uint32_t>(values.size()));
  std::copy(values.begin(), values.end(), matrix.data());
  return matrix;
}

TEST(SpectralIndexErrorTest, IsTheFirstOrderErrorOfAQuotient) {
  const TermCovariance covariance{.zero = 0.04, .both = 0.03, .first = 0.09};
  // sqrt(0.09 - 2 * 0.5 * 0.03 + 0.25 * 0.04) / 2
  EXPECT_FLOAT_EQ(spectralIndexError(0.5F, 2.0F, covariance), std::sqrt(0.07F) / 2);
  EXPECT_FLOAT_EQ(spectralIndexError(-0.5F, 2.0F, covariance), std::sqrt(0.13F) / 2)
      << "errors that go together hurt where the index is negative";
  EXPECT_FLOAT_EQ(spectralIndexError(0.0F, 2.0F, covariance), 0.15F);
}

TEST(SpectralIndexErrorTest, OfANegativeFluxIsPositive) {
  const TermCovariance covariance{.zero = 0.04, .both = 0.03, .first = 0.09};
  EXPECT_FLOAT_EQ(spectralIndexError(0.5F, -2.0F, covariance), std::sqrt(0.07F) / 2);
}

TEST(SpectralIndexErrorTest, IsZeroAndNotNanWhereRoundingTakesTheVarianceBelowIt) {
  EXPECT_EQ(spectralIndexError(1.0F, 1.0F, {.zero = 1, .both = 1 + 0x1p-52, .first = 1}), 0.0F);
}

TEST(SpectralIndexErrorTest, HasNoValueWhereTheIndexOrTheNoiseHasNone) {
  EXPECT_TRUE(std::isnan(spectralIndexError(kNan, 2.0F, {.zero = 1, .both = 0, .first = 1})));
  EXPECT_TRUE(std::isnan(spectralIndexError(0.5F, 2.0F, {.zero = 1, .both = kNoNumber, .first = 1})));
}

TEST(TermCovarianceTest, OfFivePixelsByHand) {
  // Median distances from the median: 1 and 10. In these units the sums are -3 -3 0 3 3 and the differences
  // -1 1 0 -1 1, their median distances 3 and 1, and (9 - 1) / (9 + 1) is 0.8.
  const TermCovariance covariance =
      termCovariance(row<double>({-1, 0, 1, 2, 3}), row<double>({-10, -20, 0, 20, 10}));
  EXPECT_DOUBLE_EQ(covariance.zero, kUnit * kUnit);
  EXPECT_DOUBLE_EQ(covariance.both, 8 * kUnit * kUnit);
  EXPECT_DOUBLE_EQ(covariance.first, 100 * kUnit * kUnit);
}

TEST(TermCovarianceTest, TheMedianOfAnEvenNumberOfPixelsIsTheMeanOfTheMiddleTwo) {
  // Median 1.5, distances 1.5 0.5 0.5 8.5.
  EXPECT_DOUBLE_EQ(termCovariance(row<double>({10, 0, 2, 1}), row<double>({10, 0, 2, 1})).zero,
                   kUnit * kUnit);
}

TEST(TermCovarianceTest, MapsInProportionAreFullyCorrelated) {
  const AMatrix<double> zero = row<double>({-1, 0, 1, 2, 3});
  EXPECT_DOUBLE_EQ(termCovariance(zero, row<double>({-2, 0, 2, 4, 6})).both, 2 * kUnit * kUnit);
  EXPECT_DOUBLE_EQ(termCovariance(zero, row<double>({2, 0, -2, -4, -6})).both, -2 * kUnit * kUnit);
}

TEST(TermCovarianceTest, PixelsThatAreNotFiniteInEitherMapDoNotCount) {
  const double infinite = std::numeric_limits<double>::infinity();
  const TermCovariance covariance = termCovariance(row<double>({-1, 0, kNoNumber, 1, 2, 70, 3}),
                                                   row<double>({-10, -20, 500, 0, 20, infinite, 10}));
  EXPECT_DOUBLE_EQ(covariance.zero, kUnit * kUnit);
  EXPECT_DOUBLE_EQ(covariance.both, 8 * kUnit * kUnit);
}

TEST(TermCovarianceTest, WithoutAPixelThereIsNone) {
  const TermCovariance covariance = termCovariance(row<double>({kNoNumber}), row<double>({1}));
  EXPECT_TRUE(std::isnan(covariance.zero));
  EXPECT_TRUE(std::isnan(covariance.first));
}

TEST(TermCovarianceTest, AMapWithoutNoiseHasNoCovariance) {
  const TermCovariance covariance = termCovariance(row<double>({7, 7, 7}), row<double>({-1, 0, 1}));
  EXPECT_EQ(covariance.zero, 0.0);
  EXPECT_EQ(covariance.both, 0.0);
  EXPECT_DOUBLE_EQ(covariance.first, kUnit * kUnit);
}

// 20000 draws tell the measures to 1.2 % or better (the median distance has 37 % of the efficiency of the
// RMS). A hundredth of the pixels belongs to sources.
TEST(TermCovarianceTest, FindsTheMomentsOfNormalNoiseBesideSources) {
  std::mt19937 random(3);
  std::normal_distribution<double> normal;
  AMatrix<double> zero(100, 200);
  AMatrix<double> first(100, 200);
  for (std::size_t i = 0; i < zero.size(); ++i) {
    const double a = normal(random);
    const double source = i % 100 == 0 ? 1000 : 0;
    zero.data()[i] = 2 * a + source;
    first.data()[i] = 3 * (-0.6 * a + 0.8 * normal(random)) - source;
  }
  const TermCovariance covariance = termCovariance(zero, first);
  EXPECT_NEAR(std::sqrt(covariance.zero), 2, 2 * 0.04);
  EXPECT_NEAR(std::sqrt(covariance.first), 3, 3 * 0.04);
  EXPECT_NEAR(covariance.both, -0.6 * 2 * 3, 0.25);
}

class SpectralIndexErrorFilesTest : public testing::Test {
 protected:
  SpectralIndexErrorFilesTest() {
    header_.unit = "Sp. Index";
    header_.kind = MapKind::kSpectralIndex;
    header_.sourceName = "0235+164";
    header_.history = {"GAIN = 0.1"};
    write(files_.index, row<float>({-1.0F, 0.0F, kNan, 2.0F, 0.5F}));
  }
  void write(const std::string& path, const AMatrix<float>& matrix) {
    ASSERT_TRUE(writeMap(path, header_, range_, matrix).ok());
  }
  /// A beam whose pixels but the centre mean nothing.
  void addBeam(float centre) {
    AMatrix<float> beam(4, 2);
    std::fill_n(beam.data(), beam.size(), 9.0F);
    beam(2, 1) = centre;
    files_.beams.push_back(folder_.file("a^bm" + std::to_string(files_.beams.size()) + ".exm"));
    write(files_.beams.back(), beam);
  }
  void addTerm(const AMatrix<float>& clean, const AMatrix<float>& residual) {
    const std::string number = std::to_string(files_.clean.size());
    AMatrix<float> sum = clean;
    for (std::size_t i = 0; i < sum.size(); ++i) sum.data()[i] += residual.data()[i];
    files_.clean.push_back(folder_.file("a^cln" + number + ".exm"));
    files_.withResidual.push_back(folder_.file("a^cln_res" + number + ".exm"));
    write(files_.clean.back(), clean);
    write(files_.withResidual.back(), sum);
  }
  /// M = [[1, 1/2], [1/2, 1/2]], and residuals M e with e0 = -2 -1 0 1 2 and e1 = -10 -20 0 20 10.
  void makeTwoTerms() {
    for (const float centre : {1.0F, 0.5F, 0.5F}) addBeam(centre);
    addTerm(clean_, row<float>({-7, -11, 0, 11, 7}));
    addTerm(row<float>({-64, 0, 9, -64, 1}), row<float>({-6, -10.5, 0, 10.5, 6}));
  }
  /// The error of the pixels, with the moments of e worked out in OfFivePixelsByHand.
  static double expected(double index, double zero) {
    return kUnit * std::sqrt(100 - 2 * index * 8 + index * index) / std::abs(zero);
  }
  void expectTheErrors() {
    LoadedMap error;
    ASSERT_TRUE(readMap(files_.error, error).ok());
    EXPECT_NEAR((*error.matrix)(0, 0), expected(-1, 64), 1e-6);
    EXPECT_NEAR((*error.matrix)(0, 1), expected(0, 128), 1e-6);
    EXPECT_TRUE(std::isnan((*error.matrix)(0, 2)));
    EXPECT_NEAR((*error.matrix)(0, 3), expected(2, -32), 1e-6);
    EXPECT_NEAR((*error.matrix)(0, 4), expected(0.5, 2), 1e-5);
  }

  test::TempFolder folder_;
  SpectralIndexErrorFiles files_{folder_.file("a^sindex.exm"), {}, {}, {}, folder_.file("a^sindex_err.exm")};
  AMapHeader header_;
  TMinMax range_{.xMin = -2, .xMax = 2, .yMin = 0, .yMax = 0, .vMin = -0.25, .vMax = 8};
  AMatrix<float> clean_ = row<float>({64, 128, 16, -32, 2});
};

TEST_F(SpectralIndexErrorFilesTest, TheResidualsGoThroughTheBeamMatrix) {
  makeTwoTerms();
  const Status status = writeSpectralIndexErrorMap(files_);
  ASSERT_TRUE(status.ok()) << status.text();
  expectTheErrors();
}

// M of f = -1, 0, 1 with weights 1/4, 1/2, 1/4; the residuals are M e with e2 = 4 -6 8 2 -10, which takes no
// part in the noise of the first two terms.
TEST_F(SpectralIndexErrorFilesTest, HigherTermsTakeTheirShareOfTheResiduals) {
  for (const float centre : {1.0F, 0.0F, 0.5F, 0.0F, 0.5F}) addBeam(centre);
  addTerm(clean_, row<float>({0, -4, 4, 2, -3}));
  addTerm(row<float>({-64, 0, 9, -64, 1}), row<float>({-5, -10, 0, 10, 5}));
  addTerm(row<float>({0, 0, 0, 0, 0}), row<float>({1, -3.5, 4, 1.5, -4}));
  const Status status = writeSpectralIndexErrorMap(files_);
  ASSERT_TRUE(status.ok()) << status.text();
  expectTheErrors();
}

TEST_F(SpectralIndexErrorFilesTest, HasTheHeaderOfTheIndexMapAndTheRangeOfItsOwnValues) {
  makeTwoTerms();
  ASSERT_TRUE(writeSpectralIndexErrorMap(files_).ok());
  LoadedMap error;
  ASSERT_TRUE(readMap(files_.error, error).ok());
  EXPECT_EQ(error.header.kind, MapKind::kSpectralIndexError);
  EXPECT_EQ(error.header.Unit(), "Sp. Index");
  EXPECT_EQ(error.header.sourceName, "0235+164");
  EXPECT_EQ(error.header.history, std::vector<std::string>{"GAIN = 0.1"});
  EXPECT_EQ(error.range.xMin, -2);
  EXPECT_EQ(error.range.xMax, 2);
  EXPECT_NEAR(error.range.vMin, expected(0, 128), 1e-6);
  EXPECT_NEAR(error.range.vMax, expected(0.5, 2), 1e-5);
}

TEST_F(SpectralIndexErrorFilesTest, BeamsThatDoNotTellTheTermsApartLeaveNoValue) {
  for (const float centre : {1.0F, 1.0F, 1.0F}) addBeam(centre);
  addTerm(clean_, row<float>({1, 2, 3, 4, 5}));
  addTerm(clean_, row<float>({1, 2, 3, 4, 6}));
  ASSERT_TRUE(writeSpectralIndexErrorMap(files_).ok());
  LoadedMap error;
  ASSERT_TRUE(readMap(files_.error, error).ok());
  for (std::size_t i = 0; i < error.matrix->size(); ++i) EXPECT_TRUE(std::isnan(error.matrix->data()[i]));
}

TEST_F(SpectralIndexErrorFilesTest, AMapOfAnotherSizeIsNamedAndNothingIsWritten) {
  makeTwoTerms();
  write(files_.withResidual[1], AMatrix<float>(1, 4));
  const Status status = writeSpectralIndexErrorMap(files_);
  EXPECT_EQ(status.code(), StatusCode::kBadFormat);
  EXPECT_EQ(status.file(), files_.withResidual[1]);
  EXPECT_FALSE(test::exists(files_.error));
}

TEST_F(SpectralIndexErrorFilesTest, AMissingMapIsNamedAndNothingIsWritten) {
  makeTwoTerms();
  files_.beams[1] = folder_.file("absent.exm");
  const Status status = writeSpectralIndexErrorMap(files_);
  EXPECT_EQ(status.code(), StatusCode::kNotFound);
  EXPECT_EQ(status.file(), files_.beams[1]);
  EXPECT_FALSE(test::exists(files_.error));
}

TEST_F(SpectralIndexErrorFilesTest, ListsThatDoNotFitTogetherAreRefused) {
  makeTwoTerms();
  SpectralIndexErrorFiles few = files_;
  few.beams.pop_back();
  EXPECT_EQ(writeSpectralIndexErrorMap(few).code(), StatusCode::kInvalidValue);
  few = files_;
  few.withResidual.pop_back();
  EXPECT_EQ(writeSpectralIndexErrorMap(few).code(), StatusCode::kInvalidValue);
  few = {files_.index, {files_.clean[0]}, {files_.withResidual[0]}, {files_.beams[0]}, files_.error};
  EXPECT_EQ(writeSpectralIndexErrorMap(few).code(), StatusCode::kInvalidValue);
}

}  // namespace
}  // namespace lumo
