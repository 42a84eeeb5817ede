// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "AnalysisSample.h"
#include "analysis/RegionFile.h"
#include "core/Units.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using ::testing::HasSubstr;

AMapHeader headerAt(double ra, double dec, double epoch = 2000.0) {
  AMapHeader header = test::sampleHeader(1e9);
  header.rightAscension = ra;
  header.declination = dec;
  header.epoch = epoch;
  return header;
}

// 256 x 512 pixels of half an arcsecond; x = 0 at column 256, y = 0 at row 128.
RegionFrame squareFrame(const AMapHeader& header = headerAt(64.5, 38.0)) {
  TMinMax range;
  range.xMin = -128.0;
  range.xMax = 127.5;
  range.yMin = -64.0;
  range.yMax = 63.5;
  return {header, range, 256, 512};
}

// Pixels of 0.5 by 0.25 arcseconds.
RegionFrame oblongFrame() {
  return {headerAt(64.5, 38.0), test::sampleRange(), test::kRows, test::kColumns};
}

std::vector<AreaShape> parsed(const std::string& text, const RegionFrame& frame = squareFrame()) {
  std::vector<AreaShape> shapes;
  const Status status = parseRegions(text, frame, shapes);
  EXPECT_TRUE(status.ok()) << status.text();
  return shapes;
}

AreaShape onlyShape(const std::string& text, const RegionFrame& frame = squareFrame()) {
  const std::vector<AreaShape> shapes = parsed(text, frame);
  EXPECT_EQ(shapes.size(), 1U) << text;
  return shapes.empty() ? AreaShape() : shapes.front();
}

std::string refusal(const std::string& text, const RegionFrame& frame = squareFrame()) {
  std::vector<AreaShape> shapes;
  const Status status = parseRegions(text, frame, shapes);
  EXPECT_FALSE(status.ok()) << text;
  EXPECT_TRUE(shapes.empty());
  return status.message();
}

void expectSame(const AreaShape& a, const AreaShape& b, double tolerance) {
  EXPECT_EQ(a.kind, b.kind);
  EXPECT_EQ(a.name, b.name);
  EXPECT_NEAR(a.centre.x, b.centre.x, tolerance);
  EXPECT_NEAR(a.centre.y, b.centre.y, tolerance);
  EXPECT_NEAR(a.sizeX, b.sizeX, tolerance);
  EXPECT_NEAR(a.sizeY, b.sizeY, tolerance);
  EXPECT_NEAR(a.rotation, b.rotation, tolerance);
  ASSERT_EQ(a.vertices.size(), b.vertices.size());
  for (std::size_t i = 0; i < a.vertices.size(); ++i) {
    EXPECT_NEAR(a.vertices[i].x, b.vertices[i].x, tolerance);
    EXPECT_NEAR(a.vertices[i].y, b.vertices[i].y, tolerance);
  }
}

TEST(RegionFileTest, ImageCoordinatesCountPixelsFromOneAndRunWest) {
  // FITS column i is matrix column 512 - i, row j matrix row j - 1.
  const AreaShape shape = onlyShape("image\ncircle(256,129,4)\n");
  EXPECT_DOUBLE_EQ(shape.centre.x, 0.0);
  EXPECT_DOUBLE_EQ(shape.centre.y, 0.0);
  EXPECT_DOUBLE_EQ(shape.sizeX, 2.0);
  const AreaShape corner = onlyShape("image\ncircle(1,1,4)\n");
  EXPECT_DOUBLE_EQ(corner.centre.x, 127.5);
  EXPECT_DOUBLE_EQ(corner.centre.y, -64.0);
}

