// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "clean/ABCleanEngine.h"
#include "clean/CleanEngineChoice.h"
#include "clean/CleanObserver.h"
#include "clean/CleanParameters.h"
#include "clean/CleanWatcher.h"
#include "core/AMatrix.h"
#include "core/AObjArray.h"
#include "core/APtrArray.h"
#include "core/Status.h"
#include "core/ThreadPriority.h"
#include "io/MapProduct.h"

namespace lumo {

/// What one CLEAN stage works on.
struct CleanInput {
  AObjArray<std::string> dirtyMaps;  ///< files of the N dirty maps, term 0 first; N >= 1
  AObjArray<std::string> beams;      ///< files of the 2 N - 1 beams, order 0 first
  std::string folder;                ///< work folder with its separator
  std::string prefix;                ///< of the products' names
  CleanParameters parameters;
  ThreadPriority priority = ThreadPriority::kNormal;
  CleanEngineKind engine = CleanEngineKind::kFast;
  int threads = 1;  ///< of the engine; the products do not depend on it
};

/// Wall-clock seconds of the stage's phases.
struct CleanSeconds {
  double load = 0.0;
  double clean = 0.0;
  double restore = 0.0;
  double write = 0.0;
};

/// What came of a CLEAN stage.
struct CleanReport {
  /// Why nothing was cleaned and written; ok when the products were made. A product that could not be written
  /// shows in `products` alone.
  Status status;
  /// Why the worker does not have the priority asked for; ok otherwise.
  Status priorityStatus;
  MapProducts products;  ///< residual, then per term the restored map and the one with residuals
  std::int32_t iterations = 0;
  bool stopped = false;
  double totalFlux = 0.0;
  /// max |W M - I| of the engine's beam matrix: far above 1e-6, or NaN, tells that the beams do not tell the
  /// terms apart.
  double inversionError = 0.0;
  /// Largest |value| of term 0's residual map before and after the iterations, map units.
  double residualBefore = 0.0;
  double residualAfter = 0.0;
  CleanSeconds seconds;
};

/// Why the CLEAN ended, as histories and summaries tell it.
[[nodiscard]] const char* cleanEndText(const CleanReport& report);

/// The CLEAN of a run from its dirty maps and beams to its products: loads the files, makes the restoring
/// beam, lets a watcher run the engine's worker, then writes the residual of term 0 and, for every term, the
/// restored map without and with residuals. Every product carries the first dirty map's header and ranges,
/// and in its history how many iterations were done and why it ended.
///
/// A stopped CLEAN writes the products of the iterations it did. Input that cannot be read or does not fit
/// together (counts, sizes) ends the stage before anything is written. Memory: 2 N maps, 2 N - 1 beams and
/// one restored map.
class CleanStage {
 public:
  explicit CleanStage(CleanInput input);

  /// Runs the stage once on the calling thread; `observer` (may be null) is told of every iteration, on the
  /// worker's thread.
  [[nodiscard]] CleanReport Run(CleanWatcher& watcher, CleanObserver* observer = nullptr);

 private:
  Status runPhases(CleanWatcher& watcher, CleanObserver* observer);
  [[nodiscard]] Status checkNames() const;
  [[nodiscard]] Status load();
  [[nodiscard]] Status loadInto(const std::string& name, APtrArray<AMatrix<float>*>& maps, LoadedMap& file);
  [[nodiscard]] Status checkSizes() const;
  [[nodiscard]] Status clean(ABCleanEngine& engine, CleanWatcher& watcher, CleanObserver* observer);
  void tellHistory();
  void writeProducts(const ABCleanEngine& engine);
  void write(const std::string& name, const AMatrix<float>& map);

  CleanInput input_;
  CleanReport report_;
  APtrArray<AMatrix<float>*> residuals_;
  APtrArray<AMatrix<float>*> beams_;
  AMapHeader header_;
  TMinMax range_;
  std::unique_ptr<AMatrix<float>> restoringBeam_;
};

}  // namespace lumo
