// SPDX-License-Identifier: GPL-3.0-or-later
// Region files in the dialects of viewers: which pixels they select, counted without the code under test.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "AnalysisSample.h"
#include "analysis/AreaList.h"
#include "analysis/RegionFile.h"
#include "core/Units.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using ::testing::HasSubstr;

// 128 rows and 160 columns of half an arcsecond; pixel (81, 65) of the file lies at x = y = 0, at right
// ascension 64.5 and declination 38 degrees.
constexpr std::uint32_t kRows = 128, kColumns = 160;
constexpr double kCell = 0.5;
constexpr double kRa = 64.5, kDec = 38.0;

TMinMax mapRange() {
  TMinMax range;
  range.xMax = 80 * kCell;
  range.xMin = range.xMax - (kColumns - 1) * kCell;
  range.yMin = -64 * kCell;
  range.yMax = range.yMin + (kRows - 1) * kCell;
  return range;
}

RegionFrame mapFrame() {
  AMapHeader header = test::sampleHeader(1e9);
  header.rightAscension = kRa;
  header.declination = kDec;
  return {header, mapRange(), kRows, kColumns};
}

/// One bit for every pixel of the file, line by line from the south-east corner.
using Pixels = std::vector<bool>;

Pixels pixelsOf(const AreaShape& shape) {
  ABitMatrix mask(kRows, kColumns);
  AreaList({shape}).makeMask(0, mask, mapRange());
  Pixels pixels;
  for (std::uint32_t row = 0; row < kRows; ++row)
    for (std::uint32_t i = 0; i < kColumns; ++i) pixels.push_back(mask(row, kColumns - 1 - i) != 0);
  return pixels;
}

/// The same from a condition on the pixel numbers of the file, from 1.
Pixels pixelsWhere(const std::function<bool(double i, double j)>& inside) {
  Pixels pixels;
  for (std::uint32_t j = 1; j <= kRows; ++j)
    for (std::uint32_t i = 1; i <= kColumns; ++i) pixels.push_back(inside(i, j));
  return pixels;
}

std::size_t countOf(const Pixels& pixels) {
  return static_cast<std::size_t>(std::count(pixels.begin(), pixels.end(), true));
}

std::vector<AreaShape> shapesOf(const std::string& text) {
  const test::TempFolder folder;
  test::writeFile(folder.file("areas.reg"), text);
  std::vector<AreaShape> shapes;
  const Status status = readRegions(folder.file("areas.reg"), mapFrame(), shapes);
  EXPECT_TRUE(status.ok()) << status.text() << "\n" << text;
  return shapes;
}

Pixels onlyPixels(const std::string& text) {
  const std::vector<AreaShape> shapes = shapesOf(text);
  EXPECT_EQ(shapes.size(), 1U) << text;
  return shapes.empty() ? Pixels() : pixelsOf(shapes.front());
}

bool inEllipse(double i, double j) {
  const double c = std::cos(33 * kRadianPerDegree);
  const double s = std::sin(33 * kRadianPerDegree);
  const double along = (i - 70.3) * c + (j - 50.8) * s;
  const double across = (j - 50.8) * c - (i - 70.3) * s;
  return std::pow(along / 21.4, 2) + std::pow(across / 9.7, 2) <= 1;
}

bool inBox(double i, double j) {
  const double c = std::cos(-17 * kRadianPerDegree);
  const double s = std::sin(-17 * kRadianPerDegree);
  const double along = (i - 101.2) * c + (j - 80.1) * s;
  const double across = (j - 80.1) * c - (i - 101.2) * s;
  return std::abs(along) <= 30.5 / 2 && std::abs(across) <= 12.25 / 2;
}

// The polygon (20.5,20.25) (60.5,30.25) (35.4,60.7) runs counter-clockwise; inside is left of every side.
bool inTriangle(double i, double j) {
  const auto left = [&](double ai, double aj, double bi, double bj) {
    return (bi - ai) * (j - aj) - (bj - aj) * (i - ai) >= 0;
  };
  return left(20.5, 20.25, 60.5, 30.25) && left(60.5, 30.25, 35.4, 60.7) && left(35.4, 60.7, 20.5, 20.25);
}

const std::string kShapes =
    "ellipse(70.3,50.8,21.4,9.7,33)\nbox(101.2,80.1,30.5,12.25,-17)\n"
    "polygon(20.5,20.25,60.5,30.25,35.4,60.7)\ncircle(81,65,7.25)\n";

void expectShapes(const std::string& text) {
  const std::vector<AreaShape> shapes = shapesOf(text);
  ASSERT_EQ(shapes.size(), 4U) << text;
  EXPECT_EQ(pixelsOf(shapes[0]), pixelsWhere(inEllipse)) << text;
  EXPECT_EQ(pixelsOf(shapes[1]), pixelsWhere(inBox)) << text;
  EXPECT_EQ(pixelsOf(shapes[2]), pixelsWhere(inTriangle)) << text;
  EXPECT_EQ(pixelsOf(shapes[3]),
            pixelsWhere([](double i, double j) { return std::hypot(i - 81, j - 65) <= 7.25; }))
      << text;
}

TEST(RegionDialectTest, PixelsAreThoseWhoseCentresLieInside) {
  expectShapes("image\n" + kShapes);
  // A count that is of the order of the area: 4 % of the ellipse's is a third of its outline's pixels.
  EXPECT_NEAR(static_cast<double>(countOf(pixelsWhere(inEllipse))), kPi * 21.4 * 9.7, 26);
  EXPECT_NEAR(static_cast<double>(countOf(pixelsWhere(inBox))), 30.5 * 12.25, 15);
}

