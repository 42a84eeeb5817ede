// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "analysis/RegionFile.h"
#include "core/Units.h"
#include "io/FitsSample.h"
#include "io/MapProduct.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

/// An image of another program: how its pixels run, and how long they are in arcseconds along right ascension
/// and declination.
struct Order {
  const char* name;
  int alongRa;
  int alongDec;
  bool raFirst;
  double raCell = 0.5;
  double decCell = 0.5;
};

constexpr int kAcross = 24;  // pixels along a line of the file
constexpr int kLines = 16;

using FilePixel = std::pair<int, int>;  // from 1, along a line and the line
using FilePixels = std::set<FilePixel>;

class RegionPixelOrderTest : public testing::TestWithParam<Order> {
 protected:
  /// Writes an image whose pixel (i, j) of the file has the value 100 j + i, and reads it.
  void SetUp() override {
    const Order& order = GetParam();
    const std::string ra = std::to_string(order.raFirst ? 1 : 2);
    const std::string dec = std::to_string(order.raFirst ? 2 : 1);
    const auto step = [](int sign, double arcsec) { return std::to_string(sign * arcsec / 3600.0 * 1e6); };
    test::FitsSample file(-32, {kAcross, kLines});
    file.add("CTYPE" + ra + "  = 'RA---SIN'").add("CTYPE" + dec + "  = 'DEC--SIN'");
    file.add("CRVAL" + ra + "  = 187.5").add("CRVAL" + dec + "  = 12.25");
    file.add("CRPIX1  = 11").add("CRPIX2  = 7").add("RADESYS = 'ICRS'");
    file.add("CDELT" + ra + "  = " + step(order.alongRa, order.raCell) + "E-6");
    file.add("CDELT" + dec + "  = " + step(order.alongDec, order.decCell) + "E-6");
    std::vector<float> values;
    for (int j = 1; j <= kLines; ++j)
      for (int i = 1; i <= kAcross; ++i) values.push_back(static_cast<float>(100 * j + i));
    file.pixels(values);
    test::writeFile(folder_.file("foreign.fits"), file.bytes());
    const Status status = readMap(folder_.file("foreign.fits"), map_);
    ASSERT_TRUE(status.ok()) << status.text();
  }

  [[nodiscard]] RegionFrame frame() const {
    return {map_.header, map_.range, map_.matrix->rows(), map_.matrix->columns()};
  }
  [[nodiscard]] std::vector<AreaShape> shapesOf(const std::string& text) const {
    std::vector<AreaShape> shapes;
    const Status status = parseRegions(text, frame(), shapes);
    EXPECT_TRUE(status.ok()) << status.text();
    return shapes;
  }
  /// The pixels of the file that an area marks, told by their values.
  [[nodiscard]] FilePixels marked(const AreaShape& shape) const {
    ABitMatrix mask(map_.matrix->rows(), map_.matrix->columns());
    fillMask(shape, mask, map_.range);
    FilePixels pixels;
    for (std::uint32_t row = 0; row < mask.rows(); ++row) {
      for (std::uint32_t column = 0; column < mask.columns(); ++column) {
        const int value = static_cast<int>((*map_.matrix)(row, column));
        if (mask(row, column) != 0) pixels.insert({value % 100, value / 100});
      }
    }
    return pixels;
  }
  [[nodiscard]] FilePixels markedByRegion(const std::string& text) const {
    const std::vector<AreaShape> shapes = shapesOf(text);
    return shapes.size() == 1 ? marked(shapes.front()) : FilePixels();
  }
  /// The pixels whose centres, in pixels from (x, y) along axes turned by `angle` degrees from the file's
  /// lines, fulfil the condition.
  static FilePixels inside(double x, double y, double angle, const std::function<bool(double, double)>& has) {
    const double c = std::cos(angle * kRadianPerDegree);
    const double s = std::sin(angle * kRadianPerDegree);
    FilePixels pixels;
    for (int j = 1; j <= kLines; ++j)
      for (int i = 1; i <= kAcross; ++i)
        if (has((i - x) * c + (j - y) * s, (j - y) * c - (i - x) * s)) pixels.insert({i, j});
    return pixels;
  }

  test::TempFolder folder_;
  LoadedMap map_;
};

TEST_P(RegionPixelOrderTest, AnImagePixelIsTheOneOfThatNumberInTheFile) {
  for (const auto& [i, j] : {FilePixel{1, 1}, {kAcross, 1}, {1, kLines}, {7, 3}, {11, 7}})
    EXPECT_EQ(markedByRegion("image\ncircle(" + std::to_string(i) + "," + std::to_string(j) + ",0.4)"),
              (FilePixels{{i, j}}));
}

