// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/AreaDialogFixture.h"

#include <QApplication>
#include <algorithm>

#include "analysis/ui/ATrackerArrayInAxis.h"

namespace lumo::test {

AreaDialogFixture::AreaDialogFixture() : map_(160, 200) {
  std::fill_n(map_.data(), map_.size(), 1.0F);
  header_.unit = "Jy/Beam";
  header_.rightAscension = 64.5;
  header_.declination = 38.0;
  header_.epoch = 2000.0;
  header_.beamMajor = 2.0;
  header_.beamMinor = 1.5;
  header_.beamPa = 20.0;
  range_.xMin = -50.0;
  range_.xMax = 49.5;
  range_.yMin = -40.0;
  range_.yMax = 39.5;
  range_.vMin = 0.0;
  range_.vMax = 1.0;
}

ASelAreaDlg& AreaDialogFixture::open(const AreaSettings& settings) {
  dialog_ = std::make_unique<ASelAreaDlg>(map_, header_, range_, settings);
  dialog_->show();
  QApplication::processEvents();
  (void)dialog_->grab();  // lays the panel out
  return *dialog_;
}

QPointF AreaDialogFixture::at(double x, double y) const {
  const PlotPoint pixel = plot().view().toPixel({x, y});
  return QPointF(plot().panelRect().topLeft()) + QPointF(pixel.x, pixel.y);
}

void AreaDialogFixture::click(double x, double y) const {
  move(plot(), at(x, y), false);
  press(plot(), at(x, y));
  release(plot(), at(x, y));
}

void AreaDialogFixture::dragPixels(const QPointF& from, const QPointF& to) const {
  press(plot(), from);
  move(plot(), from + (to - from) * 0.4, true);
  move(plot(), to, true);
  release(plot(), to);
}

QPushButton& AreaDialogFixture::button(const QString& text) const {
  for (QPushButton* const one : dialog_->findChildren<QPushButton*>())
    if (one->text().remove('&') == text) return *one;
  ADD_FAILURE() << "no button " << text.toStdString();
  return *dialog_->findChild<QPushButton*>();
}

const AreaEditor& AreaDialogFixture::editor() const {
  return dialog_->findChild<ATrackerArrayInAxis*>()->editor();
}

std::vector<AreaShape> AreaDialogFixture::confirmed() const {
  button("OK").click();
  EXPECT_EQ(dialog_->result(), QDialog::Accepted);
  return dialog_->settings().areas.shapes();
}

void AreaDialogFixture::expectPoint(const AreaPoint& found, double x, double y) {
  EXPECT_NEAR(found.x, x, kPlaceRounding);
  EXPECT_NEAR(found.y, y, kPlaceRounding);
}

}  // namespace lumo::test
