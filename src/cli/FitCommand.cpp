// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/FitCommand.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "cli/Console.h"
#include "cli/MapFitting.h"
#include "cli/TextTable.h"
#include "core/FileIdentity.h"
#include "core/PendingFile.h"
#include "core/TextForm.h"
#include "core/Units.h"

namespace lumo {

namespace {

Json numbers(const std::vector<double>& values) {
  Json list = Json::array();
  for (const double value : values) list.push_back(finiteOrNull(value));
  return list;
}

Json fitJson(const MapFits& fits) {
  Json areas = Json::array();
  for (std::size_t k = 0; k < fits.areas.size(); ++k) {
    const AreaFit& area = fits.areas[k];
    areas.push_back({{"area", k + 1},
                     {"alpha", finiteOrNull(area.alpha)},
                     {"amplitude", finiteOrNull(area.amplitude)},
                     {"flux", numbers(area.flux)},
                     {"fitted", numbers(area.fitted)},
                     {"deviation", numbers(area.deviation)}});
  }
  return {{"frequencies_hz", numbers(fits.freqs)}, {"areas", areas}};
}

std::string areaNumber(std::size_t k) {
  return toStr(static_cast<std::int64_t>(k) + 1);
}

std::string fitCsv(const MapFitting& fitting, const std::vector<std::string>& maps) {
  const AreaUnits units(fitting.unit);
  TextTable table;
  table.add({"area", "alpha", "amplitude" + units.fluxColumn, "map", "frequency_hz",
             "flux" + units.fluxColumn, "fitted" + units.fluxColumn, "deviation" + units.deviationColumn});
  for (std::size_t k = 0; k < fitting.fits.areas.size(); ++k) {
    const AreaFit& area = fitting.fits.areas[k];
    for (std::size_t i = 0; i < maps.size(); ++i)
      table.add({areaNumber(k), valToStr(area.alpha), valToStr(area.amplitude), maps[i],
                 valToStr(fitting.fits.freqs[i]), valToStr(area.flux[i]), valToStr(area.fitted[i]),
                 valToStr(area.deviation[i])});
  }
  return table.csv();
}

std::string fitText(const MapFitting& fitting) {
  constexpr int kFluxDigits = 6;
  constexpr int kShortDigits = 4;
  const AreaUnits units(fitting.unit);
  const MapFits& fits = fitting.fits;
  TextTable laws;
  laws.add({"Area", "Alpha", "Amplitude" + units.flux});
  TextTable values;
  values.add({"Area", "Frequency [MHz]", "Flux density" + units.flux, "Fitted" + units.flux,
              "Deviation" + units.deviation});
  for (std::size_t k = 0; k < fits.areas.size(); ++k) {
    const AreaFit& area = fits.areas[k];
    laws.add({areaLabel(fitting.areas, k), nValToStr(area.alpha, kShortDigits),
              nValToStr(area.amplitude, kFluxDigits)});
    for (std::size_t i = 0; i < fits.freqs.size(); ++i)
      values.add({areaNumber(k), valToStr(fits.freqs[i] * kMegahertzPerHertz),
                  nValToStr(area.flux[i], kFluxDigits), nValToStr(area.fitted[i], kFluxDigits),
                  nValToStr(area.deviation[i], kShortDigits)});
  }
  return "Flux density = amplitude (frequency / " + valToStr(fits.freqs.front() * kMegahertzPerHertz) +
         " MHz)^alpha:\n" + laws.aligned() + "\n" + values.aligned();
}

}  // namespace

void FitCommand::declare(CLI::App& program) {
  CLI::App* const command =
      program.add_subcommand("fit", "Fit power laws to areas of maps at two or more frequencies");
  constexpr int kFewestMaps = 2;
  command->add_option("maps", maps_, "map files; the first gives the reference frequency")
      ->required()
      ->expected(kFewestMaps, CLI::detail::expected_max_vector_size);
  options_.declare(*command);
  command->add_option("--diagnostics", diagnostics_, "also write the points of the fits to this file");
}

Status FitCommand::checkDiagnostics() const {
  FileIdentity target;
  if (diagnostics_.empty() || !identifyFile(diagnostics_, target)) return {};
  std::vector<std::string> inputs = maps_;
  inputs.push_back(options_.regions);
  for (const std::string& input : inputs) {
    FileIdentity identity;
    if (identifyFile(input, identity) && identity == target)
      return {StatusCode::kInvalidValue, "--diagnostics " + diagnostics_ + " is one of the inputs"};
  }
  return {};
}

int FitCommand::run() {
  MapFitting fitting;
  Status status = checkDiagnostics();
  if (status.ok()) status = fitMapFiles(maps_, options_, fitting);
  if (status.ok() && !diagnostics_.empty()) status = writeWholeFile(diagnostics_, fitting.fits.diagnostics);
  for (const std::string& note : fitting.notes) complain("note: " + note);
  if (!status.ok()) {
    if (options_.form() == OutputForm::kJson) printJson({{"error", failureJson(status)}});
    reportFailure(status);
    const bool usage = status.code() == StatusCode::kInvalidValue && status.file().empty();
    return usage ? kExitUsage : kExitFailed;
  }
  if (options_.form() == OutputForm::kJson)
    printJson(fitJson(fitting.fits));
  else if (options_.form() == OutputForm::kCsv)
    std::fputs(fitCsv(fitting, maps_).c_str(), stdout);
  else
    std::fputs(fitText(fitting).c_str(), stdout);
  return kExitDone;
}

}  // namespace lumo
