// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "clean/CleanEngineChoice.h"
#include "clean/CleanObserver.h"
#include "clean/CleanWatcher.h"
#include "core/MemoryRoom.h"
#include "core/PhaseTimer.h"
#include "core/Progress.h"
#include "core/ThreadPriority.h"
#include "imaging/LumoMakeWork.h"
#include "io/MapProduct.h"
#include "run/InputFileFacts.h"
#include "run/RunParameters.h"
#include "run/RunReport.h"
#include "run/UvxFileList.h"

namespace lumo {

/// Who accompanies a run. Nothing is owned; `clean` must be there, the rest may be empty.
struct RunCompany {
  RunIndicators indicators;
  CleanWatcher* clean = nullptr;
  CleanObserver* cleanObserver = nullptr;
  ThreadPriority priority = ThreadPriority::kNormal;
  /// Threads at most, 1 or more. The products do not depend on it.
  int threads = 1;
  /// Of the engines with the same bits, for a run without fastClean.
  CleanEngineKind exactEngine = CleanEngineKind::kFast;
  /// What the system can give; a test has another.
  std::function<MemoryRoom()> memory = [] { return memoryRoom(); };
  /// Asked once the inputs are read, with the facts of each in its order; a failure ends the run before it
  /// touches anything.
  std::function<Status(const std::vector<InputFileFacts>&)> acceptInputs;
  /// Told what the inspection found, before the run touches anything.
  std::function<void(const PreFlight&)> tellPreFlight;
  /// Called once the parameters are accepted: areas marked on the maps of an earlier run no longer hold.
  std::function<void()> discardAreas;
};

/// One complete run on the calling thread, from visibility files to products:
///
///     validate the parameters; check the inputs' headers, and that grids and maps can fit into memory
///     read the inputs to their last byte: checksums, and what they bring to grid and terms
///                                                        -- a failure up to here touches nothing
///     discard the area list; remove the old products
///     no files: end
///     set the imaging block up from the first file
///     image: beams and dirty maps                        -- a failure or a cancel ends the run
///     CLEAN: residual, CLEAN maps                        -- stopping is no failure, and a failure goes on
///     write the frequency range
///     order 1: remove an old index map
///     else: write the index map and, where asked for, its error map; status text "Success"
///
/// The maps pass from stage to stage as files, so memory holds one stage's maps at a time. Used once.
class RunDriver {
 public:
  explicit RunDriver(RunCompany company) : company_(std::move(company)) {}

  /// `files` gives the inputs, and its imaging block gets the values that setting it up gives it.
  [[nodiscard]] RunReport Run(const RunParameters& parameters, UvxFileList& files);

 private:
  Status runPhases(UvxFileList& files);
  Status prepare(UvxFileList& files);
  Status inspect(const ABMakeParameters& imaging, const MemoryRoom& room);
  Status image(const ABMakeParameters& imaging);
  Status clean();
  void missCleanProducts();
  void writeFrequencyRange();
  void finishIndexMap();
  Status finishErrorMap();
  void addPhase(PhaseTime phase) { report_.time.parts.push_back(std::move(phase)); }
  void addProducts(const MapProducts& products);
  void addProduct(const std::string& path, const Status& status);
  [[nodiscard]] bool wasWritten(const std::string& path) const;

  RunCompany company_;
  RunParameters parameters_;
  VisibilityInputs inputs_;
  std::vector<InputFileFacts> facts_;
  RunReport report_;
  Status firstUnwritten_;
  AObjArray<std::string> dirtyMapNames_;
  AObjArray<std::string> beamNames_;
};

}  // namespace lumo
