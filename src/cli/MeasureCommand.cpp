// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/MeasureCommand.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <utility>
#include <vector>

#include "cli/AreaMeasurement.h"
#include "cli/Console.h"
#include "cli/TextTable.h"
#include "core/Paths.h"
#include "core/TextForm.h"
#include "core/Units.h"

namespace lumo {

namespace {

Json measurementJson(const AreaSpectra& spectra) {
  Json frequencies = Json::array();
  for (const double freq : spectra.freq) frequencies.push_back(finiteOrNull(freq));
  Json areas = Json::array();
  for (std::uint32_t k = 0; k < spectra.flux.rows(); ++k) {
    Json spectrum = Json::array();
    for (std::uint32_t u = 0; u < spectra.flux.columns(); ++u)
      spectrum.push_back(finiteOrNull(spectra.flux(k, u)));
    areas.push_back({{"area", k + 1},
                     {"flux", finiteOrNull(spectra.areaFlux[k])},
                     {"index", finiteOrNull(spectra.areaIndex[k])},
                     {"spectrum", spectrum},
                     {"error", finiteOrNull(spectra.error)}});
  }
  return {{"frequencies_hz", frequencies}, {"areas", areas}};
}

std::string measurementCsv(const AreaMeasurement& measurement) {
  const AreaUnits units(measurement.unit);
  const AreaSpectra& spectra = measurement.spectra;
  TextTable table;
  table.add({"area", "reference_hz", "reference_flux" + units.fluxColumn, "index", "frequency_hz",
             "flux" + units.fluxColumn, "error" + units.deviationColumn});
  for (std::uint32_t k = 0; k < spectra.flux.rows(); ++k)
    for (std::uint32_t u = 0; u < spectra.flux.columns(); ++u)
      table.add({toStr(k + std::int64_t{1}), valToStr(spectra.refFreq), valToStr(spectra.areaFlux[k]),
                 valToStr(spectra.areaIndex[k]), valToStr(spectra.freq[u]), valToStr(spectra.flux(k, u)),
                 valToStr(spectra.fluxErr(k, u))});
  return table.csv();
}

std::string measurementText(const AreaMeasurement& measurement) {
  constexpr int kFluxDigits = 6;
  constexpr int kIndexDigits = 4;
  const AreaUnits units(measurement.unit);
  const AreaSpectra& spectra = measurement.spectra;
  TextTable areas;
  areas.add({"Area", "Flux density" + units.flux, "Spectral index"});
  for (std::size_t k = 0; k < spectra.areaFlux.size(); ++k)
    areas.add({areaLabel(measurement.settings.areas, k), nValToStr(spectra.areaFlux[k], kFluxDigits),
               nValToStr(spectra.areaIndex[k], kIndexDigits)});
  const MeanSigmaTable values = spectraTable(spectra);
  TextTable spectrum;
  for (int row = 0; row < values.rowCount(); ++row) {
    std::vector<std::string> cells(static_cast<std::size_t>(values.columnCount()));
    for (int column = 0; column < values.columnCount(); ++column)
      cells[static_cast<std::size_t>(column)] = values.text(row, column);
    spectrum.add(std::move(cells));
  }
  return "At " + valToStr(spectra.refFreq * kMegahertzPerHertz) + " [MHz]:\n" + areas.aligned() +
         "\nMean: flux density" + units.flux + ". RMS: half the deviation of the residual map" +
         units.deviation + ".\n" + spectrum.aligned();
}

}  // namespace

void MeasureCommand::declare(CLI::App& program) {
  CLI::App* const command =
      program.add_subcommand("measure", "Measure the spectra of areas on the maps of a run");
  command->add_option("--folder", folder_, "work folder of the run")->required();
  command->add_option("--prefix", prefix_, "start of the products' names")->capture_default_str();
  command->add_option("--points", points_, "number of frequencies")
      ->check(CLI::Range(1, ResultsPresenter::kMostPoints))
      ->capture_default_str();
  options_.declare(*command);
}

int MeasureCommand::run() {
  AreaMeasurement measurement;
  const Status status = measureProducts(withSeparator(folder_), prefix_, options_, points_, measurement);
  for (const std::string& note : measurement.notes) complain("note: " + note);
  if (!status.ok()) {
    if (options_.form() == OutputForm::kJson) printJson({{"error", failureJson(status)}});
    return reportFailure(status);
  }
  if (options_.form() == OutputForm::kJson)
    printJson(measurementJson(measurement.spectra));
  else if (options_.form() == OutputForm::kCsv)
    std::fputs(measurementCsv(measurement).c_str(), stdout);
  else
    std::fputs(measurementText(measurement).c_str(), stdout);
  return kExitDone;
}

}  // namespace lumo
