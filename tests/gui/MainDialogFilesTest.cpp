// SPDX-License-Identifier: GPL-3.0-or-later
// The file list, the frequency table and the survey in the main dialog.
#include <gmock/gmock.h>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <cstdio>

#include "gui/GuiScript.h"
#include "gui/MainDialogFixture.h"
#include "imaging/ui/AMakeParDlg.h"
#include "run/RunSample.h"
#include "run/ui/AFqIDTable.h"
#include "run/ui/UvxInfoDlg.h"

namespace lumo::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// What a row of the frequency table shows.
struct Row {
  std::string text;
  bool checked, enabled;
  bool operator==(const Row&) const = default;
};

class MainDialogFilesTest : public MainDialogTest {
 protected:
  std::vector<Row> rows() {
    const auto* const model = get<AFqIDTable>("idTable").model();
    std::vector<Row> rows;
    for (int i = 0; i < model->rowCount(); ++i) {
      const QModelIndex index = model->index(i, 0);
      rows.push_back({index.data().toString().toStdString(),
                      index.data(Qt::CheckStateRole).toInt() == Qt::Checked,
                      model->flags(index).testFlag(Qt::ItemIsEnabled)});
    }
    return rows;
  }
  /// A file of one IF and two selections, at 1.4 and 1.6 GHz, with the IDs 1 and 3.
  std::string twoSelections(const char* name) {
    UvxSample sample;
    sample.selections = {{1, {1.4e9}}, {3, {1.6e9}}};
    writeUvx(data_.file(name), sample);
    return data_.file(name);
  }
  std::string oneSelection(const char* name) {
    writeUvx(data_.file(name), UvxSample());
    return data_.file(name);
  }
};

TEST_F(MainDialogFilesTest, AddedFilesShowWithTheirFrequencies) {
  open();
  add({twoSelections("a.uvx"), oneSelection("b.uvx")});
  auto& list = get<QListWidget>("files");
  ASSERT_EQ(list.count(), 2);
  EXPECT_EQ(list.item(0)->text().toStdString(), data_.file("a.uvx"));
  EXPECT_EQ(list.currentRow(), 1);
  EXPECT_EQ(text("minimum"), "1400");
  EXPECT_EQ(text("maximum"), "1600");
  EXPECT_EQ(text("number"), "3");
  EXPECT_THAT(rows(), ElementsAre(Row{"File 1,  Fq. ID 1", true, true}, Row{"File 1,  Fq. ID 3", true, true},
                                  Row{"File 2,  Fq. ID 1", true, true}));
}

TEST_F(MainDialogFilesTest, FilesOfAnyNameAreListedAndThereAgainAtTheNextStart) {
  const std::vector<std::string> names = {"with space  two.uvx", "it's \"quoted\".uvx",
                                          "MFS^a[1:2]{x}.uvx",   "Квазар 3C 84°.uvx",
                                          "100%s%1&b.uvx",       std::string(251, 'n') + ".uvx"};
  open();
  for (const std::string& name : names) add({oneSelection(name.c_str())});
  for (int start = 0; start < 2; ++start) {
    auto& list = get<QListWidget>("files");
    ASSERT_EQ(list.count(), static_cast<int>(names.size()));
    for (int i = 0; i < list.count(); ++i)
      EXPECT_EQ(list.item(i)->text().toStdString(), data_.file(names[static_cast<std::size_t>(i)]));
    EXPECT_EQ(text("number"), std::to_string(names.size()));
    close();
    open();
  }
}

TEST_F(MainDialogFilesTest, TheFirstFileSuggestsItsFolder) {
  open();
  add({oneSelection("a.uvx")});
  EXPECT_EQ(text("folder"), data_.path());
}

TEST_F(MainDialogFilesTest, AddingTheSamePathTwiceListsItOnceAndSelectsIt) {
  open();
  add({oneSelection("a.uvx"), twoSelections("b.uvx")});
  add({data_.file("a.uvx")});
  EXPECT_EQ(get<QListWidget>("files").count(), 2);
  EXPECT_EQ(get<QListWidget>("files").currentRow(), 0);
}

TEST_F(MainDialogFilesTest, AFileOfTwoSourcesIsRefusedWithTheMessage) {
  UvxSample sample;
  sample.sources = 2;
  writeUvx(data_.file("two.uvx"), sample);
  open();
  add({data_.file("two.uvx")});
  EXPECT_THAT(prompts_.messages, ElementsAre("Sorry. Source must be 1 (one)."));
  EXPECT_EQ(get<QListWidget>("files").count(), 0);
}

