// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "cli/Command.h"

namespace lumo {

/// `lumo-cli info`: header, tables, extents and counts of UVX files and maps.
class InfoCommand final : public Command {
 public:
  void declare(CLI::App& program) override;
  int run() override;

 private:
  std::vector<std::string> files_;
  bool json_ = false;
};

}  // namespace lumo
