// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "cli/Console.h"
#include "io/UvxStatistics.h"

namespace lumo {

/// Prints a line per band on standard output: selection, IF, frequency, channels, records, share rejected,
/// sum of weights, uv range.
void printBands(const std::vector<UvxBand>& bands);
[[nodiscard]] Json bandsJson(const std::vector<UvxBand>& bands);

}  // namespace lumo
