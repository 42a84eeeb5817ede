// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QMenu>
#include <QToolButton>

#include "view/AColorsGraph.h"
#include "view/ColourTools.h"

namespace lumo {
namespace {

class ColourToolsTest : public testing::Test {
 protected:
  ColourToolsTest() : tools_(nullptr) {
    graph_.SetParameters(AMatrix<float>(2, 2), {0, 1, 0, 1, -1, 1});
    tools_.setGraph(&graph_);
    QObject::connect(&tools_, &ColourTools::changed, &tools_, [this] { ++changes_; });
  }

  QToolButton* button(const QString& text) {
    for (auto* one : tools_.findChildren<QToolButton*>()) {
      if (one->text() == text) return one;
    }
    return nullptr;
  }
  /// The item of a button's menu, as it is when the menu opens; null if there is none.
  QAction* item(const QString& buttonText, const QString& text) {
    QToolButton* opener = button(buttonText);
    if (opener == nullptr) return nullptr;
    emit opener->menu()->aboutToShow();
    for (QAction* action : opener->menu()->actions()) {
      if (action->text() == text) return action;
    }
    return nullptr;
  }

  AColorsGraph graph_;
  ColourTools tools_;
  int changes_ = 0;
};

TEST_F(ColourToolsTest, ChoosesTheColourMap) {
  ASSERT_NE(item("Colours", "Cool-warm"), nullptr);
  item("Colours", "Cool-warm")->trigger();
  EXPECT_EQ(graph_.colourMap(), ColourMap::kCoolWarm);
  EXPECT_EQ(changes_, 1);
  EXPECT_TRUE(item("Colours", "Cool-warm")->isChecked());
  EXPECT_FALSE(item("Colours", "Inferno")->isChecked());
}

TEST_F(ColourToolsTest, ChoosesTheScaling) {
  ASSERT_NE(item("Scaling", "Logarithmic"), nullptr);
  item("Scaling", "Logarithmic")->trigger();
  EXPECT_EQ(graph_.scaling().kind(), ScalingKind::kLogarithmic);
}

TEST_F(ColourToolsTest, ChoosesTheLimits) {
  EXPECT_TRUE(item("Limits", "As given")->isChecked());
  ASSERT_NE(item("Limits", "99.5 % of the pixels"), nullptr);
  item("Limits", "99.5 % of the pixels")->trigger();
  EXPECT_EQ(graph_.limitChoice(), LimitChoice(PercentLimits{99.5}));
  EXPECT_FALSE(item("Limits", "As given")->isChecked());
}

TEST_F(ColourToolsTest, WithoutAGraphOnlySavingIsOffered) {
  tools_.setGraph(nullptr);
  EXPECT_FALSE(button("Colours")->isEnabled());
  EXPECT_FALSE(button("Limits")->isEnabled());
  EXPECT_TRUE(button("Save picture...")->isEnabled());
}

TEST_F(ColourToolsTest, AsksForSaving) {
  int asked = 0;
  QObject::connect(&tools_, &ColourTools::saveRequested, &tools_, [&asked] { ++asked; });
  button("Save picture...")->click();
  EXPECT_EQ(asked, 1);
}

}  // namespace
}  // namespace lumo
