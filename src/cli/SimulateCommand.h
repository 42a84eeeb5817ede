// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "cli/Command.h"
#include "convert/Simulator.h"

namespace lumo {

/// `lumo-cli simulate`: visibilities of a sky model, one UVX file per band.
class SimulateCommand final : public Command {
 public:
  void declare(CLI::App& program) override;
  int run() override;

 private:
  std::string sky_;
  std::string array_;
  std::string bands_;
  double declination_ = 0;
  CLI::Option* declinationOption_ = nullptr;
  SimulatorSettings settings_;
};

}  // namespace lumo
