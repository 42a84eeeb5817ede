// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <utility>

#include "clean/ABCleanEngine.h"
#include "clean/CleanWorker.h"
#include "core/AMatrix.h"
#include "core/TMinMax.h"
#include "core/ThreadPriority.h"
#include "io/AMapHeader.h"

namespace lumo {

/// What a preview of a running CLEAN needs. The two maps may be read only where CleanWorker allows it, and
/// not before the worker has been started and paused or finished: component() has no pixels before.
class CleanScene {
 public:
  /// The engine and the beam must outlive the scene.
  CleanScene(const ABCleanEngine& engine, const AMatrix<float>& restoringBeam, const TMinMax& range,
             ThreadPriority priority, AMapHeader header = {})
      : engine_(engine),
        restoringBeam_(restoringBeam),
        range_(range),
        priority_(priority),
        header_(std::move(header)) {}

  /// R_0.
  [[nodiscard]] const AMatrix<float>& residual() const { return *engine_.residuals()[0]; }
  /// C_0.
  [[nodiscard]] const AMatrix<float>& component() const { return engine_.components()[0]; }
  [[nodiscard]] const AMatrix<float>& restoringBeam() const { return restoringBeam_; }
  /// The header of the first dirty map: unit, beam, place on the sky.
  [[nodiscard]] const AMapHeader& header() const { return header_; }
  /// The ranges of the first dirty map.
  [[nodiscard]] const TMinMax& range() const { return range_; }
  /// How many iterations the worker will do.
  [[nodiscard]] std::int32_t iterations() const { return engine_.parameters().iterations; }
  /// What to start the worker with.
  [[nodiscard]] ThreadPriority priority() const { return priority_; }

 private:
  const ABCleanEngine& engine_;
  const AMatrix<float>& restoringBeam_;
  TMinMax range_;
  ThreadPriority priority_;
  AMapHeader header_;
};

/// Whoever accompanies the CLEAN of a run: a window, the headless command, a test.
class CleanWatcher {
 public:
  virtual ~CleanWatcher() = default;
  /// Starts the worker and returns when it has finished. Called once per CLEAN stage, on the stage's thread.
  /// A worker that is still running on return is stopped by the stage.
  virtual void watch(CleanWorker& worker, const CleanScene& scene) = 0;
};

}  // namespace lumo
