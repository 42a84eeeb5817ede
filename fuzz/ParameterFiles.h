// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lumo::fuzz {

/// Reads the two parameter files of the folder as the desktop program does at its start, edits the lists as a
/// user can, saves and reads again: what was saved comes back.
void useParameterFiles();

}  // namespace lumo::fuzz
