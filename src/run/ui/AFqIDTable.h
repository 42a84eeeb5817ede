// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QListView>

namespace lumo {

class UvxFileList;

/// The table of frequency selections of all files: a check mark and a centred text per row. A click anywhere
/// in a row, or the space bar on the current one, takes the selection into the run or out of it.
class AFqIDTable : public QListView {
  Q_OBJECT

 public:
  /// `files` must outlive the table.
  explicit AFqIDTable(UvxFileList& files, QWidget* parent = nullptr);

  /// Shows the rows anew; to be called after files or masks were added, removed or replaced.
  void rebuild();

 Q_SIGNALS:
  /// A row was toggled and the survey is up to date.
  void cellChanged();

 private:
  class Rows;
  Rows* rows_;
};

}  // namespace lumo
