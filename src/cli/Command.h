// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <CLI/CLI.hpp>

namespace lumo {

/// Exit status of the program.
inline constexpr int kExitDone = 0;
inline constexpr int kExitFailed = 1;  ///< the work failed; what and which file is on standard error
inline constexpr int kExitUsage = 2;   ///< the command line is wrong

/// One subcommand: declares its options, then runs with the values they were given.
class Command {
 public:
  virtual ~Command() = default;
  /// Adds the subcommand with its options to the program.
  virtual void declare(CLI::App& program) = 0;
  /// Does the work. Returns an exit status.
  virtual int run() = 0;
};

}  // namespace lumo