TEST_F(MainDialogFilesTest, AFileThatCannotBeOpenedIsLeftOutWithoutAMessageBox) {
  writeFile(data_.file("junk.uvx"), "not visibilities");
  open();
  add({data_.file("junk.uvx"), oneSelection("a.uvx")});
  EXPECT_THAT(prompts_.messages, IsEmpty());
  EXPECT_EQ(get<QListWidget>("files").count(), 1);
  EXPECT_THAT(logText(), HasSubstr("Not added: " + data_.file("junk.uvx")));
  EXPECT_THAT(text("status"), HasSubstr("junk.uvx"));
}

TEST_F(MainDialogFilesTest, AClickInARowTakesTheSelectionOutAndIn) {
  open();
  add({twoSelections("a.uvx")});
  auto& table = get<AFqIDTable>("idTable");
  clickRow(table, 1);
  EXPECT_THAT(rows(),
              ElementsAre(Row{"File 1,  Fq. ID 1", true, true}, Row{"File 1,  Fq. ID 3", false, true}));
  EXPECT_EQ(text("maximum"), "1400");
  EXPECT_EQ(text("number"), "1");
  clickRow(table, 1);
  EXPECT_EQ(text("maximum"), "1600");
  EXPECT_EQ(text("number"), "2");
}

TEST_F(MainDialogFilesTest, TheSpaceBarTogglesTheCurrentRow) {
  CLumoDlg& dialog = open();
  add({twoSelections("a.uvx")});
  auto& table = get<AFqIDTable>("idTable");
  table.setFocus();
  typeKey(dialog, Qt::Key_Down);
  typeKey(dialog, Qt::Key_Space, " ");
  EXPECT_THAT(rows(),
              ElementsAre(Row{"File 1,  Fq. ID 1", true, true}, Row{"File 1,  Fq. ID 3", false, true}));
}

TEST_F(MainDialogFilesTest, ATableOfOneRowCannotBeToggled) {
  CLumoDlg& dialog = open();
  add({oneSelection("a.uvx")});
  auto& table = get<AFqIDTable>("idTable");
  clickRow(table, 0);
  table.setFocus();
  typeKey(dialog, Qt::Key_Space, " ");
  EXPECT_THAT(rows(), ElementsAre(Row{"File 1,  Fq. ID 1", true, false}));
  EXPECT_EQ(text("number"), "1");
}

TEST_F(MainDialogFilesTest, WithAllMasksClearTheSurveyShowsItsStartValues) {
  open();
  add({twoSelections("a.uvx")});
  clickRow(get<AFqIDTable>("idTable"), 0);
  clickRow(get<AFqIDTable>("idTable"), 1);
  EXPECT_EQ(text("minimum"), "1e+32");
  EXPECT_EQ(text("maximum"), "-1e+32");
  EXPECT_EQ(text("number"), "0");
}

TEST_F(MainDialogFilesTest, DeletingTheOnlyFileKeepsTheSurveyAndDisablesWhatNeedsAFile) {
  open();
  add({twoSelections("a.uvx")});
  press("delete");
  EXPECT_EQ(get<QListWidget>("files").count(), 0);
  EXPECT_THAT(rows(), IsEmpty());
  EXPECT_EQ(text("minimum"), "1400");
  EXPECT_EQ(text("maximum"), "1600");
  EXPECT_EQ(text("number"), "2");
  const ABMakeParameters& imaging = dialog_->files().imaging();
  EXPECT_EQ(imaging.uvLimitU, 0);
  EXPECT_EQ(imaging.uvLimitV, 0);
  EXPECT_EQ(imaging.uvScaleU, 0);
  EXPECT_EQ(imaging.uvScaleV, 0);
  for (const char* const name :
       {"delete", "info", "makePar", "run", "uvPlane", "reRead", "center", "reference"})
    EXPECT_FALSE(isEnabled(name)) << name;
}

TEST_F(MainDialogFilesTest, DeletingAFileSelectsTheOneInItsPlace) {
  open();
  add({oneSelection("a.uvx"), twoSelections("b.uvx"), oneSelection("c.uvx")});
  clickRow(get<QListWidget>("files"), 1);
  press("delete");
  auto& list = get<QListWidget>("files");
  ASSERT_EQ(list.count(), 2);
  EXPECT_EQ(list.currentItem()->text().toStdString(), data_.file("c.uvx"));
  EXPECT_EQ(text("maximum"), "1400");
}

