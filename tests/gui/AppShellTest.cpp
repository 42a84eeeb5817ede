// SPDX-License-Identifier: GPL-3.0-or-later
// What stands around the main dialog: log window, About box, prompts, the place of the parameter set.
#include <gmock/gmock.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>
#include <clocale>
#include <cstdio>

#include "app/AppIcon.h"
#include "app/CAboutDlg.h"
#include "app/CLogDlg.h"
#include "app/CLumoApp.h"
#include "app/DesktopPrompts.h"
#include "app/RunPump.h"
#include "app/StoreFolder.h"
#include "core/Paths.h"
#include "core/Version.h"
#include "gui/GuiScript.h"
#include "gui/MainDialogFixture.h"
#include "run/ParameterStore.h"

namespace lumo::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(MainDialogTest, TheLogWindowShowsWhatHappenedAndGrows) {
  CLumoDlg& dialog = open();
  add({data_.file("missing.uvx")});
  dialog.findChild<QAction*>("showLog")->trigger();
  auto* const window = dialog.findChild<CLogDlg*>();
  ASSERT_NE(window, nullptr);
  EXPECT_TRUE(window->isVisible());
  EXPECT_FALSE(window->isModal());
  const auto* const shown = window->findChild<QPlainTextEdit*>("logText");
  EXPECT_THAT(shown->toPlainText().toStdString(), HasSubstr("missing.uvx"));
  add({data_.file("later.uvx")});
  EXPECT_THAT(shown->toPlainText().toStdString(), HasSubstr("later.uvx"));
  savePicture(*window, "log");
}

TEST_F(MainDialogTest, AClosedLogWindowOpensAgainWithEverythingInIt) {
  CLumoDlg& dialog = open();
  dialog.findChild<QAction*>("showLog")->trigger();
  auto* const window = dialog.findChild<CLogDlg*>();
  window->close();
  log_.add("meanwhile");
  dialog.findChild<QAction*>("showLog")->trigger();
  EXPECT_EQ(dialog.findChildren<CLogDlg*>().size(), 1);
  EXPECT_THAT(window->findChild<QPlainTextEdit*>("logText")->toPlainText().toStdString(),
              HasSubstr("meanwhile"));
}

TEST_F(MainDialogTest, AboutShowsIconVersionAndLicence) {
  CLumoDlg& dialog = open();
  std::string text;
  bool hasIcon = false;
  GuiScript script;
  script.step([&] {
    auto* const about = modalWindow<CAboutDlg>();
    if (about == nullptr) return false;
    savePicture(*about, "about");
    text = about->findChild<QLabel*>("aboutText")->text().toStdString();
    hasIcon = !about->findChild<QLabel*>("aboutIcon")->pixmap().isNull();
    pressKey(*about, Qt::Key_Escape);
    return true;
  });
  dialog.findChild<QAction*>("about")->trigger();
  EXPECT_TRUE(hasIcon);
  EXPECT_THAT(text, HasSubstr(programVersion()));
  EXPECT_THAT(text, HasSubstr("GNU General Public License, version 3 or later"));
}

TEST(CLumoAppTest, TheProgramShowsTheMainDialogAndEndsWithItKeepingItsParametersBesideTheExecutable) {
  auto* const application = qobject_cast<CLumoApp*>(QApplication::instance());
  ASSERT_NE(application, nullptr);
  const std::string profile = getExePath() + ParameterStore::kProfileName;
  const std::string binary = getExePath() + ParameterStore::kBinaryName;
  std::remove(profile.c_str());
  GuiScript script;
  script.step([] {
    auto* const dialog = modalWindow<CLumoDlg>();
    if (dialog == nullptr) return false;
    EXPECT_EQ(dialog->windowTitle(), "Lumo");
    dialog->findChild<QPushButton*>("close")->click();
    return true;
  });
  EXPECT_EQ(application->InitInstance(), 0);
  EXPECT_THAT(readFile(profile), HasSubstr("[ZELMFS-FILES]"));
  EXPECT_TRUE(exists(binary));
  std::remove(profile.c_str());
  std::remove(binary.c_str());
}

TEST(CLumoAppTest, NumbersHaveADecimalPointWhateverTheUsersLanguage) {
  EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
  EXPECT_EQ(QLocale().decimalPoint(), ".");
}

TEST(AppIconTest, TheIconIsDrawnInEverySizeThatIsAskedFor) {
  for (const int side : {16, 32, 256}) {
    const QImage image = appIcon().pixmap(side, side).toImage();
    ASSERT_EQ(image.width(), side);
    EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0);  // round corners
    const QColor source = image.pixelColor(side * 42 / 100, side * 56 / 100);
    const QColor sky = image.pixelColor(side / 2, side * 8 / 100);
    EXPECT_GT(source.lightness(), sky.lightness() + 100);
  }
}

TEST(StoreFolderTest, TheFolderOfTheExecutableIsTakenWhenItCanBeWritten) {
  const TempFolder program, settings;
  Log log;
  EXPECT_EQ(storeFolder(program.path(), settings.path(), log), program.path());
  EXPECT_TRUE(log.lines().empty());
}

