// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/ui/ASelAreaDlg.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QVBoxLayout>

#include "analysis/ResultsPresenter.h"
#include "analysis/ui/ATrackerArrayInAxis.h"
#include "analysis/ui/MapPicture.h"
#include "core/TextForm.h"

namespace lumo {

namespace {

/// Size at first, in the dialog's font, so that it grows with the screen's resolution.
constexpr int kCharactersWide = 122;
constexpr int kLinesHigh = 46;
constexpr int kNumberWidth = 8;  // characters

}  // namespace

ASelAreaDlg::ASelAreaDlg(const AMatrix<float>& map, const AMapHeader& header, const TMinMax& range,
                         const AreaSettings& settings, QWidget* parent)
    : AAreaSelectDlg(parent),
      settings_(settings),
      trackers_(new ATrackerArrayInAxis(settings.areas, this)),
      pointCount_(new QLineEdit(this)),
      xScale_(new QComboBox(this)),
      yScale_(new QComboBox(this)),
      invertColors_(new QCheckBox(tr("Invert colors"), this)) {
  setWindowTitle(tr("Dialog"));
  SetParameters(makeMapAxis(map, header, range), trackers_, 1);
  setMapInfo(header, range);
  addControls();
  resize(fontMetrics().averageCharWidth() * kCharactersWide, fontMetrics().height() * kLinesHigh);
}

void ASelAreaDlg::addControls() {
  auto* const row = new QHBoxLayout;
  const auto add = [this, row](const QString& text, QWidget* field, const char* name) {
    auto* const label = new QLabel(text, this);
    label->setBuddy(field);
    field->setObjectName(name);
    field->setAccessibleName(text.trimmed());
    row->addWidget(label);
    row->addWidget(field);
    row->addSpacing(fontMetrics().averageCharWidth() * 2);
  };
  pointCount_->setText(QString::number(settings_.pointCount));
  pointCount_->setFixedWidth(fontMetrics().averageCharWidth() * (kNumberWidth + 3));
  pointCount_->setToolTip(tr("Frequencies at which the spectra are drawn, from the lowest to the highest"));
  add(tr("Number of points: "), pointCount_, "pointCount");
  for (QComboBox* const scale : {xScale_, yScale_}) scale->addItems({tr("Logarifmic"), tr("Normal")});
  xScale_->setCurrentIndex(settings_.xScaleMode == kLogarithmicScale ? 0 : 1);
  yScale_->setCurrentIndex(settings_.yScaleMode == kLogarithmicScale ? 0 : 1);
  add(tr("X scale: "), xScale_, "xScale");
  add(tr("Y scale: "), yScale_, "yScale");
  invertColors_->setObjectName("invertColors");
  invertColors_->setChecked(settings_.invertColors != 0);
  row->addWidget(invertColors_);
  row->addStretch();
  controls().addLayout(row);
}

void ASelAreaDlg::accept() {
  std::int64_t count = 0;
  const std::string text = pointCount_->text().trimmed().toStdString();
  if (!parseInt(text, count) || count < 1 || count > ResultsPresenter::kMostPoints) {
    QMessageBox::warning(this, windowTitle(),
                         tr("Enter an integer between 1 and %1.").arg(ResultsPresenter::kMostPoints));
    pointCount_->setFocus();
    pointCount_->selectAll();
    return;
  }
  trackers_->EndWorking();
  settings_.areas = trackers_->areas();
  settings_.pointCount = static_cast<int>(count);
  settings_.invertColors = invertColors_->isChecked() ? 1 : 0;
  settings_.xScaleMode = xScale_->currentIndex();
  settings_.yScaleMode = yScale_->currentIndex();
  AAreaSelectDlg::accept();
}

}  // namespace lumo
