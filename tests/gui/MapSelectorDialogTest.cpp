// SPDX-License-Identifier: GPL-3.0-or-later
// The map selector: its list, its areas, its table and its graph.
#include <gmock/gmock.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "analysis/AnalysisSample.h"
#include "analysis/ui/AMapSelDlg.h"
#include "analysis/ui/AMeanSigmaTblDlg.h"
#include "analysis/ui/AResizeMultiAxisDlg.h"
#include "analysis/ui/ASelAreaDlg.h"
#include "app/DesktopPrompts.h"
#include "gui/GuiScript.h"
#include "gui/MainDialogFixture.h"

namespace lumo::test {
namespace {

using testing::HasSubstr;

class MapSelectorDialogTest : public testing::Test {
 protected:
  MapSelectorDialogTest() {
    dialog_ = std::make_unique<AMapSelDlg>(prompts_, selection_, folder_.path());
    dialog_->show();
    QApplication::processEvents();
  }
  QPushButton& button(const char* name) { return *dialog_->findChild<QPushButton*>(name); }
  QListWidget& list() { return *dialog_->findChild<QListWidget*>("maps"); }
  void add(const std::vector<std::string>& paths) {
    prompts_.maps.clear();
    for (const std::string& path : paths) prompts_.maps += QString::fromStdString(path);
    clickOn(button("addMaps"));
  }
  /// A map of constant value with 153 cells and beams of ten.
  std::string map(const std::string& name, double freq, float value) {
    writeSample(folder_.file(name), freq, constant(value));
    return folder_.file(name);
  }
  std::vector<std::string> threeBands() {
    std::vector<std::string> paths;
    for (const double freq : {4e9, 5e9, 8e9})
      paths.push_back(map(std::to_string(static_cast<int>(freq * 1e-6)) + ".exm", freq,
                          static_cast<float>(std::pow(freq / 4e9, -0.75))));
    return paths;
  }

  TempFolder folder_;
  ScriptedPrompts prompts_;
  MapSelection selection_;
  std::unique_ptr<AMapSelDlg> dialog_;
};

TEST_F(MapSelectorDialogTest, ButtonsReadAsTheyShouldAndInvertIsHidden) {
  const std::pair<const char*, const char*> texts[] = {
      {"addMaps", "Add map(s)..."}, {"deleteMap", "Delete map"}, {"selectAreas", "Select  area(s)..."},
      {"mapTable", "Table..."},     {"mapGraph", "Graph..."},    {"done", "Done"}};
  for (const auto& [name, text] : texts) EXPECT_EQ(button(name).text().toStdString(), text);
  auto* const invert = dialog_->findChild<QCheckBox*>("mapInvert");
  EXPECT_EQ(invert->text(), "Invert");
  EXPECT_FALSE(invert->isVisible());
}

TEST_F(MapSelectorDialogTest, FileDialogOffersMapsAndTakesSeveral) {
  const auto paths = threeBands();
  GuiScript script;
  script.step([this] {
    auto* const dialog = modalWindow<QFileDialog>();
    if (dialog == nullptr) return false;
    auto* const types = dialog->findChild<QComboBox*>("fileTypeCombo");
    EXPECT_EQ(types->itemText(0).toStdString(), "ZEL map file (*.exm,*.amap)");
    EXPECT_EQ(types->itemText(1).toStdString(), "All files (*.*)");
    EXPECT_EQ(dialog->defaultSuffix().toStdString(), "exm");
    EXPECT_EQ(dialog->fileMode(), QFileDialog::ExistingFiles);
    // Without its extension, which the default adds.
    dialog->findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(folder_.file("5000")));
    static_cast<QDialog*>(dialog)->done(QDialog::Accepted);
    return true;
  });
  const QStringList chosen =
      DesktopPrompts().chooseMaps(dialog_.get(), QString::fromStdString(folder_.path()));
  ASSERT_EQ(chosen.size(), 1);
  EXPECT_EQ(chosen[0].toStdString(), paths[1]);
}

TEST_F(MapSelectorDialogTest, ChosenMapsAreListedOnce) {
  const auto paths = threeBands();
  add({paths[0], paths[1]});
  add({paths[1], paths[2]});
  ASSERT_EQ(list().count(), 3);
  EXPECT_EQ(list().item(1)->text().toStdString(), paths[1]);
  EXPECT_TRUE(prompts_.messages.empty());
}

TEST_F(MapSelectorDialogTest, GivingTheFileDialogUpLeavesTheSelection) {
  add(threeBands());
  clickRow(list(), 1);
  add({});
  EXPECT_EQ(list().currentRow(), 1);
  EXPECT_EQ(list().count(), 3);
}

TEST_F(MapSelectorDialogTest, WhatIsNoMapIsRefusedWithTheReasonAndTheOthersAreAdded) {
  const auto paths = threeBands();
  writeFile(folder_.file("text.exm"), "no map");
  add({paths[0], folder_.file("text.exm"), folder_.file("absent.exm"), paths[1]});
  EXPECT_EQ(list().count(), 2);
  ASSERT_EQ(prompts_.messages.size(), 1u);
  EXPECT_THAT(prompts_.messages[0], HasSubstr("text.exm: is not a FITS file"));
  EXPECT_THAT(prompts_.messages[0], HasSubstr("absent.exm"));
}

TEST_F(MapSelectorDialogTest, DeleteTakesTheSelectedMapOffTheListAndLeavesTheFile) {
  const auto paths = threeBands();
  add(paths);
  clickRow(list(), 1);
  clickOn(button("deleteMap"));
  ASSERT_EQ(list().count(), 2);
  EXPECT_EQ(list().item(1)->text().toStdString(), paths[2]);
  EXPECT_EQ(list().currentRow(), 1);
  EXPECT_TRUE(exists(paths[1]));
  clickOn(button("deleteMap"));
  clickOn(button("deleteMap"));
  EXPECT_EQ(list().count(), 0);
  EXPECT_FALSE(button("deleteMap").isEnabled());
  EXPECT_FALSE(button("selectAreas").isEnabled());
  EXPECT_FALSE(button("mapTable").isEnabled());
}

TEST_F(MapSelectorDialogTest, TableHasARowForEachMapWithItsSumAndDeviation) {
  map("flat.exm", 4e9, 2.0F);
  // 1 and 3 in equal numbers but for one cell of 2: the mean is 2, the squares add up to 152.
  writeSample(folder_.file("rough.exm"), 8e9, [](std::uint32_t row, std::uint32_t column) {
    const std::uint32_t i = row * kColumns + column;
    return i == 152 ? 2.0F : i % 2 == 0 ? 1.0F : 3.0F;
  });
  add({folder_.file("flat.exm"), folder_.file("rough.exm")});
  GuiScript script;
  script.step([] {
    auto* const dialog = modalWindow<AMeanSigmaTblDlg>();
    if (dialog == nullptr) return false;
    const AMeanSigmaTbl& table = dialog->table();
    EXPECT_EQ(table.rowCount(), 3);
    EXPECT_EQ(table.columnCount(), 3);
    EXPECT_EQ(table.headerText(1, 0), "4000 [MHz]");
    EXPECT_EQ(table.headerText(2, 0), "8000 [MHz]");
    EXPECT_EQ(table.cellText(1, 1), "306");
    EXPECT_EQ(table.cellText(1, 2), "0");
    EXPECT_EQ(table.cellText(2, 1), "306");
    // sqrt(152 / (2 * 153)), four digits.
    EXPECT_EQ(table.cellText(2, 2), "0.7048");
    dialog->close();
    return true;
  });
  clickOn(button("mapTable"));
}

TEST_F(MapSelectorDialogTest, PathsAreShownAsTheyWereGiven) {
  threeBands();
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder_.path());
  add({"4000.exm", "./5000.exm", "8000.exm"});
  std::filesystem::current_path(before);
  savePicture(*dialog_, "map-selector");
  ASSERT_EQ(list().count(), 3);
  EXPECT_EQ(list().item(1)->text(), "./5000.exm");
}