TEST_P(RegionPixelOrderTest, TurnedEllipseMarksThePixelsOfItsGeometry) {
  const FilePixels expected = inside(
      12.3, 8.2, 33.0, [](double x, double y) { return x * x / (6.2 * 6.2) + y * y / (2.6 * 2.6) <= 1.0; });
  ASSERT_GT(expected.size(), 40U);
  EXPECT_EQ(markedByRegion("image\r\nellipse(12.3,8.2,6.2,2.6,33)\r\n"), expected);
}

TEST_P(RegionPixelOrderTest, TurnedBoxMarksThePixelsOfItsGeometry) {
  const FilePixels expected =
      inside(10.7, 9.1, -52.0, [](double x, double y) { return std::abs(x) <= 4.55 && std::abs(y) <= 1.8; });
  ASSERT_GT(expected.size(), 25U);
  EXPECT_EQ(markedByRegion("image\nbox(10.7,9.1,9.1,3.6,-52)"), expected);
}

TEST_P(RegionPixelOrderTest, PolygonMarksThePixelsOfItsGeometry) {
  // The triangle below the line from (2.5, 2.5) to (14.5, 12.5), which passes between the pixels' centres.
  const FilePixels expected = inside(0.0, 0.0, 0.0, [](double x, double y) {
    return x < 14.5 && y > 2.5 && (y - 2.5) * 12.0 < (x - 2.5) * 10.0;
  });
  ASSERT_GT(expected.size(), 40U);
  EXPECT_EQ(markedByRegion("image\npolygon(2.5,2.5, 14.5,2.5, 14.5,12.5)"), expected);
}

TEST_P(RegionPixelOrderTest, TheSamePixelsAreMarkedAfterARoundTripThroughAFile) {
  const std::vector<AreaShape> shapes{AreaShape::circle({0.6, -0.3}, 1.7),
                                      AreaShape::ellipse({-0.6, 0.9}, 2.4, 1.1, 27.0),
                                      AreaShape::rectangle({0.3, 0.4}, 3.1, 1.3, -61.0),
                                      AreaShape::polygon({{-1.9, -1.2}, {1.6, -0.7}, {0.3, 1.9}})};
  for (const RegionSystem system : {RegionSystem::kImage, RegionSystem::kSky}) {
    ASSERT_TRUE(writeRegions(folder_.file("a.reg"), shapes, frame(), system).ok());
    std::vector<AreaShape> back;
    ASSERT_TRUE(readRegions(folder_.file("a.reg"), frame(), back).ok());
    ASSERT_EQ(back.size(), shapes.size());
    for (std::size_t k = 0; k < shapes.size(); ++k) {
      EXPECT_EQ(marked(back[k]), marked(shapes[k])) << k;
      EXPECT_GT(marked(back[k]).size(), 12U) << k;
    }
  }
}

TEST_P(RegionPixelOrderTest, ASkyRegionMarksTheSameSkyInEveryImage) {
  // 1.8 arcseconds north-west of the middle, where the long axis of this ellipse points, but not north-east.
  const std::string place = "(187.5,12.25,";
  for (const char* const system : {"fk5\n", "icrs\n"}) {
    const AreaShape shape = shapesOf(system + ("ellipse" + place) + "2\",0.5\",45)").front();
    const double reach = 1.8 / std::sqrt(2.0);
    EXPECT_TRUE(shape.contains({-reach, reach}));
    EXPECT_FALSE(shape.contains({reach, reach}));
  }
  const AreaShape east = shapesOf("icrs\ncircle(187.5003,12.25,1\")").front();
  EXPECT_NEAR(east.centre.x, 0.0003 * 3600.0 * std::cos(12.25 * kRadianPerDegree), 1e-8);
}

INSTANTIATE_TEST_SUITE_P(
    Orders, RegionPixelOrderTest,
    testing::Values(Order{"West", -1, 1, true}, Order{"East", 1, 1, true}, Order{"EastAndSouth", 1, -1, true},
                    Order{"WestAndSouth", -1, -1, true}, Order{"DeclinationFirst", 1, 1, false},
                    Order{"DeclinationFirstWest", -1, 1, false}, Order{"Oblong", -1, 1, true, 0.5, 0.25},
                    Order{"OblongEast", 1, 1, true, 0.5, 0.25},
                    Order{"OblongDeclinationFirst", -1, 1, false, 0.25, 0.5}),
    [](const auto& order) { return std::string(order.param.name); });

TEST(PixelOrderTest, AMapOfThisProgramRunsWestAndNorthWhateverItWasReadFrom) {
  const test::TempFolder folder;
  AMapHeader header;
  header.pixelOrder = {false, true, false};
  TMinMax range;
  range.xMin = range.yMin = 0.0;
  range.xMax = 2.0;
  range.yMax = 1.0;
  ASSERT_TRUE(writeMap(folder.file("own.exm"), header, range, AMatrix<float>(2, 3)).ok());
  LoadedMap map;
  ASSERT_TRUE(readMap(folder.file("own.exm"), map).ok());
  EXPECT_EQ(map.header.pixelOrder, PixelOrder());
}

}  // namespace
}  // namespace lumo
