// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "core/Status.h"
#include "imaging/ABMakeParameters.h"
#include "run/RunParameters.h"
#include "run/RunRecall.h"
#include "run/UvxFileList.h"

namespace lumo {

/// `lumo-cli run`: from UVX files to the products.
class RunCommand final : public Command {
 public:
  void declare(CLI::App& program) override;
  int run() override;

 private:
  void declareImaging(CLI::App& command);
  /// Options into the file list, the parameters and the imaging block. A failure of code kInvalidValue means
  /// that the command line is wrong; any other that an input cannot be used.
  [[nodiscard]] Status prepare();
  [[nodiscard]] Status addFiles();
  [[nodiscard]] Status applySelections();
  [[nodiscard]] Status takeReference();
  [[nodiscard]] Status takeImagingOptions();
  [[nodiscard]] Status checkOptionsHaveEffect() const;
  [[nodiscard]] Status makeFolder() const;
  /// The log must not take the place of an input, the map of --from or a product.
  [[nodiscard]] Status checkLog() const;
  /// Whether a file lies, or would, in the work folder under a name that begins as those of the products do.
  [[nodiscard]] bool isProductName(const std::string& path) const;
  /// The same as prepare() for a run that is taken from the history of a map.
  [[nodiscard]] Status prepareFrom();
  [[nodiscard]] Status checkFromStandsAlone() const;
  [[nodiscard]] Status checkMapIsNoProduct() const;

  std::vector<std::string> files_;
  RunParameters parameters_;
  std::string reference_ = "center";
  std::vector<std::string> selections_;
  std::string halfSize_, uvLimit_, shift_, uniformBox_, kernelWidth_, taperWidth_, taperParam_;
  std::string weighting_ = "natural", kernel_ = "pillbox", taper_ = "none";
  bool noVisWeights_ = false;
  ABMakeParameters imaging_;
  std::string from_;
  RecalledRun recalled_;
  const CLI::App* command_ = nullptr;
  std::string log_;
  int threads_ = 0;
  bool json_ = false;
  UvxFileList list_;
};

}  // namespace lumo
