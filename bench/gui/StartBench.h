// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lumo {

/// The argument with which this program is the desktop program that the start is measured of.
inline constexpr const char* kAsProgram = "--as-program";

/// Starts as the desktop program does, and writes to standard output when the main dialog has been painted
/// and waits for its user, in nanoseconds of the monotonic clock; then it ends at once.
[[noreturn]] void startAsProgram(int argc, char** argv);

}  // namespace lumo
