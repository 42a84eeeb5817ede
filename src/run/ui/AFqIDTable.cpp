// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/ui/AFqIDTable.h"

#include <QAbstractListModel>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyledItemDelegate>
#include <algorithm>
#include <cstdint>
#include <limits>

#include "run/FrequencyIdTable.h"
#include "run/UvxFileList.h"

namespace lumo {

namespace {

bool isChecked(int image) {
  return image == FrequencyIdTable::kCheckedImage || image == FrequencyIdTable::kLoneCheckedImage;
}

/// Toggles on a click in the whole row, where the standard delegate wants the small box to be hit.
class RowDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override {
    if (!model->flags(index).testFlag(Qt::ItemIsUserCheckable)) return false;
    if (event->type() == QEvent::MouseButtonRelease) {
      const auto* mouse = static_cast<QMouseEvent*>(event);
      if (mouse->button() != Qt::LeftButton || !option.rect.contains(mouse->position().toPoint()))
        return false;
    } else if (event->type() == QEvent::KeyPress) {
      const int key = static_cast<QKeyEvent*>(event)->key();
      if (key != Qt::Key_Space && key != Qt::Key_Select) return false;
    } else {
      return false;
    }
    const bool checked = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
    return model->setData(index, checked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
  }
};

}  // namespace

/// The rows as the view asks for them; nothing is kept here.
class AFqIDTable::Rows : public QAbstractListModel {
 public:
  Rows(UvxFileList& files, AFqIDTable& table) : QAbstractListModel(&table), files_(files), table_(table) {}

  void rebuild() {
    beginResetModel();
    endResetModel();
  }
  [[nodiscard]] int rowCount(const QModelIndex& parent) const override {
    if (parent.isValid()) return 0;
    return static_cast<int>(
        std::min<std::int64_t>(files_.idTable().rowCount(), std::numeric_limits<int>::max()));
  }
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
    const FrequencyIdTable& rows = files_.idTable();
    if (!index.isValid() || index.row() >= rows.rowCount()) return {};
    switch (role) {
      case Qt::DisplayRole:
        return QString::fromStdString(rows.rowText(index.row()));
      case Qt::TextAlignmentRole:
        return QVariant(Qt::AlignCenter);
      case Qt::CheckStateRole:
        return isChecked(rows.checkImage(index.row())) ? Qt::Checked : Qt::Unchecked;
      default:
        return {};
    }
  }
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override {
    if (!index.isValid()) return Qt::NoItemFlags;
    return files_.idTable().canToggle(index.row())
               ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable
               : Qt::ItemFlags(Qt::ItemIsSelectable);
  }
  bool setData(const QModelIndex& index, const QVariant& value, int role) override {
    if (role != Qt::CheckStateRole || value == data(index, role)) return false;
    if (files_.changeCell(index.row()) == 0) return false;
    Q_EMIT dataChanged(index, index);
    Q_EMIT table_.cellChanged();
    return true;
  }

 private:
  UvxFileList& files_;
  AFqIDTable& table_;
};

AFqIDTable::AFqIDTable(UvxFileList& files, QWidget* parent)
    : QListView(parent), rows_(new Rows(files, *this)) {
  setModel(rows_);
  setItemDelegate(new RowDelegate(this));
  setUniformItemSizes(true);
  setSpacing(1);
  setEditTriggers(NoEditTriggers);
}

void AFqIDTable::rebuild() {
  const int row = currentIndex().row();
  rows_->rebuild();
  setCurrentIndex(rows_->index(std::min(std::max(row, 0), rows_->rowCount({}) - 1)));
}

}  // namespace lumo
