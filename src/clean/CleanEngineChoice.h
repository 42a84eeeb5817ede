// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "clean/ABCleanEngine.h"
#include "clean/CleanParameters.h"
#include "core/AMatrix.h"
#include "core/APtrArray.h"

namespace lumo {

/// The engines of the CLEAN. The first two give the same bits.
enum class CleanEngineKind {
  kFast,   ///< TiledCleanEngine where it is compiled for the number of terms, else the plain one
  kPlain,  ///< PlainCleanEngine
  /// TiledCleanEngine with CleanRounding::kOnce: faster, at the cost of the last bits. Its peaks are those of
  /// the others up to an iteration in which two scores are within rounding of each other, and so far its maps
  /// theirs within 1e-6 of the peak; components of term j >= 1 of three and four terms within sqrt(W[j][j])
  /// times that. From then on it is a CLEAN of the same sky that takes another of two equal pixels first.
  kMerged,
};

/// Makes an engine; maps and beams as ABCleanEngine's constructor wants them.
/// @param threads 1 or more; the plain engine has one in any case.
[[nodiscard]] std::unique_ptr<ABCleanEngine> makeCleanEngine(CleanEngineKind kind, int threads,
                                                             APtrArray<AMatrix<float>*>& residuals,
                                                             const APtrArray<AMatrix<float>*>& beams,
                                                             const CleanParameters& parameters);

}  // namespace lumo
