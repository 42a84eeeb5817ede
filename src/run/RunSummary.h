// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "run/RunReport.h"

namespace lumo {

/// Whether the products of a run mean anything as far as the numbers tell: the total flux is finite and the
/// CLEAN's beam matrix was inverted to better than 1e-3. Otherwise the order is more than the frequencies can
/// carry, or the loop gain made CLEAN diverge. True when no iteration was done.
[[nodiscard]] bool areTermsTold(const RunReport& report);
/// Whether the CLEAN lowered the largest residual. True when too few iterations were done to tell.
[[nodiscard]] bool isResidualLowered(const RunReport& report);
/// The sentence that warns of a report of which one of these is false, the first where both are; empty
/// otherwise.
[[nodiscard]] std::string runWarning(const RunReport& report);

/// What a log keeps of a run: products that were not written and why, iterations and total flux, the
/// runWarning(), the time it took and the number of products. A failure of the run
/// itself is not among them; it is the report's status.
[[nodiscard]] std::vector<std::string> runSummaryLines(const RunReport& report);

}  // namespace lumo
