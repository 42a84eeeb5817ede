// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QApplication>
#include <thread>

#include "view/StatusLabel.h"

namespace lumo {
namespace {

TEST(StatusLabelTest, ShowsTheTextAsItStands) {
  StatusLabel label;
  label.setText("<b>Gridding</b> 3 µs");
  EXPECT_EQ(label.text(), QString::fromUtf8("<b>Gridding</b> 3 µs"));
  EXPECT_EQ(label.textFormat(), Qt::PlainText);
}

TEST(StatusLabelTest, AnEmptyTextClearsIt) {
  StatusLabel label;
  label.setText("Reading");
  label.setText("");
  EXPECT_EQ(label.text(), "");
}

TEST(StatusLabelTest, AnotherThreadReachesItThroughTheEventLoop) {
  StatusLabel label;
  std::thread([&label] { label.setText("FFT"); }).join();
  EXPECT_EQ(label.text(), "");
  QApplication::processEvents();
  EXPECT_EQ(label.text(), "FFT");
}

TEST(StatusLabelTest, ALongTextDoesNotAskForRoom) {
  StatusLabel label;
  label.setText(std::string(500, 'x'));
  EXPECT_EQ(label.sizePolicy().horizontalPolicy(), QSizePolicy::Ignored);
}

}  // namespace
}  // namespace lumo
