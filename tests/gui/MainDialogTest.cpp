// SPDX-License-Identifier: GPL-3.0-or-later
// The main dialog as it stands: its controls, its keyboard, what it loads and saves.
#include <gmock/gmock.h>

#include <QAbstractButton>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <set>

#include "gui/MainDialogFixture.h"
#include "run/ui/AFqIDTable.h"
#include "view/AProgressCtrl.h"

namespace lumo::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST_F(MainDialogTest, LabelsGroupsAndButtonsReadAsUsersKnowThem) {
  CLumoDlg& dialog = open();
  std::set<std::string> buttons, groups, labels;
  for (const auto* one : dialog.findChildren<QAbstractButton*>()) {
    // A menu bar has a button of its own for what does not fit.
    if (qobject_cast<QMenuBar*>(one->parentWidget()) == nullptr) buttons.insert(one->text().toStdString());
  }
  for (const auto* one : dialog.findChildren<QGroupBox*>()) groups.insert(one->title().toStdString());
  for (const auto* one : dialog.findChildren<QLabel*>())
    if (one->buddy() != nullptr) labels.insert(one->text().toStdString());
  EXPECT_EQ(buttons,
            (std::set<std::string>{"Add...", "Delete", "ReRead", "UVX Info...", "Browse...", "Center",
                                   "Non-negativity", "Variable loop gain", "Make par...", "UV-Plane...",
                                   "Run", "Graph...", "Table...", "Map and areas...", "Invert", "Close"}));
  EXPECT_EQ(groups, (std::set<std::string>{"UVX-Files", "Frequency", "Parameters"}));
  EXPECT_EQ(labels,
            (std::set<std::string>{"Work folder: ", "Prefix name: ", "Min. [MHz]: ", "Max. [MHz]: ",
                                   "Number: ", "Reference [MHz]: ", "CLEAN Iterations: ", "Index threshold: ",
                                   "Gain: ", "Sp. index Min: ", "Sp. index Max: ", "Order: ", "Priority: "}));
  EXPECT_EQ(dialog.windowTitle(), "Lumo");
  EXPECT_FALSE(dialog.windowIcon().isNull());
}

TEST_F(MainDialogTest, LowIsSelectedAmongSevenPriorities) {
  open();
  auto& list = get<QComboBox>("priority");
  QStringList names;
  for (int i = 0; i < list.count(); ++i) names += list.itemText(i);
  EXPECT_EQ(names, QStringList({"Idle", "Low", "Below", "Normal", "Above", "High", "Timecritical"}));
  EXPECT_EQ(list.currentText(), "Low");
}

TEST_F(MainDialogTest, BarsShowTheirPercentage) {
  open();
  for (const char* const name : {"leftBar", "middleBar", "rightBar"}) {
    auto& bar = get<AProgressCtrl>(name);
    EXPECT_EQ(bar.text(), "0%");
    bar.setPos(37);
    EXPECT_EQ(bar.text(), "37%");
  }
}

TEST_F(MainDialogTest, BarsShareTheirRowAs114To90To110) {
  CLumoDlg& dialog = open();
  dialog.resize(1400, 900);
  const double left = get<AProgressCtrl>("leftBar").width();
  const double middle = get<AProgressCtrl>("middleBar").width();
  const double right = get<AProgressCtrl>("rightBar").width();
  // Whole pixels.
  EXPECT_NEAR(left / middle, 114.0 / 90.0, 0.01);
  EXPECT_NEAR(right / middle, 110.0 / 90.0, 0.01);
}

TEST_F(MainDialogTest, InvertIsHidden) {
  open();
  EXPECT_FALSE(get<QCheckBox>("invert").isVisible());
}

TEST_F(MainDialogTest, WithNoFileListedOnlyAddBrowseTheParametersTheViewersAndCloseRespond) {
  open();
  for (const char* const name :
       {"delete", "info", "makePar", "run", "uvPlane", "reRead", "center", "reference"})
    EXPECT_FALSE(isEnabled(name)) << name;
  for (const char* const name :
       {"add", "browse", "prefix", "iterations", "indexThreshold", "gain", "indexMin", "indexMax", "order",
        "nonNegative", "variableGain", "priority", "graph", "table", "mapAndAreas", "close"})
    EXPECT_TRUE(isEnabled(name)) << name;
}

TEST_F(MainDialogTest, TheFirstFileEnablesWhatNeedsOne) {
  open();
  add(simulateBands({4800}));
  for (const char* const name :
       {"delete", "info", "makePar", "uvPlane", "run", "reRead", "center", "reference"})
    EXPECT_TRUE(isEnabled(name)) << name;
}

