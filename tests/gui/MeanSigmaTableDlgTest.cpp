// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <cmath>

#include "analysis/SpectraText.h"
#include "analysis/ui/AMeanSigmaTblDlg.h"
#include "gui/GuiScript.h"
#include "gui/MainDialogFixture.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

/// Power laws of `areas` areas at `points` frequencies from 1 GHz on, 25 MHz apart.
MeanSigmaTable lawsOf(std::uint32_t areas, std::uint32_t points) {
  AMatrix<double> mean(areas, points);
  AMatrix<double> rms(areas, points);
  std::vector<double> freqs;
  for (std::uint32_t u = 0; u < points; ++u) {
    freqs.push_back(1e9 + 2.5e7 * u);
    for (std::uint32_t k = 0; k < areas; ++k) {
      mean(k, u) = (k + 1.0) * std::pow(freqs.back() / 1.5e9, -0.7);
      rms(k, u) = 0.00123456789;
    }
  }
  MeanSigmaTable table;
  table.setData(mean, rms, freqs);
  return table;
}

class MeanSigmaTableDlgTest : public testing::Test {
 protected:
  AMeanSigmaTbl& open(MeanSigmaTable table) {
    dialog_ = std::make_unique<AMeanSigmaTblDlg>(std::move(table));
    dialog_->show();
    QApplication::processEvents();
    return dialog_->table();
  }
  QPushButton* button(const QString& text) {
    for (QPushButton* const button : dialog_->findChildren<QPushButton*>())
      if (button->text().remove('&') == text) return button;
    throw std::runtime_error("no button " + text.toStdString());
  }
  /// Chooses from the menu of the right button.
  void copy(const QString& what) {
    QWidget* const viewport = dialog_->table().viewport();
    QContextMenuEvent event(QContextMenuEvent::Mouse, {20, 20}, viewport->mapToGlobal(QPoint(20, 20)));
    QApplication::sendEvent(viewport, &event);
    auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->actions().size(), 1);
    EXPECT_EQ(menu->actions().first()->text(), "Copy to clipboard as text");
    QApplication::clipboard()->clear();
    for (QAction* const action : menu->actions().first()->menu()->actions())
      if (action->text() == what) action->trigger();
    menu->close();
  }

  std::unique_ptr<AMeanSigmaTblDlg> dialog_;
};

TEST_F(MeanSigmaTableDlgTest, OneAreaAndThreePointsMakeThreeColumnsAndFourRows) {
  AMeanSigmaTbl& table = open(lawsOf(1, 3));
  EXPECT_EQ(table.columnCount(), 3);
  EXPECT_EQ(table.rowCount(), 4);
  const QAbstractItemModel& shown = *table.model();
  EXPECT_EQ(shown.columnCount(), 2);
  EXPECT_EQ(shown.rowCount(), 3);
  EXPECT_EQ(shown.headerData(0, Qt::Horizontal).toString(), "Mean (1)");
  EXPECT_EQ(shown.headerData(1, Qt::Horizontal).toString(), "RMS (1)");
  EXPECT_EQ(shown.headerData(1, Qt::Vertical).toString(), "1025 [MHz]");
}

TEST_F(MeanSigmaTableDlgTest, FluxHasSixDigitsAndErrorFour) {
  const QAbstractItemModel& shown = *open(lawsOf(2, 1)).model();
  // (1 / 1.5)^-0.7 = 1.3282...
  EXPECT_EQ(shown.index(0, 0).data().toString(), "1.3282");
  EXPECT_EQ(shown.index(0, 1).data().toString(), "0.001235");
  EXPECT_EQ(shown.index(0, 2).data().toString(), "2.6564");
}

TEST_F(MeanSigmaTableDlgTest, TheTableFillsTheDialog) {
  AMeanSigmaTbl& table = open(lawsOf(2, 8));
  const QSize before = table.size();
  dialog_->resize(dialog_->size() + QSize(200, 100));
  QApplication::processEvents();
  EXPECT_EQ(table.size(), before + QSize(200, 100));
  EXPECT_GT(button("Print...")->geometry().top(), table.geometry().bottom());
  EXPECT_GT(button("Done")->geometry().top(), table.geometry().bottom());
}

TEST_F(MeanSigmaTableDlgTest, AllCellsAreCopiedAsText) {
  open(lawsOf(1, 2));
  copy("All cells");
  // (1 / 1.5)^-0.7 and (1.025 / 1.5)^-0.7.
  EXPECT_EQ(QApplication::clipboard()->text().toStdString(),
            "\tMean (1)\tRMS (1)\n1000 [MHz]\t1.3282\t0.001235\n1025 [MHz]\t1.30544\t0.001235\n");
}

TEST_F(MeanSigmaTableDlgTest, SelectedCellsAreCopiedAsText) {
  AMeanSigmaTbl& table = open(lawsOf(2, 4));
  table.selectionModel()->select(QItemSelection(table.model()->index(1, 2), table.model()->index(2, 3)),
                                 QItemSelectionModel::Select);
  copy("Selected cells");
  // 2 (1.025 / 1.5)^-0.7 and 2 (1.05 / 1.5)^-0.7.
  EXPECT_EQ(QApplication::clipboard()->text().toStdString(), "2.61088\t0.001235\n2.56721\t0.001235\n");
}

TEST_F(MeanSigmaTableDlgTest, CsvIsSavedThroughTheFileDialog) {
  open(lawsOf(2, 4));
  const test::TempFolder folder;
  const std::string path = folder.file("spectra");
  test::GuiScript script;
  script.step([] { return test::modalWindow<QFileDialog>() != nullptr; }).then([&path] {
    auto* const files = test::modalWindow<QFileDialog>();
    files->findChild<QLineEdit*>()->setText(QString::fromStdString(path));
    static_cast<QDialog*>(files)->accept();
  });
  button("Save as CSV...")->click();
  EXPECT_EQ(test::readFile(path + ".csv"), tableCsv(lawsOf(2, 4)));
}

TEST_F(MeanSigmaTableDlgTest, FileThatCannotBeWrittenIsReported) {
  open(lawsOf(1, 1));
  const test::TempFolder folder;
  EXPECT_FALSE(dialog_->saveCsv(folder.file("no/such/folder.csv")).ok());
}

TEST_F(MeanSigmaTableDlgTest, ManyRowsAreShownWithoutAskingForAll) {
  AMeanSigmaTbl& table = open(lawsOf(3, 100000));
  table.scrollToBottom();
  QApplication::processEvents();
  EXPECT_EQ(table.model()->headerData(99999, Qt::Vertical).toString(), "2500975 [MHz]");
  EXPECT_EQ(table.rowAt(table.viewport()->height() - 2), 99999);
}

TEST_F(MeanSigmaTableDlgTest, DoneEndsTheDialog) {
  open(lawsOf(1, 1));
  dialog_->hide();
  test::GuiScript script;
  script.step([this] { return dialog_->isVisible(); }).then([this] {
    EXPECT_TRUE(button("Done")->isDefault());
    button("Done")->click();
  });
  EXPECT_EQ(dialog_->exec(), QDialog::Accepted);
}

TEST_F(MeanSigmaTableDlgTest, TakesAPictureForTheGuide) {
  AMeanSigmaTbl& table = open(lawsOf(2, 16));
  table.setCurrentIndex(table.model()->index(2, 0));
  table.selectionModel()->select(QItemSelection(table.model()->index(2, 0), table.model()->index(4, 1)),
                                 QItemSelectionModel::Select);
  test::savePicture(*dialog_, "table");
  EXPECT_EQ(table.columnCount(), 5);
}

}  // namespace
}  // namespace lumo
