// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/AArray.h"
#include "core/Progress.h"
#include "core/TMinMax.h"
#include "imaging/AB3DFunc.h"

namespace lumo {

/// Fills `profile` (n values, n = its count) with the transform of the kernel's x section, normalised to 1 at
/// x = 0, at n positions from range.xMin to range.xMax (arcseconds): what an image column would have to be
/// divided by to undo the kernel. 1025 samples of the kernel up to its half-width. Returns 1, or 0 when
/// cancelled.
int computeCorrectorX(AArray<double>& profile, const AB3DFunc& kernel, const TMinMax& range,
                      const RunIndicators& indicators);
/// The same along y.
int computeCorrectorY(AArray<double>& profile, const AB3DFunc& kernel, const TMinMax& range,
                      const RunIndicators& indicators);

}  // namespace lumo
