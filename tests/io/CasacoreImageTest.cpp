// SPDX-License-Identifier: GPL-3.0-or-later
// What casacore's own reader of FITS images makes of a map.
#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "CasacoreImage.h"
#include "io/MapProduct.h"
#include "support/TempFolder.h"

namespace lumo::test {
namespace {

using testing::ElementsAre;

constexpr int kRows = 6;
constexpr int kColumns = 8;
// x = 0 at column 4 and y = 0 at row 2: neither in the middle nor alike.
constexpr int kZeroColumn = 4;
constexpr int kZeroRow = 2;
constexpr double kStepX = 60;  // arcseconds
constexpr double kStepY = 90;

struct Position {
  double rightAscension, declination;  // degrees
};

/// The position at offsets in arcseconds to the east and the north of (ra, dec) in the orthographic
/// projection (Calabretta & Greisen 2002, A&A 395, 1077, section 5.1.5).
Position orthographic(double x, double y, double ra, double dec) {
  constexpr double kDegree = std::numbers::pi / 180;
  const double l = x / 3600 * kDegree;
  const double m = y / 3600 * kDegree;
  const double n = std::sqrt(1 - l * l - m * m);
  const double d = dec * kDegree;
  return {ra + std::atan2(l, n * std::cos(d) - m * std::sin(d)) / kDegree,
          std::asin(m * std::cos(d) + n * std::sin(d)) / kDegree};
}

class CasacoreImageTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!hasCasacoreImages()) GTEST_SKIP() << "built without casacore's images";
    header_.unit = "Jy/Beam";
    header_.sourceName = "0415+379";
    header_.rightAscension = 64.5;
    header_.declination = 38;
    header_.epoch = 2000;
    header_.stokes = "RR";
    header_.frequency = 5e9;
    header_.bandwidth = 2.5e8;
    header_.beamMajor = 3.6;
    header_.beamMinor = 1.8;
    header_.beamPa = 30;
    range_.xMin = -kStepX * kZeroColumn;
    range_.xMax = kStepX * (kColumns - 1 - kZeroColumn);
    range_.yMin = -kStepY * kZeroRow;
    range_.yMax = kStepY * (kRows - 1 - kZeroRow);
    for (int row = 0; row < kRows; ++row)
      for (int column = 0; column < kColumns; ++column)
        matrix_(row, column) = static_cast<float>(10 * row + column);
  }
  /// Writes the map under a name as products have and reads it with casacore.
  CasacoreImage read(const std::vector<std::pair<int, int>>& pixels = {}) {
    const std::string path = folder_.file("MFS^cln0.exm");
    const Status status = writeMap(path, header_, range_, matrix_);
    EXPECT_TRUE(status.ok()) << status.text();
    return readWithCasacore(path, pixels);
  }

  TempFolder folder_;
  AMapHeader header_;
  TMinMax range_;
  AMatrix<float> matrix_{kRows, kColumns};
};

TEST_F(CasacoreImageTest, TheFourAxesAreKnown) {
  const CasacoreImage image = read();
  EXPECT_THAT(image.shape, ElementsAre(kColumns, kRows, 1, 1));
  EXPECT_THAT(image.axes, ElementsAre("Right Ascension", "Declination", "Frequency", "Stokes"));
  EXPECT_EQ(image.projection, "SIN");
  EXPECT_EQ(image.directionFrame, "J2000");
  EXPECT_EQ(image.frequencyFrame, "TOPO");
  EXPECT_EQ(image.object, "0415+379");
}

TEST_F(CasacoreImageTest, EveryPixelHasItsValueAndItsPlaceInTheSky) {
  std::vector<std::pair<int, int>> pixels;
  for (int y = 0; y < kRows; ++y)
    for (int x = 0; x < kColumns; ++x) pixels.emplace_back(x, y);
  const CasacoreImage image = read(pixels);
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    // East is on the left: the first pixel of a line is the last column of the matrix.
    const int column = kColumns - 1 - pixels[i].first;
    const int row = pixels[i].second;
    const Position expected =
        orthographic(kStepX * (column - kZeroColumn), kStepY * (row - kZeroRow), 64.5, 38);
    EXPECT_EQ(image.pixels[i].value, static_cast<float>(10 * row + column));
    // A microarcsecond: far above rounding, and sixty millionths of a pixel.
    EXPECT_NEAR(image.pixels[i].rightAscension, expected.rightAscension, 3e-10) << column << " " << row;
    EXPECT_NEAR(image.pixels[i].declination, expected.declination, 3e-10) << column << " " << row;
  }
}

TEST_F(CasacoreImageTest, TheFrequencyIsTheReferenceOnTheAxisAndAtRest) {
  const CasacoreImage image = read({{3, 2}});
  EXPECT_EQ(image.restFrequency, 5e9);
  EXPECT_EQ(image.pixels.at(0).frequency, 5e9);
}

TEST_F(CasacoreImageTest, TheBeamHasItsWidthsAndItsAngle) {
  const CasacoreImage image = read();
  // Rounding of arcseconds to degrees and radians and back.
  EXPECT_NEAR(image.beamMajor, 3.6, 1e-12);
  EXPECT_NEAR(image.beamMinor, 1.8, 1e-12);
  EXPECT_NEAR(image.beamPa, 30, 1e-12);
}

TEST_F(CasacoreImageTest, TheBrightnessIsPerBeam) {
  EXPECT_EQ(read().unit, "Jy/beam");
}

TEST_F(CasacoreImageTest, TheProductOfPolarisationsIsNamed) {
  for (const char* const name : {"RR", "LL", "XX", "YY", "I", "Q", "U", "V"}) {
    header_.stokes = name;
    EXPECT_EQ(read({{0, 0}}).pixels.at(0).stokes, name);
  }
}

TEST_F(CasacoreImageTest, PixelsWithoutAValueAreMasked) {
  matrix_(2, 3) = std::numeric_limits<float>::quiet_NaN();
  const CasacoreImage image = read({{kColumns - 1 - 3, 2}, {kColumns - 1 - 4, 2}});
  EXPECT_FALSE(image.pixels.at(0).isValid);
  EXPECT_TRUE(image.pixels.at(1).isValid);
}

TEST_F(CasacoreImageTest, AMapOfNoUnitHasNone) {
  header_.unit = "Sp. Index";
  header_.kind = MapKind::kSpectralIndex;
  EXPECT_EQ(read().unit, "");
}

TEST_F(CasacoreImageTest, APositionOf1950IsIn1950) {
  header_.epoch = 1950;
  EXPECT_EQ(read().directionFrame, "B1950");
}

}  // namespace
}  // namespace lumo::test
