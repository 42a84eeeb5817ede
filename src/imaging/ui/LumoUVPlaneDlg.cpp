// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/ui/LumoUVPlaneDlg.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/Paths.h"
#include "imaging/ui/AUVPGraph.h"
#include "imaging/ui/AUVPLaneWnd.h"
#include "imaging/ui/UvPlanePicture.h"
#include "view/OutputDialogs.h"

namespace lumo {

namespace {

/// Size at first in dialog units: quarters of a character's mean width and eighths of its height.
constexpr QSize kDialogUnits(360, 274);

QSize dialogSize(const QFontMetrics& font) {
  return {kDialogUnits.width() * font.averageCharWidth() / 4, kDialogUnits.height() * font.height() / 8};
}

}  // namespace

LumoUVPlaneDlg::LumoUVPlaneDlg(QWidget* parent)
    : QDialog(parent),
      plot_(new AUVPLaneWnd(this)),
      progress_(new QLabel(this)),
      imagerFolder_(getExePath()) {
  setWindowTitle("UV-Plane");
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  plot_->setObjectName("plot");
  progress_->setObjectName("progress");
  progress_->setTextFormat(Qt::PlainText);

  auto* const printButton = new QPushButton("Print...");
  printButton->setObjectName("print");
  auto* const transmit = new QPushButton("Transmit to ZEL Imager");
  transmit->setObjectName("transmit");
  auto* const close = new QPushButton("Close");
  close->setObjectName("close");
  close->setDefault(true);
  for (QPushButton* const other : {printButton, transmit}) other->setAutoDefault(false);
  connect(printButton, &QPushButton::clicked, this, &LumoUVPlaneDlg::print);
  connect(transmit, &QPushButton::clicked, this, &LumoUVPlaneDlg::TransmitToImager);
  connect(close, &QPushButton::clicked, this, &QDialog::reject);

  auto* const buttons = new QHBoxLayout;
  buttons->addWidget(progress_, 1);
  buttons->addWidget(printButton);
  buttons->addWidget(transmit);
  buttons->addWidget(close);
  auto* const column = new QVBoxLayout(this);
  column->addWidget(plot_, 1);
  column->addLayout(buttons);
  resize(dialogSize(fontMetrics()));
  close->setFocus();
}

LumoUVPlaneDlg::~LumoUVPlaneDlg() {
  // Joins the reading thread while everything it reports to is still there.
  plot_->SetAxis(nullptr);
}

void LumoUVPlaneDlg::SetData(const AObjArray<std::string>& names, const AObjArray<AUVXFqTbl>& tables,
                             const AObjArray<ABitArray>& selections, const AArray<std::int32_t>& sources,
                             double minHz, double maxHz, double uExtent, double vExtent) {
  data_ = {names, tables, selections, sources, minHz, maxHz, uExtent, vExtent};
}

void LumoUVPlaneDlg::OnInitDialog() {
  isInitialised_ = true;
  // The call comes from the reading thread; what it asks for happens here, and not at all when the dialog is
  // gone by then.
  plot_->SetAxis(makeUvPlaneAxis(data_, [this] {
    QMetaObject::invokeMethod(this, &LumoUVPlaneDlg::showProgress, Qt::QueuedConnection);
  }));
  showProgress();
}

void LumoUVPlaneDlg::showEvent(QShowEvent* event) {
  if (!isInitialised_) OnInitDialog();
  QDialog::showEvent(event);
}

const AUVPGraph* LumoUVPlaneDlg::graph() const {
  const A2_3DAxis* const axis = plot_->axis();
  return axis != nullptr ? dynamic_cast<const AUVPGraph*>(axis->graphs().front().get()) : nullptr;
}

void LumoUVPlaneDlg::showProgress() {
  if (graph() == nullptr) return;
  progress_->setText(uvProgressText(graph()->progress()));
  plot_->refresh();
}

void LumoUVPlaneDlg::print() {
  printWithDialog(this, windowTitle(), *plot_);
}

void LumoUVPlaneDlg::TransmitToImager() {
  const std::unique_ptr<ImagerLink> link = systemImagerLink();
  handOver_ = handOverToImager(data_, imagerFolder_, static_cast<ImagerLink::Window>(winId()), link.get());
}

}  // namespace lumo
