// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "analysis/AreaSettings.h"
#include "cli/AreaOptions.h"
#include "cli/Command.h"
#include "core/Status.h"

namespace lumo {

/// `lumo-cli plot`: a picture of a map, of spectra, or of uv coverage, drawn by the code of the windows.
class PlotCommand final : public Command {
 public:
  void declare(CLI::App& program) override;
  int run() override;

 private:
  /// A failure of code kInvalidValue without a file means that the command line is wrong.
  [[nodiscard]] Status plot();
  [[nodiscard]] Status checkOut() const;
  /// Whether the files are visibilities. Fails when they are of both kinds.
  [[nodiscard]] Status findKind(bool& visibilities) const;
  [[nodiscard]] Status plotFiles(int kind) const;
  [[nodiscard]] Status plotFits() const;
  [[nodiscard]] Status plotMeasurement() const;
  [[nodiscard]] Status plotGraph(const SpectrumGraph& graph) const;
  /// The scales and colours that the options ask for.
  [[nodiscard]] AreaSettings frameSettings() const;

  std::vector<std::string> files_;
  std::string folder_;
  std::string prefix_ = "MFS";
  int points_ = AreaSettings().pointCount;
  AreaOptions options_;
  bool linearX_ = false;
  bool linearY_ = false;
  bool invertColors_ = false;
  std::string out_;
};

}  // namespace lumo
