// SPDX-License-Identifier: GPL-3.0-or-later
// Images as other programs write them: measured right, or refused with a sentence.
#include <fitsio.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "ForeignImage.h"
#include "analysis/MapSelector.h"
#include "analysis/RegionFrame.h"
#include "core/Units.h"
#include "io/MapProduct.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::ForeignImage;
using test::kArea;
using test::kDegree;
using test::TempFolder;
using ::testing::HasSubstr;

struct Seen {
  double flux = 0, frequency = 0;
  AMapHeader header;
};

Status look(const std::string& path, Seen& seen) {
  MapSelector maps;
  if (Status status = maps.add(path); !status.ok()) return status;
  MapMeasurement found;
  AreaList areas;
  areas.add(kArea);
  if (Status status = maps.measure(areas, found); !status.ok()) return status;
  seen.flux = found.sums(0, 0) / found.beamPixels[0];
  seen.frequency = found.freqs[0];
  LoadedMap map;
  if (Status status = readMap(path, map); !status.ok()) return status;
  seen.header = map.header;
  return {};
}

Seen seenIn(const ForeignImage& image) {
  const TempFolder folder;
  image.write(folder.file("map.fits"));
  Seen seen;
  const Status status = look(folder.file("map.fits"), seen);
  EXPECT_TRUE(status.ok()) << status.text();
  return seen;
}

std::string refusal(const ForeignImage& image) {
  const TempFolder folder;
  image.write(folder.file("map.fits"));
  Seen seen;
  return look(folder.file("map.fits"), seen).message();
}

/// Sums of a few hundred single-precision pixels, each right to 6e-8.
void expectFlux(const Seen& seen, const ForeignImage& image) {
  EXPECT_NEAR(seen.flux, image.flux(), 1e-6 * image.flux());
  EXPECT_GT(image.flux(), 1.0);  // the area is on the source
}

TEST(ForeignMapTest, AxesOfEitherSignAreMeasuredOnTheSameSky) {
  const double usual = ForeignImage().flux();
  for (const double east : {-1.0, 1.0}) {
    for (const double north : {-1.0, 1.0}) {
      ForeignImage image({east, 0, 0, north});
      image.steps();
      expectFlux(seenIn(image), image);
      // Reference pixels are whole, so the pixel centres are the same places in any direction.
      EXPECT_NEAR(image.flux(), usual, 1e-6 * usual);
    }
  }
}

TEST(ForeignMapTest, PixelsThatAreNotSquareAreMeasured) {
  ForeignImage image({-1.25, 0, 0, 0.8});
  image.steps();
  expectFlux(seenIn(image), image);
}

TEST(ForeignMapTest, EveryPixelTypeIsMeasured) {
  for (const int bitpix : {FLOAT_IMG, DOUBLE_IMG}) {
    ForeignImage image;
    image.steps().type(bitpix).missing(17, 16);
    expectFlux(seenIn(image), image);
  }
  for (const int bitpix : {SHORT_IMG, LONG_IMG, LONGLONG_IMG}) {
    ForeignImage image;
    image.steps().type(bitpix, 1e-3, 0.25).missing(17, 16);
    expectFlux(seenIn(image), image);
    ForeignImage whole;
    whole.steps().type(bitpix, 1e-3, 0.25);
    EXPECT_GT(whole.flux(), image.flux());  // the blank pixel lies in the area
  }
}

TEST(ForeignMapTest, MissingAndDegenerateAxesInAnyOrderAreRead) {
  ForeignImage two;
  two.steps().set("RESTFRQ", 5e9);
  ForeignImage three;
  three.steps().axes({1}).frequency(3, 5e9);
  ForeignImage four;
  four.steps().axes({1, 1}).frequency(3, 5e9).set("CTYPE4", "STOKES").set("CRVAL4", 1.0);
  ForeignImage turned;
  turned.steps().axes({1, 1}).set("CTYPE3", "STOKES").set("CRVAL3", 1.0).frequency(4, 5e9);
  for (const ForeignImage& image : {two, three, four, turned}) {
    const Seen seen = seenIn(image);
    expectFlux(seen, image);
    EXPECT_EQ(seen.frequency, 5e9);
  }
}

TEST(ForeignMapTest, FrequencyIsThatOfThePlane) {
  ForeignImage inMegahertz;
  inMegahertz.steps().axes({1}).frequency(3, 5000).set("CDELT3", 8.0).set("CUNIT3", "MHz");
  EXPECT_EQ(seenIn(inMegahertz).frequency, 5e9);
  ForeignImage elsewhere;
  elsewhere.steps().axes({1}).frequency(3, 5e9).set("CRPIX3", 3.0);
  EXPECT_DOUBLE_EQ(seenIn(elsewhere).frequency, 5e9 - 2e8);
  ForeignImage byMatrix;
  byMatrix.steps().axes({1}).frequency(3, 5e9).set("CRPIX3", 3.0).drop("CDELT3").set("CD3_3", 1e8);
  EXPECT_DOUBLE_EQ(seenIn(byMatrix).frequency, 5e9 - 2e8);
}