TEST_F(MapSelectorDialogTest, GraphFitsAPowerLawAndLeavesTheDiagnosticFile) {
  add(threeBands());
  GuiScript script;
  script.step([] {
    auto* const dialog = modalWindow<AResizeMultiAxisDlg>();
    if (dialog == nullptr) return false;
    EXPECT_EQ(dialog->graph().curves.size(), 1u);
    EXPECT_EQ(dialog->graph().yTitle, "FLUX ~[Jy] (log scale)");
    const SpectrumCurve& curve = dialog->graph().curves[0];
    EXPECT_EQ(curve.refFreq, 4e9);
    // Single precision of maps and fit.
    EXPECT_NEAR(curve.refIntensity, 15.3, 1e-5);
    EXPECT_NEAR(curve.specIndex, -0.75, 1e-6);
    dialog->close();
    return true;
  });
  clickOn(button("mapGraph"));
  EXPECT_THAT(readFile(diagnosticFileName(folder_.path())), HasSubstr("alpha = -0.75"));
}

TEST_F(MapSelectorDialogTest, GraphNeedsTwoMaps) {
  add({map("one.exm", 4e9, 1.0F)});
  EXPECT_FALSE(button("mapGraph").isEnabled());
  EXPECT_TRUE(button("mapTable").isEnabled());
  add({map("two.exm", 5e9, 1.0F)});
  EXPECT_TRUE(button("mapGraph").isEnabled());
}

TEST_F(MapSelectorDialogTest, AreasAreMarkedOnTheSelectedMapAndKept) {
  add(threeBands());
  const AreaList areas({AreaShape::circle({1.0, 0.0}, 0.6)});
  selection_.settings.areas = areas;
  clickRow(list(), 1);
  for (const bool confirms : {false, true}) {
    GuiScript script;
    script.step([&areas, confirms] {
      auto* const dialog = modalWindow<ASelAreaDlg>();
      if (dialog == nullptr) return false;
      EXPECT_EQ(dialog->settings().areas.shapes(), areas.shapes());
      dialog->findChild<QCheckBox*>("invertColors")->setChecked(true);
      for (QPushButton* const one : dialog->findChildren<QPushButton*>())
        if (one->text().remove('&') == (confirms ? "OK" : "Cancel")) one->click();
      return true;
    });
    clickOn(button("selectAreas"));
    EXPECT_EQ(selection_.settings.invertColors, confirms ? 1 : 0);
    EXPECT_EQ(selection_.settings.areas.shapes(), areas.shapes());
  }
  EXPECT_TRUE(dialog_->findChild<QCheckBox*>("mapInvert")->isChecked());
}

TEST_F(MapSelectorDialogTest, AMapThatWentAwayIsNamed) {
  const auto paths = threeBands();
  add(paths);
  ASSERT_EQ(std::remove(paths[1].c_str()), 0);
  clickOn(button("mapTable"));
  ASSERT_EQ(prompts_.messages.size(), 1u);
  EXPECT_THAT(prompts_.messages[0], HasSubstr(paths[1]));
}

}  // namespace
}  // namespace lumo::test
