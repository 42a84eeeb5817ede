// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "cli/AreaOptions.h"
#include "cli/Command.h"
#include "core/Status.h"

namespace lumo {

/// `lumo-cli fit`: power laws through areas of maps at two or more frequencies.
class FitCommand final : public Command {
 public:
  void declare(CLI::App& program) override;
  int run() override;

 private:
  /// Refuses to write the diagnostic text over something that is read.
  [[nodiscard]] Status checkDiagnostics() const;

  std::vector<std::string> maps_;
  AreaOptions options_;
  std::string diagnostics_;
};

}  // namespace lumo