TEST(RegionFileTest, PixelOfASmallCircleIsTheOneItNames) {
  ABitMatrix mask(256, 512);
  TMinMax range;
  range.xMin = -128.0;
  range.xMax = 127.5;
  range.yMin = -64.0;
  range.yMax = 63.5;
  fillMask(onlyShape("image\ncircle(10,20,0.6)\n"), mask, range);
  int count = 0;
  for (std::uint32_t row = 0; row < 256; ++row)
    for (std::uint32_t column = 0; column < 512; ++column) count += mask(row, column);
  EXPECT_EQ(count, 1);
  EXPECT_NE(mask(19, 502), 0);
}

TEST(RegionFileTest, FileWithoutAFrameIsInPixels) {
  EXPECT_EQ(onlyShape("circle(256,129,4)"), onlyShape("physical\ncircle(256,129,4)"));
  EXPECT_EQ(onlyShape("circle(256,129,4)"), onlyShape("image;circle(256,129,4)"));
}

TEST(RegionFileTest, SkyCoordinatesAreProjectedEastToPositiveX) {
  // 36 arcseconds east and 18 south: right ascension by 36 / cos(dec) in the plane of the pole distance.
  const AreaShape shape = onlyShape("fk5\ncircle(64.51,37.995,2\")\n", squareFrame(headerAt(64.5, 38.0)));
  const double a = 0.01 * kRadianPerDegree;
  const double d = 37.995 * kRadianPerDegree;
  const double d0 = 38.0 * kRadianPerDegree;
  EXPECT_NEAR(shape.centre.x, std::cos(d) * std::sin(a) * kArcsecPerRadian, 1e-9);
  EXPECT_NEAR(shape.centre.y,
              (std::sin(d) * std::cos(d0) - std::cos(d) * std::sin(d0) * std::cos(a)) * kArcsecPerRadian,
              1e-9);
  EXPECT_GT(shape.centre.x, 28.0);
  EXPECT_LT(shape.centre.y, -17.9);
  EXPECT_DOUBLE_EQ(shape.sizeX, 2.0);
}

TEST(RegionFileTest, PositionAcrossZeroHoursIsNear) {
  const AreaShape shape = onlyShape("icrs\ncircle(359.999,0,1\")\n", squareFrame(headerAt(0.001, 0.0)));
  EXPECT_NEAR(shape.centre.x, -7.2, 1e-8);  // 2e-3 degrees on the equator
}

TEST(RegionFileTest, SexagesimalPositionsMeanHoursAndDegrees) {
  const RegionFrame frame = squareFrame(headerAt(64.5, -0.5));
  const AreaShape decimal = onlyShape("fk5\ncircle(64.50125,-0.5025,1\")", frame);
  for (const char* const text :
       {"fk5\ncircle(4:18:00.3,-0:30:09,1\")", "fk5\ncircle(4h18m0.3s,-0d30m9s,1\")",
        "fk5\ncircle(64.50125d,-0.5025d,1\")", "fk5\ncircle(64d30m4.5s,-0d30m9s,1\")"}) {
    const AreaShape shape = onlyShape(text, frame);
    EXPECT_NEAR(shape.centre.x, decimal.centre.x, 1e-8) << text;
    EXPECT_NEAR(shape.centre.y, decimal.centre.y, 1e-8) << text;
  }
  EXPECT_NEAR(decimal.centre.y, -9.0, 1e-6);
}

TEST(RegionFileTest, SizesCarryTheirUnits) {
  const std::string start = "fk5\ncircle(64.5,38,";
  EXPECT_DOUBLE_EQ(onlyShape(start + "2\")").sizeX, 2.0);
  EXPECT_DOUBLE_EQ(onlyShape(start + "2')").sizeX, 120.0);
  EXPECT_DOUBLE_EQ(onlyShape(start + "0.002)").sizeX, 7.2);
  EXPECT_DOUBLE_EQ(onlyShape(start + "0.002d)").sizeX, 7.2);
  EXPECT_DOUBLE_EQ(onlyShape(start + "1e-5r)").sizeX, 1e-5 * kArcsecPerRadian);
  EXPECT_DOUBLE_EQ(onlyShape(start + "3i)").sizeX, 1.5);
  EXPECT_DOUBLE_EQ(onlyShape(start + "3p)").sizeX, 1.5);
  EXPECT_DOUBLE_EQ(onlyShape("image\ncircle(1,1,3\")").sizeX, 3.0);
}

