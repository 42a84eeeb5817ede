// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "cli/Console.h"
#include "core/PhaseTimer.h"
#include "imaging/ABMakeParameters.h"
#include "run/RunParameters.h"
#include "run/RunReport.h"

namespace lumo {

/// What a run was asked to do, for its output.
struct RunSettings {
  const RunParameters& parameters;
  const ABMakeParameters& imaging;
};

/// The summary for a person, on standard output: what was kept and what was not, and why, and what `process`,
/// the whole program, took in its parts.
void printRun(const RunReport& report, const PhaseTime& process);
/// The table of a run's inputs, and the warnings, on standard error.
void printPreFlight(const PreFlight& preFlight, std::int32_t order);
/// The object of `run --json` (docs/formats.md).
[[nodiscard]] Json runJson(const RunReport& report, const RunSettings& settings, const PhaseTime& process);

}  // namespace lumo