// v = 3000 km/s, about a hundredth of the speed of light.
TEST(ForeignMapTest, VelocityAxisShiftsTheRestFrequency) {
  const double beta = 3e6 / kSpeedOfLight;
  const auto frequency = [](const char* type, double velocity, const char* unit) {
    ForeignImage image;
    image.steps().axes({1}).set("CTYPE3", type).set("CRVAL3", velocity).set("CRPIX3", 1.0);
    image.set("CDELT3", 1e4).set("CUNIT3", unit).set("RESTFRQ", 5e9);
    return seenIn(image).frequency;
  };
  EXPECT_NEAR(frequency("VRAD", 3e6, "m/s"), 5e9 * (1 - beta), 1);
  EXPECT_NEAR(frequency("VRAD", 3e3, "km/s"), 5e9 * (1 - beta), 1);
  EXPECT_NEAR(frequency("VOPT", 3e6, "m/s"), 5e9 / (1 + beta), 1);
  EXPECT_NEAR(frequency("VELO-LSR", 3e6, "m/s"), 5e9 * std::sqrt((1 - beta) / (1 + beta)), 1);
}

TEST(ForeignMapTest, MapWithoutAnyFrequencyIsMeasuredButNeverFitted) {
  const TempFolder folder;
  ForeignImage image;
  image.steps();
  MapSelector maps;
  for (const char* const name : {"a.fits", "b.fits"}) {
    image.write(folder.file(name));
    ASSERT_TRUE(maps.add(folder.file(name)).ok());
  }
  MapMeasurement found;
  AreaList areas;
  areas.add(kArea);
  ASSERT_TRUE(maps.measure(areas, found).ok());
  EXPECT_TRUE(std::isnan(found.freqs[0]));
  EXPECT_NEAR(found.sums(0, 0) / found.beamPixels[0], image.flux(), 1e-6 * image.flux());
  EXPECT_TRUE(std::isnan(fitMaps(found).areas.at(0).alpha));
}

TEST(ForeignMapTest, MapWithoutABeamHasNoFluxDensity) {
  ForeignImage image;
  image.steps().drop("BMAJ").drop("BMIN");
  EXPECT_TRUE(std::isnan(seenIn(image).flux));
}

TEST(ForeignMapTest, BeamOnPixelsOfUnknownSizeGivesNoFluxDensity) {
  ForeignImage image;
  for (const char* const key : {"CTYPE1", "CTYPE2", "CRVAL1", "CRVAL2"}) image.drop(key);
  EXPECT_TRUE(std::isnan(seenIn(image).flux));
}

TEST(ForeignMapTest, AnyAngleMayBeTheUnitOfTheAxes) {
  for (const auto& [unit, perUnit] : std::vector<std::pair<const char*, double>>{
           {"deg", 3600.0}, {"arcmin", 60.0}, {"arcsec", 1.0}, {"mas", 1e-3}, {"rad", kArcsecPerRadian}}) {
    ForeignImage image;
    image.steps(perUnit).set("CUNIT1", unit).set("CUNIT2", unit);
    image.set("CRVAL1", 187.5 * kDegree / perUnit).set("CRVAL2", 12.25 * kDegree / perUnit);
    const Seen seen = seenIn(image);
    expectFlux(seen, image);
    EXPECT_NEAR(seen.header.rightAscension, 187.5, 1e-9) << unit;
    EXPECT_NEAR(seen.header.declination, 12.25, 1e-9) << unit;
  }
}

TEST(ForeignMapTest, MatricesWithoutARotationAreMeasured) {
  ForeignImage byCd;
  byCd.set("CD1_1", -1 / kDegree).set("CD2_2", 1 / kDegree).set("CD1_2", 0.0).set("CD2_1", 0.0);
  ForeignImage byPc;
  byPc.steps().set("PC1_1", 1.0).set("PC2_2", 1.0).set("PC1_2", 0.0).set("PC2_1", 0.0);
  ForeignImage byScaledPc;
  byScaledPc.set("CDELT1", -1.0).set("CDELT2", 1.0).set("PC1_1", 1 / kDegree).set("PC2_2", 1 / kDegree);
  for (const ForeignImage& image : {byCd, byPc, byScaledPc}) expectFlux(seenIn(image), image);
}

