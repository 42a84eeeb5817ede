// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QPainter>
#include <cmath>
#include <limits>

#include "Mouse.h"
#include "view/AColorsGraph.h"

namespace lumo {
namespace {

constexpr QRgb kWhite = 0xffffffffU;
constexpr QRgb kBlack = 0xff000000U;

/// A grey graph of cells of an arcsecond, its middle at (0, 0), values 0..1.
void setGreyMap(AColorsGraph& graph, const AMatrix<float>& map) {
  const double halfX = (map.columns() - 1) / 2.0;
  const double halfY = (map.rows() - 1) / 2.0;
  graph.setColourMap(ColourMap::kGrey);
  graph.SetParameters(map, {-halfX, halfX, -halfY, halfY, 0.0, 1.0});
}

PanelView skyView(const AColorsGraph& graph, double side) {
  PanelView view;
  view.setDirections(-1, 1);
  view.setSquare(true);
  view.setFull(graph.extent());
  view.setPanelSize(side, side);
  return view;
}

QImage drawn(const AColorsGraph& graph, const PanelView& view) {
  QImage image(static_cast<int>(view.panelWidth()), static_cast<int>(view.panelHeight()),
               QImage::Format_RGB32);
  image.fill(Qt::red);
  QPainter painter(&image);
  graph.draw({painter, view});
  painter.end();
  return image;
}

TEST(AColorsGraphTest, TheImageHasEastLeftAndNorthUp) {
  AColorsGraph graph;
  setGreyMap(graph, test::mapWithOnePixel(3, 4, 2, 3));  // the north-eastern corner
  const QImage sky = graph.image(-1, 1);
  ASSERT_EQ(sky.size(), QSize(4, 3));
  EXPECT_EQ(sky.pixel(0, 0), kWhite);
  EXPECT_EQ(sky.pixel(3, 2), kBlack);
  EXPECT_EQ(graph.image(1, -1).pixel(3, 2), kWhite);
}

TEST(AColorsGraphTest, PixelsAreDrawnWholeAtTheirPlace) {
  AColorsGraph graph;
  setGreyMap(graph, test::mapWithOnePixel(4, 4, 0, 0));  // the south-western corner
  const QImage image = drawn(graph, skyView(graph, 40.0));
  EXPECT_EQ(image.pixel(30, 30), kWhite);
  EXPECT_EQ(image.pixel(39, 39), kWhite);
  EXPECT_EQ(image.pixel(29, 35), kBlack);
  EXPECT_EQ(image.pixel(35, 29), kBlack);
}

TEST(AColorsGraphTest, ZoomedInOnlyTheVisiblePartIsDrawnAtTheRightPlace) {
  AColorsGraph graph;
  setGreyMap(graph, test::mapWithOnePixel(64, 64, 40, 20));
  PanelView view = skyView(graph, 64.0);
  view.zoomAbout({43.5, 23.5}, 8.0);  // the centre of that pixel: east left, north up
  const QImage image = drawn(graph, view);
  const QPointF middle = test::middleOfWhite(image, image.rect());
  EXPECT_NEAR(middle.x(), 43.5, 0.51);  // edges fall between screen pixels
  EXPECT_NEAR(middle.y(), 23.5, 0.51);
}

TEST(AColorsGraphTest, SmallerCopiesKeepTheMeanOfTheMap) {
  AMatrix<float> map(64, 64);
  for (std::size_t i = 0; i < map.size(); ++i) map.data()[i] = (i % 64 + i / 64) % 2 == 0 ? 0.0F : 1.0F;
  AColorsGraph graph;
  setGreyMap(graph, map);
  const QImage image = drawn(graph, skyView(graph, 16.0));
  // A chequerboard of black and white seen from afar is middle grey; 8 bits round by one or two.
  EXPECT_NEAR(qRed(image.pixel(8, 8)), 127.5, 2.5);
}

TEST(AColorsGraphTest, SmallerCopiesAreThoseOfTheWholePicture) {
  // 192 lines are reduced in three parts, 200 as a whole.
  for (const std::uint32_t side : {192U, 200U}) {
    AMatrix<float> map(side, side);
    for (std::size_t i = 0; i < map.size(); ++i)
      map.data()[i] = static_cast<float>((i * 7 + i / side * i / side) % 1000) / 999.0F;
    AColorsGraph graph;
    setGreyMap(graph, map);
    const int quarter = static_cast<int>(side) / 4;
    const QImage image = drawn(graph, skyView(graph, quarter));
    QImage whole = graph.image(-1, 1);
    for (const int part : {2, 4})
      whole = whole.scaled(static_cast<int>(side) / part, static_cast<int>(side) / part,
                           Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    ASSERT_EQ(image.size(), whole.size());
    for (int y = 0; y < quarter; ++y)
      for (int x = 0; x < quarter; ++x)
        ASSERT_EQ(image.pixel(x, y), whole.pixel(x, y)) << side << ": " << x << ", " << y;
  }
}

TEST(AColorsGraphTest, APixelWithoutAValueHasTheNanColour) {
  AMatrix<float> map(2, 2);
  map(1, 1) = std::numeric_limits<float>::quiet_NaN();
  AColorsGraph graph;
  setGreyMap(graph, map);
  EXPECT_EQ(graph.image(-1, 1).pixel(0, 0), graph.table().nanColour());
  EXPECT_EQ(graph.image(-1, 1).pixel(1, 1), kBlack);
}

TEST(AColorsGraphTest, LimitsComeFromTheRecordFirst) {
  AColorsGraph graph;
  graph.SetParameters(test::mapWithOnePixel(3, 3, 1, 1), {-1, 1, -1, 1, -0.5, 8.0});
  EXPECT_EQ(graph.scaling().limits(), (ValueLimits{-0.5, 8.0}));
  graph.setLimits(PercentLimits{100.0});
  EXPECT_EQ(graph.scaling().limits(), (ValueLimits{0.0, 1.0}));
  graph.setLimits(ValueLimits{2.0, 3.0});
  EXPECT_EQ(graph.scaling().limits(), (ValueLimits{2.0, 3.0}));
}

TEST(AColorsGraphTest, AnUnsetValueRangeStandsForTheMapsOwn) {
  AColorsGraph graph;
  TMinMax range;
  graph.SetParameters(test::mapWithOnePixel(3, 3, 1, 1), range);
  EXPECT_EQ(graph.scaling().limits(), (ValueLimits{0.0, 1.0}));
}

TEST(AColorsGraphTest, TheChoiceOfLimitsOutlivesANewMap) {
  AColorsGraph graph;
  graph.setLimits(PercentLimits{100.0});
  AMatrix<float> map(1, 2);
  map(0, 0) = -3.0F;
  graph.SetParameters(map, {0, 1, 0, 0, -9.0, 9.0});
  EXPECT_EQ(graph.scaling().limits(), (ValueLimits{-3.0, 0.0}));
}

TEST(AColorsGraphTest, TheScalingChangesTheColours) {
  AMatrix<float> map(1, 1);
  map(0, 0) = 0.25F;
  AColorsGraph graph;
  setGreyMap(graph, map);
  graph.setScaling(ScalingKind::kSquareRoot);
  EXPECT_NEAR(qRed(graph.image(-1, 1).pixel(0, 0)), 127.5, 1.0);
}

TEST(AColorsGraphTest, TheGraphKeepsItsOwnCopyOfTheMap) {
  AMatrix<float> map = test::mapWithOnePixel(2, 2, 0, 0);
  AColorsGraph graph;
  setGreyMap(graph, map);
  map(0, 0) = 0.0F;
  EXPECT_EQ(graph.map().map()(0, 0), 1.0F);
}

TEST(AColorsGraphTest, ASharedMapIsNotCopied) {
  const auto map = std::make_shared<AMatrix<float>>(2, 2);
  AColorsGraph graph;
  graph.SetParameters(map, {0, 1, 0, 1, 0.0, 1.0});
  EXPECT_EQ(&graph.map().map(), map.get());
}

TEST(AColorsGraphTest, AnEmptyMapDrawsNothing) {
  AColorsGraph graph;
  graph.SetParameters(AMatrix<float>(), {});
  EXPECT_EQ(drawn(graph, skyView(graph, 8.0)).pixel(4, 4), 0xffff0000U);
}

/// Covariance of x and y over the pixels of the beam in the lower left quarter, on a black map.
double beamSlant(double paDeg, int xDirection) {
  AColorsGraph graph;
  setGreyMap(graph, AMatrix<float>(100, 100));
  graph.setBeam(BeamEllipse{30.0, 6.0, paDeg});
  PanelView view = skyView(graph, 200.0);
  view.setDirections(xDirection, 1);
  const QImage image = drawn(graph, view);
  double n = 0.0, x = 0.0, y = 0.0, xy = 0.0;
  for (int row = 100; row < 200; ++row) {
    for (int column = 0; column < 100; ++column) {
      if (image.pixel(column, row) == kBlack) continue;
      n += 1.0;
      x += column;
      y += row;
      xy += static_cast<double>(column) * row;
    }
  }
  return n > 0.0 ? xy / n - x / n * y / n : 0.0;
}

TEST(AColorsGraphTest, TheBeamTurnsFromNorthThroughEast) {
  // With east left, 45 degrees points to the upper left: right goes with down, which is positive on screen.
  EXPECT_GT(beamSlant(45.0, -1), 50.0);
  EXPECT_LT(beamSlant(-45.0, -1), -50.0);
  EXPECT_LT(beamSlant(45.0, 1), -50.0);
  EXPECT_NEAR(beamSlant(0.0, -1), 0.0, 5.0);
}

TEST(AColorsGraphTest, TheReadOutHasTwoLines) {
  AColorsGraph graph;
  setGreyMap(graph, test::mapWithOnePixel(3, 3, 1, 1));
  graph.setUnit("Jy/beam");
  graph.setSkyCentre(SkyPosition{15.0, 0.0});
  EXPECT_EQ(graph.readOut(0.0, 0.0),
            "01:00:00.00 +00:00:00.0   1 Jy/beam\nx +0.0 as, y +0.0 as   row 1, column 1");
}

}  // namespace
}  // namespace lumo
