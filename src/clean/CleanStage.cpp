// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanStage.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>
#include <utility>

#include "clean/Restoration.h"
#include "core/PhaseTimer.h"
#include "core/TextForm.h"
#include "io/ProductNames.h"

namespace lumo {

namespace {

std::string sizeText(const AMatrix<float>& map) {
  return toStr(map.rows()) + " rows x " + toStr(map.columns()) + " columns";
}

bool sameSize(const AMatrix<float>& a, const AMatrix<float>& b) {
  return a.rows() == b.rows() && a.columns() == b.columns();
}

/// Of the pixels with a value.
double largestValue(const AMatrix<float>& map) {
  float largest = 0.0F;
  for (std::size_t i = 0; i < map.size(); ++i) largest = std::max(largest, std::abs(map.data()[i]));
  return static_cast<double>(largest);
}

/// All of one size and not empty.
Status checkOneSize(const APtrArray<AMatrix<float>*>& maps, const AObjArray<std::string>& names,
                    const char* what) {
  for (std::int32_t i = 0; i < maps.count(); ++i) {
    if (maps[i]->size() == 0) return {StatusCode::kBadFormat, "the map has no pixels", names[i]};
    if (sameSize(*maps[i], *maps[0])) continue;
    return {StatusCode::kInvalidValue,
            std::string("the ") + what + "s of a run must have one size: this one has " + sizeText(*maps[i]) +
                ", " + names[0] + " has " + sizeText(*maps[0]),
            names[i]};
  }
  return {};
}

}  // namespace

const char* cleanEndText(const CleanReport& report) {
  return report.stopped ? "stopped by the user" : "all iterations done";
}

CleanStage::CleanStage(CleanInput input) : input_(std::move(input)) {}

CleanReport CleanStage::Run(CleanWatcher& watcher, CleanObserver* observer) {
  try {
    report_.status = runPhases(watcher, observer);
  } catch (const std::bad_alloc&) {
    report_.status = {StatusCode::kOutOfMemory, "there is not enough memory for the maps of the CLEAN"};
  }
  return std::move(report_);
}

Status CleanStage::runPhases(CleanWatcher& watcher, CleanObserver* observer) {
  if (Status status = checkNames(); !status.ok()) return status;
  if (Status status = load(); !status.ok()) return status;
  const std::unique_ptr<ABCleanEngine> engine =
      makeCleanEngine(input_.engine, input_.threads, residuals_, beams_, input_.parameters);
  if (Status status = clean(*engine, watcher, observer); !status.ok()) return status;
  writeProducts(*engine);
  return {};
}

Status CleanStage::checkNames() const {
  const std::int64_t terms = input_.dirtyMaps.count();
  if (terms < 1) return {StatusCode::kInvalidValue, "the CLEAN was given no dirty map"};
  if (input_.beams.count() == 2 * terms - 1) return {};
  return {StatusCode::kInvalidValue, "the CLEAN of " + toStr(terms) + " dirty maps needs " +
                                         toStr(2 * terms - 1) + " beams, it was given " +
                                         toStr(input_.beams.count())};
}

Status CleanStage::load() {
  const PhaseTimer timer(report_.seconds.load);
  for (const std::string& name : input_.beams) {
    LoadedMap file;
    if (Status status = loadInto(name, beams_, file); !status.ok()) return status;
  }
  for (const std::string& name : input_.dirtyMaps) {
    LoadedMap file;
    if (Status status = loadInto(name, residuals_, file); !status.ok()) return status;
    if (residuals_.count() > 1) continue;
    header_ = std::move(file.header);
    range_ = file.range;
  }
  if (Status status = checkSizes(); !status.ok()) return status;
  restoringBeam_ = makeRestoringBeam(header_, range_, residuals_[0]->rows(), residuals_[0]->columns());
  return {};
}

Status CleanStage::loadInto(const std::string& name, APtrArray<AMatrix<float>*>& maps, LoadedMap& file) {
  if (Status status = readMap(name, file); !status.ok()) return status.about(name);
  if (file.matrix == nullptr) return {StatusCode::kReadFailed, "the map cannot be read", name};
  maps.InsertAt(maps.count(), file.matrix.get());
  static_cast<void>(file.matrix.release());  // the array owns it now
  return {};
}

Status CleanStage::checkSizes() const {
  if (Status status = checkOneSize(residuals_, input_.dirtyMaps, "dirty map"); !status.ok()) return status;
  if (Status status = checkOneSize(beams_, input_.beams, "beam"); !status.ok()) return status;
  const AMatrix<float>& map = *residuals_[0];
  const AMatrix<float>& beam = *beams_[0];
  if (beam.rows() >= map.rows() && beam.columns() >= map.columns()) return {};
  return {StatusCode::kInvalidValue,
          "the beam must be at least as large as the maps: it has " + sizeText(beam) + ", the dirty map " +
              input_.dirtyMaps[0] + " has " + sizeText(map),
          input_.beams[0]};
}

Status CleanStage::clean(ABCleanEngine& engine, CleanWatcher& watcher, CleanObserver* observer) {
  const PhaseTimer timer(report_.seconds.clean);
  report_.residualBefore = largestValue(*residuals_[0]);
  CleanWorker worker(engine, observer);
  watcher.watch(worker, CleanScene(engine, *restoringBeam_, range_, input_.priority, header_));
  if (!worker.finished()) {
    worker.stop();
    worker.resume();
    worker.wait();
    if (!worker.finished()) return {StatusCode::kCancelled, "the CLEAN was not started"};
  }
  report_.priorityStatus = worker.priorityStatus();
  report_.stopped = worker.result() == 0;
  report_.iterations = engine.iterationsDone();
  report_.totalFlux = engine.totalFlux();
  report_.inversionError = engine.inversionError();
  report_.residualAfter = largestValue(*residuals_[0]);
  return worker.status();
}

void CleanStage::tellHistory() {
  header_.history.push_back("CLEAN.ITERATIONS = " + toStr(report_.iterations));
  header_.history.push_back(std::string("CLEAN.ENDED = ") + cleanEndText(report_));
}

void CleanStage::writeProducts(const ABCleanEngine& engine) {
  tellHistory();
  write(residualName(input_.folder, input_.prefix), *residuals_[0]);
  for (std::int32_t k = 0; k < engine.terms(); ++k) {
    AMatrix<float> restored;
    {
      const PhaseTimer timer(report_.seconds.restore);
      restored = restoreComponents(engine.components()[k], *restoringBeam_);
    }
    write(cleanName(input_.folder, input_.prefix, k), restored);
    {
      const PhaseTimer timer(report_.seconds.restore);
      addResidual(restored, *residuals_[k]);
    }
    write(cleanResName(input_.folder, input_.prefix, k), restored);
  }
}

void CleanStage::write(const std::string& name, const AMatrix<float>& map) {
  const PhaseTimer timer(report_.seconds.write);
  report_.products.push_back({name, writeMap(name, header_, range_, map)});
}

}  // namespace lumo
