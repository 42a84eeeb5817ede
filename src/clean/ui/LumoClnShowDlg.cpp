// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/ui/LumoClnShowDlg.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <cmath>
#include <memory>

#include "clean/ui/CleanGraphs.h"
#include "view/A2_3DAxis.h"
#include "view/AColorsGraph.h"

namespace lumo {

namespace {

/// Size at first, in the dialog's font, so that it grows with the screen's resolution.
constexpr int kCharactersWide = 150;
constexpr int kLinesHigh = 36;
constexpr int kGraphLinesHigh = 16;

std::unique_ptr<A2_3DAxis> makeAxis(const AMatrix<float>& map, const TMinMax& range,
                                    const AMapHeader& header) {
  auto axis = std::make_unique<A2_3DAxis>(-1, 1);
  axis->setNameOX(CleanViewModel::kNameX);
  axis->setNameOY(CleanViewModel::kNameY);
  auto& graph = axis->addGraph(std::make_unique<AColorsGraph>());
  // Seen, not owned: what the model shows is at rest as long as this dialog is open.
  graph.SetParameters(std::shared_ptr<const AMatrix<float>>(std::shared_ptr<void>(), &map), range);
  graph.setUnit(header.unit);
  if (header.beamMajor > 0 && header.beamMinor > 0)
    graph.setBeam(BeamEllipse{header.beamMajor, header.beamMinor, header.beamPa});
  if (std::isfinite(header.rightAscension) && std::isfinite(header.declination))
    graph.setSkyCentre(SkyPosition{header.rightAscension, header.declination});
  return axis;
}

}  // namespace

LumoClnShowDlg::LumoClnShowDlg(const CleanViewModel& model, QWidget* parent, bool showsGraphs)
    : QDialog(parent),
      restored_(new LumoAxisWnd(this)),
      residual_(new LumoAxisWnd(this)),
      graphs_(new CleanGraphs(model.header.unit, this)) {
  setWindowTitle(tr("CLEAN view"));
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  restored_->setObjectName("restored");
  residual_->setObjectName("residual");
  restored_->SetAxis(makeAxis(model.restored, model.restoredRange, model.header));
  residual_->SetAxis(makeAxis(*model.residual, model.residualRange, model.header));

  auto* const stop = new QPushButton(tr("&Stop"));
  auto* const goOn = new QPushButton(tr("&Continue"));
  goOn->setDefault(true);
  goOn->setFocus();
  connect(stop, &QPushButton::clicked, this, &QDialog::reject);
  connect(goOn, &QPushButton::clicked, this, &QDialog::accept);
  graphs_->showRecord(model.record);
  graphs_->setVisible(showsGraphs);
  auto* const convergence = new QCheckBox(tr("Con&vergence"));
  convergence->setObjectName("convergence");
  convergence->setChecked(showsGraphs);
  convergence->setToolTip(tr("Total flux and residual over the iterations so far"));
  connect(convergence, &QCheckBox::toggled, graphs_, &QWidget::setVisible);
  auto* const buttons = new QHBoxLayout;
  buttons->addWidget(convergence);
  buttons->addStretch();
  buttons->addWidget(stop);
  buttons->addWidget(goOn);

  auto* const layout = new QGridLayout(this);
  layout->addWidget(new QLabel(tr("Restored map")), 0, 0, Qt::AlignHCenter);
  layout->addWidget(new QLabel(tr("Residual map")), 0, 1, Qt::AlignHCenter);
  layout->addWidget(restored_, 1, 0);
  layout->addWidget(residual_, 1, 1);
  layout->addWidget(graphs_, 2, 0, 1, 2);
  layout->addLayout(buttons, 3, 0, 1, 2);
  layout->setRowStretch(1, kLinesHigh);
  layout->setRowStretch(2, kGraphLinesHigh);
  layout->setColumnStretch(0, 1);
  layout->setColumnStretch(1, 1);
  const int lines = showsGraphs ? kLinesHigh + kGraphLinesHigh : kLinesHigh;
  const QSize wanted(fontMetrics().averageCharWidth() * kCharactersWide, fontMetrics().height() * lines);
  resize(wanted.boundedTo(screen()->availableSize()));
}

}  // namespace lumo
