// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/ui/AMapSelDlg.h"

#include <QCheckBox>
#include <QFile>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QScopeGuard>
#include <QVBoxLayout>
#include <algorithm>
#include <cstddef>
#include <utility>

#include "analysis/ui/AMeanSigmaTblDlg.h"
#include "analysis/ui/AResizeMultiAxisDlg.h"
#include "analysis/ui/ASelAreaDlg.h"
#include "analysis/ui/MapPrompts.h"
#include "core/PendingFile.h"
#include "io/MapProduct.h"

namespace lumo {

namespace {

constexpr std::size_t kFewestForGraph = 2;

QString shown(const std::string& path) {
  return QFile::decodeName(path.c_str());
}

}  // namespace

AMapSelDlg::AMapSelDlg(MapPrompts& prompts, MapSelection& selection, std::string folder, QWidget* parent)
    : QDialog(parent),
      prompts_(prompts),
      selection_(selection),
      folder_(std::move(folder)),
      list_(new QListWidget),
      invert_(new QCheckBox("Invert")) {
  setWindowTitle("Map and areas");
  list_->setObjectName("maps");
  list_->setAccessibleName("Maps");
  list_->setToolTip("The maps that the areas are measured on; the first gives the reference frequency");
  list_->setTextElideMode(Qt::ElideMiddle);
  auto* const row = new QHBoxLayout(this);
  row->addWidget(list_, 1);
  row->addLayout(makeButtons());
  const QFontMetrics metrics(list_->font());
  list_->setMinimumSize(metrics.averageCharWidth() * 30, metrics.lineSpacing() * 6);
  resize(metrics.averageCharWidth() * 90, metrics.lineSpacing() * 16);
  connect(list_, &QListWidget::currentRowChanged, this, &AMapSelDlg::enable);
  showPaths(0);
}

QVBoxLayout* AMapSelDlg::makeButtons() {
  auto* const buttons = new QVBoxLayout;
  add_ =
      addButton(*buttons, "Add map(s)...", "addMaps", "Adds map files, also FITS images of other programs");
  delete_ = addButton(*buttons, "Delete map", "deleteMap",
                      "Takes the selected map off the list; the file itself stays");
  selectAreas_ = addButton(*buttons, "Select  area(s)...", "selectAreas",
                           "Marks areas, with the selected map as the ground");
  table_ = addButton(*buttons, "Table...", "mapTable", "Sums and deviations of every area on every map");
  graph_ = addButton(*buttons, "Graph...", "mapGraph",
                     "A power law through the maps for every area; needs two maps or more");
  invert_->setObjectName("mapInvert");
  invert_->setChecked(selection_.settings.invertColors != 0);
  buttons->addWidget(invert_);
  invert_->hide();
  buttons->addStretch();
  QPushButton* const done = addButton(*buttons, "Done", "done", "Closes this window; maps and areas stay");
  connect(add_, &QPushButton::clicked, this, &AMapSelDlg::addMaps);
  connect(delete_, &QPushButton::clicked, this, &AMapSelDlg::deleteMap);
  connect(selectAreas_, &QPushButton::clicked, this, &AMapSelDlg::selectAreas);
  connect(table_, &QPushButton::clicked, this, &AMapSelDlg::showTable);
  connect(graph_, &QPushButton::clicked, this, &AMapSelDlg::showGraph);
  connect(done, &QPushButton::clicked, this, &QDialog::accept);
  connect(invert_, &QCheckBox::toggled, this,
          [this](bool on) { selection_.settings.invertColors = on ? 1 : 0; });
  return buttons;
}

QPushButton* AMapSelDlg::addButton(QVBoxLayout& column, const char* text, const char* name,
                                   const QString& tip) {
  auto* const button = new QPushButton(text);
  button->setObjectName(name);
  button->setToolTip(tip);
  // Enter in the list must not press whatever button comes first.
  button->setAutoDefault(false);
  column.addWidget(button);
  return button;
}

void AMapSelDlg::addMaps() {
  const QStringList chosen = prompts_.chooseMaps(this, shown(folder_));
  if (chosen.isEmpty()) return;
  QString refused;
  for (const QString& name : chosen) {
    const Status status = selection_.maps.add(QFile::encodeName(name).toStdString());
    // One that is listed already is no reason for a message.
    if (!status.ok() && status.code() != StatusCode::kInvalidValue)
      refused += (refused.isEmpty() ? "" : "\n") + QString::fromStdString(status.text());
  }
  showPaths(static_cast<int>(selection_.maps.paths().size()) - 1);
  if (!refused.isEmpty()) prompts_.showMessage(this, refused);
}

void AMapSelDlg::deleteMap() {
  const int row = list_->currentRow();
  if (row < 0) return;
  selection_.maps.remove(static_cast<std::size_t>(row));
  showPaths(row);
}

void AMapSelDlg::selectAreas() {
  const int row = list_->currentRow();
  if (row < 0) return;
  const std::string& path = selection_.maps.paths()[static_cast<std::size_t>(row)];
  LoadedMap map;
  if (const Status status = readMap(path, map); !status.ok())
    return prompts_.showMessage(this, QString::fromStdString(status.about(path).text()));
  ASelAreaDlg dialog(*map.matrix, map.header, map.range, selection_.settings, this);
  if (dialog.exec() != QDialog::Accepted) return;
  selection_.settings = dialog.settings();
  invert_->setChecked(selection_.settings.invertColors != 0);
}

bool AMapSelDlg::measure(MapMeasurement& measurement) {
  Status status;
  {
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const auto arrow = qScopeGuard([] { QGuiApplication::restoreOverrideCursor(); });
    status = selection_.maps.measure(selection_.settings.areas, measurement);
  }
  if (!status.ok()) prompts_.showMessage(this, QString::fromStdString(status.text()));
  return status.ok();
}

void AMapSelDlg::showTable() {
  MapMeasurement measurement;
  if (selection_.maps.paths().empty() || !measure(measurement)) return;
  AMeanSigmaTblDlg(mapTable(measurement), this).exec();
}

void AMapSelDlg::showGraph() {
  MapMeasurement measurement;
  if (selection_.maps.paths().size() < kFewestForGraph || !measure(measurement)) return;
  const MapFits fits = fitMaps(measurement);
  // The graph is drawn whether or not the points can be kept.
  static_cast<void>(writeWholeFile(diagnosticFileName(folder_), fits.diagnostics));
  AResizeMultiAxisDlg(fitGraph(fits, selection_.settings), this).exec();
}

void AMapSelDlg::showPaths(int current) {
  list_->clear();
  for (const std::string& path : selection_.maps.paths()) {
    auto* const item = new QListWidgetItem(shown(path), list_);
    item->setToolTip(shown(path));
  }
  list_->setCurrentRow(std::min(current, list_->count() - 1));
  enable();
}

void AMapSelDlg::enable() {
  const bool hasCurrent = list_->currentRow() >= 0;
  const std::size_t count = selection_.maps.paths().size();
  delete_->setEnabled(hasCurrent);
  selectAreas_->setEnabled(hasCurrent);
  table_->setEnabled(count > 0);
  graph_->setEnabled(count >= kFewestForGraph);
}

}  // namespace lumo
