// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace lumo {

/// What one CLEAN iteration did.
struct CleanProgress {
  std::int32_t iteration = 0;  ///< counted from 1; 0 before the first is done
  double totalFlux = 0.0;      ///< sum of all increments of term 0 so far, in map units
  double gain = 0.0;           ///< the loop gain used
  /// True when the search found a pixel of score 0 or more. Otherwise the step before, if there was one, was
  /// applied again, and the members below are still that step's.
  bool found = false;
  std::uint32_t row = 0;
  std::uint32_t column = 0;
  double score = 0.0;     ///< drop of the beam-weighted residual norm by the step, map units squared
  double residual = 0.0;  ///< of term 0 at the pixel before the step, map units
};

/// Told about every iteration of an engine, on the thread that runs it, between two iterations. It is part of
/// the loop's cost: it must be quick and must not throw.
class CleanObserver {
 public:
  virtual ~CleanObserver() = default;
  virtual void iterationDone(const CleanProgress& progress) = 0;
};

}  // namespace lumo