TEST(RegionFileTest, AngleRunsFromWestTowardsNorth) {
  const AreaShape shape = onlyShape("image\nellipse(256,129,20,4,30)\n");
  const double c = std::cos(30 * kRadianPerDegree);
  const double s = std::sin(30 * kRadianPerDegree);
  EXPECT_TRUE(shape.contains({-9.9 * c, 9.9 * s}));
  EXPECT_FALSE(shape.contains({9.9 * c, 9.9 * s}));
  EXPECT_EQ(onlyShape("fk5\nellipse(64.5,38,10\",2\",30)\n").rotation, shape.rotation);
}

TEST(RegionFileTest, BoxHasFullSizesAndEllipseSemiAxes) {
  EXPECT_TRUE(onlyShape("image\nbox(256,129,20,4,0)").contains({4.9, 0.9}));
  EXPECT_FALSE(onlyShape("image\nbox(256,129,20,4,0)").contains({5.1, 0.0}));
  EXPECT_TRUE(onlyShape("image\nellipse(256,129,20,4,0)").contains({9.9, 0.0}));
}

TEST(RegionFileTest, PolygonKeepsItsCorners) {
  const AreaShape shape = onlyShape("image\npolygon(256,129, 254,129, 256,133)");
  EXPECT_EQ(shape.kind, AreaKind::kPolygon);
  EXPECT_EQ(shape.vertices, (std::vector<AreaPoint>{{0, 0}, {1, 0}, {0, 2}}));
}

TEST(RegionFileTest, ShapesOfPixelsThatAreNotSquareKeepTheirPixels) {
  const RegionFrame frame = oblongFrame();
  // Image pixel (9, 5) is x = y = 0. A point of the image is inside its shape, whatever the pixels' sides.
  const AreaShape circle = onlyShape("image\ncircle(9,5,2)", frame);
  const AreaShape ellipse = onlyShape("image\nellipse(9,5,4,1,30)", frame);
  const AreaShape box = onlyShape("image\nbox(9,5,8,2,30)", frame);
  const double c = std::cos(30 * kRadianPerDegree);
  const double s = std::sin(30 * kRadianPerDegree);
  for (int turn = 0; turn < 360; turn += 15) {
    const double angle = turn * kRadianPerDegree;
    for (const double scale : {0.999, 1.001}) {
      const double x = scale * std::cos(angle);
      const double y = scale * std::sin(angle);
      const bool inside = scale < 1.0;
      EXPECT_EQ(circle.contains(frame.ofPixel({9 + 2 * x, 5 + 2 * y})), inside);
      EXPECT_EQ(ellipse.contains(frame.ofPixel({9 + 4 * x * c - y * s, 5 + 4 * x * s + y * c})), inside)
          << turn;
    }
  }
  EXPECT_TRUE(box.contains(frame.ofPixel({9 + 3.99 * c - 0.99 * s, 5 + 3.99 * s + 0.99 * c})));
  EXPECT_FALSE(box.contains(frame.ofPixel({9 + 4.01 * c, 5 + 4.01 * s})));
  EXPECT_FALSE(box.contains(frame.ofPixel({9 - 1.01 * s, 5 + 1.01 * c})));
}

TEST(RegionFileTest, CommentsDefaultsSemicolonsAndDosLineEndsAreUnderstood) {
  const std::string text =
      "# Region file format: DS9 version 4.1\r\nglobal color=green dashlist=8 3 width=1\r\n\r\n"
      "image; circle(256,129,4) # text={core; north} color=red\r\n"
      "  BOX 256 129 20 4 0 ; +ellipse(256,129,20,4,30) # tag={a}\r\n";
  const std::vector<AreaShape> shapes = parsed(text);
  ASSERT_EQ(shapes.size(), 3U);
  EXPECT_EQ(shapes[0].name, "core; north");
  EXPECT_EQ(shapes[1], onlyShape("image\nbox(256,129,20,4,0)"));
  EXPECT_EQ(shapes[2], onlyShape("image\nellipse(256,129,20,4,30)"));
}

