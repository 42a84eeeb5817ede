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
    window.SetAxis(std::move(frame));
    return test::shown(window, kSize);
  }
  /// Where a pixel of the panel is in the window.
  [[nodiscard]] QPointF at(double x, double y) const {
    return QPointF(window.panelRect().topLeft()) + QPointF(x, y);
  }

  AMultiAxisDlgWnd window;
};

TEST_F(AMultiAxisDlgWndTest, TheFrameTakesTheFontOfTheWindow) {
  (void)show();
  EXPECT_EQ(window.frame()->fontHeight(), QFontInfo(window.font()).pixelSize());
}

TEST_F(AMultiAxisDlgWndTest, TheWheelKeepsThePointUnderTheCursor) {
  (void)show();
  const QPointF cursor = at(150.0, 90.0);
  const PlotPoint before = window.view().toPlot({150.0, 90.0});
  const double width = window.view().visible().width();
  test::wheel(window, cursor, 120);
  const PlotPoint after = window.view().toPlot({150.0, 90.0});
  EXPECT_NEAR(after.x, before.x, 1e-9);
  EXPECT_NEAR(after.y, before.y, 1e-9);
  EXPECT_NEAR(window.view().visible().width(), width / 1.2, 1e-9);
}

TEST_F(AMultiAxisDlgWndTest, DraggingMovesThePictureWithTheCursor) {
  (void)show();
  const PlotPoint held = window.view().toPlot({150.0, 90.0});
  test::press(window, at(150.0, 90.0));
  test::move(window, at(180.0, 70.0), true);
  test::release(window, at(180.0, 70.0));
  test::move(window, at(10.0, 10.0), false);
  const PlotPoint there = window.view().toPixel(held);
  EXPECT_NEAR(there.x, 180.0, 1e-9);
  EXPECT_NEAR(there.y, 70.0, 1e-9);
}

TEST_F(AMultiAxisDlgWndTest, ADoubleClickShowsEverything) {
  (void)show();
  const PlotRect everything = window.view().visible();
  window.zoom(5.0);
  EXPECT_NE(window.view().visible(), everything);
  test::doubleClick(window, at(50.0, 50.0));
  EXPECT_EQ(window.view().visible(), everything);
}

TEST_F(AMultiAxisDlgWndTest, KeysPanAndZoom) {
  (void)show();
  const PlotRect everything = window.view().visible();
  test::key(window, Qt::Key_Plus);
  EXPECT_NEAR(window.view().visible().width(), everything.width() / 1.25, 1e-9);
  const PlotRect before = window.view().visible();
  test::key(window, Qt::Key_Right);
  EXPECT_GT(window.view().visible().xMin, before.xMin);
  test::key(window, Qt::Key_Up);
  EXPECT_GT(window.view().visible().yMin, before.yMin);
  test::key(window, Qt::Key_Left);
  test::key(window, Qt::Key_Down);
  test::key(window, Qt::Key_Minus);
  test::key(window, Qt::Key_Home);
  EXPECT_EQ(window.view().visible(), everything);
}

TEST_F(AMultiAxisDlgWndTest, OtherScalesShowEverythingAgain) {
  (void)show();
  window.zoom(3.0);
  window.setScales(AxisScale::kLinear, AxisScale::kLogarithmic);
  (void)test::shown(window, kSize);
  EXPECT_NEAR(window.view().visible().xMin, 1e8, 1.0);
  EXPECT_NEAR(window.view().visible().xMax, 1e10, 1.0);
  EXPECT_NEAR(window.view().visible().yMin, -1.0, 1e-9);
}

TEST_F(AMultiAxisDlgWndTest, TheReadOutFollowsTheCursor) {
  (void)show();
  const double middle = window.view().panelWidth() / 2.0;
  test::move(window, at(middle, 50.0), false);
  EXPECT_TRUE(window.readOutText().startsWith("Frequency [MHz]: ")) << window.readOutText().toStdString();
  EXPECT_TRUE(window.readOutText().endsWith("\na point"));
  test::move(window, at(-20.0, 50.0), false);
  EXPECT_EQ(window.readOutText().trimmed(), "");
}

TEST_F(AMultiAxisDlgWndTest, ItsContextMenuCopiesSavesAndFits) {
  (void)show();
  QMenu* const menu = test::contextMenu(window, at(50.0, 50.0));
  ASSERT_NE(menu, nullptr);
  ASSERT_EQ(menu->actions().size(), 3);
  QApplication::clipboard()->clear();
  menu->actions().first()->trigger();
  EXPECT_EQ(QApplication::clipboard()->image().width(), kSize.width());
  window.zoom(4.0);
  menu->actions().last()->trigger();
  EXPECT_TRUE(window.view().fitted());
  menu->close();
}

TEST_F(AMultiAxisDlgWndTest, PicturesAreWrittenInEveryForm) {
  const QImage screen = show();
  const test::TempFolder folder;
  const QWidget* const plot = window.childAt(window.panelRect().center());
  const QPoint middle = window.panelRect().center() - plot->pos();
  ASSERT_TRUE(window.exportPicture(folder.file("graph.png")).ok());
  const QImage png(QString::fromStdString(folder.file("graph.png")));
  EXPECT_EQ(png.size(), plot->size() * 2);
  EXPECT_EQ(png.pixelColor(middle * 2), QColor(Qt::red));
  ASSERT_TRUE(window.exportPicture(folder.file("graph.svg")).ok());
  EXPECT_TRUE(QSvgRenderer(QString::fromStdString(folder.file("graph.svg"))).isValid());
  ASSERT_TRUE(window.exportPicture(folder.file("graph.pdf")).ok());
  EXPECT_EQ(test::readFile(folder.file("graph.pdf")).substr(0, 5), "%PDF-");
  EXPECT_FALSE(window.exportPicture(folder.file("graph.txt")).ok());
}

TEST_F(AMultiAxisDlgWndTest, ItPrintsOnOnePage) {
  (void)show();
  const test::TempFolder folder;
  ASSERT_TRUE(APrintOut("Spectrum graph", window).printToPdf(folder.file("print.pdf")).ok());
  EXPECT_NE(test::readFile(folder.file("print.pdf")).find("/Count 1"), std::string::npos);
}

TEST_F(AMultiAxisDlgWndTest, AWindowWithoutAFrameTakesEveryInput) {
  EXPECT_EQ(test::shown(window, kSize).size(), kSize);
  test::wheel(window, window.panelRect().center(), 120);
  test::move(window, window.panelRect().center(), false);
  test::key(window, Qt::Key_Left);
  window.setScales(AxisScale::kLinear, AxisScale::kLinear);
  EXPECT_EQ(window.readOutText().trimmed(), "");
}

}  // namespace
}  // namespace lumo
