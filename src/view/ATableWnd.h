// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTableView>
#include <string>

#include "view/APrintable.h"

namespace lumo {

class TableTexts;

/// A table of texts with a header row and a header column, fixed column widths and cells that can be selected
/// and copied. Rows and columns count from 0, and row 0 and column 0 are the headers. Only the cells in sight
/// are asked for their texts, so that a table may have very many.
///
/// A table derives from it, says its size with setTable() and gives the texts. The right button offers "Copy
/// to clipboard as text"; Ctrl+C copies the selected cells, Ctrl+A selects all.
class ATableWnd : public QTableView, public APrintable {
  Q_OBJECT

 public:
  explicit ATableWnd(QWidget* parent = nullptr);

  /// Takes the number of rows and columns, headers included and at least 1, and the widths of the header
  /// column and of the others in characters of the table's font. Call it also when texts have changed.
  void setTable(int rows, int columns, int firstWidth, int otherWidth);
  [[nodiscard]] int rowCount() const { return rows_; }
  [[nodiscard]] int columnCount() const { return columns_; }

  /// Text of a cell of row 0 or column 0.
  [[nodiscard]] virtual std::string headerText(int row, int column) const = 0;
  /// Text of any other cell.
  [[nodiscard]] virtual std::string cellText(int row, int column) const = 0;

  /// Every cell with its headers: tabs between columns, a line end behind each row.
  [[nodiscard]] std::string allText() const;
  /// The selected cells without headers, in the same form: the smallest rectangle that holds them, with
  /// nothing in the cells that are not selected. Empty without a selection.
  [[nodiscard]] std::string selectedText() const;

  // APrintable: all rows and columns on as many pages as they need, the headers on each.
  [[nodiscard]] QSizeF printedSize() const override { return {}; }
  [[nodiscard]] int pages(const QSizeF& area) const override;
  void PrintWindow(PrintDevice& device, const QRect& rectangle, const PrintFlags& flags) override;

 protected:
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  /// How the table is cut into pages.
  struct Pages {
    int rows = 1;  ///< on a page, without the header
    int columns = 1;
    int across = 1;  ///< pages side by side
    int down = 1;
  };
  [[nodiscard]] Pages pagesFor(const QSizeF& area) const;
  [[nodiscard]] std::string text(int row, int column) const;

  TableTexts* texts_;  // belongs to Qt as a child of this window
  int rows_ = 1;
  int columns_ = 1;
  int firstWidth_ = 1;
  int otherWidth_ = 1;
};

}  // namespace lumo
