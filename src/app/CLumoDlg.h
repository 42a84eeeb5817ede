// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QString>
#include <QStringList>
#include <functional>
#include <string>

#include "app/MainControls.h"
#include "app/ResultViewers.h"
#include "clean/ui/MainWindowLink.h"
#include "core/Log.h"
#include "core/Progress.h"
#include "run/ParameterStore.h"
#include "run/RunParameters.h"
#include "run/RunReport.h"
#include "run/UvxFileList.h"

namespace lumo {

class CLogDlg;
class DesktopImport;
class Prompts;

/// The main dialog "Lumo": gathers files and parameters, runs, and keeps the parameter set from one use to
/// the next. It computes nothing: the rooms below do.
///
///     CLumoDlg dialog(...); dialog.OnInitDialog(); dialog.exec();
///
/// A run or an import works on this thread and lets the event loop turn now and then (RunPump); while it goes
/// on the only things that respond are "Cancel", "Close", which asks whether to cancel, and the log.
class CLumoDlg : public QDialog, private FileListWatcher, private MainWindowLink {
  Q_OBJECT

 public:
  /// `prompts` and `log` must outlive the dialog. `storeFolder`: where the parameter set is kept, with its
  /// separator.
  CLumoDlg(Prompts& prompts, Log& log, const std::string& storeFolder, QWidget* parent = nullptr);
  ~CLumoDlg() override;

  /// Loads the parameter set; to be called once, before the dialog is shown.
  void OnInitDialog();

  [[nodiscard]] const UvxFileList& files() const { return list_; }
  [[nodiscard]] const RunParameters& parameters() const { return parameters_; }
  /// What was last confirmed in the area dialog.
  [[nodiscard]] const AreaSettings& areaSettings() const { return viewers_.settings(); }
  /// What the last run reported.
  [[nodiscard]] const RunReport& lastReport() const { return report_; }

 public Q_SLOTS:
  /// "Close", Escape and the close box: saves what stands in the fields, unchecked, and ends the dialog.
  /// During a run they lead to a cancel instead.
  void reject() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  /// Files and folders that are dropped on the window are added like those chosen in "Add...".
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void connectControls();
  /// Runs what a button does. An exception, for want of memory, ends here: the window system cannot carry it.
  void guarded(const std::function<void()>& handler);

  // FileListWatcher
  void showMessage(const std::string& text) override;
  void proposeWorkFolder(const std::string& folder) override;
  // MainWindowLink
  void setTitle(const std::string& title) override;
  void minimise() override;
  void restore() override;
  void log(const std::string& text) override;

  void addFiles();
  void addPaths(const QStringList& names);
  void runImport(DesktopImport& import);
  void deleteFile();
  void reRead();
  void showInfo();
  void browseForFolder();
  void centerReference();
  void editImagingParameters();
  void showUvPlane();
  /// The spectra of areas of the products under the prefix now shown: `asGraph` 0 as a table.
  void showResults(int asGraph);
  void showGraph() { showResults(1); }
  void showTable() { showResults(0); }
  void showMapSelector();
  void runOrCancel();
  void showAbout();
  void showLog();

  /// After files or masks changed.
  void showFiles();
  void showSurvey();
  void showFolder();
  /// A failure that no message box tells of: to the log, and briefly to the status text.
  void tell(const std::string& what, const Status& status);

  [[nodiscard]] bool takeFields();
  /// Does long work that the window shows the progress of. `name` begins a sentence: "A run".
  void work(const QString& name, const std::function<void(const RunIndicators&)>& stages);
  void runStages(const RunIndicators& indicators);
  void setRunning(bool running);
  void reportRun();

  Prompts& prompts_;
  Log& log_;
  UvxFileList list_;
  MainControls controls_;
  ParameterStore store_;
  RunParameters parameters_;
  RunReport report_;
  ResultViewers viewers_;
  CancelFlag cancel_{0};
  bool running_ = false;
  QString work_;  ///< what goes on while running_
  QElapsedTimer sinceStart_;
  CLogDlg* logDialog_ = nullptr;  ///< made when first asked for; owned by this as a window
};

}  // namespace lumo