TEST(RegionDialectTest, WhatAViewerWritesAroundTheShapesChangesNothing) {
  expectShapes(
      "# Region file format: DS9 version 4.1\n"
      "global color=green dashlist=8 3 width=1 font=\"helvetica 10 normal roman\" select=1 highlite=1 dash=0 "
      "fixed=0 edit=1 move=1 delete=1 include=1 source=1\n"
      "image\n"
      "ellipse(70.3,50.8,21.4,9.7,33) # color=red width=2 text={jet; \"inner\" # 2} dash=1\n"
      "# text(30,30) text={a note}\n"
      "+box(101.2,80.1,30.5,12.25,-17) # font=\"times 12 bold roman\" tag={Group 1} tag={knots}\n"
      "\n"
      "polygon(20.5,20.25,60.5,30.25,35.4,60.7) # select=0\n"
      "circle(81,65,7.25) # text='core; not the jet'\n");
  expectShapes(
      "# Region file format: DS9 CARTA 4.0.0\r\nglobal color=#2EE6D6 delete=1 edit=1 fixed=0\r\nphysical\r\n"
      "ellipse(70.3, 50.8, 21.4, 9.7, 33) # color=#2EE6D6 width=2\r\n"
      "box(101.2, 80.1, 30.5, 12.25, -17)\r\n"
      "polygon(20.5, 20.25, 60.5, 30.25, 35.4, 60.7)\r\ncircle(81, 65, 7.25)\r\n");
  expectShapes(
      "image; ellipse 70.3 50.8 21.4 9.7 33 # text={one}; box 101.2 80.1 30.5 12.25 343\n"
      "IMAGE;POLYGON(20.5,20.25,60.5,30.25,35.4,60.7);Circle(81 , 65 , 7.25)");
}

TEST(RegionDialectTest, SkyCoordinatesSelectTheSamePixelsInEverySpelling) {
  // 12 s of declination north, and 0.8 s of right ascension east.
  const double ra = (kRa + 0.8 * 15 / 3600) * kRadianPerDegree;
  const double dec = (kDec + 12.0 / 3600) * kRadianPerDegree;
  const double l = std::cos(dec) * std::sin(ra - kRa * kRadianPerDegree) * kArcsecPerRadian;
  const double m =
      (std::sin(dec) * std::cos(kDec * kRadianPerDegree) -
       std::cos(dec) * std::sin(kDec * kRadianPerDegree) * std::cos(ra - kRa * kRadianPerDegree)) *
      kArcsecPerRadian;
  const Pixels wanted = pixelsWhere(
      [&](double i, double j) { return std::hypot((81 - i) * kCell - l, (j - 65) * kCell - m) <= 6.3; });
  EXPECT_GT(countOf(wanted), 400U);
  for (const char* const text :
       {"fk5\ncircle(4:18:00.8,+38:00:12,6.3\")", "icrs\r\ncircle(4h18m0.8s,38d0m12s,6.3\")\r\n",
        "J2000;circle(04:18:00.800,+38:00:12.00,0.105')",
        "fk5\ncircle(64.50333333333333,38.003333333333334,0.00175)",
        "fk5;circle(64.50333333333333d,38.003333333333334d,12.6i) # text={in pixels}"})
    EXPECT_EQ(onlyPixels(text), wanted) << text;
}

TEST(RegionDialectTest, SamePixelsAreSelectedAfterWritingAndReadingAgain) {
  const std::vector<AreaShape> before = shapesOf("image\n" + kShapes);
  const test::TempFolder folder;
  for (const RegionSystem system : {RegionSystem::kImage, RegionSystem::kSky}) {
    ASSERT_TRUE(writeRegions(folder.file("a.reg"), before, mapFrame(), system).ok());
    std::vector<AreaShape> after;
    ASSERT_TRUE(readRegions(folder.file("a.reg"), mapFrame(), after).ok());
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t k = 0; k < before.size(); ++k)
      EXPECT_EQ(pixelsOf(after[k]), pixelsOf(before[k])) << "area " << k;
  }
}

TEST(RegionDialectTest, WhatOneAreaCannotMeanIsRefusedWithItsLine) {
  const auto refusal = [](const std::string& text) {
    std::vector<AreaShape> shapes;
    return parseRegions(text, mapFrame(), shapes).message();
  };
  // Members of a composite are one region together, and each of them an area here.
  EXPECT_THAT(refusal("image\n# composite(81,65,0) || composite=1\ncircle(81,65,5) ||\ncircle(90,65,5)\n"),
              HasSubstr("line 3"));
  EXPECT_THAT(refusal("image\ncircle(81,65,5)\n-circle(81,65,2)\n"), HasSubstr("line 3"));
  EXPECT_THAT(refusal("image\nellipse(81,65,2,3,4,6,30)\n"), HasSubstr("line 2"));
  EXPECT_THAT(refusal("image\nannulus(81,65,2,3)\n"), HasSubstr("annulus"));
  EXPECT_THAT(refusal("galactic\ncircle(81,65,2)\n"), HasSubstr("galactic"));
  EXPECT_THAT(refusal("image\ncircle(4:18:00.8,38:00:12,5)\n"), HasSubstr("position"));
}

}  // namespace
}  // namespace lumo
