// SPDX-License-Identifier: GPL-3.0-or-later
// What happens from "Run" to the end of a run.
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QScopeGuard>

#include "app/CLumoDlg.h"
#include "app/Prompts.h"
#include "app/RunPump.h"
#include "clean/ui/CleanDialogWatcher.h"
#include "core/TextForm.h"
#include "core/ThreadCount.h"
#include "run/RunDriver.h"
#include "run/RunSummary.h"
#include "view/AProgressCtrl.h"
#include "view/StatusLabel.h"

namespace lumo {

void CLumoDlg::runOrCancel() {
  // The second click of a double click on "Run" is no wish to cancel.
  if (running_ && sinceStart_.elapsed() < QApplication::doubleClickInterval()) return;
  if (running_) {
    cancel_ = 1;
  } else if (takeFields()) {
    work("A run", [this](const RunIndicators& indicators) { runStages(indicators); });
    reportRun();
  }
}

bool CLumoDlg::takeFields() {
  const ParameterProblems problems = takeChecked(controls_.texts(), list_.frequencies(), parameters_);
  if (problems.empty()) return true;
  const ParameterProblem& first = problems.front();
  showMessage(first.message);
  QLineEdit* const field = controls_.field(first.field);
  field->setFocus();
  field->selectAll();
  return false;
}

void CLumoDlg::work(const QString& name, const std::function<void(const RunIndicators&)>& stages) {
  work_ = name;
  setRunning(true);
  sinceStart_.start();
  const auto finish = qScopeGuard([this] {
    // What was clicked or typed while nobody looked belongs to this run, not to the window after it.
    QCoreApplication::processEvents();
    setRunning(false);
  });
  RunPump pump({*controls_.status, *controls_.rightBar, *controls_.middleBar, *controls_.leftBar});
  stages(pump.indicators(cancel_));
}

void CLumoDlg::runStages(const RunIndicators& indicators) {
  log_.add("Run of " + toStr(list_.inputs().count()) + " files, products " + parameters_.folder +
           parameters_.prefix + "^...");
  CleanDialogWatcher watcher(*this);
  RunCompany company;
  company.indicators = indicators;
  company.clean = &watcher;
  company.threads = threadCount(0);
  company.tellPreFlight = [this](const PreFlight& found) {
    for (const std::string& line : preFlightLines(found)) log_.add(line);
    for (const std::string& warning : preFlightWarnings(found, parameters_.order))
      log_.add("Warning: " + warning);
  };
  company.priority = GetPriorityConst(controls_.priority->currentIndex());
  company.discardAreas = [this] { viewers_.discardAreas(); };
  report_ = RunDriver(company).Run(parameters_, list_);
}

void CLumoDlg::setRunning(bool running) {
  running_ = running;
  cancel_ = 0;
  controls_.enable(list_.hasFiles(), running);
  controls_.run->setFocus();
  if (!running) return;
  controls_.status->setText("");
  for (AProgressCtrl* const bar : {controls_.leftBar, controls_.middleBar, controls_.rightBar})
    bar->setPos(0);
}

void CLumoDlg::reportRun() {
  for (const std::string& line : runSummaryLines(report_)) log_.add(line);
  if (report_.status.code() == StatusCode::kCancelled) {
    log_.add("The run was cancelled");
    controls_.status->setText("Cancelled");
  } else {
    tell("The run failed", report_.status);
  }
}

}  // namespace lumo