TEST(ForeignMapTest, QuarterAndHalfTurnsAreMeasured) {
  ForeignImage half({1, 0, 0, -1});
  half.set("CDELT1", -1 / kDegree).set("CDELT2", 1 / kDegree).set("CROTA2", 180.0);
  expectFlux(seenIn(half), half);
  // CDELT of (-1, 1) turned by 90 degrees: x = -q, y = -p.
  ForeignImage quarter({0, -1, -1, 0});
  quarter.set("CDELT1", -1 / kDegree).set("CDELT2", 1 / kDegree).set("CROTA2", 90.0);
  expectFlux(seenIn(quarter), quarter);
  ForeignImage byCd({0, -1, -1, 0});
  byCd.set("CD1_1", 0.0).set("CD1_2", -1 / kDegree).set("CD2_1", -1 / kDegree).set("CD2_2", 0.0);
  expectFlux(seenIn(byCd), byCd);
  ForeignImage byPc({0, 1, 1, 0});
  byPc.set("CDELT1", 1 / kDegree).set("CDELT2", 1 / kDegree);
  byPc.set("PC1_1", 0.0).set("PC1_2", 1.0).set("PC2_1", 1.0).set("PC2_2", 0.0);
  expectFlux(seenIn(byPc), byPc);
}

TEST(ForeignMapTest, RotatedImagesAreRefusedHoweverTheySayIt) {
  const double c = std::cos(0.3);
  const double s = std::sin(0.3);
  ForeignImage crota;
  crota.steps().set("CROTA2", 17.0);
  ForeignImage pc;
  pc.steps().set("PC1_1", c).set("PC1_2", -s).set("PC2_1", s).set("PC2_2", c);
  ForeignImage draftPc;
  draftPc.steps().set("PC001001", c).set("PC001002", -s).set("PC002001", s).set("PC002002", c);
  ForeignImage cd;
  cd.set("CD1_1", -c / kDegree).set("CD1_2", s / kDegree).set("CD2_1", s / kDegree).set("CD2_2", c / kDegree);
  for (const ForeignImage& image : {crota, pc, draftPc, cd})
    EXPECT_THAT(refusal(image), HasSubstr("rotated"));
}

TEST(ForeignMapTest, GalacticMapIsMeasuredButHasNoEquatorialPosition) {
  ForeignImage image;
  image.steps().set("CTYPE1", "GLON-TAN").set("CTYPE2", "GLAT-TAN");
  const Seen seen = seenIn(image);
  expectFlux(seen, image);
  EXPECT_FALSE(RegionFrame(seen.header, TMinMax(), ForeignImage::kSlow, ForeignImage::kFast).hasSky());
}

TEST(ForeignMapTest, CubeOfSeveralPlanesIsRefused) {
  ForeignImage image;
  image.steps().axes({3}).frequency(3, 5e9);
  EXPECT_THAT(refusal(image), HasSubstr("cube of 3 planes"));
}

TEST(ForeignMapTest, ImageBehindAnEmptyPrimaryIsRefused) {
  const TempFolder folder;
  fitsfile* file = nullptr;
  int error = 0;
  std::array<long, 2> lengths{4, 4};
  fits_create_diskfile(&file, folder.file("map.fits").c_str(), &error);
  fits_create_img(file, BYTE_IMG, 0, lengths.data(), &error);
  fits_create_img(file, FLOAT_IMG, 2, lengths.data(), &error);
  fits_close_file(file, &error);
  ASSERT_EQ(error, 0);
  Seen seen;
  EXPECT_THAT(look(folder.file("map.fits"), seen).message(), HasSubstr("no image in its primary HDU"));
}

TEST(ForeignMapTest, TruncatedFileAndHugeAxesAreRefused) {
  const TempFolder folder;
  const std::string path = folder.file("map.fits");
  ForeignImage image;
  image.steps().write(path);
  const std::string whole = test::readFile(path);
  Seen seen;
  test::writeFile(path, whole.substr(0, 2880 * 2 + 100));
  EXPECT_THAT(look(path, seen).message(), HasSubstr("cut short"));
  std::string huge = whole;
  huge.replace(huge.find("NAXIS1  = "), 30, "NAXIS1  =           2000000000");
  test::writeFile(path, huge);
  EXPECT_THAT(look(path, seen).message(), HasSubstr("cut short"));
}

TEST(ForeignMapTest, MapOfNothingButNaNHasNoSum) {
  const TempFolder folder;
  const std::string path = folder.file("map.fits");
  ForeignImage image;
  image.steps().frequency(3, 5e9).axes({1}).write(path);
  fitsfile* file = nullptr;
  int error = 0;
  fits_open_diskfile(&file, path.c_str(), READWRITE, &error);
  std::vector<float> none(ForeignImage::kFast * ForeignImage::kSlow, std::numeric_limits<float>::quiet_NaN());
  fits_write_img(file, TFLOAT, 1, static_cast<long>(none.size()), none.data(), &error);
  fits_close_file(file, &error);
  ASSERT_EQ(error, 0);
  MapSelector maps;
  ASSERT_TRUE(maps.add(path).ok());
  MapMeasurement found;
  ASSERT_TRUE(maps.measure(AreaList(), found).ok());
  EXPECT_EQ(found.sums(0, 0), 0.0);
  EXPECT_EQ(found.deviations(0, 0), 0.0);
}

}  // namespace
}  // namespace lumo
