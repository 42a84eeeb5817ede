// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lumo {

/// The program's name and version as they go into ORIGIN and HISTORY cards and "--version".
[[nodiscard]] const char* programVersion();

}  // namespace lumo
