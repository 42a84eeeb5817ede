// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>

#include "Mouse.h"
#include "view/LumoAxisWnd.h"

namespace lumo {
namespace {

TEST(LumoAxisWndTest, ItsContextMenuHoldsTheSingleItemCopyToClipboard) {
  LumoAxisWnd window;
  window.SetAxis(test::greyMapAxis(AMatrix<float>(4, 4)));
  (void)test::shown(window, {300, 300});
  QApplication::clipboard()->clear();
  QMenu* menu = test::contextMenu(window, window.panelRect().center());
  ASSERT_NE(menu, nullptr);
  ASSERT_EQ(menu->actions().size(), 1);
  EXPECT_EQ(menu->actions().first()->text(), "Copy to clipboard");
  menu->actions().first()->trigger();
  EXPECT_FALSE(QApplication::clipboard()->image().isNull());
  menu->close();
}

}  // namespace
}  // namespace lumo
