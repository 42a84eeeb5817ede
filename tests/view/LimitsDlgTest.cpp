// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPushButton>

#include "view/LimitsDlg.h"

namespace lumo {
namespace {

class LimitsDlgTest : public testing::Test {
 protected:
  LimitsDlgTest() : dialog_({-1.0, 2.5}, nullptr) {}

  QLineEdit& field(int index) { return *dialog_.findChildren<QLineEdit*>().at(index); }
  [[nodiscard]] bool okEnabled() const { return dialog_.findChildren<QPushButton*>().first()->isEnabled(); }

  LimitsDlg dialog_;
};

TEST_F(LimitsDlgTest, StartsWithThePresentLimits) {
  EXPECT_EQ(field(0).text(), "-1");
  EXPECT_EQ(field(1).text(), "2.5");
  EXPECT_TRUE(okEnabled());
}

TEST_F(LimitsDlgTest, TakesWhatIsTyped) {
  field(0).setText(" 1e-3");
  field(1).setText("0.02");
  EXPECT_TRUE(okEnabled());
  EXPECT_EQ(dialog_.limits(), (ValueLimits{1e-3, 0.02}));
}

TEST_F(LimitsDlgTest, RefusesWhatIsNoRange) {
  for (const char* text : {"", "abc", "3", "inf", "nan", "2.5"}) {
    field(0).setText(text);
    EXPECT_FALSE(okEnabled()) << text;
  }
  EXPECT_EQ(dialog_.limits(), (ValueLimits{-1.0, 2.5}));
}

}  // namespace
}  // namespace lumo
