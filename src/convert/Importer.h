// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "convert/ImportReport.h"
#include "core/Progress.h"
#include "core/Status.h"

namespace lumo {

/// Imports visibilities of whatever form can be imported: a file as UVFITS (importUvfits), a folder as a
/// Measurement Set (importMeasurementSet).
[[nodiscard]] Status importVisibilities(const std::string& input, const ImportOptions& options,
                                        const RunIndicators& indicators, ImportReport& report);

}  // namespace lumo
