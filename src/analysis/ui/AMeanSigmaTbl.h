// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "analysis/MeanSigmaTable.h"
#include "view/ATableWnd.h"

namespace lumo {

/// The mean/RMS table: a row for each frequency, two columns for each area.
class AMeanSigmaTbl : public ATableWnd {
  Q_OBJECT

 public:
  using ATableWnd::ATableWnd;

  void setData(MeanSigmaTable table);
  [[nodiscard]] const MeanSigmaTable& table() const { return table_; }

  [[nodiscard]] std::string headerText(int row, int column) const override;
  [[nodiscard]] std::string cellText(int row, int column) const override;

 private:
  MeanSigmaTable table_;
};

}  // namespace lumo
