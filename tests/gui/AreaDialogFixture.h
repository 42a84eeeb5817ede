// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <QPushButton>
#include <QToolButton>
#include <functional>
#include <memory>
#include <vector>

#include "analysis/AreaEditor.h"
#include "analysis/ui/ASelAreaDlg.h"
#include "view/Mouse.h"

namespace lumo::test {

/// Rounding of a place that goes to screen pixels and back.
inline constexpr double kPlaceRounding = 1e-9;

/// The dialog in which areas are marked, and what a user does in it.
class AreaDialogFixture : public testing::Test {
 protected:
  /// A map of ones of 200 x 160 cells of half an arcsecond.
  AreaDialogFixture();

  ASelAreaDlg& open(const AreaSettings& settings = {});
  [[nodiscard]] LumoAxisWnd& plot() const { return dialog_->mapWindow(); }
  /// Where a place of the map is in the plot window.
  [[nodiscard]] QPointF at(double x, double y) const;
  void click(double x, double y) const;
  void dragPixels(const QPointF& from, const QPointF& to) const;
  void drag(const AreaPoint& from, const AreaPoint& to) const {
    dragPixels(at(from.x, from.y), at(to.x, to.y));
  }
  /// Presses the button of a tool: "select", "move", "rectangle", "ellipse", "circle" or "polygon".
  void choose(const char* tool) const { child<QToolButton>(QString("tool.") + tool).click(); }
  [[nodiscard]] QPushButton& button(const QString& text) const;
  template <typename Widget>
  [[nodiscard]] Widget& child(const QString& name) const {
    Widget* const found = dialog_->findChild<Widget*>(name);
    EXPECT_NE(found, nullptr) << name.toStdString();
    return *found;
  }

  [[nodiscard]] const AreaEditor& editor() const;
  [[nodiscard]] const std::vector<AreaShape>& shapes() const { return editor().areas().shapes(); }
  /// Presses "OK" and returns the areas that it confirmed.
  [[nodiscard]] std::vector<AreaShape> confirmed() const;
  static void expectPoint(const AreaPoint& found, double x, double y);

  AMatrix<float> map_;
  AMapHeader header_;
  TMinMax range_;
  std::unique_ptr<ASelAreaDlg> dialog_;
};

}  // namespace lumo::test
