// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QApplication>
#include <thread>

#include "view/AProgressCtrl.h"

namespace lumo {
namespace {

TEST(AProgressCtrlTest, ItsTextIsThePercentage) {
  AProgressCtrl bar;
  EXPECT_EQ(bar.text(), "0%");
  bar.setPos(37);
  EXPECT_EQ(bar.text(), "37%");
}

TEST(AProgressCtrlTest, TheFormatIsAsInPrintf) {
  AProgressCtrl bar;
  bar.setTextFormat("%%d is %d of 100 %%");
  bar.setPos(5);
  EXPECT_EQ(bar.text(), "%d is 5 of 100 %");
}

TEST(AProgressCtrlTest, AStageReachesItThroughTheInterface) {
  AProgressCtrl bar;
  AProgress progress(&bar, 8.0);
  progress.SetPos(2.0);
  EXPECT_EQ(bar.value(), 25);
}

TEST(AProgressCtrlTest, AnotherThreadReachesItThroughTheEventLoop) {
  AProgressCtrl bar;
  std::thread([&bar] { bar.setPos(60); }).join();
  EXPECT_EQ(bar.value(), 0);
  QApplication::processEvents();
  EXPECT_EQ(bar.value(), 60);
}

TEST(AProgressCtrlTest, ItMayGoWhileAPositionIsOnItsWay) {
  auto bar = std::make_unique<AProgressCtrl>();
  std::thread([&bar] { bar->setPos(60); }).join();
  bar.reset();
  QApplication::processEvents();
  EXPECT_EQ(bar, nullptr);
}

}  // namespace
}  // namespace lumo
