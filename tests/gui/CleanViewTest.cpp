// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QPushButton>
#include <cmath>
#include <limits>

#include "clean/CleanProblem.h"
#include "clean/ui/CleanGraphs.h"
#include "clean/ui/LumoClnShowDlg.h"
#include "gui/GuiScript.h"
#include "view/AMultiAxisDlgWnd.h"

namespace lumo {
namespace {

using test::sameBits;

class CleanViewTest : public testing::Test {
 protected:
  CleanViewTest() {
    model_.restored.resize(16, 24);
    residual_.resize(16, 24);
    for (std::uint32_t i = 0; i < residual_.size(); ++i) {
      model_.restored.data()[i] = static_cast<float>(i);
      residual_.data()[i] = -0.5F * static_cast<float>(i);
    }
    model_.residual = &residual_;
    model_.residualRange = {-6.0, 5.5, -4.0, 3.5, -1.0, 2.0};
    model_.restoredRange = withValueRange(model_.residualRange, model_.restored);
  }

  static void expectPanel(const LumoAxisWnd& window, const AMatrix<float>& map, const TMinMax& range) {
    ASSERT_NE(window.axis(), nullptr);
    EXPECT_EQ(window.axis()->nameOX(), "Right ascent [%sas]");
    EXPECT_EQ(window.axis()->nameOY(), "Declination [%sas]");
    EXPECT_EQ(window.axis()->xDirection(), -1);
    EXPECT_EQ(window.axis()->yDirection(), 1);
    ASSERT_NE(window.axis()->colours(), nullptr);
    const MapView& shown = window.axis()->colours()->map();
    EXPECT_TRUE(sameBits(shown.map(), map));
    EXPECT_EQ(shown.range(), range);
  }

  static QPushButton* button(const QWidget& view, const QString& text) {
    for (QPushButton* const button : view.findChildren<QPushButton*>())
      if (button->text().remove('&') == text) return button;
    return nullptr;
  }

  CleanViewModel model_;
  AMatrix<float> residual_;
};

TEST_F(CleanViewTest, LeftPanelIsTheRestoredMapOnItsOwnValuesAndRightPanelTheResidualOnTheStoredOnes) {
  const LumoClnShowDlg view(model_);
  EXPECT_EQ(view.windowTitle(), "CLEAN view");
  expectPanel(view.restoredWindow(), model_.restored, model_.restoredRange);
  expectPanel(view.residualWindow(), residual_, model_.residualRange);
}

TEST_F(CleanViewTest, PanelsStandSideBySideAndShareTheWindow) {
  LumoClnShowDlg view(model_);
  view.resize(1000, 600);
  ASSERT_FALSE(view.grab().isNull());
  const QRect left = view.restoredWindow().geometry();
  const QRect right = view.residualWindow().geometry();
  EXPECT_LT(left.right(), right.left());
  EXPECT_EQ(left.top(), right.top());
  EXPECT_NEAR(left.width(), right.width(), 1);
  view.resize(1400, 800);
  ASSERT_FALSE(view.grab().isNull());
  EXPECT_GT(view.restoredWindow().width(), left.width());
  EXPECT_GT(view.restoredWindow().height(), left.height());
}

TEST_F(CleanViewTest, ConvergenceStandsBelowTheMapsAndCanBeSwitchedOff) {
  LumoClnShowDlg view(model_);
  view.resize(1000, 900);
  view.show();
  ASSERT_FALSE(view.grab().isNull());
  const QRect map = view.restoredWindow().geometry();
  EXPECT_TRUE(view.graphs().isVisible());
  EXPECT_GT(view.graphs().geometry().top(), map.bottom());
  EXPECT_GT(map.height(), view.graphs().height()) << "the maps come first";
  auto& convergence = *view.findChild<QCheckBox*>("convergence");
  EXPECT_TRUE(convergence.isChecked());
  convergence.click();
  QApplication::processEvents();
  EXPECT_FALSE(view.graphs().isVisible());
  EXPECT_GT(view.restoredWindow().height(), map.height()) << "the maps get the room";
}

TEST_F(CleanViewTest, ConvergenceThatWasSwitchedOffStaysOff) {
  LumoClnShowDlg view(model_, nullptr, false);
  view.show();
  EXPECT_FALSE(view.graphs().isVisible());
  auto& convergence = *view.findChild<QCheckBox*>("convergence");
  EXPECT_FALSE(convergence.isChecked());
  convergence.click();
  EXPECT_TRUE(view.graphs().isVisible());
}

TEST_F(CleanViewTest, TheSmallestWindowStillHasRoomForCurves) {
  model_.record = {{1, 0.5, 0.1, true, 3, 4, 2.0, 5.0}, {2, 0.75, 0.1, true, 3, 4, 1.0, 4.0}};
  LumoClnShowDlg view(model_);
  view.resize(1, 1);
  view.show();
  ASSERT_FALSE(view.grab().isNull());
  for (const QRect& panel :
       {view.graphs().fluxWindow().panelRect(), view.graphs().residualWindow().panelRect()}) {
    EXPECT_GT(panel.width(), 40);
    EXPECT_GT(panel.height(), 40);
  }
}

TEST_F(CleanViewTest, ContinueIsTheDefaultAndAccepts) {
  LumoClnShowDlg view(model_);
  test::GuiScript script;
  script.step([&view] { return view.isVisible(); }).then([&view] {
    EXPECT_TRUE(button(view, "Continue")->isDefault());
    test::pressKey(view, Qt::Key_Return);
  });
  EXPECT_EQ(view.exec(), QDialog::Accepted);
}

TEST_F(CleanViewTest, StopAndTheCloseBoxReject) {
  LumoClnShowDlg view(model_);
  {
    test::GuiScript script;
    script.step([&view] { return view.isVisible(); }).then([&view] { button(view, "Stop")->click(); });
    EXPECT_EQ(view.exec(), QDialog::Rejected);
  }
  test::GuiScript script;
  script.step([&view] { return view.isVisible(); }).then([&view] { view.close(); });
  EXPECT_EQ(view.exec(), QDialog::Rejected);
}

TEST_F(CleanViewTest, MapsWithoutAnyValueAreShownEmpty) {
  for (std::uint32_t i = 0; i < residual_.size(); ++i)
    model_.restored.data()[i] = residual_.data()[i] = std::numeric_limits<float>::quiet_NaN();
  model_.restoredRange = withValueRange(model_.residualRange, model_.restored);
  ASSERT_TRUE(std::isnan(model_.restoredRange.vMax));
  LumoClnShowDlg view(model_);
  view.resize(1000, 600);
  EXPECT_FALSE(view.grab().isNull());
}

TEST_F(CleanViewTest, MapOfZerosBeforeTheFirstComponentIsShown) {
  model_.restored.resize(16, 24);
  model_.restoredRange = withValueRange(model_.residualRange, model_.restored);
  LumoClnShowDlg view(model_);
  view.resize(1000, 600);
  EXPECT_FALSE(view.grab().isNull());
  EXPECT_EQ(view.restoredWindow().axis()->colours()->map().range().vMax, 0.0);
}

}  // namespace
}  // namespace lumo
