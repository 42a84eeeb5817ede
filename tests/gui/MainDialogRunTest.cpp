// SPDX-License-Identifier: GPL-3.0-or-later
// "Run" in the main dialog: from the check of the fields to the products, and the ways to cancel.
#include <gmock/gmock.h>

#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <algorithm>
#include <cmath>

#include "clean/ui/CleanGraphs.h"
#include "clean/ui/LumoCleanDlg.h"
#include "clean/ui/LumoClnShowDlg.h"
#include "gui/GuiScript.h"
#include "gui/MainDialogFixture.h"
#include "imaging/ui/AMakeParDlg.h"
#include "io/MapProduct.h"
#include "run/ui/AFqIDTable.h"
#include "view/AMultiAxisDlgWnd.h"

namespace lumo::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class MainDialogRunTest : public MainDialogTest {
 protected:
  /// Three files at 4800, 5000 and 5200 MHz, products into a folder of their own.
  CLumoDlg& openWithFiles() {
    CLumoDlg& dialog = open();
    files_ = simulateBands({4800, 5000, 5200});
    add(files_);
    prompts_.folder = QString::fromStdString(work_.path());
    press("browse");
    press("center");
    return dialog;
  }
  /// Through the sheet of imaging parameters.
  void setMapSize(int pixels) {
    GuiScript script;
    script.step([pixels] {
      auto* const sheet = modalWindow<AMakeParDlg>();
      if (sheet == nullptr) return false;
      for (const char* const name : {"halfSizeX", "halfSizeY"})
        sheet->findChild<QComboBox*>(name)->setCurrentText(QString::number(pixels));
      sheet->accept();
      return true;
    });
    press("makePar");
    ASSERT_EQ(dialog_->files().imaging().halfSizeX, pixels);
  }
  /// Presses "Run" with a value that is refused; the message, with the field in focus.
  std::string refusal(const char* field, const QString& value) {
    prompts_.messages.clear();
    type(field, value);
    get<QWidget>("close").setFocus();
    press("run");
    EXPECT_EQ(dialog_->focusWidget()->objectName().toStdString(), field);
    EXPECT_EQ(prompts_.messages.size(), 1u);
    return prompts_.messages.empty() ? "" : prompts_.messages[0];
  }
  [[nodiscard]] bool isImaging() { return text("status").starts_with("Fast Fourier"); }
  [[nodiscard]] bool isWritten(const char* suffix) const { return exists(work_.file(suffix)); }

  std::vector<std::string> files_;
};