TEST_F(MainDialogTest, AFirstStartShowsTheDefaults) {
  open();
  EXPECT_EQ(get<QListWidget>("files").count(), 0);
  EXPECT_EQ(text("iterations"), "1000");
  EXPECT_EQ(text("indexThreshold"), "0.01");
  EXPECT_EQ(text("indexMin"), "-3");
  EXPECT_EQ(text("indexMax"), "3");
  EXPECT_EQ(text("order"), "2");
  EXPECT_EQ(text("gain"), "0.1");
  EXPECT_EQ(text("reference"), "0");
  EXPECT_EQ(text("prefix"), "MFS");
  EXPECT_EQ(text("folder"), "0");
  EXPECT_FALSE(get<QCheckBox>("nonNegative").isChecked());
  EXPECT_FALSE(get<QCheckBox>("variableGain").isChecked());
}

TEST_F(MainDialogTest, ClosingWithAbcInTheGainSavesZero) {
  open();
  type("gain", "abc");
  EXPECT_EQ(text("gain"), "abc");
  close();
  EXPECT_EQ(saved("GAIN"), "0");
  EXPECT_THAT(prompts_.messages, IsEmpty());
}

TEST_F(MainDialogTest, ClosingSavesWhateverStandsInTheFieldsUnchecked) {
  open();
  type("iterations", "12x");
  type("indexThreshold", "7.5");
  type("indexMin", "");
  type("indexMax", "1e3");
  type("order", "99");
  type("prefix", "run 2");
  press("nonNegative");
  press("variableGain");
  close();
  EXPECT_EQ(saved("ITER"), "12");
  EXPECT_EQ(saved("POROG"), "7.5");
  EXPECT_EQ(saved("MINRANGE"), "0");
  EXPECT_EQ(saved("MAXRANGE"), "1000");
  EXPECT_EQ(saved("ORDER"), "99");
  EXPECT_EQ(saved("PREFIX"), "run 2");
  EXPECT_EQ(saved("NONREG"), "1");
  EXPECT_EQ(saved("VARGAIN"), "1");
  EXPECT_TRUE(exists(store_.file("ZELMFS.bin")));
}

TEST_F(MainDialogTest, EscapeSavesAndEndsLikeClose) {
  CLumoDlg& dialog = open();
  type("prefix", "esc");
  typeKey(dialog, Qt::Key_Escape);
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(saved("PREFIX"), "esc");
}

TEST_F(MainDialogTest, TheCloseBoxSavesAndEndsLikeClose) {
  CLumoDlg& dialog = open();
  type("prefix", "box");
  dialog.QWidget::close();
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(saved("PREFIX"), "box");
}

TEST_F(MainDialogTest, AStoreThatCannotBeWrittenShowsInTheLogOnly) {
  dialog_ = std::make_unique<CLumoDlg>(prompts_, log_, work_.file("missing") + "/");
  dialog_->OnInitDialog();
  dialog_->show();
  press("close");
  EXPECT_FALSE(dialog_->isVisible());
  EXPECT_THAT(prompts_.messages, IsEmpty());
  EXPECT_THAT(logText(), HasSubstr("could not be saved"));
}

TEST_F(MainDialogTest, AProfileThatListsFilesButLacksTheFolderGivesTheFolderZero) {
  const std::string file = simulateBands({4800})[0];
  writeFile(store_.file("ZELMFS.ini"), "[ZELMFS-FILES]\nNUVX=1\nUVX0=" + file + "\n");
  open();
  EXPECT_EQ(get<QListWidget>("files").count(), 1);
  EXPECT_EQ(text("folder"), "0");
}

TEST_F(MainDialogTest, AListedFileThatIsGoneIsLeftOutAndTheLogSaysSo) {
  const std::string file = simulateBands({4800})[0];
  writeFile(store_.file("ZELMFS.ini"),
            "[ZELMFS-FILES]\nNUVX=2\nUVX0=" + data_.file("gone.uvx") + "\nUVX1=" + file + "\n");
  open();
  EXPECT_EQ(get<QListWidget>("files").count(), 1);
  EXPECT_TRUE(isEnabled("run"));
  EXPECT_THAT(prompts_.messages, IsEmpty());
  EXPECT_THAT(logText(), HasSubstr(data_.file("gone.uvx")));
}

TEST_F(MainDialogTest, BrowseAppendsTheSeparator) {
  open();
  prompts_.folder = QString::fromStdString(work_.path()).chopped(1);
  press("browse");
  EXPECT_EQ(text("folder"), work_.path());
  close();
  EXPECT_EQ(saved("FOLDER"), work_.path());
}

TEST_F(MainDialogTest, ACommandThatRunsOutOfMemoryEndsInTheLogAndNotTheProgram) {
  CLumoDlg& dialog = open();
  prompts_.isOutOfMemory = true;
  press("add");
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_THAT(logText(), HasSubstr("The last command failed"));
  prompts_.isOutOfMemory = false;
  add(simulateBands({4800}));
  EXPECT_EQ(get<QListWidget>("files").count(), 1);
}

TEST_F(MainDialogTest, BrowseGivenUpKeepsTheFolder) {
  open();
  press("browse");
  EXPECT_EQ(text("folder"), "0");
}