TEST_F(MainDialogFilesTest, DeletingWithNothingSelectedDoesNothing) {
  open();
  add({oneSelection("a.uvx")});
  get<QListWidget>("files").setCurrentRow(-1);
  press("delete");
  EXPECT_EQ(get<QListWidget>("files").count(), 1);
}

TEST_F(MainDialogFilesTest, ReReadSurveysTheFilesAsTheyAreNow) {
  open();
  add({oneSelection("a.uvx"), twoSelections("b.uvx")});
  const double before = dialog_->files().frequencies().maxU;
  UvxSample wider;
  wider.points = {{0x1p-18, 0x1p-21}, {-0x1p-21, 0x1p-20}};
  writeUvx(data_.file("a.uvx"), wider);
  press("reRead");
  // Both files reach 2^-20 s at first, times 1.6 GHz at most; now the first one reaches 2^-18 s at 1.4 GHz.
  EXPECT_DOUBLE_EQ(before, 0x1p-20 * 1.6e9);
  EXPECT_DOUBLE_EQ(dialog_->files().frequencies().maxU, 0x1p-18 * 1.4e9);
}

TEST_F(MainDialogFilesTest, CenterShowsTheMiddleInSixDigitsRoundedDownToAKilohertz) {
  UvxSample sample;
  sample.selections = {{1, {4.8123456e9}}, {2, {5.2e9}}};
  writeUvx(data_.file("a.uvx"), sample);
  open();
  add({data_.file("a.uvx")});
  press("center");
  // The middle is 5006.1728 MHz, the kHz below it 5006.172, in six digits 5006.17.
  EXPECT_EQ(text("reference"), "5006.17");
}

TEST_F(MainDialogFilesTest, UvxInfoDescribesTheSelectedFile) {
  open();
  add({oneSelection("a.uvx"), twoSelections("b.uvx")});
  clickRow(get<QListWidget>("files"), 1);
  std::string shown, title;
  GuiScript script;
  script.step([&] {
    auto* const info = modalWindow<UvxInfoDlg>();
    if (info == nullptr) return false;
    savePicture(*info, "uvx-info");
    title = info->windowTitle().toStdString();
    shown = info->findChild<QPlainTextEdit*>("uvxText")->toPlainText().toStdString();
    info->reject();
    return true;
  });
  press("info");
  EXPECT_THAT(title, HasSubstr("b.uvx"));
  // Two points in each of two selections.
  EXPECT_THAT(shown, HasSubstr(data_.file("b.uvx") + ": UVX version 1, 4 groups (0 flagged), 1 IFs"));
  EXPECT_THAT(shown, HasSubstr("1400.000000"));
  EXPECT_THAT(shown, HasSubstr("1600.000000"));
}

TEST_F(MainDialogFilesTest, UvxInfoOfAFileThatIsGoneSaysSoInTheLog) {
  open();
  add({oneSelection("a.uvx")});
  std::remove(data_.file("a.uvx").c_str());
  press("info");
  EXPECT_THAT(logText(), HasSubstr("Nothing to show: " + data_.file("a.uvx")));
}

TEST_F(MainDialogFilesTest, TheSheetOfImagingParametersStartsFromTheSetUpBlockAndKeepsAChange) {
  open();
  add({oneSelection("a.uvx")});
  std::string limit;
  GuiScript script;
  script.step([&] {
    auto* const sheet = modalWindow<AMakeParDlg>();
    if (sheet == nullptr) return false;
    savePicture(*sheet, "make-par");
    limit = sheet->findChild<QLineEdit*>("uvLimitU")->text().toStdString();
    sheet->findChild<QComboBox*>("halfSizeX")->setCurrentText("16");
    sheet->findChild<QComboBox*>("halfSizeY")->setCurrentText("16");
    sheet->accept();
    return true;
  });
  press("makePar");
  EXPECT_EQ(limit, "2");
  EXPECT_EQ(dialog_->files().imaging().halfSizeX, 16);
  EXPECT_EQ(dialog_->files().imaging().halfSizeY, 16);
}

TEST_F(MainDialogFilesTest, TheSheetGivenUpChangesNothing) {
  open();
  add({oneSelection("a.uvx")});
  GuiScript script;
  script.step([] {
    auto* const sheet = modalWindow<AMakeParDlg>();
    if (sheet == nullptr) return false;
    sheet->findChild<QComboBox*>("halfSizeX")->setCurrentText("16");
    sheet->reject();
    return true;
  });
  press("makePar");
  EXPECT_EQ(dialog_->files().imaging().halfSizeX, 256);
}

}  // namespace
}  // namespace lumo::test
