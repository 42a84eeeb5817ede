// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/ui/AAreaSelectDlg.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <chrono>
#include <utility>
#include <vector>

#include "analysis/AreaSummary.h"
#include "analysis/MaskedStatistics.h"
#include "analysis/ui/ATrackerArrayInAxis.h"
#include "analysis/ui/AreaToolBar.h"
#include "view/OutputDialogs.h"

namespace lumo {

namespace {

// Between two looks at an area that is being pulled; a large one takes a while to add up.
constexpr std::chrono::milliseconds kAreaPause(50);

// A map beyond these is added up when the mouse is at rest only.
constexpr std::size_t kLivePixels = std::size_t{1} << 22;

constexpr const char* kRegionFilter = "DS9 regions (*.reg)";

}  // namespace

AAreaSelectDlg::AAreaSelectDlg(QWidget* parent)
    : QDialog(parent),
      map_(new LumoAxisWnd(this)),
      top_(new QVBoxLayout),
      controls_(new QVBoxLayout),
      areaLine_(new QLabel(this)),
      load_(new QPushButton(tr("&Load regions..."), this)),
      save_(new QPushButton(tr("&Save regions..."), this)),
      buttons_(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this)) {
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  setSizeGripEnabled(true);
  map_->setObjectName("map");
  areaLine_->setObjectName("areaLine");
  areaLine_->setTextFormat(Qt::PlainText);
  areaLine_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  areaLine_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  addFileButtons();
  connect(buttons_, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);
  areaTimer_.setSingleShot(true);
  areaTimer_.setInterval(kAreaPause);
  connect(&areaTimer_, &QTimer::timeout, this, &AAreaSelectDlg::showArea);

  auto* const last = new QHBoxLayout;
  last->addWidget(load_);
  last->addWidget(save_);
  last->addWidget(buttons_, 1);
  auto* const column = new QVBoxLayout(this);
  column->addLayout(top_);
  column->addWidget(map_, 1);
  column->addWidget(areaLine_);
  column->addLayout(controls_);
  column->addLayout(last);
}

void AAreaSelectDlg::addFileButtons() {
  // Enter is for the dialog's "OK".
  load_->setAutoDefault(false);
  save_->setAutoDefault(false);
  // Region files need to know what the map is, which setMapInfo() tells.
  load_->setEnabled(false);
  save_->setEnabled(false);
  load_->setObjectName("loadRegions");
  save_->setObjectName("saveRegions");
  load_->setToolTip(tr("Add the areas of a DS9 region file"));
  save_->setToolTip(tr("Write the areas to a DS9 region file"));
  auto* const menu = new QMenu(save_);
  saveSky_ = menu->addAction(tr("In sky coordinates..."), this, [this] { saveRegions(RegionSystem::kSky); });
  menu->addAction(tr("In image pixels..."), this, [this] { saveRegions(RegionSystem::kImage); });
  save_->setMenu(menu);
  connect(load_, &QPushButton::clicked, this, &AAreaSelectDlg::loadRegions);
}

void AAreaSelectDlg::SetParameters(std::unique_ptr<A2_3DAxis> axis, ATrackerArrayInAxis* trackers,
                                   int editable) {
  trackers_ = trackers;
  map_->SetAxis(std::move(axis));
  trackers_->attach(*map_, editable != 0);
  editable_ = editable != 0;
  if (editable_) {
    auto* const tools = new AreaToolBar(*trackers_, this);
    top_->addWidget(tools);
    setTabOrder(tools, map_);
  }
  map_->setFocus();
  connect(trackers_, &ATrackerArrayInAxis::changed, this, [this] {
    enableSaving();
    if (!areaTimer_.isActive()) areaTimer_.start();
  });
  showArea();
}

void AAreaSelectDlg::enableSaving() {
  save_->setEnabled(frame_.has_value() && !trackers_->areas().shapes().empty());
}

void AAreaSelectDlg::setMapInfo(const AMapHeader& header, const TMinMax& range) {
  header_ = header;
  range_ = range;
  const AMatrix<float>& map = map_->axis()->colours()->map().map();
  pixelsPerBeam_ = beamPixels(header, range, map);
  frame_.emplace(header, range, map.rows(), map.columns());
  saveSky_->setEnabled(frame_->hasSky());
  load_->setEnabled(editable_);
  enableSaving();
  showArea();
}

QString AAreaSelectDlg::areaText() const {
  return areaLine_->text();
}

void AAreaSelectDlg::showArea() {
  if (trackers_->editor().busy() && map_->axis()->colours()->map().map().size() > kLivePixels) {
    areaTimer_.start();
    return;
  }
  const auto selected = trackers_->editor().selected();
  const auto& shapes = trackers_->areas().shapes();
  if (selected && frame_) {
    const AreaSummary summary = summarise(shapes[*selected], map_->axis()->colours()->map().map(), range_);
    areaLine_->setText(tr("Area %1: ").arg(*selected + 1) +
                       QString::fromStdString(summaryText(summary, header_, pixelsPerBeam_)));
  } else if (shapes.empty()) {
    areaLine_->setText(tr("No area is marked: the whole map counts as one."));
  } else {
    areaLine_->setText((shapes.size() == 1 ? tr("1 area") : tr("%1 areas").arg(shapes.size())) +
                       (trackers_->editor().isFull() ? tr(", as many as can be marked") : QString()));
  }
  areaLine_->setToolTip(areaLine_->text());
}

void AAreaSelectDlg::accept() {
  trackers_->EndWorking();
  QDialog::accept();
}

void AAreaSelectDlg::keyPressEvent(QKeyEvent* event) {
  // Back and forth work wherever the focus is, unless a field has the key for itself.
  const bool isStep = event->modifiers().testFlag(Qt::ControlModifier) &&
                      (event->key() == Qt::Key_Z || event->key() == Qt::Key_Y);
  if (isStep && editable_ && trackers_->key(*event)) return;
  QDialog::keyPressEvent(event);
}

void AAreaSelectDlg::loadRegions() {
  QFileDialog dialog(this, tr("Load regions"));
  dialog.setFileMode(QFileDialog::ExistingFile);
  dialog.setNameFilters({tr(kRegionFilter), tr("All files (*)")});
  if (dialog.exec() != QDialog::Accepted) return;
  std::vector<AreaShape> shapes;
  const Status status =
      readRegions(QFile::encodeName(dialog.selectedFiles().value(0)).toStdString(), *frame_, shapes);
  if (!status.ok()) {
    QMessageBox::warning(this, dialog.windowTitle(), QString::fromStdString(status.text()));
    return;
  }
  AreaList areas = trackers_->areas();
  for (AreaShape& shape : shapes) areas.add(std::move(shape));
  const std::size_t count = areas.shapes().size();
  if (!trackers_->replaceAll(std::move(areas)))
    QMessageBox::warning(
        this, dialog.windowTitle(),
        tr("With these there would be %1 areas; at most %2 can be marked.").arg(count).arg(kMostRegions));
}

void AAreaSelectDlg::saveRegions(RegionSystem system) {
  saveWithDialog(this, tr("Save regions"), {tr(kRegionFilter)}, [this, system](const std::string& path) {
    return writeRegions(path, trackers_->areas().shapes(), *frame_, system);
  });
}

}  // namespace lumo
