// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "io/AUVXFile.h"
#include "io/UvxStatistics.h"

namespace lumo {

/// A table for a fixed-width font with a heading and a line per band: selection, IF, frequency, channels,
/// records, share rejected, sum of weights, uv range. Every line ends in a line end.
[[nodiscard]] std::string bandTableText(const std::vector<UvxBand>& bands);

/// What an open file holds, as lines of text: shape, sources, extents, tables, bands.
/// `statistics` are those of countGroups().
[[nodiscard]] std::string uvxSummary(const std::string& path, const AUVXFile& file,
                                     const UvxStatistics& statistics);

}  // namespace lumo
