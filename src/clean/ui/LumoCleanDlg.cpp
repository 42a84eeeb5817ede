// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/ui/LumoCleanDlg.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QWindowStateChangeEvent>
#include <algorithm>
#include <chrono>
#include <new>

#include "clean/CleanViewModel.h"
#include "clean/ui/CleanGraphs.h"
#include "clean/ui/LumoClnShowDlg.h"

namespace lumo {

namespace {

/// About two screen refreshes: no eye follows more, and the worker keeps its processor to itself.
constexpr std::chrono::milliseconds kLookPeriod(33);
/// While somebody waits for the result.
constexpr std::chrono::milliseconds kPauseLookPeriod(3);

/// A graph of many iterations changes slowly, and drawing it takes more than a text.
constexpr std::chrono::milliseconds kGraphPeriod(500);

/// Room for every double, so that the window does not change its size as the digits come and go.
constexpr const char* kWidestNumber = "-0.00000000000000000e-000";

QLabel* makeCaption(const char* text) {
  auto* const label = new QLabel(text);
  label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  return label;
}

/// The text of a value on the button colour, half way to white.
QLabel* makeValue(const char* name) {
  auto* const label = new QLabel(CleanDialogModel::kNoIteration);
  label->setObjectName(name);
  label->setAlignment(Qt::AlignCenter);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  QPalette palette = label->palette();
  float hue = 0;
  float saturation = 0;
  float lightness = 0;
  palette.color(QPalette::Button).getHslF(&hue, &saturation, &lightness);
  palette.setColor(QPalette::Window, QColor::fromHslF(std::max(hue, 0.0F), saturation, (lightness + 1) / 2));
  palette.setColor(QPalette::WindowText, Qt::black);
  label->setPalette(palette);
  label->setAutoFillBackground(true);
  label->setMinimumWidth(label->fontMetrics().horizontalAdvance(kWidestNumber));
  return label;
}

}  // namespace

LumoCleanDlg::LumoCleanDlg(CleanWorker& worker, const CleanScene& scene, MainWindowLink& mainWindow)
    : worker_(worker),
      scene_(scene),
      mainWindow_(mainWindow),
      iterationText_(makeValue("iteration")),
      fluxText_(makeValue("flux")),
      showResult_(new QPushButton(tr("&Show result"))),
      convergence_(new QPushButton(tr("Con&vergence"))) {
  setWindowTitle(tr("MFS CLEANing"));
  setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                 Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
  showResult_->setObjectName("showResult");
  showResult_->setCheckable(true);
  showResult_->setAutoDefault(false);
  showResult_->setToolTip(tr("Pauses the CLEAN and shows the restored map and the residual so far"));
  convergence_->setObjectName("convergence");
  convergence_->setCheckable(true);
  convergence_->setAutoDefault(false);
  convergence_->setToolTip(tr("Graphs of the total flux and the residual over the iterations"));

  auto* const layout = new QGridLayout(this);
  layout->addWidget(makeCaption("Iteration: "), 0, 0);
  layout->addWidget(iterationText_, 0, 1);
  layout->addWidget(showResult_, 0, 2);
  layout->addWidget(makeCaption("Total FLUX: "), 1, 0);
  layout->addWidget(fluxText_, 1, 1);
  layout->addWidget(convergence_, 1, 2);
  layout->setColumnStretch(1, 1);

  connect(showResult_, &QPushButton::clicked, this, &LumoCleanDlg::showResult);
  connect(convergence_, &QPushButton::toggled, this, &LumoCleanDlg::toggleGraphs);
  connect(&timer_, &QTimer::timeout, this, &LumoCleanDlg::look);
}

int LumoCleanDlg::exec() {
  if (!worker_.start(scene_.priority()).ok()) return Rejected;
  timer_.start(kLookPeriod);
  return QDialog::exec();
}

void LumoCleanDlg::reject() {
  worker_.stop();
  // A pause asked for before would open the view on a run that is to end.
  pausing_ = false;
  timer_.setInterval(kLookPeriod);
  showResult_->setChecked(false);
  worker_.resume();
}

void LumoCleanDlg::changeEvent(QEvent* event) {
  if (event->type() == QEvent::WindowStateChange) {
    const auto before = static_cast<QWindowStateChangeEvent*>(event)->oldState();
    const bool wasMinimised = before.testFlag(Qt::WindowMinimized);
    if (isMinimized() && !wasMinimised) mainWindow_.minimise();
    if (!isMinimized() && wasMinimised) mainWindow_.restore();
  }
  QDialog::changeEvent(event);
}

void LumoCleanDlg::look() {
  // Asked first, so that what is shown is of the last iteration done.
  const bool finished = worker_.finished();
  const bool paused = pausing_ && worker_.paused();
  showProgress();
  followRecord();
  if (finished) {
    timer_.stop();
    done(Accepted);
  } else if (paused) {
    openView();
  }
}

void LumoCleanDlg::showProgress() {
  if (!model_.update(worker_.iteration(), worker_.totalFlux())) return;
  iterationText_->setText(QString::fromStdString(model_.iterationText()));
  fluxText_->setText(QString::fromStdString(model_.fluxText()));
  mainWindow_.setTitle(model_.mainTitle());
  logPriority();
}

void LumoCleanDlg::logPriority() {
  if (priorityLogged_) return;
  priorityLogged_ = true;
  if (const Status status = worker_.priorityStatus(); !status.ok()) mainWindow_.log(status.text());
}

void LumoCleanDlg::toggleGraphs(bool shown) {
  if (graphs_ == nullptr) {
    graphs_ = new CleanGraphs(scene_.header().unit, this);
    auto* const layout = qobject_cast<QGridLayout*>(this->layout());
    layout->addWidget(graphs_, 2, 0, 1, 3);
    layout->setRowStretch(2, 1);
  }
  if (shown) closedSize_ = size();
  graphs_->setVisible(shown);
  // Else the room that the graphs needed still holds.
  layout()->activate();
  resize(shown ? sizeHint() : closedSize_);
  sinceGraphs_.invalidate();
  followRecord();
}

void LumoCleanDlg::followRecord() {
  if (graphs_ == nullptr || !graphs_->isVisible()) return;
  if (sinceGraphs_.isValid() && !sinceGraphs_.hasExpired(kGraphPeriod.count())) return;
  WatchedCleanRecord& record = worker_.record();
  try {
    // Asked for at one look, the copy is there at the next one after the iteration's end.
    if (!record.fetchCopy(record_)) return record.requestCopy();
    graphs_->showRecord(record_);
    sinceGraphs_.start();
  } catch (const std::bad_alloc&) {
    // The run matters more than its picture.
    graphs_->hide();
    mainWindow_.log("There is not enough memory to show the convergence; the CLEAN goes on.");
  }
}

void LumoCleanDlg::showResult() {
  // Looked at means there is a worker; without one the click has no meaning.
  if (!timer_.isActive()) return;
  pausing_ = true;
  // A second click while the iteration ends must not look like a change of mind.
  showResult_->setChecked(true);
  worker_.requestPause();
  timer_.setInterval(kPauseLookPeriod);
}

void LumoCleanDlg::openView() {
  pausing_ = false;
  timer_.stop();
  showResult_->setChecked(false);
  try {
    CleanViewModel model = CleanViewModel::prepare(scene_);
    model.record = worker_.record().record().lines();
    LumoClnShowDlg view(model, this, viewShowsGraphs_);
    if (view.exec() == Rejected) worker_.stop();
    viewShowsGraphs_ = !view.graphs().isHidden();
  } catch (const std::bad_alloc&) {
    mainWindow_.log("There is not enough memory to show the result; the CLEAN goes on.");
  }
  worker_.resume();
  timer_.start(kLookPeriod);
}

}  // namespace lumo
