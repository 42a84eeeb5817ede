// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/ui/AResizeMultiAxisDlg.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QToolTip>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "analysis/SpectraText.h"
#include "analysis/SpectrumFit.h"
#include "analysis/ui/AFQSGraph.h"
#include "core/PendingFile.h"
#include "view/LegendLine.h"
#include "view/OutputDialogs.h"

namespace lumo {

namespace {

/// Orders of the fits in their list; the first entry is the line through the points alone.
constexpr int kNoFit = 0;
constexpr int kPowerLaw = 1;
constexpr int kParabola = 2;

AxisScale axisScale(int scaleMode) {
  return scaleMode == kLogarithmicScale ? AxisScale::kLogarithmic : AxisScale::kLinear;
}

int scaleMode(const QCheckBox& logarithmic) {
  return logarithmic.isChecked() ? kLogarithmicScale : kLinearScale;
}

}  // namespace

AResizeMultiAxisDlg::AResizeMultiAxisDlg(SpectrumGraph graph, QWidget* parent)
    : QDialog(parent),
      graph_(std::move(graph)),
      window_(new AMultiAxisDlgWnd(this)),
      logarithmicX_(new QCheckBox(tr("Logarithmic &X"))),
      logarithmicY_(new QCheckBox(tr("Logarithmic &Y"))),
      inverted_(new QCheckBox(tr("&Invert colors"))),
      fit_(new QComboBox) {
  setWindowTitle(tr("Spectrum graph"));
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  setSizeGripEnabled(true);
  window_->setObjectName("graph");
  window_->SetAxis(makeFrame());

  auto* const layout = new QVBoxLayout(this);
  layout->addLayout(makeTools());
  layout->addWidget(window_, 1);
  layout->addLayout(makeButtons());
  window_->setFocus();
  makeRoomForLegends();
}

/// Opens as wide as the legends in full size, if the screen is.
void AResizeMultiAxisDlg::makeRoomForLegends() {
  const double h = window_->frame()->fontHeight();
  double width = 0.0;
  for (const AFQSGraph* const curve : curves_)
    for (const QString& line : curve->legend())
      width = std::max(width, legendLineWidth(window_->font(), h, line));
  const QSize usual = sizeHint();
  const int around = usual.width() - window_->sizeHint().width() + static_cast<int>(2.0 * h);
  resize(
      usual.expandedTo({std::min(static_cast<int>(width) + around, screen()->availableSize().width()), 0}));
}

std::unique_ptr<AMSD2DAxisMulti> AResizeMultiAxisDlg::makeFrame() {
  auto frame = std::make_unique<AMSD2DAxisMulti>(axisScale(graph_.xScaleMode), axisScale(graph_.yScaleMode));
  frame->setNameOX(graph_.xTitle);
  frame->setNameOY(graph_.yTitle);
  frame->setInverted(graph_.invertColors != 0);
  for (const SpectrumCurve& curve : graph_.curves) {
    const int number = static_cast<int>(curves_.size()) + 1;
    curves_.push_back(&frame->addGraph(std::make_unique<AFQSGraph>(*frame, number)));
    curves_.back()->setData(curve);
  }
  return frame;
}

QLayout* AResizeMultiAxisDlg::makeTools() {
  logarithmicX_->setObjectName("logarithmicX");
  logarithmicY_->setObjectName("logarithmicY");
  inverted_->setObjectName("inverted");
  fit_->setObjectName("fit");
  logarithmicX_->setChecked(graph_.xScaleMode == kLogarithmicScale);
  logarithmicY_->setChecked(graph_.yScaleMode == kLogarithmicScale);
  inverted_->setChecked(graph_.invertColors != 0);
  connect(logarithmicX_, &QCheckBox::toggled, this, &AResizeMultiAxisDlg::changeScales);
  connect(logarithmicY_, &QCheckBox::toggled, this, &AResizeMultiAxisDlg::changeScales);
  connect(inverted_, &QCheckBox::toggled, this, &AResizeMultiAxisDlg::changeColours);
  fit_->addItem(tr("Spline"), kNoFit);
  fit_->addItem(tr("Spline and power law"), kPowerLaw);
  fit_->addItem(tr("Spline and polynomial in log-log of order 2"), kParabola);
  connect(fit_, &QComboBox::currentIndexChanged, this, &AResizeMultiAxisDlg::changeFit);
  auto* const label = new QLabel(tr("&Curve: "));
  label->setBuddy(fit_);
  const auto hasSeveralPoints = [](const SpectrumCurve& curve) { return curve.count() > kParabola; };
  for (QWidget* const control : {static_cast<QWidget*>(label), static_cast<QWidget*>(fit_)})
    control->setEnabled(std::any_of(graph_.curves.begin(), graph_.curves.end(), hasSeveralPoints));

  auto* const tools = new QHBoxLayout;
  for (QCheckBox* const box : {logarithmicX_, logarithmicY_, inverted_}) tools->addWidget(box);
  tools->addStretch();
  tools->addWidget(label);
  tools->addWidget(fit_);
  return tools;
}

QLayout* AResizeMultiAxisDlg::makeButtons() {
  auto* const buttons = new QHBoxLayout;
  const auto add = [this, buttons](const QString& text, const auto& action) {
    auto* const button = new QPushButton(text);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, action);
    buttons->addWidget(button);
    return button;
  };
  constexpr double kZoom = 1.5;
  add(tr("Zoom in"), [this] { window_->zoom(kZoom); });
  add(tr("Zoom out"), [this] { window_->zoom(1.0 / kZoom); });
  add(tr("Show &everything"), [this] { window_->fit(); });
  buttons->addStretch();
  add(tr("Save &picture..."), [this] { window_->savePicture(); });
  add(tr("Save as &text..."), [this] { saveAsText(); });
  add(tr("P&rint..."), [this] { printWithDialog(this, windowTitle(), *window_); });
  add(tr("Close"), [this] { accept(); })->setDefault(true);
  return buttons;
}