TEST(RegionFileTest, ArcsecondQuotesDoNotSwallowTheNextShape) {
  EXPECT_EQ(parsed("fk5;circle(64.5,38,2\");circle(64.5,38,3\")").size(), 2U);
}

TEST(RegionFileTest, NamesMayStandInQuotes) {
  EXPECT_EQ(onlyShape("image\ncircle(1,1,1) # text=\"a b\"").name, "a b");
  EXPECT_EQ(onlyShape("image\ncircle(1,1,1) # color=red text='c'").name, "c");
}

TEST(RegionFileTest, ExcludedRegionIsRefusedWithItsLine) {
  EXPECT_THAT(refusal("image\n-circle(1,1,1)"), HasSubstr("line 2: an excluded region"));
}

TEST(RegionFileTest, OtherShapesAndFramesAreRefusedByName) {
  EXPECT_THAT(refusal("image\r\npoint(1,1)"), HasSubstr("line 2: \"point\""));
  EXPECT_THAT(refusal("galactic\ncircle(1,1,1)"), HasSubstr("\"galactic\""));
  EXPECT_THAT(refusal("fk4\ncircle(64,38,1)"), HasSubstr("FK5"));
}

TEST(RegionFileTest, OldFrameFitsAMapOfThatEquinoxOnly) {
  const RegionFrame old = squareFrame(headerAt(64.5, 38.0, 1950.0));
  EXPECT_DOUBLE_EQ(onlyShape("fk4\ncircle(64.5,38,1\")", old).centre.x, 0.0);
  EXPECT_THAT(refusal("fk5\ncircle(64.5,38,1\")", old), HasSubstr("FK4"));
}

TEST(RegionFileTest, SkyFrameOnAMapWithoutAPositionIsRefused) {
  EXPECT_THAT(refusal("icrs\ncircle(1,1,1\")", squareFrame(headerAt(std::nan(""), 38.0))),
              HasSubstr("no position"));
}

TEST(RegionFileTest, DamagedLinesAreRefused) {
  for (const char* const text : {"image\ncircle(1,1)",
                                 "image\ncircle(1,1,0)",
                                 "image\ncircle(1,1,-2)",
                                 "image\ncircle(1,1,nan)",
                                 "image\ncircle(1,1,1",
                                 "image\ncircle(1,1,1) || box(1,1,1,1,0)",
                                 "image\ncircle(a,1,1)",
                                 "image\ncircle(1:2,1,1)",
                                 "image\nbox(1,1,1)",
                                 "image\nbox(1,1,1,1,x)",
                                 "image\npolygon(1,1,2,2)",
                                 "image\npolygon(1,1,2,2,3)",
                                 "fk5\ncircle(64.5,91,1)",
                                 "fk5\ncircle(244.5,-38,1)",
                                 "fk5\ncircle(4:61:00,38,1)",
                                 "fk5\ncircle(4:1:2:3,38,1)",
                                 "fk5\ncircle(4h18m,38h,1)",
                                 "image\n(1,1,1)",
                                 "image\n)",
                                 "hello"})
    EXPECT_THAT(refusal(text), HasSubstr("line ")) << text;
}

TEST(RegionFileTest, MoreRegionsThanAreMeasuredAreRefused) {
  std::string text = "image\n";
  for (std::size_t i = 0; i < kMostRegions; ++i) text += "circle(1,1,1);";
  EXPECT_EQ(parsed(text).size(), kMostRegions);
  EXPECT_THAT(refusal(text + "circle(1,1,1)"), HasSubstr("more than 1000"));
}

