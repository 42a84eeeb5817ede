// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "clean/ABCleanEngine.h"
#include "clean/CleanParameters.h"
#include "core/AMatrix.h"
#include "core/APtrArray.h"

namespace lumo {

/// The engines of the CLEAN. All give the same bits.
enum class CleanEngineKind {
  kFast,   ///< TiledCleanEngine where it is compiled for the number of terms, else the plain one
  kPlain,  ///< PlainCleanEngine
};

/// Makes an engine; maps and beams as ABCleanEngine's constructor wants them.
/// @param threads 1 or more; the plain engine has one in any case.
[[nodiscard]] std::unique_ptr<ABCleanEngine> makeCleanEngine(CleanEngineKind kind, int threads,
                                                             APtrArray<AMatrix<float>*>& residuals,
                                                             const APtrArray<AMatrix<float>*>& beams,
                                                             const CleanParameters& parameters);

}  // namespace lumo
