// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <stdexcept>

#include "Mouse.h"
#include "view/PlotPanel.h"

namespace lumo {
namespace {

/// A map of 101 by 101 pixels whose cells have this many arcseconds.
std::unique_ptr<A2_3DAxis> axisOfCells(double cell) {
  auto axis = test::greyMapAxis(AMatrix<float>(101, 101));
  axis->colours()->SetParameters(AMatrix<float>(101, 101),
                                 {-50.0 * cell, 50.0 * cell, -50.0 * cell, 50.0 * cell, 0.0, 0.002});
  axis->colours()->setUnit("Jy/beam");
  return axis;
}

QVector<QString> tickNumbers(const QCPAxis& axis) {
  QVector<double> ticks;
  QVector<QString> labels;
  axis.ticker()->generate(axis.range(), QLocale::c(), 'g', 6, ticks, nullptr, &labels);
  return labels;
}

TEST(PlotPanelTest, TheAxesSayWhereTheGraphsAreDrawn) {
  const auto axis = axisOfCells(1.0);
  PlotPanel panel(nullptr);
  panel.setAxis(axis.get());
  (void)test::shown(panel, {420, 360});
  panel.view().zoomAbout({50.0, 70.0}, 2.5);
  panel.replot();
  const QRect rect = panel.panelRect();
  for (const PlotPoint point : {PlotPoint{3.0, 8.0}, PlotPoint{-20.0, 14.0}}) {
    const PlotPoint pixel = panel.view().toPixel(point);
    // Rounding of numbers of a few hundred.
    EXPECT_NEAR(panel.xAxis->coordToPixel(point.x), rect.left() + pixel.x, 1e-9);
    EXPECT_NEAR(panel.yAxis->coordToPixel(point.y), rect.top() + pixel.y, 1e-9);
  }
}

TEST(PlotPanelTest, TitlesAndTickNumbersFollowTheScale) {
  const auto axis = axisOfCells(1e-4);
  PlotPanel panel(nullptr);
  panel.setAxis(axis.get());
  (void)test::shown(panel, {420, 360});
  EXPECT_EQ(panel.xAxis->label(), "Right ascent [mas]");
  EXPECT_EQ(panel.yAxis->label(), "Declination [mas]");
  // The map reaches from -5.05 to 5.05 milliarcseconds.
  EXPECT_TRUE(tickNumbers(*panel.yAxis).contains("4")) << tickNumbers(*panel.yAxis).join(' ').toStdString();
}

TEST(PlotPanelTest, ZoomingInChangesThePrefix) {
  const auto axis = axisOfCells(1.0);
  PlotPanel panel(nullptr);
  panel.setAxis(axis.get());
  (void)test::shown(panel, {420, 360});
  EXPECT_EQ(panel.xAxis->label(), "Right ascent [as]");
  panel.view().zoomAbout({panel.view().panelWidth() / 2, panel.view().panelHeight() / 2}, 1000.0);
  panel.replot();
  EXPECT_EQ(panel.xAxis->label(), "Right ascent [mas]");
}

TEST(PlotPanelTest, TheColourScaleHasUnitAndPrefix) {
  const auto axis = axisOfCells(1.0);
  PlotPanel panel(nullptr);
  panel.setAxis(axis.get());
  const auto* scale = qobject_cast<QCPColorScale*>(panel.plotLayout()->element(0, 1));
  ASSERT_NE(scale, nullptr);
  EXPECT_TRUE(scale->visible());
  EXPECT_EQ(scale->label(), "[mJy/beam]");
  EXPECT_TRUE(tickNumbers(*scale->axis()).contains("1.5"));
}

TEST(PlotPanelTest, OneUnitIsAsLongOnBothAxes) {
  const auto axis = axisOfCells(1.0);
  PlotPanel panel(nullptr);
  panel.setAxis(axis.get());
  (void)test::shown(panel, {700, 300});
  const double x = panel.xAxis->coordToPixel(0.0) - panel.xAxis->coordToPixel(10.0);
  const double y = panel.yAxis->coordToPixel(0.0) - panel.yAxis->coordToPixel(10.0);
  EXPECT_GT(x, 0.0);
  EXPECT_NEAR(x, y, 1e-9);
}

TEST(PlotPanelTest, WithoutAnAxisItIsEmptyButAlive) {
  PlotPanel panel(nullptr);
  panel.setAxis(nullptr);
  EXPECT_FALSE(test::shown(panel, {200, 150}).isNull());
  EXPECT_EQ(panel.xAxis->label(), "");
}

/// Counts how it is drawn; what a kept picture does meanwhile can be given.
class CountingGraph : public AGraph {
 public:
  [[nodiscard]] PlotRect extent() const override { return {-1.0, 1.0, -1.0, 1.0}; }
  void draw(const GraphPainter& /*target*/) const override { ++drawn; }
  void drawToKeep(const GraphPainter& /*target*/) const override {
    ++kept;
    if (whileKept) whileKept();
  }

  mutable int drawn = 0;
  mutable int kept = 0;
  std::function<void()> whileKept;
};

class PlotPanelKeepingTest : public testing::Test {
 protected:
  PlotPanelKeepingTest()
      : axis_(-1, 1), graph_(axis_.addGraph(std::make_unique<CountingGraph>())), panel_(nullptr) {
    panel_.setAxis(&axis_);
    (void)test::shown(panel_, {420, 360});
    QCoreApplication::processEvents();
    graph_.drawn = 0;
    image_ = QImage(420, 360, QImage::Format_RGB32);
  }

  A2_3DAxis axis_;
  CountingGraph& graph_;
  PlotPanel panel_;
  QImage image_;
};

TEST_F(PlotPanelKeepingTest, WhileAPictureIsKeptTheScreenWaitsAndIsDrawnAfterwards) {
  graph_.whileKept = [this] {
    panel_.refresh();
    panel_.redraw();
    QCoreApplication::processEvents();
    EXPECT_EQ(graph_.drawn, 0);
  };
  panel_.drawOn(image_);
  EXPECT_EQ(graph_.kept, 1);
  QCoreApplication::processEvents();
  EXPECT_EQ(graph_.drawn, 1);
  EXPECT_EQ(graph_.kept, 1);
}

TEST_F(PlotPanelKeepingTest, ADrawingOfTheScreenThatWasAskedForBeforeIsNoKeptOne) {
  panel_.refresh();
  graph_.whileKept = [] { QCoreApplication::processEvents(); };
  panel_.drawOn(image_);
  QCoreApplication::processEvents();
  EXPECT_EQ(graph_.kept, 1);
  EXPECT_EQ(graph_.drawn, 1);
}

TEST_F(PlotPanelKeepingTest, AfterAFailureTheScreenIsDrawnAsBefore) {
  graph_.whileKept = [] { throw std::runtime_error("no memory for it"); };
  EXPECT_THROW(panel_.drawOn(image_), std::runtime_error);
  panel_.replot();
  EXPECT_EQ(graph_.drawn, 1);
  EXPECT_EQ(graph_.kept, 1);
}

}  // namespace
}  // namespace lumo
