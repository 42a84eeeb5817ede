// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Status.h"
#include "plot/PlotModule.h"

namespace lumo {

/// Loads the drawing module, from the folder of this program or from ../lib/lumo beside it, and has it draw.
/// kUnsupported where there is no module.
[[nodiscard]] Status drawWithModule(const LumoPlotRequest& request);

}  // namespace lumo
