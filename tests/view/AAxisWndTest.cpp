// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QPainter>
#include <QSvgRenderer>
#include <limits>

#include "Mouse.h"
#include "support/TempFolder.h"
#include "view/AAxisWnd.h"

namespace lumo {
namespace {

constexpr QSize kSize(460, 420);

class AAxisWndTest : public testing::Test {
 protected:
  /// Shows a map of zeros with a one at (row, column).
  QImage show(std::uint32_t rows, std::uint32_t columns, std::uint32_t row, std::uint32_t column) {
    window_.SetAxis(test::greyMapAxis(test::mapWithOnePixel(rows, columns, row, column)));
    return test::shown(window_, kSize);
  }
  /// Where a plot position is in the window.
  [[nodiscard]] QPointF at(double x, double y) const {
    const PlotPoint pixel = window_.view().toPixel({x, y});
    return QPointF(window_.panelRect().topLeft()) + QPointF(pixel.x, pixel.y);
  }

  /// Where the plot without buttons and read-out begins in the window.
  [[nodiscard]] QPoint plotCorner() const { return window_.childAt(window_.panelRect().center())->pos(); }

  AAxisWnd window_;
};

TEST_F(AAxisWndTest, AnEasternPixelAppearsOnTheLeft) {
  const QImage image = show(8, 8, 3, 7);
  const QPointF middle = test::middleOfWhite(image, window_.panelRect());
  // Column 7 is 3.5 cells east of the middle, row 3 half a cell south of it; whole screen pixels round by
  // one.
  const QRectF panel = window_.panelRect();
  const double cell = std::min(panel.width(), panel.height()) / 8.0;
  EXPECT_NEAR(middle.x(), panel.center().x() - 3.5 * cell, 1.0);
  EXPECT_NEAR(middle.y(), panel.center().y() + 0.5 * cell, 1.0);
}

TEST_F(AAxisWndTest, ANorthernPixelAppearsAtTheTop) {
  const QImage image = show(8, 8, 7, 2);
  const QPointF middle = test::middleOfWhite(image, window_.panelRect());
  const QRectF panel = window_.panelRect();
  const double cell = std::min(panel.width(), panel.height()) / 8.0;
  EXPECT_NEAR(middle.x(), panel.center().x() + 1.5 * cell, 1.0);
  EXPECT_NEAR(middle.y(), panel.center().y() - 3.5 * cell, 1.0);
}

TEST_F(AAxisWndTest, TheReadOutFollowsTheCursor) {
  (void)show(8, 8, 5, 6);
  window_.axis()->colours()->setUnit("Jy/beam");
  test::move(window_, at(2.5, 1.5), false);  // the centre of row 5, column 6
  EXPECT_NE(window_.readOutText().indexOf("row 5, column 6"), -1) << window_.readOutText().toStdString();
  EXPECT_NE(window_.readOutText().indexOf("1 Jy/beam"), -1) << window_.readOutText().toStdString();
}

TEST_F(AAxisWndTest, TheReadOutIsEmptyOffThePanel) {
  (void)show(8, 8, 5, 6);
  test::move(window_, at(0.0, 0.0), false);
  test::move(window_, window_.panelRect().topLeft() - QPointF(5.0, -20.0), false);
  EXPECT_EQ(window_.readOutText().trimmed(), "");
}

TEST_F(AAxisWndTest, TheWheelKeepsThePointUnderTheCursor) {
  (void)show(64, 64, 0, 0);
  const QPointF cursor = at(-12.0, 20.0).toPoint();
  const QPointF inPanel = cursor - window_.panelRect().topLeft();
  const PlotPoint before = window_.view().toPlot({inPanel.x(), inPanel.y()});
  const double scale = window_.view().pixelsPerX();
  test::wheel(window_, cursor, 120);
  const PlotPoint after = window_.view().toPlot({inPanel.x(), inPanel.y()});
  EXPECT_NEAR(after.x, before.x, 1e-9);
  EXPECT_NEAR(after.y, before.y, 1e-9);
  EXPECT_NEAR(window_.view().pixelsPerX(), 1.2 * scale, 1e-9);
}

TEST_F(AAxisWndTest, DraggingMovesThePictureWithTheCursor) {
  (void)show(8, 8, 4, 4);
  const QPointF start = window_.panelRect().center();
  const PlotPoint held = window_.view().toPlot({50.0, 50.0});
  test::press(window_, start);
  test::move(window_, start + QPointF(30.0, -20.0), true);
  test::release(window_, start + QPointF(30.0, -20.0));
  const PlotPoint there = window_.view().toPixel(held);
  EXPECT_NEAR(there.x, 80.0, 1e-9);
  EXPECT_NEAR(there.y, 30.0, 1e-9);
}

TEST_F(AAxisWndTest, MovingWithoutTheButtonDoesNotDrag) {
  (void)show(8, 8, 4, 4);
  const QPointF start = window_.panelRect().center();
  test::press(window_, start);
  test::release(window_, start);
  test::move(window_, start + QPointF(30.0, 0.0), false);
  EXPECT_TRUE(window_.view().toPlot({0.0, 0.0}).x > 0.0);
  EXPECT_DOUBLE_EQ(window_.view().visible().xMin, -window_.view().visible().xMax);
}

TEST_F(AAxisWndTest, ADoubleClickShowsEverything) {
  (void)show(8, 8, 4, 4);
  const PlotRect everything = window_.view().visible();
  window_.zoom(5.0);
  test::doubleClick(window_, window_.panelRect().center());
  EXPECT_EQ(window_.view().visible(), everything);
}

TEST_F(AAxisWndTest, KeysPanAndZoom) {
  (void)show(8, 8, 4, 4);
  const PlotRect everything = window_.view().visible();
  test::key(window_, Qt::Key_Plus);
  EXPECT_NEAR(window_.view().visible().width(), everything.width() / 1.25, 1e-9);
  const PlotRect before = window_.view().visible();
  test::key(window_, Qt::Key_Left);  // looks to the east
  EXPECT_GT(window_.view().visible().xMin, before.xMin);
  test::key(window_, Qt::Key_Up);  // looks to the north
  EXPECT_GT(window_.view().visible().yMin, before.yMin);
  test::key(window_, Qt::Key_Home);
  EXPECT_EQ(window_.view().visible(), everything);
}

TEST_F(AAxisWndTest, PixelsWithoutAValueShowTheNanColour) {
  AMatrix<float> map(4, 4);
  map(0, 0) = std::numeric_limits<float>::quiet_NaN();
  window_.SetAxis(test::greyMapAxis(map));
  const QImage image = test::shown(window_, kSize);
  EXPECT_EQ(image.pixel(at(-1.5, -1.5).toPoint()), window_.axis()->colours()->table().nanColour());
  EXPECT_EQ(image.pixel(at(1.5, 1.5).toPoint()), 0xff000000U);
}

TEST_F(AAxisWndTest, NewColoursShowAfterARefresh) {
  (void)show(8, 8, 4, 4);
  window_.axis()->colours()->setColourMap(ColourMap::kInvertedGrey);
  window_.refresh();
  EXPECT_EQ(test::shown(window_, kSize).pixel(at(-3.5, -3.5).toPoint()), 0xffffffffU);
}

TEST_F(AAxisWndTest, CopyingPutsThePlotOnTheClipboard) {
  (void)show(8, 8, 4, 7);
  QApplication::clipboard()->clear();
  test::key(window_, Qt::Key_C, Qt::ControlModifier);
  const QImage copy = QApplication::clipboard()->image();
  ASSERT_FALSE(copy.isNull());
  EXPECT_EQ(copy.width(), kSize.width());
  EXPECT_EQ(copy.pixel(at(3.5, 0.5).toPoint() - plotCorner()), 0xffffffffU);
}

TEST_F(AAxisWndTest, ThePictureHasTheScaleAskedFor) {
  (void)show(8, 8, 4, 4);
  EXPECT_EQ(window_.picture(2.0).width(), 2 * kSize.width());
}

TEST_F(AAxisWndTest, ItsContextMenuCopiesSavesAndFits) {
  (void)show(8, 8, 4, 4);
  QMenu* menu = test::contextMenu(window_, window_.panelRect().center());
  ASSERT_NE(menu, nullptr);
  EXPECT_EQ(menu->actions().size(), 3);
  EXPECT_EQ(menu->actions().first()->text(), "Copy to clipboard");
  menu->close();
}

TEST_F(AAxisWndTest, APngHasTwiceTheScreensPixels) {
  (void)show(8, 8, 3, 7);
  const test::TempFolder folder;
  ASSERT_TRUE(window_.exportPicture(folder.file("map.png")).ok());
  const QImage image(QString::fromStdString(folder.file("map.png")));
  EXPECT_EQ(image.width(), 2 * kSize.width());
  EXPECT_EQ(image.pixel((at(3.5, -0.5).toPoint() - plotCorner()) * 2), 0xffffffffU);
  EXPECT_EQ(image.pixel((at(-3.5, -0.5).toPoint() - plotCorner()) * 2), 0xff000000U);
}

TEST_F(AAxisWndTest, AnSvgShowsWhatTheWindowShows) {
  (void)show(64, 64, 40, 20);
  const QPointF bright = at(-11.5, 8.5);
  test::wheel(window_, bright.toPoint(), 1200);
  QApplication::processEvents();
  const test::TempFolder folder;
  ASSERT_TRUE(window_.exportPicture(folder.file("map.svg")).ok());
  QSvgRenderer renderer(QString::fromStdString(folder.file("map.svg")));
  ASSERT_TRUE(renderer.isValid());
  const QWidget* panel = window_.childAt(window_.panelRect().center());
  EXPECT_EQ(renderer.viewBox().size(), panel->size());
  QImage image(panel->size(), QImage::Format_RGB32);
  image.fill(Qt::red);
  QPainter painter(&image);
  renderer.render(&painter);
  painter.end();
  EXPECT_EQ(image.pixel(at(-11.5, 8.5).toPoint() - plotCorner()), 0xffffffffU);
  EXPECT_EQ(image.pixel(at(-10.5, 8.5).toPoint() - plotCorner()), 0xff000000U);
}

TEST_F(AAxisWndTest, APdfIsOnePageOfThePlotsSize) {
  (void)show(8, 8, 3, 7);
  const test::TempFolder folder;
  ASSERT_TRUE(window_.exportPicture(folder.file("map.PDF")).ok());
  const std::string pdf = test::readFile(folder.file("map.PDF"));
  EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
  EXPECT_NE(pdf.find("%%EOF"), std::string::npos);
  // 460 logical pixels of 1/96 inch are 345 points.
  EXPECT_NE(pdf.find("/MediaBox [0 0 345"), std::string::npos);
}

TEST_F(AAxisWndTest, AWindowWithoutAnAxisTakesEveryInput) {
  const QImage image = test::shown(window_, kSize);
  EXPECT_EQ(image.size(), kSize);
  test::wheel(window_, window_.panelRect().center(), 120);
  test::move(window_, window_.panelRect().center(), false);
  test::key(window_, Qt::Key_Left);
  EXPECT_EQ(window_.readOutText().trimmed(), "");
}

TEST_F(AAxisWndTest, AnotherAxisReplacesTheFirst) {
  (void)show(8, 8, 4, 4);
  window_.zoom(3.0);
  window_.SetAxis(test::greyMapAxis(AMatrix<float>(100, 100)));
  (void)test::shown(window_, kSize);
  EXPECT_TRUE(window_.view().fitted());
  // Rounding of a hundred divided and multiplied by the panel's size.
  EXPECT_NEAR(std::min(window_.view().visible().width(), window_.view().visible().height()), 100.0, 1e-9);
  window_.SetAxis(nullptr);
  EXPECT_FALSE(test::shown(window_, kSize).isNull());
}

}  // namespace
}  // namespace lumo