bool AResizeMultiAxisDlg::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QDialog::event(event);
  const auto& help = static_cast<const QHelpEvent&>(*event);
  const QPoint place = window_->mapFrom(this, help.pos());
  if (!window_->rect().contains(place) || place.y() >= window_->panelRect().top())
    return QDialog::event(event);
  QStringList lines;
  for (const AFQSGraph* const curve : curves_)
    for (const QString& line : curve->legend()) lines.append(line.trimmed());
  QToolTip::showText(help.globalPos(), lines.join('\n'), this);
  return true;
}

void AResizeMultiAxisDlg::changeScales() {
  graph_.xScaleMode = scaleMode(*logarithmicX_);
  graph_.yScaleMode = scaleMode(*logarithmicY_);
  graph_.xTitle = scaledTitle(bareTitle(graph_.xTitle), graph_.xScaleMode);
  graph_.yTitle = scaledTitle(bareTitle(graph_.yTitle), graph_.yScaleMode);
  window_->frame()->setNameOX(graph_.xTitle);
  window_->frame()->setNameOY(graph_.yTitle);
  window_->setScales(axisScale(graph_.xScaleMode), axisScale(graph_.yScaleMode));
}

void AResizeMultiAxisDlg::changeColours() {
  graph_.invertColors = inverted_->isChecked() ? 1 : 0;
  window_->frame()->setInverted(inverted_->isChecked());
  window_->refresh();
}

void AResizeMultiAxisDlg::changeFit() {
  const int order = fit_->currentData().toInt();
  for (AFQSGraph* const curve : curves_) {
    if (order == kNoFit)
      curve->clearFit();
    else
      curve->setFit(fitLogLog(curve->curve(), order),
                    order == kPowerLaw ? tr("Power law") : tr("Polynomial"));
  }
  window_->refresh();
}

Status AResizeMultiAxisDlg::saveColumns(const std::string& path) const {
  return writeWholeFile(path, spectrumColumns(graph_));
}

void AResizeMultiAxisDlg::saveAsText() {
  saveWithDialog(this, tr("Save as text"), {tr("Text columns (*.txt)")},
                 [this](const std::string& path) { return saveColumns(path); });
}

}  // namespace lumo
