// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/SimulateCommand.h"

#include <cstdio>

#include "cli/Console.h"
#include "cli/Interrupt.h"
#include "cli/OptionText.h"
#include "cli/TerminalProgress.h"
#include "convert/AntennaArray.h"
#include "convert/SkyModel.h"
#include "core/Units.h"

namespace lumo {

void SimulateCommand::declare(CLI::App& program) {
  CLI::App* const command =
      program.add_subcommand("simulate", "Simulate an observation: one UVX file per band");
  command->add_option("--sky", sky_, "sky model (JSON)")->required();
  command->add_option("--array", array_, "vlba, vla, or a file with a line 'name x y z' per antenna")
      ->required();
  command->add_option("--bands", bands_, "frequencies of the bands, MHz, separated by commas")->required();
  command->add_option("--ifs", settings_.ifs, "IFs per band")->capture_default_str();
  command->add_option("--channels", settings_.channels, "channels per IF")->capture_default_str();
  command->add_option("--channel-width", settings_.channelWidthKhz, "kHz")->capture_default_str();
  command->add_option("--hours", settings_.hours, "length of the track")->capture_default_str();
  command->add_option("--interval", settings_.intervalSeconds, "seconds between integrations")
      ->capture_default_str();
  declinationOption_ =
      command->add_option("--declination", declination_, "degrees; instead of the sky model's");
  command->add_option("--noise", settings_.noiseJy, "Jy, standard deviation of real and imaginary part")
      ->capture_default_str();
  command->add_option("--seed", settings_.seed, "of the noise")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  command->add_option("--out", settings_.folder, "folder for the files")->required();
}

int SimulateCommand::run() {
  settings_.inputs = {sky_, array_};
  if (declinationOption_->count() != 0) settings_.declinationDeg = declination_;
  Status status = parseNumberList("--bands", bands_, settings_.bandsMhz);
  if (status.ok()) status = settings_.validate();
  if (!status.ok()) {
    complain(status.text());
    return kExitUsage;
  }
  SkyModel sky;
  AntennaArray array;
  status = sky.load(sky_);
  if (status.ok()) status = array.select(array_);
  if (!status.ok()) return reportFailure(status);

  SimulationReport report;
  {
    TerminalProgress progress;
    status = simulate(settings_, sky, array, progress.indicators(interruptFlag()), report);
  }
  for (const SimulatedFile& file : report.files)
    std::printf("%s: %llu groups, |u| up to %.4g, |v| up to %.4g Mwavelengths\n", file.path.c_str(),
                static_cast<unsigned long long>(file.groups), file.uMax * 1e-6, file.vMax * 1e-6);
  return status.ok() ? kExitDone : reportFailure(status);
}

}  // namespace lumo
