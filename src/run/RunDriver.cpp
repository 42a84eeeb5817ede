// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/RunDriver.h"

#include <unistd.h>

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "clean/CleanStage.h"
#include "core/Leftovers.h"
#include "core/Paths.h"
#include "core/PendingFile.h"
#include "core/PhaseTimer.h"
#include "core/TextForm.h"
#include "core/Units.h"
#include "io/AUVXFile.h"
#include "io/ProductNames.h"
#include "run/RunChecks.h"
#include "run/RunHistory.h"
#include "run/RunMemory.h"
#include "run/SpectralIndexError.h"
#include "run/SpectralIndexMap.h"

namespace lumo {

RunReport RunDriver::Run(const RunParameters& parameters, UvxFileList& files) {
  const Stopwatch watch;
  parameters_ = parameters;
  report_.survey = files.frequencies();
  try {
    report_.status = runPhases(files);
  } catch (const std::bad_alloc&) {
    report_.status = {StatusCode::kOutOfMemory, "not enough memory for maps of " +
                                                    toStr(files.imaging().halfSizeX) + " x " +
                                                    toStr(files.imaging().halfSizeY) + " pixels and " +
                                                    toStr(parameters.order) + " spectral terms"};
  } catch (const std::exception& error) {
    report_.status = {StatusCode::kReadFailed, std::string("the run failed: ") + error.what()};
  }
  if (report_.status.ok()) report_.status = firstUnwritten_;
  report_.time.seconds = watch.seconds();
  report_.time.addOther();
  return std::move(report_);
}

Status RunDriver::runPhases(UvxFileList& files) {
  if (Status status = prepare(files); !status.ok()) return status;
  if (company_.discardAreas) company_.discardAreas();
  removeOldProducts(parameters_);
  removeLeftovers(getfPath(parameters_.folder + parameters_.prefix));
  if (inputs_.count() == 0) return {};

  AUVXFile first;
  if (first.Open(inputs_.names[0], AFile::kRead) == 0) return first.status();
  if (files.imaging().Setup(first, inputs_.sources[0]) == 0) return files.imaging().status();
  first.Close();
  const ABMakeParameters imaging = files.imaging();

  if (Status status = image(imaging); !status.ok()) return status;
  // Nobody has asked since the last transform.
  if (company_.indicators.cancelled()) return {StatusCode::kCancelled, "cancelled before the CLEAN"};
  // Without all of its maps and beams CLEAN would take what an earlier run left under their names.
  const Status cleaned = firstUnwritten_.ok() ? clean() : firstUnwritten_;
  report_.cleaned = cleaned.ok();
  if (!cleaned.ok() && cleaned.code() != StatusCode::kCancelled) missCleanProducts();
  report_.largestFrequencyOffset = largestFrequencyOffset(inputs_, report_.survey);
  writeFrequencyRange();
  finishIndexMap();
  return cleaned;
}

Status RunDriver::prepare(UvxFileList& files) {
  const Stopwatch watch;
  Status status = problemStatus(validateRunParameters(parameters_, files.frequencies()));
  ABMakeParameters imaging = files.imaging();
  MemoryRoom room;
  if (status.ok()) {
    inputs_ = inStep(files.inputs());
    status = checkInputs(parameters_, inputs_, imaging);
  }
  if (status.ok() && inputs_.count() > 0) {
    room = company_.memory();
    status =
        checkMemory(runMemory(parameters_, imaging, company_.threads, {}, room), imaging, parameters_.order);
  }
  addPhase({"check", watch.seconds()});
  return status.ok() && inputs_.count() > 0 ? inspect(imaging, room) : status;
}

Status RunDriver::inspect(const ABMakeParameters& imaging, const MemoryRoom& room) {
  const Stopwatch watch;
  Status status = inspectRun(parameters_, inputs_, imaging, {company_.threads, room}, company_.indicators,
                             report_.preFlight, facts_);
  addPhase({"inspect", watch.seconds()});
  if (!status.ok()) report_.preFlight = PreFlight();
  if (status.ok() && company_.acceptInputs) status = company_.acceptInputs(facts_);
  if (status.ok() && company_.tellPreFlight) company_.tellPreFlight(report_.preFlight);
  return status;
}

Status RunDriver::image(const ABMakeParameters& imaging) {
  const Stopwatch watch;
  LumoMakeWork work(parameters_.order);
  work.setReferenceFrequency(parameters_.referenceMhz * kMegahertz);
  work.setBandwidth(report_.survey.maxHz - report_.survey.minHz);
  work.setThreads(company_.threads);
  work.setHistory(runHistory(parameters_, imaging, inputs_, facts_));
  work.SetInputs(&imaging, inputs_);
  for (std::int32_t i = 0; i < work.beamCount(); ++i) {
    if (i < work.order()) work.dirtyMapNames()[i] = dirtyMapName(parameters_.folder, parameters_.prefix, i);
    work.beamNames()[i] = beamName(parameters_.folder, parameters_.prefix, i);
  }
  dirtyMapNames_ = work.dirtyMapNames();
  beamNames_ = work.beamNames();

  const RunIndicators& shown = company_.indicators;
  const int done =
      work.Run(shown.cancel, shown.statusText, shown.readingBar, shown.frequencyBar, shown.fileBar);
  PhaseTime phase("image", watch.seconds(), work.phases());
  phase.addOther();
  addPhase(std::move(phase));
  addProducts(work.products());
  return done != 0 ? Status() : work.status();
}

Status RunDriver::clean() {
  const Stopwatch watch;
  CleanInput input;
  input.dirtyMaps = dirtyMapNames_;
  input.beams = beamNames_;
  input.folder = parameters_.folder;
  input.prefix = parameters_.prefix;
  input.parameters = {.iterations = parameters_.iterations,
                      .gain = parameters_.gain,
                      .nonNegative = parameters_.nonNegative,
                      .variableGain = parameters_.variableGain};
  input.priority = company_.priority;
  input.threads = company_.threads;
  input.engine = parameters_.fastClean ? CleanEngineKind::kMerged : company_.exactEngine;
  CleanStage stage(std::move(input));
  const CleanReport cleaned = stage.Run(*company_.clean, company_.cleanObserver);
  report_.iterations = cleaned.iterations;
  report_.stopped = cleaned.stopped;
  report_.totalFlux = cleaned.totalFlux;
  report_.inversionError = cleaned.inversionError;
  report_.residualBefore = cleaned.residualBefore;
  report_.residualAfter = cleaned.residualAfter;
  PhaseTime phase("clean", watch.seconds(),
                  {{"load", cleaned.seconds.load},
                   {"iterate", cleaned.seconds.clean},
                   {"restore", cleaned.seconds.restore},
                   {"write", cleaned.seconds.write}});
  phase.addOther();
  addPhase(std::move(phase));
  addProducts(cleaned.products);
  return cleaned.status;
}

/// Reports what a CLEAN that did not run would have written.
void RunDriver::missCleanProducts() {
  const std::string& folder = parameters_.folder;
  const std::string& prefix = parameters_.prefix;
  const Status missed(StatusCode::kNotFound, "cannot be made: there was no CLEAN");
  addProduct(residualName(folder, prefix), missed);
  for (std::int32_t k = 0; k < parameters_.order; ++k) {
    addProduct(cleanName(folder, prefix, k), missed);
    addProduct(cleanResName(folder, prefix, k), missed);
  }
}

void RunDriver::writeFrequencyRange() {
  const std::string path = freqRangeName(parameters_.folder, parameters_.prefix);
  addProduct(
      path, writeWholeFile(path, generalText(report_.survey.minHz) + ' ' + generalText(report_.survey.maxHz) +
                                     ' ' + toStr(parameters_.order) + '\n'));
}

void RunDriver::finishIndexMap() {
  const Stopwatch watch;
  const SpectralIndexFiles paths{cleanName(parameters_.folder, parameters_.prefix, 0),
                                 cleanName(parameters_.folder, parameters_.prefix, 1),
                                 indexName(parameters_.folder, parameters_.prefix)};
  if (parameters_.order == 1) {
    ::unlink(paths.index.c_str());
    return;
  }
  // A CLEAN map that could not be written now may still lie there from an earlier run.
  const Status status =
      wasWritten(paths.zero) && wasWritten(paths.first)
          ? writeSpectralIndexMap(paths, parameters_.indexThreshold, parameters_.indexMin,
                                  parameters_.indexMax)
          : Status(StatusCode::kNotFound, "cannot be made: a CLEAN map it needs was not written");
  addProduct(paths.index, status);
  const Status errorStatus = finishErrorMap();
  addPhase({"index", watch.seconds()});
  if (status.ok() && errorStatus.ok()) company_.indicators.setText("Success");
}

Status RunDriver::finishErrorMap() {
  if (!parameters_.indexError) return {};
  const std::string& folder = parameters_.folder;
  const std::string& prefix = parameters_.prefix;
  SpectralIndexErrorFiles paths;
  paths.index = indexName(folder, prefix);
  paths.error = indexErrorName(folder, prefix);
  paths.beams.assign(beamNames_.begin(), beamNames_.end());
  bool written = wasWritten(paths.index);
  for (std::int32_t k = 0; k < parameters_.order; ++k) {
    paths.clean.push_back(cleanName(folder, prefix, k));
    paths.withResidual.push_back(cleanResName(folder, prefix, k));
    written = written && wasWritten(paths.clean.back()) && wasWritten(paths.withResidual.back());
  }
  const Status status = written
                            ? writeSpectralIndexErrorMap(paths)
                            : Status(StatusCode::kNotFound, "cannot be made: a map it needs was not written");
  addProduct(paths.error, status);
  return status;
}

void RunDriver::addProducts(const MapProducts& products) {
  for (const MapProduct& product : products) addProduct(product.path, product.status);
}

void RunDriver::addProduct(const std::string& path, const Status& status) {
  const std::size_t common = parameters_.folder.size() + parameters_.prefix.size();
  report_.products.push_back(
      {path.substr(std::min(common, path.size())), path, status.ok(), status.ok() ? "" : status.message()});
  if (firstUnwritten_.ok()) firstUnwritten_ = status.ok() ? Status() : status.about(path);
}

bool RunDriver::wasWritten(const std::string& path) const {
  return std::any_of(report_.products.begin(), report_.products.end(),
                     [&](const RunProduct& product) { return product.path == path && product.written; });
}

}  // namespace lumo
