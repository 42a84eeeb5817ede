// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/ATableWnd.h"

#include <QAbstractTableModel>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <algorithm>

#include "view/PrintDevice.h"

namespace lumo {

/// The texts of a table as Qt's views ask for them: their row 0 is the first behind the header.
class TableTexts : public QAbstractTableModel {
 public:
  explicit TableTexts(ATableWnd* table) : QAbstractTableModel(table), table_(table) {}

  void changeTo(int rows, int columns) {
    beginResetModel();
    rows_ = rows;
    columns_ = columns;
    endResetModel();
  }
  int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : rows_; }
  int columnCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : columns_; }
  QVariant data(const QModelIndex& index, int role) const override {
    if (role == Qt::TextAlignmentRole) return static_cast<int>(Qt::AlignCenter);
    if (role != Qt::DisplayRole || !index.isValid()) return {};
    return QString::fromStdString(table_->cellText(index.row() + 1, index.column() + 1));
  }
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
    if (role == Qt::TextAlignmentRole) return static_cast<int>(Qt::AlignCenter);
    if (role != Qt::DisplayRole) return {};
    const bool isColumn = orientation == Qt::Horizontal;
    return QString::fromStdString(table_->headerText(isColumn ? 0 : section + 1, isColumn ? section + 1 : 0));
  }

 private:
  const ATableWnd* table_;
  int rows_ = 0;
  int columns_ = 0;
};

namespace {

constexpr double kPrintedRowPoints = 14.0;
constexpr double kPrintedFontPoints = 9.0;
constexpr double kPrintedCharacterPoints = 5.5;

void copyText(const std::string& text) {
  QGuiApplication::clipboard()->setText(QString::fromStdString(text));
}

}  // namespace

ATableWnd::ATableWnd(QWidget* parent) : QTableView(parent), texts_(new TableTexts(this)) {
  setModel(texts_);
  setSelectionBehavior(QAbstractItemView::SelectItems);
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setAlternatingRowColors(true);
  setWordWrap(false);
  for (QHeaderView* const header : {horizontalHeader(), verticalHeader()}) {
    header->setSectionResizeMode(QHeaderView::Fixed);
    header->setHighlightSections(false);
    header->setDefaultAlignment(Qt::AlignCenter);
  }
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() * 3 / 2);
}

void ATableWnd::setTable(int rows, int columns, int firstWidth, int otherWidth) {
  rows_ = std::max(rows, 1);
  columns_ = std::max(columns, 1);
  firstWidth_ = firstWidth;
  otherWidth_ = otherWidth;
  const int character = fontMetrics().averageCharWidth();
  // Frame and margins of a header take about two characters.
  verticalHeader()->setFixedWidth((firstWidth + 2) * character);
  horizontalHeader()->setDefaultSectionSize(otherWidth * character);
  texts_->changeTo(rows_ - 1, columns_ - 1);
}

std::string ATableWnd::text(int row, int column) const {
  return row == 0 || column == 0 ? headerText(row, column) : cellText(row, column);
}

std::string ATableWnd::allText() const {
  std::string result;
  for (int row = 0; row < rows_; ++row)
    for (int column = 0; column < columns_; ++column)
      result += text(row, column) + (column + 1 < columns_ ? '\t' : '\n');
  return result;
}

std::string ATableWnd::selectedText() const {
  const QItemSelection selection = selectionModel()->selection();
  if (selection.isEmpty()) return {};
  QRect bounds;
  for (const QItemSelectionRange& range : selection)
    bounds |= QRect(QPoint(range.left(), range.top()), QPoint(range.right(), range.bottom()));
  std::string result;
  for (int row = bounds.top(); row <= bounds.bottom(); ++row) {
    for (int column = bounds.left(); column <= bounds.right(); ++column) {
      const QModelIndex index = texts_->index(row, column);
      if (selection.contains(index)) result += cellText(row + 1, column + 1);
      result += column < bounds.right() ? '\t' : '\n';
    }
  }
  return result;
}

void ATableWnd::contextMenuEvent(QContextMenuEvent* event) {
  auto* const menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  QMenu* const copy = menu->addMenu(tr("Copy to clipboard as text"));
  copy->addAction(tr("All cells"), this, [this] { copyText(allText()); });
  QAction* const selected = copy->addAction(tr("Selected cells"), this, [this] { copyText(selectedText()); });
  selected->setEnabled(selectionModel()->hasSelection());
  menu->popup(event->globalPos());
}

void ATableWnd::keyPressEvent(QKeyEvent* event) {
  if (!event->matches(QKeySequence::Copy)) return QTableView::keyPressEvent(event);
  if (selectionModel()->hasSelection()) copyText(selectedText());
}

ATableWnd::Pages ATableWnd::pagesFor(const QSizeF& area) const {
  const double columnsWidth = area.width() - firstWidth_ * kPrintedCharacterPoints;
  Pages pages;
  pages.rows = std::max(1, static_cast<int>(area.height() / kPrintedRowPoints) - 1);
  pages.columns = std::max(1, static_cast<int>(columnsWidth / (otherWidth_ * kPrintedCharacterPoints)));
  pages.across = std::max(1, (columns_ - 1 + pages.columns - 1) / pages.columns);
  pages.down = std::max(1, (rows_ - 1 + pages.rows - 1) / pages.rows);
  return pages;
}

int ATableWnd::pages(const QSizeF& area) const {
  const Pages pages = pagesFor(area);
  return pages.across * pages.down;
}

void ATableWnd::PrintWindow(PrintDevice& device, const QRect& rectangle, const PrintFlags& flags) {
  QPainter& painter = device.painter();
  const double perPoint = painter.device()->logicalDpiY() / 72.0;
  const Pages pages = pagesFor(QSizeF(rectangle.size()) / perPoint);
  const int firstRow = 1 + flags.page / pages.across * pages.rows;
  const int firstColumn = 1 + flags.page % pages.across * pages.columns;
  const int lastRow = std::min(firstRow + pages.rows, rows_) - 1;
  const int lastColumn = std::min(firstColumn + pages.columns, columns_) - 1;
  const double rowHeight = kPrintedRowPoints * perPoint;
  const double firstWidth = firstWidth_ * kPrintedCharacterPoints * perPoint;
  const double otherWidth = otherWidth_ * kPrintedCharacterPoints * perPoint;
  const auto drawRow = [&](int row, double top) {
    for (int column = firstColumn - 1; column <= lastColumn; ++column) {
      const bool isHeader = column < firstColumn;
      const double left = isHeader ? 0.0 : firstWidth + (column - firstColumn) * otherWidth;
      const QRectF cell(rectangle.left() + left, top, isHeader ? firstWidth : otherWidth, rowHeight);
      painter.drawRect(cell);
      painter.drawText(cell, Qt::AlignCenter | Qt::TextSingleLine,
                       QString::fromStdString(text(row, isHeader ? 0 : column)));
    }
  };
  painter.save();
  QFont font = painter.font();
  font.setPixelSize(std::max(1, static_cast<int>(kPrintedFontPoints * perPoint)));
  painter.setFont(font);
  painter.setPen(QPen(Qt::black, 0.5 * perPoint));
  drawRow(0, rectangle.top());
  for (int row = firstRow; row <= lastRow && !flags.aborted(); ++row)
    drawRow(row, rectangle.top() + (row - firstRow + 1) * rowHeight);
  painter.restore();
}

}  // namespace lumo
