// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QFontInfo>
#include <QMenu>
#include <QSvgRenderer>

#include "CurveSample.h"
#include "Mouse.h"
#include "support/TempFolder.h"
#include "view/AMultiAxisDlgWnd.h"
#include "view/APrintOut.h"

namespace lumo {
namespace {

constexpr QSize kSize(640, 480);

class AMultiAxisDlgWndTest : public testing::Test {
 protected:
  QImage show() {
    auto frame = std::make_unique<AMSD2DAxisMulti>(AxisScale::kLogarithmic, AxisScale::kLogarithmic);
    frame->setNameOX("Frequency [%sHz]");
    frame->setNameOY("Flux Density [%sJy]");
    frame->addGraph(std::make_unique<test::CurveSample>(PlotRect{1e8, 1e10, 0.1, 10.0}, "a point"));
    window_.SetAxis(std::move(frame));
    return test::shown(window_, kSize);
  }
  /// Where a pixel of the panel is in the window.
  [[nodiscard]] QPointF at(double x, double y) const {
    return QPointF(window_.panelRect().topLeft()) + QPointF(x, y);
  }

  AMultiAxisDlgWnd window_;
};

TEST_F(AMultiAxisDlgWndTest, TheFrameTakesTheFontOfTheWindow) {
  (void)show();
  EXPECT_EQ(window_.frame()->fontHeight(), QFontInfo(window_.font()).pixelSize());
}

TEST_F(AMultiAxisDlgWndTest, TheWheelKeepsThePointUnderTheCursor) {
  (void)show();
  const QPointF cursor = at(150.0, 90.0);
  const PlotPoint before = window_.view().toPlot({150.0, 90.0});
  const double width = window_.view().visible().width();
  test::wheel(window_, cursor, 120);
  const PlotPoint after = window_.view().toPlot({150.0, 90.0});
  EXPECT_NEAR(after.x, before.x, 1e-9);
  EXPECT_NEAR(after.y, before.y, 1e-9);
  EXPECT_NEAR(window_.view().visible().width(), width / 1.2, 1e-9);
}

TEST_F(AMultiAxisDlgWndTest, DraggingMovesThePictureWithTheCursor) {
  (void)show();
  const PlotPoint held = window_.view().toPlot({150.0, 90.0});
  test::press(window_, at(150.0, 90.0));
  test::move(window_, at(180.0, 70.0), true);
  test::release(window_, at(180.0, 70.0));
  test::move(window_, at(10.0, 10.0), false);
  const PlotPoint there = window_.view().toPixel(held);
  EXPECT_NEAR(there.x, 180.0, 1e-9);
  EXPECT_NEAR(there.y, 70.0, 1e-9);
}

TEST_F(AMultiAxisDlgWndTest, ADoubleClickShowsEverything) {
  (void)show();
  const PlotRect everything = window_.view().visible();
  window_.zoom(5.0);
  EXPECT_NE(window_.view().visible(), everything);
  test::doubleClick(window_, at(50.0, 50.0));
  EXPECT_EQ(window_.view().visible(), everything);
}

TEST_F(AMultiAxisDlgWndTest, KeysPanAndZoom) {
  (void)show();
  const PlotRect everything = window_.view().visible();
  test::key(window_, Qt::Key_Plus);
  EXPECT_NEAR(window_.view().visible().width(), everything.width() / 1.25, 1e-9);
  const PlotRect before = window_.view().visible();
  test::key(window_, Qt::Key_Right);
  EXPECT_GT(window_.view().visible().xMin, before.xMin);
  test::key(window_, Qt::Key_Up);
  EXPECT_GT(window_.view().visible().yMin, before.yMin);
  test::key(window_, Qt::Key_Left);
  test::key(window_, Qt::Key_Down);
  test::key(window_, Qt::Key_Minus);
  test::key(window_, Qt::Key_Home);
  EXPECT_EQ(window_.view().visible(), everything);
}

TEST_F(AMultiAxisDlgWndTest, OtherScalesShowEverythingAgain) {
  (void)show();
  window_.zoom(3.0);
  window_.setScales(AxisScale::kLinear, AxisScale::kLogarithmic);
  (void)test::shown(window_, kSize);
  EXPECT_NEAR(window_.view().visible().xMin, 1e8, 1.0);
  EXPECT_NEAR(window_.view().visible().xMax, 1e10, 1.0);
  EXPECT_NEAR(window_.view().visible().yMin, -1.0, 1e-9);
}

TEST_F(AMultiAxisDlgWndTest, TheReadOutFollowsTheCursor) {
  (void)show();
  const double middle = window_.view().panelWidth() / 2.0;
  test::move(window_, at(middle, 50.0), false);
  EXPECT_TRUE(window_.readOutText().startsWith("Frequency [MHz]: ")) << window_.readOutText().toStdString();
  EXPECT_TRUE(window_.readOutText().endsWith("\na point"));
  test::move(window_, at(-20.0, 50.0), false);
  EXPECT_EQ(window_.readOutText().trimmed(), "");
}

TEST_F(AMultiAxisDlgWndTest, ItsContextMenuCopiesSavesAndFits) {
  (void)show();
  QMenu* const menu = test::contextMenu(window_, at(50.0, 50.0));
  ASSERT_NE(menu, nullptr);
  ASSERT_EQ(menu->actions().size(), 3);
  QApplication::clipboard()->clear();
  menu->actions().first()->trigger();
  EXPECT_EQ(QApplication::clipboard()->image().width(), kSize.width());
  window_.zoom(4.0);
  menu->actions().last()->trigger();
  EXPECT_TRUE(window_.view().fitted());
  menu->close();
}

TEST_F(AMultiAxisDlgWndTest, PicturesAreWrittenInEveryForm) {
  const QImage screen = show();
  const test::TempFolder folder;
  const QWidget* const plot = window_.childAt(window_.panelRect().center());
  const QPoint middle = window_.panelRect().center() - plot->pos();
  ASSERT_TRUE(window_.exportPicture(folder.file("graph.png")).ok());
  const QImage png(QString::fromStdString(folder.file("graph.png")));
  EXPECT_EQ(png.size(), plot->size() * 2);
  EXPECT_EQ(png.pixelColor(middle * 2), QColor(Qt::red));
  ASSERT_TRUE(window_.exportPicture(folder.file("graph.svg")).ok());
  EXPECT_TRUE(QSvgRenderer(QString::fromStdString(folder.file("graph.svg"))).isValid());
  ASSERT_TRUE(window_.exportPicture(folder.file("graph.pdf")).ok());
  EXPECT_EQ(test::readFile(folder.file("graph.pdf")).substr(0, 5), "%PDF-");
  EXPECT_FALSE(window_.exportPicture(folder.file("graph.txt")).ok());
}

TEST_F(AMultiAxisDlgWndTest, ItPrintsOnOnePage) {
  (void)show();
  const test::TempFolder folder;
  ASSERT_TRUE(APrintOut("Spectrum graph", window_).printToPdf(folder.file("print.pdf")).ok());
  EXPECT_NE(test::readFile(folder.file("print.pdf")).find("/Count 1"), std::string::npos);
}

TEST_F(AMultiAxisDlgWndTest, AWindowWithoutAFrameTakesEveryInput) {
  EXPECT_EQ(test::shown(window_, kSize).size(), kSize);
  test::wheel(window_, window_.panelRect().center(), 120);
  test::move(window_, window_.panelRect().center(), false);
  test::key(window_, Qt::Key_Left);
  window_.setScales(AxisScale::kLinear, AxisScale::kLinear);
  EXPECT_EQ(window_.readOutText().trimmed(), "");
}

}  // namespace
}  // namespace lumo
