// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/AreaMeasurement.h"

#include <cmath>
#include <cstddef>
#include <limits>

#include "core/TextForm.h"
#include "core/Units.h"
#include "io/ProductNames.h"

namespace lumo {

namespace {

std::string megahertz(double hertz) {
  return nValToStr(hertz * kMegahertzPerHertz, 9);
}

void noteEmptyAreas(const ResultsPresenter& presenter, AreaMeasurement& measurement) {
  AreaSpectra& spectra = measurement.spectra;
  for (std::size_t k = 0; k < spectra.areaIndex.size(); ++k) {
    if (std::isfinite(spectra.areaIndex[k]) && std::isfinite(spectra.areaFlux[k])) continue;
    const AreaList& areas = measurement.settings.areas;
    std::string note = emptyAreaText(areas, k, presenter.intensity(), presenter.mapRange());
    if (!note.empty())
      spectra.areaFlux[k] = std::numeric_limits<double>::quiet_NaN();
    else if (!std::isfinite(spectra.areaFlux[k]))
      note = "the map's header has no restoring beam: there is no flux density";
    else
      note = "area " + areaLabel(areas, k) + " has no spectral index: its sums give none";
    measurement.notes.push_back(note);
  }
}

}  // namespace

Status measureProducts(const std::string& folder, const std::string& prefix, const AreaOptions& options,
                       int points, AreaMeasurement& measurement) {
  measurement = AreaMeasurement();
  const std::string first = cleanName(folder, prefix, 0);
  double freqMin = 0.0;
  double freqMax = 0.0;
  // A map that does not tell is not there, which loading the products reports.
  static_cast<void>(headerFrequencies(first, freqMin, freqMax));
  ResultsPresenter presenter(folder, prefix, freqMin, freqMax);
  if (Status status = presenter.load(); !status.ok()) return status;
  if (const Status& range = presenter.rangeStatus(); !range.ok())
    measurement.notes.push_back(range.file() + " " + range.message() +
                                "; the frequencies are those of the header of " + first + ", " +
                                megahertz(freqMin) + " to " + megahertz(freqMax) + " MHz");
  measurement.unit = presenter.mapHeader().unit;
  AreaSettings& settings = measurement.settings;
  settings.pointCount = points;
  Status status =
      options.areasOn(presenter.mapHeader(), presenter.mapRange(), presenter.intensity(), settings.areas);
  if (status.ok()) status = presenter.measure(settings, measurement.spectra);
  if (!status.ok()) return status;
  noteEmptyAreas(presenter, measurement);
  if (!measurement.spectra.noiseStatus.ok())
    measurement.notes.push_back("the spectra have no errors: " + measurement.spectra.noiseStatus.text());
  return {};
}

}  // namespace lumo
