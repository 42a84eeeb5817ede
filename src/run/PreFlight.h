// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/Progress.h"
#include "core/Status.h"
#include "imaging/ABMakeParameters.h"
#include "io/UvxTables.h"
#include "io/VisibilityInputs.h"
#include "run/InputFileFacts.h"
#include "run/RunMemory.h"
#include "run/RunParameters.h"

namespace lumo {

/// What one input brings to a run, over the selected frequency selections. A visibility is one channel of
/// one IF after its products have been combined.
struct PreFlightFile {
  std::string name;
  AUVXSourceItem source;
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
  std::int32_t distinctFrequencies = 0;  ///< with points on the grid
  double referenceHz = 0;
  double lowestHz = 0, highestHz = 0;  ///< with points on the grid; both 0 without any
  /// Condition (2-norm) of the matrix M that CLEAN tells the spectral terms apart with at one pixel, for
  /// natural weighting without a taper: M[j][k] = mean of ((ν − ν0)/ν0)^(j+k) over the points on the grid, by
  /// weight. These are the centres of the beams j+k. Infinite when it is singular or of more than 64 terms.
  double condition = 1;
  RunMemory memory;

  [[nodiscard]] double outsideShare() const;
  /// Above this the noise of the highest term is about a thousand times that of the map of one term, and
  /// more: the smallest eigenvalue of M is about the inverse of that noise's square. With terms that ν0 far
  /// outside of the band makes alike, M is also near to singular in the single precision of the beams.
  static constexpr double kLargestSoundCondition = 1e6;
};

/// How a run is looked at.
struct PreFlightSettings {
  int threads = 1;  ///< the result does not depend on it but for the memory
  MemoryRoom room;
};

/// Reads every byte of the inputs once, in bounded memory. `imaging` must have been through Setup, `inputs`
/// be inStep(). `facts` gets an entry for each file. kCancelled when `indicators` says so; a file that cannot
/// be read or does not fit its table fails.
[[nodiscard]] Status inspectRun(const RunParameters& parameters, const VisibilityInputs& inputs,
                                const ABMakeParameters& imaging, const PreFlightSettings& settings,
                                const RunIndicators& indicators, PreFlight& preFlight,
                                std::vector<InputFileFacts>& facts);

/// The table of the files, a heading first, and what is to be known about grid, terms and memory.
[[nodiscard]] std::vector<std::string> preFlightLines(const PreFlight& preFlight);
/// What the user should be warned of; empty when there is nothing.
[[nodiscard]] std::vector<std::string> preFlightWarnings(const PreFlight& preFlight, std::int32_t order);

}  // namespace lumo