TEST(RegionFileTest, EmptyFileHoldsNoAreas) {
  EXPECT_TRUE(parsed("").empty());
  EXPECT_TRUE(parsed("# Region file format: DS9 version 4.1\nfk5\n").empty());
}

std::vector<AreaShape> oneOfEach() {
  std::vector<AreaShape> shapes{AreaShape::circle({10.25, -3.125}, 1.75),
                                AreaShape::ellipse({-20.0, 31.0}, 7.5, 2.25, 33.3),
                                AreaShape::rectangle({0.1, 0.2}, 12.0, 5.0, -21.7),
                                AreaShape::polygon({{0, 0}, {5.5, 1.25}, {3, 8}, {-1, 4}})};
  shapes[1].name = "knot B";
  return shapes;
}

class RegionRoundTrip : public ::testing::TestWithParam<RegionSystem> {};

TEST_P(RegionRoundTrip, EveryShapeComesBackFromItsFile) {
  const test::TempFolder folder;
  for (const RegionFrame& frame : {squareFrame(), squareFrame(headerAt(0.0001, -89.0)), oblongFrame()}) {
    const Status written = writeRegions(folder.file("a.reg"), oneOfEach(), frame, GetParam());
    ASSERT_TRUE(written.ok()) << written.text();
    std::vector<AreaShape> shapes;
    const Status read = readRegions(folder.file("a.reg"), frame, shapes);
    ASSERT_TRUE(read.ok()) << read.text();
    ASSERT_EQ(shapes.size(), 4U);
    // A right ascension of 360 degrees keeps 6e-14 of them, 2e-10 arcseconds.
    for (std::size_t k = 0; k < 4; ++k) expectSame(shapes[k], oneOfEach()[k], 1e-9);
  }
}

INSTANTIATE_TEST_SUITE_P(Systems, RegionRoundTrip,
                         ::testing::Values(RegionSystem::kSky, RegionSystem::kImage));

TEST(RegionFileTest, WrittenFrameIsThatOfTheMap) {
  std::string text;
  ASSERT_TRUE(formatRegions({}, squareFrame(), RegionSystem::kSky, text).ok());
  EXPECT_THAT(text, HasSubstr("\nfk5\n"));
  AMapHeader header = headerAt(64.5, 38.0);
  header.frame = UvxFrame::kIcrs;
  ASSERT_TRUE(formatRegions({}, squareFrame(header), RegionSystem::kSky, text).ok());
  EXPECT_THAT(text, HasSubstr("\nicrs\n"));
}

TEST(RegionFileTest, AreaBeyondTheHorizonIsNotWritten) {
  std::string text;
  EXPECT_THAT(
      formatRegions({AreaShape::circle({3e5, 0}, 1)}, squareFrame(), RegionSystem::kSky, text).message(),
      HasSubstr("area 1"));
}

TEST(RegionFileTest, NameThatWouldEndItsPropertyIsTamed) {
  AreaShape shape = AreaShape::circle({0, 0}, 1);
  shape.name = "a}\n-circle(1,1,1)";
  std::string text;
  ASSERT_TRUE(formatRegions({shape}, squareFrame(), RegionSystem::kImage, text).ok());
  EXPECT_EQ(onlyShape(text).name, "a  -circle(1,1,1)");
}

TEST(RegionFileTest, MissingFileIsNamed) {
  std::vector<AreaShape> shapes;
  EXPECT_EQ(readRegions("/nowhere/a.reg", squareFrame(), shapes).file(), "/nowhere/a.reg");
}

TEST(RegionFileTest, EmptyFileOnDiskHoldsNoAreas) {
  const test::TempFolder folder;
  test::writeFile(folder.file("a.reg"), "");
  std::vector<AreaShape> shapes;
  const Status status = readRegions(folder.file("a.reg"), squareFrame(), shapes);
  EXPECT_TRUE(status.ok()) << status.text();
}

}  // namespace
}  // namespace lumo
