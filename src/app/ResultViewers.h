// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "analysis/AreaSettings.h"
#include "analysis/ui/AMapSelDlg.h"
#include "run/FrequencySurvey.h"
#include "run/RunParameters.h"
#include "run/UvxFileList.h"

class QWidget;

namespace lumo {

class Log;
class Prompts;
class ResultsPresenter;

/// Opens the viewers of the data and of a run's results above a window, and keeps what their users have set
/// from one opening to the next. What goes wrong is told in the log.
class ResultViewers {
 public:
  /// `prompts` and `log` must outlive this.
  ResultViewers(Prompts& prompts, Log& log) : prompts_(prompts), log_(log) {}

  /// Lets areas be marked on the restored map of the run's products and shows their spectra, as a graph or
  /// (`asGraph` 0) as a table. Nothing is shown where the products are missing.
  void showResults(int asGraph, const RunParameters& parameters, const FrequencySurvey& survey,
                   QWidget& window);
  /// The map selector. `folder` is the work folder.
  void showMapSelector(const std::string& folder, QWidget& window);
  /// The uv coverage of what the list selects.
  void showUvPlane(const UvxFileList& list, QWidget& window);

  /// Forgets the areas; the other settings of the area dialog stay.
  void discardAreas() { settings_.areas.clear(); }
  /// What was confirmed last in the area dialog.
  [[nodiscard]] const AreaSettings& settings() const { return settings_; }

 private:
  [[nodiscard]] bool selectAreas(const ResultsPresenter& presenter, QWidget& window);

  Prompts& prompts_;
  Log& log_;
  AreaSettings settings_;
  MapSelection selection_;
};

}  // namespace lumo
