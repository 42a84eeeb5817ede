// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/PhaseTimer.h"
#include "core/Status.h"
#include "run/FrequencySurvey.h"
#include "run/PreFlight.h"

namespace lumo {

/// One file that a run set out to write.
struct RunProduct {
  std::string name;  ///< without folder and prefix, e.g. "^cln0.exm"
  std::string path;
  bool written = false;
  std::string why;  ///< empty when written
};

/// What became of a run.
struct RunReport {
  /// Why the run ended early, or else why its first missing product could not be written; ok when all went
  /// well. A run without files is ok and has no products.
  Status status;
  /// Beams, dirty maps, residual, per term the CLEAN map and the one with residuals, frequency range, index
  /// map, its error map. Those that an early end kept from being tried are not listed, but all of a CLEAN
  /// that could not be done are.
  std::vector<RunProduct> products;
  FrequencySurvey survey;
  PreFlight preFlight;          ///< without files when the run ended before it was made
  bool cleaned = false;         ///< there was a CLEAN, of whatever number of iterations
  std::int32_t iterations = 0;  ///< CLEAN iterations done
  bool stopped = false;         ///< CLEAN was stopped before its last iteration
  double totalFlux = 0;         ///< sum of the zero-order components, map units
  /// Largest relative distance of a selected frequency from the middle of the range.
  double largestFrequencyOffset = -1e38;
  double residualBefore = 0, residualAfter = 0;  ///< of the CLEAN, see CleanReport
  /// max |W M - I| of the CLEAN's beam matrix: far above 1e-6, or NaN, tells that the beams do not tell the
  /// spectral terms apart.
  double inversionError = 0;
  /// "run" with its parts in their order, each with parts of its own where there are some; what a part does
  /// not account for is its last part, "other".
  PhaseTime time{"run", 0};
};

}  // namespace lumo
