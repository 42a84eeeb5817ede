// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanEngineChoice.h"

#include <algorithm>

#include "clean/PlainCleanEngine.h"
#include "clean/TiledCleanEngine.h"

namespace lumo {

std::unique_ptr<ABCleanEngine> makeCleanEngine(CleanEngineKind kind, int threads,
                                               APtrArray<AMatrix<float>*>& residuals,
                                               const APtrArray<AMatrix<float>*>& beams,
                                               const CleanParameters& parameters) {
  if (kind == CleanEngineKind::kPlain || residuals.count() > kMaxTileTerms)
    return std::make_unique<PlainCleanEngine>(residuals, beams, parameters);
  CleanTiling tiling;
  if (kind == CleanEngineKind::kMerged) tiling.rounding = CleanRounding::kOnce;
  tiling.threads = std::max(threads, 1);
  return std::make_unique<TiledCleanEngine>(residuals, beams, parameters, tiling);
}

}  // namespace lumo
