// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QImage>
#include <QMenu>

#include "Mouse.h"
#include "support/TempFolder.h"
#include "view/APrintOut.h"
#include "view/ATableWnd.h"

namespace lumo {
namespace {

/// Each cell says where it is; counts how many cells were asked for.
class PlacesTable : public ATableWnd {
 public:
  PlacesTable(int rows, int columns) { setTable(rows, columns, 8, 12); }
  [[nodiscard]] std::string headerText(int row, int column) const override {
    return row + column == 0 ? "" : row == 0 ? "c" + std::to_string(column) : "r" + std::to_string(row);
  }
  [[nodiscard]] std::string cellText(int row, int column) const override {
    ++asked;
    return std::to_string(row) + "/" + std::to_string(column);
  }
  void select(int firstRow, int firstColumn, int lastRow, int lastColumn) {
    selectionModel()->select(QItemSelection(model()->index(firstRow - 1, firstColumn - 1),
                                            model()->index(lastRow - 1, lastColumn - 1)),
                             QItemSelectionModel::Select);
  }
  mutable int asked = 0;
};

QAction* copyAction(QMenu* menu, const QString& text) {
  if (menu == nullptr || menu->actions().isEmpty() || menu->actions().first()->menu() == nullptr)
    return nullptr;
  for (QAction* const action : menu->actions().first()->menu()->actions())
    if (action->text() == text) return action;
  return nullptr;
}

TEST(ATableWndTest, TextsAndHeadersAreCentredAtTheirPlaces) {
  PlacesTable table(4, 3);
  EXPECT_EQ(table.model()->rowCount(), 3);
  EXPECT_EQ(table.model()->columnCount(), 2);
  EXPECT_EQ(table.model()->index(2, 1).data().toString(), "3/2");
  EXPECT_EQ(table.model()->headerData(1, Qt::Horizontal).toString(), "c2");
  EXPECT_EQ(table.model()->headerData(2, Qt::Vertical).toString(), "r3");
  EXPECT_EQ(table.model()->index(0, 0).data(Qt::TextAlignmentRole).toInt(), Qt::AlignCenter);
  EXPECT_EQ(table.model()->headerData(0, Qt::Horizontal, Qt::TextAlignmentRole).toInt(), Qt::AlignCenter);
}

TEST(ATableWndTest, ColumnsHaveFixedWidths) {
  PlacesTable table(4, 3);
  EXPECT_EQ(table.columnWidth(0), 12 * table.fontMetrics().averageCharWidth());
  EXPECT_EQ(table.columnWidth(1), table.columnWidth(0));
  EXPECT_EQ(table.horizontalHeader()->sectionResizeMode(0), QHeaderView::Fixed);
}

TEST(ATableWndTest, AllCellsAreCopiedWithTheirHeaders) {
  PlacesTable table(3, 3);
  EXPECT_EQ(table.allText(), "\tc1\tc2\nr1\t1/1\t1/2\nr2\t2/1\t2/2\n");
}

TEST(ATableWndTest, SelectedCellsAreCopiedWithoutHeaders) {
  PlacesTable table(6, 4);
  EXPECT_EQ(table.selectedText(), "");
  table.select(2, 2, 3, 3);
  EXPECT_EQ(table.selectedText(), "2/2\t2/3\n3/2\t3/3\n");
}

TEST(ATableWndTest, HolesOfASelectionStayEmpty) {
  PlacesTable table(6, 4);
  table.select(1, 1, 1, 1);
  table.select(3, 3, 3, 3);
  EXPECT_EQ(table.selectedText(), "1/1\t\t\n\t\t\n\t\t3/3\n");
}

TEST(ATableWndTest, TheMenuCopiesAllAndSelectedCells) {
  PlacesTable table(4, 3);
  (void)test::shown(table, {400, 300});
  table.select(2, 1, 2, 2);
  QMenu* const menu = test::contextMenu(table, {150.0, 60.0});
  ASSERT_NE(menu, nullptr);
  EXPECT_EQ(menu->actions().first()->text(), "Copy to clipboard as text");
  ASSERT_NE(copyAction(menu, "All cells"), nullptr);
  ASSERT_NE(copyAction(menu, "Selected cells"), nullptr);
  copyAction(menu, "Selected cells")->trigger();
  EXPECT_EQ(QApplication::clipboard()->text(), "2/1\t2/2\n");
  copyAction(menu, "All cells")->trigger();
  EXPECT_EQ(QApplication::clipboard()->text(), QString::fromStdString(table.allText()));
  menu->close();
}

TEST(ATableWndTest, WithoutASelectionOnlyAllCellsAreOffered) {
  PlacesTable table(4, 3);
  (void)test::shown(table, {400, 300});
  QMenu* const menu = test::contextMenu(table, {150.0, 60.0});
  ASSERT_NE(copyAction(menu, "Selected cells"), nullptr);
  EXPECT_FALSE(copyAction(menu, "Selected cells")->isEnabled());
  EXPECT_TRUE(copyAction(menu, "All cells")->isEnabled());
  menu->close();
}

TEST(ATableWndTest, KeysSelectAllAndCopy) {
  PlacesTable table(3, 3);
  (void)test::shown(table, {400, 300});
  test::key(table, Qt::Key_A, Qt::ControlModifier);
  test::key(table, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text(), "1/1\t1/2\n2/1\t2/2\n");
}

TEST(ATableWndTest, OnlyCellsInSightAreAskedFor) {
  PlacesTable table(100001, 41);
  (void)test::shown(table, {800, 600});
  table.scrollToBottom();
  (void)test::shown(table, {800, 600});
  EXPECT_GT(table.asked, 0);
  EXPECT_LT(table.asked, 10000);
}

TEST(ATableWndTest, PagesHoldEveryRowAndColumn) {
  PlacesTable table(101, 21);
  // 8 characters of 5.5 points for the header, 12 for each column, rows of 14 points: 3 columns and 9 rows.
  EXPECT_EQ(table.pages({44.0 + 3.5 * 66.0, 145.0}), 12 * 7);  // 100 rows by 9, 20 columns by 3
  EXPECT_EQ(PlacesTable(1, 1).pages({500.0, 500.0}), 1);
  EXPECT_GE(table.pages({1.0, 1.0}), 2000);  // one cell a page at worst
}

TEST(ATableWndTest, ItPrintsOnAsManyPagesAsItNeeds) {
  PlacesTable table(201, 3);
  const test::TempFolder folder;
  ASSERT_TRUE(APrintOut("Mean and RMS", table).printToPdf(folder.file("table.pdf")).ok());
  // A4 with margins of 15 mm and the title: 842 - 85 - 24 points hold a header and 51 rows.
  EXPECT_NE(test::readFile(folder.file("table.pdf")).find("/Count 4"), std::string::npos);
}

TEST(ATableWndTest, EmptyTableIsShownAndCopied) {
  PlacesTable table(1, 1);
  EXPECT_FALSE(test::shown(table, {200, 100}).isNull());
  EXPECT_EQ(table.allText(), "\n");
  EXPECT_EQ(table.selectedText(), "");
}

}  // namespace
}  // namespace lumo
