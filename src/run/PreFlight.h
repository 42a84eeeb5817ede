// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/Progress.h"
#include "core/Status.h"
#include "imaging/ABMakeParameters.h"
#include "io/VisibilityInputs.h"
#include "run/RunParameters.h"

namespace lumo {

/// What one input brings to a run, over the selected frequency selections. A visibility is one channel of
/// one IF after its products have been combined.
struct PreFlightFile {
  std::string name;
  double minHz = 0, maxHz = 0;  ///< of channel 0 of the selected IFs; both 0 when nothing is selected
  std::uint64_t records = 0;    ///< uv groups, flagged ones among them
  std::uint64_t visibilities = 0;
  std::uint64_t usable = 0;
  double weightSum = 0;         ///< of the usable visibilities
  double uvMin = 0, uvMax = 0;  ///< shortest and longest baseline with a usable visibility, wavelengths

  /// Share of the visibilities that cannot be used, 0..1; 0 when there is none.
  [[nodiscard]] double rejectedShare() const;
};

/// What can be said about a run before it starts.
struct PreFlight {
  std::vector<PreFlightFile> files;
  std::uint64_t points = 0;     ///< (record, IF) pairs with a usable visibility
  std::uint64_t outside = 0;    ///< of them off the grid
  double cellX = 0, cellY = 0;  ///< the map's cell, arcseconds
  double cellXAll = 0;          ///< the largest cell with which no point is off the grid, arcseconds;
  double cellYAll = 0;          ///< 0 where any cell does
  std::int32_t distinctFrequencies = 0;
  /// Condition (2-norm) of the matrix that tells the spectral terms apart at one pixel, for natural weighting
  /// without a taper: M[j][k] = mean of ((ν − ν0)/ν0)^(j+k). Infinite when it is singular.
  double condition = 1;

  [[nodiscard]] double outsideShare() const;
  /// Above this the single-precision beams leave the highest term less than one digit.
  static constexpr double kLargestSoundCondition = 1e6;
};

/// Reads every selected record of the inputs once, in bounded memory. `imaging` must have been through Setup.
/// kCancelled when `indicators` says so; a file that does not open or does not fit its table fails.
[[nodiscard]] Status inspectRun(const RunParameters& parameters, const VisibilityInputs& inputs,
                                const ABMakeParameters& imaging, const RunIndicators& indicators,
                                PreFlight& preFlight);

/// The table of the files, a heading first, and what is to be known about grid and terms.
[[nodiscard]] std::vector<std::string> preFlightLines(const PreFlight& preFlight);
/// What the user should be warned of; empty when there is nothing.
[[nodiscard]] std::vector<std::string> preFlightWarnings(const PreFlight& preFlight, std::int32_t order);

}  // namespace lumo
