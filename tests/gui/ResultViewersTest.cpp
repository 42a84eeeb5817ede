// SPDX-License-Identifier: GPL-3.0-or-later
// "Graph...", "Table...", "Map and areas..." and "UV-Plane..." of the main dialog, on the products of a run.
#include <gmock/gmock.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QToolButton>
#include <algorithm>
#include <functional>

#include "analysis/ResultsPresenter.h"
#include "analysis/ui/AMapSelDlg.h"
#include "analysis/ui/AMeanSigmaTblDlg.h"
#include "analysis/ui/AResizeMultiAxisDlg.h"
#include "analysis/ui/ASelAreaDlg.h"
#include "gui/GuiScript.h"
#include "gui/MainDialogFixture.h"
#include "imaging/ui/AMakeParDlg.h"
#include "imaging/ui/LumoUVPlaneDlg.h"
#include "io/ProductNames.h"
#include "view/Mouse.h"

namespace lumo::test {
namespace {

using testing::HasSubstr;

class ResultViewersTest : public MainDialogTest {
 protected:
  /// A finished run on 16 x 16 cells of 0.4 mas or so, products under "MFS".
  void openAfterARun(const QString& order = "2") {
    open();
    add(simulateBands({4800, 5000, 5200}));
    prompts_.folder = QString::fromStdString(work_.path());
    press("browse");
    press("center");
    GuiScript script;
    script.step([] {
      auto* const sheet = modalWindow<AMakeParDlg>();
      if (sheet == nullptr) return false;
      for (const char* const name : {"halfSizeX", "halfSizeY"})
        sheet->findChild<QComboBox*>(name)->setCurrentText("16");
      sheet->accept();
      return true;
    });
    press("makePar");
    type("iterations", "50");
    type("order", order);
    type("prefix", "MFS");
    press("run");
    ASSERT_TRUE(dialog_->lastReport().status.ok()) << dialog_->lastReport().status.text();
  }
  /// Draws a circle about the middle of the map with the mouse, to `share` of the half height.
  static void drawCircle(ASelAreaDlg& dialog, double share) {
    dialog.findChild<QToolButton*>("tool.circle")->click();
    (void)dialog.grab();  // lays the panel out
    LumoAxisWnd& map = dialog.mapWindow();
    const QRectF panel(map.panelRect());
    const QPointF middle = panel.center();
    const QPointF end = middle + QPointF(share * panel.height() / 2, 0);
    test::press(map, middle);
    test::move(map, middle + (end - middle) * 0.5, true);
    test::move(map, end, true);
    test::release(map, end);
  }
  /// A script whose first step does something in the area dialog and confirms or cancels it.
  static void answerAreas(GuiScript& script, std::function<void(ASelAreaDlg&)> act, bool confirms) {
    script.step([act = std::move(act), confirms] {
      auto* const dialog = modalWindow<ASelAreaDlg>();
      if (dialog == nullptr) return false;
      act(*dialog);
      for (QPushButton* const one : dialog->findChildren<QPushButton*>())
        if (one->text().remove('&') == (confirms ? "OK" : "Cancel")) one->click();
      return true;
    });
  }
  [[nodiscard]] const std::vector<AreaShape>& areas() const { return dialog_->areaSettings().areas.shapes(); }
};

TEST_F(ResultViewersTest, TableShowsTheNumbersOfTheAreaDrawnWithTheMouse) {
  openAfterARun();
  GuiScript script;
  answerAreas(
      script,
      [](ASelAreaDlg& dialog) {
        drawCircle(dialog, 0.5);
        dialog.findChild<QLineEdit*>("pointCount")->setText("3");
      },
      true);
  std::vector<std::string> cells;
  script.step([&cells] {
    auto* const dialog = modalWindow<AMeanSigmaTblDlg>();
    if (dialog == nullptr) return false;
    const AMeanSigmaTbl& table = dialog->table();
    EXPECT_EQ(table.rowCount(), 4);
    EXPECT_EQ(table.columnCount(), 3);
    for (int row = 1; row < table.rowCount(); ++row)
      for (int column = 0; column < table.columnCount(); ++column)
        cells.push_back(column == 0 ? table.headerText(row, column) : table.cellText(row, column));
    dialog->close();
    return true;
  });
  press("table");
  ASSERT_EQ(areas().size(), 1u);
  EXPECT_EQ(dialog_->areaSettings().pointCount, 3);
  // The same circle measured without a window.
  ResultsPresenter presenter(work_.path(), "MFS", 0, 0);
  ASSERT_TRUE(presenter.load().ok());
  AreaSpectra spectra;
  ASSERT_TRUE(presenter.measure(dialog_->areaSettings(), spectra).ok());
  const MeanSigmaTable expected = spectraTable(spectra);
  ASSERT_EQ(cells.size(), 9u);
  for (int row = 1; row <= 3; ++row)
    for (int column = 0; column < 3; ++column)
      EXPECT_EQ(cells[static_cast<std::size_t>((row - 1) * 3 + column)], expected.text(row, column));
  // The circle holds most of the brighter source (1 Jy) and none of the far corners.
  EXPECT_GT(spectra.areaFlux[0], 0.2);
  EXPECT_EQ(cells[0], "4800 [MHz]");
  EXPECT_EQ(cells[6], "5200 [MHz]");
}

TEST_F(ResultViewersTest, GraphShowsOneCurveForEachAreaInTheScalesChosen) {
  openAfterARun();
  GuiScript script;
  answerAreas(
      script,
      [](ASelAreaDlg& dialog) {
        dialog.findChild<QComboBox*>("xScale")->setCurrentText("Normal");
        dialog.findChild<QCheckBox*>("invertColors")->setChecked(true);
      },
      true);
  script.step([] {
    auto* const dialog = modalWindow<AResizeMultiAxisDlg>();
    if (dialog == nullptr) return false;
    EXPECT_EQ(dialog->graph().curves.size(), 1u);
    EXPECT_EQ(dialog->graph().xScaleMode, kLinearScale);
    EXPECT_EQ(dialog->graph().yScaleMode, kLogarithmicScale);
    EXPECT_EQ(dialog->graph().invertColors, 1);
    EXPECT_EQ(dialog->graph().curves[0].count(), 8u);
    EXPECT_EQ(dialog->graph().xTitle, "Frequency [%sHz]");
    dialog->close();
    return true;
  });
  press("graph");
  EXPECT_EQ(dialog_->areaSettings().xScaleMode, kLinearScale);
}

TEST_F(ResultViewersTest, CancelKeepsWhatWasConfirmedBeforeAndShowsNothing) {
  openAfterARun();
  {
    GuiScript script;
    answerAreas(
        script, [](ASelAreaDlg& dialog) { drawCircle(dialog, 0.5); }, true);
    script.step([] {
      auto* const dialog = modalWindow<AMeanSigmaTblDlg>();
      if (dialog != nullptr) dialog->close();
      return dialog != nullptr;
    });
    press("table");
  }
  const std::vector<AreaShape> before = areas();
  ASSERT_EQ(before.size(), 1u);
  GuiScript script;
  answerAreas(
      script,
      [&before](ASelAreaDlg& dialog) {
        // It opens with the area of last time.
        EXPECT_EQ(dialog.settings().areas.shapes(), before);
        dialog.findChild<QLineEdit*>("pointCount")->setText("77");
        drawCircle(dialog, 0.9);
      },
      false);
  press("graph");
  EXPECT_EQ(areas(), before);
  EXPECT_EQ(dialog_->areaSettings().pointCount, 8);
}

TEST_F(ResultViewersTest, ANewRunDiscardsTheAreasAndKeepsTheOtherSettings) {
  openAfterARun();
  GuiScript script;
  answerAreas(
      script,
      [](ASelAreaDlg& dialog) {
        drawCircle(dialog, 0.5);
        dialog.findChild<QLineEdit*>("pointCount")->setText("5");
      },
      true);
  script.step([] {
    auto* const dialog = modalWindow<AMeanSigmaTblDlg>();
    if (dialog != nullptr) dialog->close();
    return dialog != nullptr;
  });
  press("table");
  ASSERT_EQ(areas().size(), 1u);
  press("run");
  EXPECT_TRUE(areas().empty());
  EXPECT_EQ(dialog_->areaSettings().pointCount, 5);
}

TEST_F(ResultViewersTest, MissingIndexMapShowsNothingAndTellsTheLogWhy) {
  openAfterARun("1");
  prompts_.messages.clear();
  press("graph");
  press("table");
  EXPECT_TRUE(prompts_.messages.empty());
  EXPECT_THAT(logText(), HasSubstr("No results to show"));
  EXPECT_THAT(logText(), HasSubstr("MFS^sindex.exm"));
}

TEST_F(ResultViewersTest, ThePrefixNowShownIsTheOneThatIsRead) {
  openAfterARun();
  type("prefix", "other");
  press("table");
  EXPECT_THAT(logText(), HasSubstr("other^cln0.exm"));
}

TEST_F(ResultViewersTest, UvPlaneShowsTheExtentOfTheSelection) {
  openAfterARun();
  GuiScript script;
  script.step([this] {
    auto* const dialog = modalWindow<LumoUVPlaneDlg>();
    if (dialog == nullptr) return false;
    const FrequencySurvey& survey = dialog_->files().frequencies();
    const PlotRect visible = dialog->findChild<AAxisWnd*>("plot")->axis()->extent();
    EXPECT_NEAR(visible.xMax, 1.05 * std::max(survey.maxU, survey.maxV), 1.0);
    dialog->close();
    return true;
  });
  press("uvPlane");
}

TEST_F(ResultViewersTest, MapSelectorKeepsItsMapsFromOneOpeningToTheNext) {
  openAfterARun();
  prompts_.maps = {QString::fromStdString(cleanName(work_.path(), "MFS", 0))};
  for (int opening = 0; opening < 2; ++opening) {
    GuiScript script;
    script.step([opening] {
      auto* const dialog = modalWindow<AMapSelDlg>();
      if (dialog == nullptr) return false;
      auto* const list = dialog->findChild<QListWidget*>("maps");
      EXPECT_EQ(list->count(), opening);
      dialog->findChild<QPushButton*>("addMaps")->click();
      EXPECT_EQ(list->count(), 1);
      dialog->findChild<QPushButton*>("done")->click();
      return true;
    });
    press("mapAndAreas");
  }
}

}  // namespace
}  // namespace lumo::test
