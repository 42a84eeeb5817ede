// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/PlotCommand.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdio>
#include <filesystem>

#include "analysis/MapSelector.h"
#include "cli/AreaMeasurement.h"
#include "cli/Console.h"
#include "cli/MapFitting.h"
#include "cli/PlotLoader.h"
#include "core/FileIdentity.h"
#include "core/Paths.h"
#include "io/AUVXFile.h"

namespace lumo {

namespace {

Status wrongUsage(const std::string& text) {
  return {StatusCode::kInvalidValue, text};
}

void printNotes(const std::vector<std::string>& notes) {
  for (const std::string& note : notes) complain("note: " + note);
}

}  // namespace

void PlotCommand::declare(CLI::App& program) {
  CLI::App* const command = program.add_subcommand(
      "plot", "Draw a map, the spectra of areas, or uv coverage (one map, several maps, UVX files)");
  command->add_option("files", files_,
                      "one map: the map; several: the power laws of areas; UVX files: uv coverage");
  command->add_option("--folder", folder_, "work folder of a run, instead of files: the spectra of areas");
  command->add_option("--prefix", prefix_, "start of the products' names")
      ->capture_default_str()
      ->needs("--folder");
  command->add_option("--points", points_, "number of frequencies")
      ->check(CLI::Range(1, ResultsPresenter::kMostPoints))
      ->capture_default_str()
      ->needs("--folder");
  options_.declareRegions(*command);
  command->add_flag("--linear-x", linearX_, "spectra: linear frequencies instead of logarithmic ones");
  command->add_flag("--linear-y", linearY_, "spectra: linear flux densities");
  command->add_flag("--invert-colors", invertColors_, "spectra: bright on black");
  command->add_option("--out", out_, "the picture: .png, .pdf or .svg")->required();
}

Status PlotCommand::checkOut() const {
  std::string extension = std::filesystem::path(out_).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (extension != ".png" && extension != ".pdf" && extension != ".svg")
    return wrongUsage("--out " + out_ + ": expected a name that ends in .png, .pdf or .svg");
  FileIdentity target;
  if (!identifyFile(out_, target)) return {};
  std::vector<std::string> inputs = files_;
  inputs.push_back(options_.regions);
  for (const std::string& input : inputs) {
    FileIdentity identity;
    if (identifyFile(input, identity) && identity == target)
      return wrongUsage("--out " + out_ + " is one of the inputs");
  }
  return {};
}

Status PlotCommand::findKind(bool& visibilities) const {
  std::size_t count = 0;
  for (const std::string& path : files_) {
    AUVXFile file;
    if (file.Open(path, AFile::kRead) != 0)
      ++count;
    else if (path.ends_with(".uvx"))
      return file.status();
  }
  if (count != 0 && count != files_.size())
    return wrongUsage("the files are of both kinds, maps and UVX files; give files of one kind");
  visibilities = count != 0;
  return {};
}

AreaSettings PlotCommand::frameSettings() const {
  AreaSettings settings;
  settings.xScaleMode = linearX_ ? kLinearScale : kLogarithmicScale;
  settings.yScaleMode = linearY_ ? kLinearScale : kLogarithmicScale;
  settings.invertColors = invertColors_ ? 1 : 0;
  return settings;
}

Status PlotCommand::plotFiles(int kind) const {
  std::vector<const char*> names;
  for (const std::string& path : files_) names.push_back(path.c_str());
  LumoPlotRequest request{};
  request.version = kLumoPlotVersion;
  request.kind = kind;
  request.out = out_.c_str();
  request.files = names.data();
  request.fileCount = names.size();
  request.regions = options_.regions.c_str();
  request.xTitle = request.yTitle = "";
  return drawWithModule(request);
}

Status PlotCommand::plotGraph(const SpectrumGraph& graph) const {
  std::vector<LumoPlotCurve> curves;
  for (const SpectrumCurve& curve : graph.curves)
    curves.push_back({curve.freqs().data(), curve.fluxes().data(), curve.errors().data(), curve.count(),
                      curve.refFreq, curve.refIntensity, curve.specIndex});
  LumoPlotRequest request{};
  request.version = kLumoPlotVersion;
  request.kind = kLumoPlotSpectrum;
  request.out = out_.c_str();
  request.regions = "";
  request.xTitle = graph.xTitle.c_str();
  request.yTitle = graph.yTitle.c_str();
  request.xScaleMode = graph.xScaleMode;
  request.yScaleMode = graph.yScaleMode;
  request.invertColors = graph.invertColors;
  request.curves = curves.data();
  request.curveCount = curves.size();
  return drawWithModule(request);
}

Status PlotCommand::plotFits() const {
  MapFitting fitting;
  const Status status = fitMapFiles(files_, options_, fitting);
  printNotes(fitting.notes);
  return status.ok() ? plotGraph(fitGraph(fitting.fits, frameSettings())) : status;
}

Status PlotCommand::plotMeasurement() const {
  AreaMeasurement measurement;
  const Status status = measureProducts(withSeparator(folder_), prefix_, options_, points_, measurement);
  printNotes(measurement.notes);
  return status.ok() ? plotGraph(spectraGraph(measurement.spectra, frameSettings())) : status;
}

Status PlotCommand::plot() {
  if (files_.empty() == folder_.empty())
    return wrongUsage("give either files or --folder with the products of a run");
  if (Status status = checkOut(); !status.ok()) return status;
  if (!folder_.empty()) return plotMeasurement();
  bool visibilities = false;
  if (Status status = findKind(visibilities); !status.ok()) return status;
  if (!visibilities && files_.size() > 1) return plotFits();
  if (linearX_ || linearY_ || invertColors_)
    return wrongUsage("--linear-x, --linear-y and --invert-colors are for spectra");
  if (visibilities && !options_.regions.empty())
    return wrongUsage("--regions marks areas on maps; uv coverage has none");
  return plotFiles(visibilities ? kLumoPlotCoverage : kLumoPlotMap);
}

int PlotCommand::run() {
  const Status status = plot();
  if (status.ok()) {
    std::printf("wrote %s\n", out_.c_str());
    return kExitDone;
  }
  reportFailure(status);
  const bool usage = status.code() == StatusCode::kInvalidValue && status.file().empty();
  return usage ? kExitUsage : kExitFailed;
}

}  // namespace lumo
