// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ResultViewers.h"

#include <QDialog>
#include <QGuiApplication>
#include <QScopeGuard>

#include "analysis/ResultsPresenter.h"
#include "analysis/ui/AMeanSigmaTblDlg.h"
#include "analysis/ui/AResizeMultiAxisDlg.h"
#include "analysis/ui/ASelAreaDlg.h"
#include "app/Prompts.h"
#include "core/Log.h"
#include "imaging/ui/LumoUVPlaneDlg.h"
#include "io/ProductNames.h"
#include "run/UvPlaneSelection.h"

namespace lumo {

namespace {

struct FrequencyRange {
  double min;
  double max;
};

// What counts where the run left no frequency file: the files of the list, or without any the map itself.
FrequencyRange otherFrequencies(const RunParameters& parameters, const FrequencySurvey& survey) {
  FrequencyRange range{survey.minHz, survey.maxHz};
  if (survey.number > 0) return range;
  // A map that does not tell is not there, which loading the products reports.
  static_cast<void>(
      headerFrequencies(cleanName(parameters.folder, parameters.prefix, 0), range.min, range.max));
  return range;
}

/// What the work returns; the cursor tells meanwhile that it takes a while.
template <typename Work>
Status waiting(Work work) {
  QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  const auto arrow = qScopeGuard([] { QGuiApplication::restoreOverrideCursor(); });
  return work();
}

}  // namespace

void ResultViewers::showResults(int asGraph, const RunParameters& parameters, const FrequencySurvey& survey,
                                QWidget& window) {
  const FrequencyRange range = otherFrequencies(parameters, survey);
  ResultsPresenter presenter(parameters.folder, parameters.prefix, range.min, range.max);
  if (const Status status = waiting([&] { return presenter.load(); }); !status.ok())
    return log_.add("No results to show", status);
  // Without a frequency file, the range of the files is as good.
  if (presenter.rangeStatus().code() != StatusCode::kNotFound)
    log_.add("The frequencies are those of the data", presenter.rangeStatus());
  if (!selectAreas(presenter, window)) return;
  AreaSpectra spectra;
  const Status status = waiting([&] { return presenter.measure(settings_, spectra); });
  if (!status.ok()) return log_.add("The areas cannot be measured", status);
  log_.add("The spectra have no errors", spectra.noiseStatus);
  if (asGraph == 0)
    AMeanSigmaTblDlg(spectraTable(spectra), &window).exec();
  else
    AResizeMultiAxisDlg(spectraGraph(spectra, settings_), &window).exec();
}

bool ResultViewers::selectAreas(const ResultsPresenter& presenter, QWidget& window) {
  ASelAreaDlg dialog(presenter.intensity(), presenter.mapHeader(), presenter.mapRange(), settings_, &window);
  if (dialog.exec() != QDialog::Accepted) return false;
  settings_ = dialog.settings();
  return true;
}

void ResultViewers::showMapSelector(const std::string& folder, QWidget& window) {
  AMapSelDlg(prompts_, selection_, folder, &window).exec();
}

void ResultViewers::showUvPlane(const UvxFileList& list, QWidget& window) {
  LumoUVPlaneDlg dialog(&window);
  dialog.SetData(uvPlaneSelection(list));
  dialog.exec();
  log_.add("The external imager was not reached", dialog.lastHandOver().status);
}

}  // namespace lumo
