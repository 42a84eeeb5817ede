// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "analysis/ResultsPresenter.h"
#include "cli/AreaOptions.h"
#include "core/Status.h"

namespace lumo {

/// The areas of a run's maps, measured as the options ask.
struct AreaMeasurement {
  AreaSettings settings;
  AreaSpectra spectra;
  std::string unit;                ///< of the intensity map
  std::vector<std::string> notes;  ///< for standard error: what a reader of the numbers should know
};

/// Loads the products of a run and measures the areas on them. Where the run left no usable frequency file,
/// the range is that in the header of the first term's map, with a note. Areas without a usable pixel are
/// told in a note, and their flux density is NaN. Fails with a sentence that names the missing product.
/// @param folder  work folder with its trailing separator.
[[nodiscard]] Status measureProducts(const std::string& folder, const std::string& prefix,
                                     const AreaOptions& options, int points, AreaMeasurement& measurement);

}  // namespace lumo
