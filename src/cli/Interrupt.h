// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Progress.h"

namespace lumo {

/// The flag that Ctrl-C (SIGINT) and SIGTERM set from now on. The first signal asks the work to stop in good
/// order; a second one ends the program at once.
[[nodiscard]] const CancelFlag& interruptFlag();

}  // namespace lumo
