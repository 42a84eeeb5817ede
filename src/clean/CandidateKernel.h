// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "clean/CleanTileKernel.h"

namespace lumo {

/// The candidates as the kernel sees them: pixels that are followed from step to step. The arrays have room
/// for a multiple of kCandidateLanes, and whatever stands behind the last candidate may be written: there,
/// too, places are those of pixels of the maps. Not owned.
struct CandidateView {
  std::size_t count = 0;
  const std::uint32_t* rows = nullptr;  ///< of the maps
  const std::uint32_t* columns = nullptr;
  float* residuals[kMaxTileTerms] = {};  ///< r_0 .. r_{N-1}, map units
};
/// Candidates that the kernel takes at once, at most; a multiple of what it takes with any instruction set.
inline constexpr std::size_t kCandidateLanes = 8;

/// The candidate of the best score.
struct CandidateBest {
  bool found = false;      ///< whether any has a score of 0 or more
  std::size_t index = 0;   ///< among the candidates
  std::size_t offset = 0;  ///< its place in the maps; the last in scan order among equal scores
  double score = 0.0;      ///< E there
};

/// What makes a pixel a candidate.
struct CandidateContest {
  double gain = 0.0;   ///< loop gain
  double least = 0.0;  ///< the score that it must reach, 0 or more
  /// By how much S, or with the constraint E / (g h), may be larger than what single precision makes of S;
  /// infinite where that is not known, so that every score is formed in double precision.
  double singleError = std::numeric_limits<double>::infinity();
};

/// What is left of an area when its candidates are taken out.
struct AreaRest {
  std::size_t candidates = 0;  ///< how many were found
  double score = -1.0;  ///< upper bound of the largest E of the other pixels, below 0 where none reaches 0
  double norm = 0.0;    ///< upper bound of the largest S = r' W r of all pixels, 0 at least
};

/// Pixels of one row of an area that become candidates, at most.
inline constexpr std::size_t kCandidatesPerRow = 16;

/// Subtracts a step from the candidates: the operations and roundings to float of ABCleanEngine's
/// description. All values must be finite.
void followCandidates(const CleanTileMaps& maps, const CleanUpdate& step, const CandidateView& candidates);

/// The best of the candidates. Scores are formed as ABCleanEngine describes it.
/// @param scores gets them; null where they are not wanted. With room as in CandidateView.
[[nodiscard]] CandidateBest findBestCandidate(const CleanTileMaps& maps, double gain,
                                              const CandidateView& candidates, double* scores);

/// Searches an area for candidates: of each row the pixels that reach the score, the best of them where they
/// are more than kCandidatesPerRow, and always the last in scan order among equals.
/// @param offsets gets their places in the maps, in no particular order within a row; room for
///   kCandidatesPerRow per row.
[[nodiscard]] AreaRest findCandidates(const CleanTileMaps& maps, const CleanTileArea& area,
                                      const CandidateContest& contest, std::uint32_t* offsets);

}  // namespace lumo