TEST_F(MainDialogRunTest, FromFilesToProductsAndBackAtTheNextStart) {
  CLumoDlg& dialog = openWithFiles();
  savePicture(dialog, "main");
  clickRow(get<AFqIDTable>("idTable"), 1);
  EXPECT_EQ(text("number"), "2");
  EXPECT_EQ(text("reference"), "5000");
  setMapSize(16);
  type("iterations", "20");
  type("prefix", "try");
  press("variableGain");
  press("run");

  const RunReport& report = dialog.lastReport();
  EXPECT_TRUE(report.status.ok()) << report.status.text();
  EXPECT_EQ(report.iterations, 20);
  EXPECT_EQ(text("status"), "Success");
  EXPECT_EQ(dialog.windowTitle(), "MFS");
  EXPECT_EQ(get<QPushButton>("run").text(), "Run");
  EXPECT_TRUE(isEnabled("add"));
  for (const char* const name : {"try^bm0.exm", "try^bm1.exm", "try^bm2.exm", "try^dm0.exm", "try^dm1.exm",
                                 "try^residual0.exm", "try^cln0.exm", "try^cln1.exm", "try^cln_res0.exm",
                                 "try^cln_res1.exm", "try^sindex.exm", "try^freqrange.txt"})
    EXPECT_TRUE(isWritten(name)) << name;
  EXPECT_EQ(readFile(work_.file("try^freqrange.txt")), "4.8e+09 5.2e+09 2\n");
  LoadedMap beam;
  ASSERT_TRUE(readMap(work_.file("try^bm0.exm"), beam).ok());
  EXPECT_EQ(beam.range.vMax, 1);  // what the imaging scales beam 0 to
  EXPECT_THAT(logText(), HasSubstr("12 products written"));
  EXPECT_THAT(prompts_.messages, IsEmpty());
  close();

  open();
  auto& list = get<QListWidget>("files");
  ASSERT_EQ(list.count(), 3);
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(list.item(i)->text().toStdString(), files_[static_cast<std::size_t>(i)]);
  EXPECT_EQ(text("number"), "2");
  EXPECT_EQ(text("reference"), "5000");
  EXPECT_EQ(text("iterations"), "20");
  EXPECT_EQ(text("prefix"), "try");
  EXPECT_EQ(text("folder"), work_.path());
  EXPECT_TRUE(get<QAbstractButton>("variableGain").isChecked());
  EXPECT_FALSE(get<QAbstractButton>("nonNegative").isChecked());
  const auto* const rows = get<AFqIDTable>("idTable").model();
  EXPECT_EQ(rows->index(0, 0).data(Qt::CheckStateRole).toInt(), Qt::Checked);
  EXPECT_EQ(rows->index(1, 0).data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
  EXPECT_EQ(dialog_->files().imaging().halfSizeX, 16);
}

// The whole visit of a user: files, a frequency out, a folder, a run looked at twice and stopped, and back
// again.
TEST_F(MainDialogRunTest, ARunLookedAtAndStoppedLeavesItsProductsAndEverythingAsItWas) {
  CLumoDlg& dialog = openWithFiles();
  clickRow(get<AFqIDTable>("idTable"), 2);
  press("center");
  EXPECT_EQ(text("reference"), "4900");
  setMapSize(256);
  type("iterations", "1000000");

  const auto pressIn = [](QWidget& window, const char* label) {
    for (QPushButton* const button : window.findChildren<QPushButton*>())
      if (button->text().remove('&') == label) return button->click();
    ADD_FAILURE() << "no button " << label;
  };
  std::int32_t iterations[2] = {};
  GuiScript script;
  for (int visit = 0; visit < 2; ++visit) {
    script
        .step([&dialog, visit, &iterations] {
          auto* const clean = modalWindow<LumoCleanDlg>();
          if (clean == nullptr) return false;
          auto* const convergence = clean->findChild<QPushButton*>("convergence");
          if (!convergence->isChecked()) convergence->click();
          const int done = dialog.windowTitle().split(' ')[0].toInt();
          // Far enough on for the maps to show what CLEAN has found.
          if (done < iterations[0] + 300) return false;
          const auto& graphs = *clean->findChild<CleanGraphs*>();
          if (graphs.fluxWindow().frame()->extent().xMax < iterations[0] + 300) return false;
          if (visit == 1) savePicture(*clean, "clean-convergence");
          clean->findChild<QPushButton*>("showResult")->click();
          iterations[visit] = done;
          return true;
        })
        .step([] { return modalWindow<LumoClnShowDlg>() != nullptr; })
        .then([&pressIn, visit] {
          auto& view = *modalWindow<LumoClnShowDlg>();
          if (visit == 0) savePicture(view, "clean-view");
          pressIn(view, visit == 0 ? "Continue" : "Stop");
        });
  }
  press("run");

  EXPECT_TRUE(dialog.lastReport().stopped);
  EXPECT_GT(iterations[1], iterations[0]);
  EXPECT_GE(dialog.lastReport().iterations, iterations[1]);
  EXPECT_EQ(text("status"), "Success");
  LoadedMap map;
  ASSERT_TRUE(readMap(work_.file("MFS^cln0.exm"), map).ok());
  EXPECT_EQ(map.matrix->columns(), 256u);
  EXPECT_TRUE(isWritten("MFS^sindex.exm"));
  close();
  EXPECT_TRUE(exists(store_.file("ZELMFS.ini")));
  EXPECT_TRUE(exists(store_.file("ZELMFS.bin")));

  open();
  EXPECT_EQ(get<QListWidget>("files").count(), 3);
  EXPECT_EQ(text("number"), "2");
  EXPECT_EQ(text("reference"), "4900");
  EXPECT_EQ(text("folder"), work_.path());
  EXPECT_EQ(dialog_->files().imaging().halfSizeX, 256);
}

TEST_F(MainDialogRunTest, TheCleanDialogAccompaniesTheCleanAndItsCloseBoxStopsIt) {
  CLumoDlg& dialog = openWithFiles();
  setMapSize(16);
  type("iterations", "1000000");
  QString titleMeanwhile;
  GuiScript script;
  script.step([&] {
    auto* const clean = modalWindow<LumoCleanDlg>();
    if (clean == nullptr || !dialog.windowTitle().endsWith(" - MFS")) return false;
    titleMeanwhile = dialog.windowTitle();
    savePicture(*clean, "clean");
    clean->close();
    return true;
  });
  press("run");
  EXPECT_TRUE(dialog.lastReport().stopped);
  EXPECT_GE(dialog.lastReport().iterations, titleMeanwhile.split(' ')[0].toInt());
  EXPECT_LT(dialog.lastReport().iterations, 1000000);
  EXPECT_TRUE(isWritten("MFS^cln0.exm"));
  EXPECT_TRUE(isWritten("MFS^sindex.exm"));
  EXPECT_EQ(dialog.windowTitle(), "MFS");
}

TEST_F(MainDialogRunTest, EachFieldOutOfRangeIsRefusedWithAMessageAndGetsTheFocus) {
  openWithFiles();
  EXPECT_THAT(refusal("iterations", "0"),
              HasSubstr("CLEAN Iterations must be an integer between 1 and 1000000"));
  EXPECT_THAT(refusal("iterations", "1000001"), HasSubstr("found 1000001"));
  type("iterations", "10");
  EXPECT_THAT(refusal("indexThreshold", "1.01"),
              HasSubstr("Index threshold must be a number between 0 and 1"));
  type("indexThreshold", "0.01");
  EXPECT_THAT(refusal("indexMin", "low"), HasSubstr("Sp. index Min must be a number; found 'low'"));
  type("indexMin", "-3");
  EXPECT_THAT(refusal("indexMax", ""), HasSubstr("Sp. index Max must be a number; found ''"));
  type("indexMax", "3");
  EXPECT_THAT(refusal("gain", "2.1"), HasSubstr("Gain must be a number between 1e-10 and 2"));
  type("gain", "0.1");
  EXPECT_THAT(refusal("reference", "4700"), HasSubstr("Reference [MHz] must be a number between"));
  EXPECT_FALSE(isWritten("MFS^bm0.exm"));
}

TEST_F(MainDialogRunTest, AnOrderAboveTheNumberOfFrequenciesIsRefused) {
  openWithFiles();
  EXPECT_THAT(refusal("order", "4"), HasSubstr("Order must be an integer between 1 and 3"));
  clickRow(get<AFqIDTable>("idTable"), 0);
  EXPECT_THAT(refusal("order", "3"), HasSubstr("between 1 and 2"));
}

TEST_F(MainDialogRunTest, WithNothingSelectedAnyOrderIsRefused) {
  openWithFiles();
  for (int row = 0; row < 3; ++row) clickRow(get<AFqIDTable>("idTable"), row);
  EXPECT_EQ(text("number"), "0");
  EXPECT_THAT(refusal("order", "1"), HasSubstr("no frequency is selected"));
}

TEST_F(MainDialogRunTest, ARefusedRunLeavesTheProductsOfTheLastOneAlone) {
  openWithFiles();
  writeFile(work_.file("MFS^cln0.exm"), "earlier");
  EXPECT_THAT(refusal("gain", "-1"), StartsWith("Gain"));
  EXPECT_EQ(readFile(work_.file("MFS^cln0.exm")), "earlier");
}

TEST_F(MainDialogRunTest, TheOrderOneEndsWithoutSuccessAndWithoutAnIndexMap) {
  openWithFiles();
  setMapSize(16);
  type("iterations", "5");
  type("order", "1");
  press("run");
  EXPECT_TRUE(dialog_->lastReport().status.ok());
  EXPECT_TRUE(isWritten("MFS^cln0.exm"));
  EXPECT_FALSE(isWritten("MFS^sindex.exm"));
  EXPECT_NE(text("status"), "Success");
}

TEST_F(MainDialogRunTest, CancelWhileImagingEndsTheRunAndGivesTheWindowBack) {
  CLumoDlg& dialog = openWithFiles();
  setMapSize(1024);
  std::vector<std::string> enabled;
  GuiScript script;
  script.step([&] {
    if (!isImaging()) return false;
    for (const char* const name : {"add", "delete", "browse", "prefix", "iterations", "reference", "center",
                                   "idTable", "files", "makePar", "priority", "run", "close"})
      if (isEnabled(name)) enabled.emplace_back(name);
    EXPECT_EQ(get<QPushButton>("run").text(), "Cancel");
    savePicture(dialog, "main-running");
    press("run");
    return true;
  });
  press("run");
  EXPECT_THAT(enabled, ElementsAre("run", "close"));
  EXPECT_EQ(dialog.lastReport().status.code(), StatusCode::kCancelled);
  EXPECT_EQ(dialog.lastReport().iterations, 0);
  EXPECT_FALSE(isWritten("MFS^cln0.exm"));
  EXPECT_EQ(text("status"), "Cancelled");
  EXPECT_EQ(get<QPushButton>("run").text(), "Run");
  EXPECT_TRUE(isEnabled("add"));
  EXPECT_TRUE(isEnabled("reference"));
}

TEST_F(MainDialogRunTest, ClosingDuringARunAsksAndEscapeCancelsAtOnce) {
  CLumoDlg& dialog = openWithFiles();
  setMapSize(1024);
  GuiScript script;
  script
      .step([&] {
        if (!isImaging()) return false;
        prompts_.agrees = false;
        press("close");
        return true;
      })
      .step([&] {
        dialog.QWidget::close();
        return true;
      })
      .step([&] {
        EXPECT_TRUE(dialog.isVisible());
        typeKey(dialog, Qt::Key_Escape);
        return true;
      });
  press("run");
  EXPECT_EQ(prompts_.questions.size(), 2u);
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_EQ(dialog.lastReport().status.code(), StatusCode::kCancelled);
  EXPECT_FALSE(exists(store_.file("ZELMFS.ini")));
}

TEST_F(MainDialogRunTest, AgreeingToCancelOnCloseEndsTheRunAndKeepsTheDialog) {
  CLumoDlg& dialog = openWithFiles();
  setMapSize(1024);
  GuiScript script;
  script.step([&] {
    if (!isImaging()) return false;
    press("close");
    return true;
  });
  press("run");
  EXPECT_THAT(prompts_.questions, ElementsAre("A run is going on. Cancel it?"));
  EXPECT_EQ(dialog.lastReport().status.code(), StatusCode::kCancelled);
  EXPECT_TRUE(dialog.isVisible());
  close();
  EXPECT_TRUE(exists(store_.file("ZELMFS.ini")));
}

TEST_F(MainDialogRunTest, ARunThatFailsSaysWhyInTheStatusTextAndTheLog) {
  openWithFiles();
  prompts_.folder = QString::fromStdString(work_.file("missing"));
  press("browse");
  press("run");
  EXPECT_THAT(text("status"), HasSubstr("the work folder does not exist"));
  EXPECT_THAT(logText(), HasSubstr("the work folder does not exist"));
  EXPECT_THAT(prompts_.messages, IsEmpty());
  EXPECT_TRUE(isEnabled("add"));
  EXPECT_EQ(get<QPushButton>("run").text(), "Run");
}

}  // namespace
}  // namespace lumo::test
