// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "convert/ImportReport.h"
#include "core/Progress.h"
#include "core/Status.h"

namespace lumo {

/// Imports a Measurement Set (version 2, a folder): one UVX file per field and set-up shape (see MsSetups),
/// named
/// `<input's stem>[_<field>][_<shape>].uvx`, each part where the set has several.
///
/// UVW in metres become seconds; neither they nor the complex values are negated or conjugated, since
/// Measurement Sets have the sign of UVX files. Autocorrelations are left out. A visibility is rejected
/// (weight made negative) by its own FLAG; a row with FLAG_ROW, with a UVW that is not finite or 0, or with
/// antennas that the set does not list, is kept with its flag set. The weight is WEIGHT_SPECTRUM's where the
/// row has one of the right shape, else WEIGHT's. One that is not finite becomes 0, and so does a visibility
/// that is not finite.
///
/// Fields and windows that cannot be imported are left out and named in the report's warnings; nothing left
/// is a failure. Nothing in the set changes, its lock files included. Memory does not grow with the set. The
/// cancel flag is polled; the reading bar shows the share of the rows read. A program built without casacore
/// refuses every set with a sentence.
[[nodiscard]] Status importMeasurementSet(const std::string& input, const ImportOptions& options,
                                          const RunIndicators& indicators, ImportReport& report);

}  // namespace lumo
