// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <string>

#include "analysis/MeanSigmaTable.h"
#include "analysis/ui/AMeanSigmaTbl.h"
#include "core/Status.h"

namespace lumo {

/// The mean/RMS table in a window of any size, to read, copy, save and print.
class AMeanSigmaTblDlg : public QDialog {
  Q_OBJECT

 public:
  explicit AMeanSigmaTblDlg(MeanSigmaTable table, QWidget* parent = nullptr);

  [[nodiscard]] AMeanSigmaTbl& table() const { return *table_; }

  /// Writes the table as comma-separated values.
  [[nodiscard]] Status saveCsv(const std::string& path) const;

 private:
  void saveAsCsv();

  AMeanSigmaTbl* table_;  // belongs to Qt as a child of this window
};

}  // namespace lumo
