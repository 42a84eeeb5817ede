// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "analysis/AreaSettings.h"
#include "cli/AreaOptions.h"
#include "cli/Command.h"

namespace lumo {

/// `lumo-cli measure`: spectra of areas from the products of a run.
class MeasureCommand final : public Command {
 public:
  void declare(CLI::App& program) override;
  int run() override;

 private:
  std::string folder_;
  std::string prefix_ = "MFS";
  int points_ = AreaSettings().pointCount;
  AreaOptions options_;
};

}  // namespace lumo
