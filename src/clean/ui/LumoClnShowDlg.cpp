// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/ui/LumoClnShowDlg.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <cmath>
#include <memory>

#include "view/A2_3DAxis.h"
#include "view/AColorsGraph.h"

namespace lumo {

namespace {

/// Size at first, in the dialog's font, so that it grows with the screen's resolution.
constexpr int kCharactersWide = 150;
constexpr int kLinesHigh = 36;

std::unique_ptr<A2_3DAxis> makeAxis(const AMatrix<float>& map, const TMinMax& range,
                                    const AMapHeader& header) {
  auto axis = std::make_unique<A2_3DAxis>(-1, 1);
  axis->setNameOX(CleanViewModel::kNameX);
  axis->setNameOY(CleanViewModel::kNameY);
  auto& graph = axis->addGraph(std::make_unique<AColorsGraph>());
  graph.SetParameters(map, range);
  graph.setUnit(header.unit);
  if (header.beamMajor > 0 && header.beamMinor > 0)
    graph.setBeam(BeamEllipse{header.beamMajor, header.beamMinor, header.beamPa});
  if (std::isfinite(header.rightAscension) && std::isfinite(header.declination))
    graph.setSkyCentre(SkyPosition{header.rightAscension, header.declination});
  return axis;
}

}  // namespace

LumoClnShowDlg::LumoClnShowDlg(const CleanViewModel& model, QWidget* parent)
    : QDialog(parent), restored_(new LumoAxisWnd(this)), residual_(new LumoAxisWnd(this)) {
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
  auto* const buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(stop);
  buttons->addWidget(goOn);

  auto* const layout = new QGridLayout(this);
  layout->addWidget(new QLabel(tr("Restored map")), 0, 0, Qt::AlignHCenter);
  layout->addWidget(new QLabel(tr("Residual map")), 0, 1, Qt::AlignHCenter);
  layout->addWidget(restored_, 1, 0);
  layout->addWidget(residual_, 1, 1);
  layout->addLayout(buttons, 2, 0, 1, 2);
  layout->setRowStretch(1, 1);
  layout->setColumnStretch(0, 1);
  layout->setColumnStretch(1, 1);
  resize(fontMetrics().averageCharWidth() * kCharactersWide, fontMetrics().height() * kLinesHigh);
}

}  // namespace lumo
