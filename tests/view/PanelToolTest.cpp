// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <string>
#include <vector>

#include "Mouse.h"
#include "view/AAxisWnd.h"
#include "view/PanelTool.h"

namespace lumo {
namespace {

/// Notes what it is given and takes it or not.
class Recorder final : public PanelTool {
 public:
  bool press(const PanelPointer& pointer) override { return note("press", pointer); }
  bool move(const PanelPointer& pointer) override { return note("move", pointer); }
  void release(const PanelPointer& pointer) override { (void)note("release", pointer); }
  bool doubleClick(const PanelPointer& pointer) override { return note("double", pointer); }
  bool key(const QKeyEvent& event) override {
    heard.push_back("key " + std::to_string(event.key()));
    return takes;
  }

  bool takes = true;
  std::vector<std::string> heard;
  PanelPointer last;

 private:
  bool note(const char* what, const PanelPointer& pointer) {
    heard.emplace_back(what);
    last = pointer;
    return takes;
  }
};

class PanelToolTest : public testing::Test {
 protected:
  PanelToolTest() {
    window_.SetAxis(test::greyMapAxis(test::mapWithOnePixel(64, 64, 10, 20)));
    (void)test::shown(window_, {460, 420});
    window_.setTool(&tool_);
  }
  [[nodiscard]] QPointF at(double x, double y) const {
    const PlotPoint pixel = window_.view().toPixel({x, y});
    return QPointF(window_.panelRect().topLeft()) + QPointF(pixel.x, pixel.y);
  }
  void drag(const QPointF& from, const QPointF& by) {
    test::press(window_, from);
    test::move(window_, from + by, true);
    test::release(window_, from + by);
  }
  void middle(QEvent::Type type, const QPointF& where, Qt::MouseButton button) {
    QWidget& panel = *window_.childAt(window_.panelRect().center());
    QMouseEvent event(type, panel.mapFrom(&window_, where), window_.mapToGlobal(where), button,
                      Qt::MiddleButton, Qt::NoModifier);
    QApplication::sendEvent(&panel, &event);
  }

  AAxisWnd window_;
  Recorder tool_;
};

TEST_F(PanelToolTest, WhatTheToolTakesLeavesTheViewAlone) {
  const PlotRect before = window_.view().visible();
  drag(at(0.0, 0.0), {30.0, 20.0});
  test::doubleClick(window_, at(0.0, 0.0));
  EXPECT_EQ(tool_.heard, (std::vector<std::string>{"press", "move", "release", "double"}));
  EXPECT_EQ(window_.view().visible(), before);
}

TEST_F(PanelToolTest, WhatTheToolLeavesMovesTheView) {
  tool_.takes = false;
  const QPointF before = at(0.0, 0.0);
  drag(before, {30.0, 20.0});
  EXPECT_NEAR(at(0.0, 0.0).x(), before.x() + 30.0, 1e-9);
  test::doubleClick(window_, before);
  EXPECT_TRUE(window_.view().fitted());
}

TEST_F(PanelToolTest, PointersAreInPanelPixelsAndInThePlotsValues) {
  test::move(window_, at(-12.5, 7.25), false);
  EXPECT_NEAR(tool_.last.point.x, -12.5, 1e-9);
  EXPECT_NEAR(tool_.last.point.y, 7.25, 1e-9);
  EXPECT_NEAR(tool_.last.pixel.x, window_.view().toPixel({-12.5, 7.25}).x, 1e-9);
}

TEST_F(PanelToolTest, TheReadOutFollowsTheCursorUnderATool) {
  test::move(window_, at(-11.5, -21.5), false);
  EXPECT_NE(window_.readOutText().indexOf("row 10, column 20"), -1) << window_.readOutText().toStdString();
}

TEST_F(PanelToolTest, PressesBesideThePanelAreNotTheTools) {
  test::press(window_, window_.panelRect().bottomLeft() + QPointF(30.0, 12.0));
  EXPECT_TRUE(tool_.heard.empty());
}

TEST_F(PanelToolTest, KeysComeToTheToolFirst) {
  const PlotRect before = window_.view().visible();
  test::key(window_, Qt::Key_Plus);
  EXPECT_EQ(tool_.heard, std::vector<std::string>{"key " + std::to_string(Qt::Key_Plus)});
  EXPECT_EQ(window_.view().visible(), before);
  tool_.takes = false;
  test::key(window_, Qt::Key_Plus);
  EXPECT_LT(window_.view().visible().width(), before.width());
}

TEST_F(PanelToolTest, TheMiddleButtonMovesTheViewPastTheTool) {
  const QPointF before = at(0.0, 0.0);
  middle(QEvent::MouseButtonPress, before, Qt::MiddleButton);
  middle(QEvent::MouseMove, before + QPointF(-20.0, 15.0), Qt::NoButton);
  middle(QEvent::MouseButtonRelease, before + QPointF(-20.0, 15.0), Qt::MiddleButton);
  EXPECT_NEAR(at(0.0, 0.0).x(), before.x() - 20.0, 1e-9);
  EXPECT_NEAR(at(0.0, 0.0).y(), before.y() + 15.0, 1e-9);
  EXPECT_TRUE(tool_.heard.empty());
}

}  // namespace
}  // namespace lumo
