// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "convert/ImportReport.h"
#include "core/Progress.h"
#include "core/Status.h"

namespace lumo {

/// Imports a UVFITS file (random groups): one UVX file per source, named
/// `<input's stem>[_<source>].uvx`, the source being part of the name when the file holds several.
///
/// u, v, w and the complex values are copied without negating or conjugating: in both formats
/// V(u,v) = sum of I exp(+2 pi i (u l + v m)) with l to the east and m to the north. Autocorrelations are
/// left out. A record whose u or v is not finite, or whose antennas are not legible, is kept with its flag
/// set. Weights: see UvfitsGroups. Damage that leaves the rest usable goes to the report's warnings.
///
/// Fails with a sentence on other forms of FITS (images, uv tables, compressed groups, FITS-IDI) and on
/// anything whose meaning is not certain; no output appears then. Memory does not grow with the file. The
/// cancel flag is polled; the reading bar shows the share of the groups read.
[[nodiscard]] Status importUvfits(const std::string& input, const ImportOptions& options,
                                  const RunIndicators& indicators, ImportReport& report);

}  // namespace lumo