TEST(StoreFolderTest, OtherwiseTheFolderOfSettingsIsMadeAndTheLogSaysSo) {
  const TempFolder settings;
  Log log;
  // Nothing can be created there, whoever runs this.
  EXPECT_EQ(storeFolder("/proc/", settings.file("a/b"), log), settings.file("a/b/"));
  EXPECT_TRUE(exists(settings.file("a/b")));
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_THAT(log.lines()[0].text, HasSubstr(settings.file("a/b/")));
}

TEST(StoreFolderTest, WithNeitherTheLogSaysThatParametersAreNotKept) {
  Log log;
  EXPECT_EQ(storeFolder("", "/proc/lumo", log), "/proc/lumo/");
  ASSERT_EQ(log.lines().size(), 2u);
  EXPECT_THAT(log.lines()[1].text, HasSubstr("will not be kept"));
}

TEST(DesktopPromptsTest, FilesAreChosenManyAtATimeAmongThoseThatExist) {
  const TempFolder folder;
  QStringList filters;
  QStringList patterns;
  GuiScript script;
  script.step([&] {
    auto* const dialog = modalWindow<QFileDialog>();
    if (dialog == nullptr) return false;
    patterns = dialog->nameFilters();
    auto* const types = dialog->findChild<QComboBox*>("fileTypeCombo");
    for (int i = 0; i < types->count(); ++i) filters.append(types->itemText(i));
    EXPECT_EQ(dialog->fileMode(), QFileDialog::ExistingFiles);
    EXPECT_EQ(dialog->defaultSuffix(), "uvx");
    savePicture(*dialog, "add");
    dialog->reject();
    return true;
  });
  EXPECT_TRUE(DesktopPrompts().chooseFiles(nullptr, QString::fromStdString(folder.path())).isEmpty());
  EXPECT_EQ(filters, QStringList({"ZEL file (*.UVX)", "All files (*.*)"}));
  EXPECT_EQ(patterns, QStringList({"ZEL file (*.UVX) (*.uvx *.UVX)", "All files (*.*) (*)"}));
}

TEST(DesktopPromptsTest, TheFolderBrowserAsksForTheWorkFolder) {
  const TempFolder folder;
  QString title;
  GuiScript script;
  script.step([&] {
    auto* const dialog = modalWindow<QFileDialog>();
    if (dialog == nullptr) return false;
    title = dialog->windowTitle();
    dialog->reject();
    return true;
  });
  EXPECT_TRUE(DesktopPrompts().chooseFolder(nullptr, QString::fromStdString(folder.path())).isEmpty());
  EXPECT_EQ(title, "Select work folder");
}

TEST(DesktopPromptsTest, AMessageShowsItsTextAsItStands) {
  QString text;
  GuiScript script;
  script.step([&] {
    auto* const box = modalWindow<QMessageBox>();
    if (box == nullptr) return false;
    text = box->text();
    EXPECT_EQ(box->textFormat(), Qt::PlainText);
    savePicture(*box, "message");
    box->accept();
    return true;
  });
  DesktopPrompts().showMessage(nullptr, "Sorry. Source must be 1 (one).");
  EXPECT_EQ(text, "Sorry. Source must be 1 (one).");
}

TEST(DesktopPromptsTest, AQuestionIsNoUnlessYesIsChosen) {
  for (const bool yes : {true, false}) {
    GuiScript script;
    script.step([yes] {
      auto* const box = modalWindow<QMessageBox>();
      if (box == nullptr) return false;
      if (yes)
        box->button(QMessageBox::Yes)->click();
      else
        pressKey(*box, Qt::Key_Escape);
      return true;
    });
    EXPECT_EQ(DesktopPrompts().confirm(nullptr, "Cancel it?"), yes);
  }
}

struct RecordedText : StatusText {
  void setText(std::string_view text) override { texts.emplace_back(text); }
  std::vector<std::string> texts;
};

struct RecordedBar : ProgressBar {
  void setPos(int percent) override { positions.push_back(percent); }
  std::vector<int> positions;
};

TEST(RunPumpTest, EveryIndicatorReachesItsControl) {
  RecordedText status;
  RecordedBar reading, frequency, file;
  const CancelFlag cancel{0};
  RunPump pump({status, reading, frequency, file});
  const RunIndicators indicators = pump.indicators(cancel);
  indicators.setText("working");
  indicators.readingBar->setPos(1);
  indicators.frequencyBar->setPos(2);
  indicators.fileBar->setPos(3);
  EXPECT_THAT(status.texts, ElementsAre("working"));
  EXPECT_THAT(reading.positions, ElementsAre(1));
  EXPECT_THAT(frequency.positions, ElementsAre(2));
  EXPECT_THAT(file.positions, ElementsAre(3));
  EXPECT_EQ(indicators.cancel, &cancel);
}

TEST(RunPumpTest, WhatWaitsInTheEventLoopArrivesWhileTheRunWorks) {
  RecordedText status;
  RecordedBar bar;
  CancelFlag cancel{0};
  RunPump pump({status, bar, bar, bar});
  const RunIndicators indicators = pump.indicators(cancel);
  QTimer::singleShot(0, [&] { cancel = 1; });
  EXPECT_FALSE(indicators.cancelled());
  indicators.readingBar->setPos(1);
  EXPECT_TRUE(indicators.cancelled());
}

}  // namespace
}  // namespace lumo::test
