// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QTimer>
#include <vector>

#include "clean/CleanDialogModel.h"
#include "clean/CleanWatcher.h"
#include "clean/ui/MainWindowLink.h"

class QLabel;
class QPushButton;

namespace lumo {

class CleanGraphs;

/// The modal dialog "MFS CLEANing": starts a CLEAN worker, shows how far it is, and ends itself when the
/// worker ends.
///
/// The worker knows nothing of the dialog, which looks at its counters at screen rate. "Show result" asks for
/// a pause; when the running iteration is done, the CLEAN view opens, and from it the run is continued or
/// stopped. "Convergence" opens graphs of how the CLEAN goes on, drawn anew twice a second, below. The close
/// box and Escape stop the run. Minimising and restoring the dialog does the same to the main window.
class LumoCleanDlg final : public QDialog {
  Q_OBJECT

 public:
  /// `worker` has not been started; all three outlive the dialog.
  LumoCleanDlg(CleanWorker& worker, const CleanScene& scene, MainWindowLink& mainWindow);

  /// Starts the worker at the scene's priority and returns when it has finished; Accepted unless it could not
  /// be started.
  int exec() override;

 public slots:
  /// Stops the run; the dialog stays until the iteration in progress is done.
  void reject() override;

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void look();
  void showProgress();
  void logPriority();
  void toggleGraphs(bool shown);
  void followRecord();
  void showResult();
  void openView();

  CleanWorker& worker_;
  const CleanScene& scene_;
  MainWindowLink& mainWindow_;
  CleanDialogModel model_;
  QTimer timer_;
  QLabel* iterationText_;
  QLabel* fluxText_;
  QPushButton* showResult_;
  QPushButton* convergence_;
  CleanGraphs* graphs_ = nullptr;  ///< made when first asked for
  std::vector<CleanProgress> record_;
  QElapsedTimer sinceGraphs_;
  QSize closedSize_;  ///< without the graphs
  bool viewShowsGraphs_ = true;
  bool pausing_ = false;
  bool priorityLogged_ = false;
};

}  // namespace lumo