TEST_F(MainDialogTest, TheTabKeyVisitsTheControlsAsTheEyeDoes) {
  CLumoDlg& dialog = open();
  add(simulateBands({4800}));
  get<QWidget>("files").setFocus();
  std::vector<std::string> visited;
  for (int i = 0; i < 26; ++i) {
    visited.push_back(dialog.focusWidget()->objectName().toStdString());
    typeKey(dialog, Qt::Key_Tab);
  }
  EXPECT_THAT(visited, ElementsAre("files", "add", "delete", "reRead", "info", "browse", "prefix",
                                   "reference", "center", "idTable", "iterations", "indexThreshold", "gain",
                                   "indexMin", "order", "indexMax", "nonNegative", "variableGain", "makePar",
                                   "uvPlane", "run", "graph", "table", "mapAndAreas", "priority", "close"));
}

TEST_F(MainDialogTest, EnterPressesTheButtonThatHasTheFocusAndNoneFromAField) {
  CLumoDlg& dialog = open();
  add(simulateBands({4800}));
  get<QWidget>("prefix").setFocus();
  typeKey(dialog, Qt::Key_Return, "\r");
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_THAT(prompts_.messages, IsEmpty());
  EXPECT_EQ(text("reference"), "0");
  get<QWidget>("center").setFocus();
  typeKey(dialog, Qt::Key_Return, "\r");
  EXPECT_EQ(text("reference"), "4800");
}

TEST_F(MainDialogTest, EveryControlHasAToolTipAndAName) {
  CLumoDlg& dialog = open();
  int seen = 0;
  for (QWidget* const one : dialog.findChildren<QWidget*>()) {
    const bool isControl = one->focusPolicy() != Qt::NoFocus || qobject_cast<AProgressCtrl*>(one) != nullptr;
    if (!isControl || one->objectName().isEmpty() || one->objectName().startsWith("qt_")) continue;
    ++seen;
    EXPECT_FALSE(one->toolTip().isEmpty()) << one->objectName().toStdString();
    const auto* const button = qobject_cast<QAbstractButton*>(one);
    EXPECT_TRUE(!one->accessibleName().isEmpty() || (button != nullptr && !button->text().isEmpty()))
        << one->objectName().toStdString();
  }
  EXPECT_EQ(seen, 33);
}

TEST_F(MainDialogTest, ToolTipsOfFieldsTellTheRange) {
  open();
  add(simulateBands({4800, 5000, 5200}));
  EXPECT_THAT(get<QWidget>("iterations").toolTip().toStdString(), HasSubstr("between 1 and 1000000"));
  EXPECT_THAT(get<QWidget>("gain").toolTip().toStdString(), HasSubstr("between 1e-10 and 2"));
  EXPECT_THAT(get<QWidget>("order").toolTip().toStdString(), HasSubstr("between 1 and 3"));
  EXPECT_THAT(get<QWidget>("reference").toolTip().toStdString(), HasSubstr("MHz"));
}

TEST_F(MainDialogTest, AWiderAndTallerDialogGivesTheRoomToTheLists) {
  CLumoDlg& dialog = open();
  const QSize list = get<QWidget>("files").size();
  const QSize table = get<QWidget>("idTable").size();
  const int field = get<QWidget>("iterations").height();
  dialog.resize(dialog.size() + QSize(300, 300));
  EXPECT_GT(get<QWidget>("files").width(), list.width() + 200);
  EXPECT_GT(get<QWidget>("files").height(), list.height());
  EXPECT_GT(get<QWidget>("idTable").height(), table.height());
  EXPECT_EQ(get<QWidget>("iterations").height(), field);
}

TEST_F(MainDialogTest, AboutAndTheLogStandNextToEachOtherInTheSystemMenu) {
  CLumoDlg& dialog = open();
  const auto menus = dialog.findChild<QMenuBar*>()->actions();
  ASSERT_EQ(menus.size(), 1);
  EXPECT_EQ(menus[0]->text(), "&System");
  QStringList entries;
  for (const QAction* const action : menus[0]->menu()->actions())
    entries += action->isSeparator() ? "-" : action->text();
  EXPECT_EQ(entries, QStringList({"&Log...", "-", "&About Lumo..."}));
}

TEST_F(MainDialogTest, ButtonsAnswerToTheirKeys) {
  open();
  for (const auto& [name, keys] : {std::pair{"add", "Ctrl+O"},
                                   {"delete", "Ctrl+Shift+D"},
                                   {"reRead", "F5"},
                                   {"run", "Ctrl+R"},
                                   {"close", "Ctrl+Q"}}) {
    EXPECT_EQ(get<QPushButton>(name).shortcut(), QKeySequence(keys)) << name;
    EXPECT_THAT(get<QPushButton>(name).toolTip().toStdString(), HasSubstr(keys));
  }
}

}  // namespace
}  // namespace lumo::test
