// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "clean/CleanEngineChoice.h"
#include "core/Status.h"

namespace lumo {

/// What tests of the whole program choose through the environment, because no user needs it: the products do
/// not depend on either. The only place that reads these variables.

/// LUMO_SIMD: the instruction set of all vector code, by Highway's name ("AVX2"). Fails where this machine
/// has none of that name; the message lists those it has.
[[nodiscard]] Status takeInstructionSet();
/// LUMO_CLEAN: "plain" for the plain engine; the fast one otherwise.
[[nodiscard]] CleanEngineKind exactCleanEngine();

}  // namespace lumo
