// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "core/Status.h"
#include "imaging/ABMakeParameters.h"
#include "io/VisibilityInputs.h"
#include "run/RunParameters.h"

namespace lumo {

/// The paths that a run removes before it starts: the maps and beams of indices 0..19, two names of old,
/// and the error map of the spectral index.
[[nodiscard]] std::vector<std::string> oldProductPaths(const RunParameters& parameters);
/// Removes them, ignoring failures.
void removeOldProducts(const RunParameters& parameters);

/// `inputs` with exactly one mask for each file and one bit for each of its selections: masks that were
/// loaded with other counts are cut, missing bits are clear.
[[nodiscard]] VisibilityInputs inStep(const VisibilityInputs& inputs);

/// Whether a run can use everything it is given as far as headers tell, before it touches anything: every
/// file opens and is the file that was listed (source, frequencies, Stokes products); something is selected;
/// the parameter block can be set up and the data have an extent; the work folder is there; no file is the
/// path of a product. An empty list passes. The files' content is for inspectRun().
///
/// `inputs` must be inStep(). `imaging` goes through Setup, with the first file.
[[nodiscard]] Status checkInputs(const RunParameters& parameters, const VisibilityInputs& inputs,
                                 ABMakeParameters& imaging);

}  // namespace lumo
