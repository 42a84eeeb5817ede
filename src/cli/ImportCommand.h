// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "cli/Command.h"
#include "convert/ImportReport.h"

namespace lumo {

/// `lumo-cli import`: visibility files of other programs to UVX.
class ImportCommand final : public Command {
 public:
  void declare(CLI::App& program) override;
  int run() override;

 private:
  std::vector<std::string> inputs_;
  ImportOptions options_;
};

}  // namespace lumo
