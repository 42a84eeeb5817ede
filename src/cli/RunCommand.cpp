// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/RunCommand.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <set>
#include <span>
#include <system_error>

#include "clean/CleanRecord.h"
#include "clean/HeadlessCleanWatcher.h"
#include "cli/Console.h"
#include "cli/Interrupt.h"
#include "cli/OptionText.h"
#include "cli/RunOutput.h"
#include "cli/TerminalProgress.h"
#include "cli/TestSwitches.h"
#include "cli/TypeNames.h"
#include "core/FileIdentity.h"
#include "core/Paths.h"
#include "core/PhaseTimer.h"
#include "core/ProcessFacts.h"
#include "core/TextForm.h"
#include "core/ThreadCount.h"
#include "run/RunDriver.h"
#include "run/RunSummary.h"

namespace lumo {

namespace {

Status wrongUsage(const std::string& text) {
  return {StatusCode::kInvalidValue, text};
}

}  // namespace

void RunCommand::declare(CLI::App& program) {
  CLI::App* const command =
      program.add_subcommand("run", "Image UVX files: maps, beams, CLEAN, spectral index");
  command->add_option("files", files_, "UVX files of one source");
  command->add_option(
      "--from", from_,
      "MAP: run again what made this map, on the inputs in its history or, where they have "
      "moved, on the files given; no other option but --folder, --prefix, --threads, --log and --json");
  command->add_option("--folder", parameters_.folder, "work folder; made when missing")->required();
  command->add_option("--prefix", parameters_.prefix, "start of the products' names")->capture_default_str();
  command->add_option("--reference", reference_, "reference frequency, MHz, or 'center'")
      ->capture_default_str();
  command->add_option("--order", parameters_.order, "number of spectral terms")->capture_default_str();
  command->add_option("--iterations", parameters_.iterations, "CLEAN iterations")->capture_default_str();
  command->add_option("--gain", parameters_.gain, "CLEAN loop gain")->capture_default_str();
  command->add_flag("--nonnegative", parameters_.nonNegative,
                    "keep the intensity components from going below 0");
  command->add_flag("--variable-gain", parameters_.variableGain,
                    "let the gain jump to 1 near iteration 7000");
  command->add_option("--threshold", parameters_.indexThreshold, "index map: share of the peak")
      ->capture_default_str();
  command->add_option("--index-min", parameters_.indexMin, "index map: lowest value")->capture_default_str();
  command->add_option("--index-max", parameters_.indexMax, "index map: highest value")->capture_default_str();
  command->add_flag("--fast-clean", parameters_.fastClean,
                    "sum CLEAN steps before they are rounded: about twice as fast; gives up the last bits, "
                    "and of two peaks "
                    "equal within rounding either may come first");
  command->add_flag("--index-error", parameters_.indexError,
                    "also map the standard deviation of the spectral index");
  command
      ->add_option("--select", selections_, "FILE_NUMBER:ID[,ID...] or FILE_NUMBER:none; files count from 1")
      ->expected(1)
      ->take_all()
      ->allow_extra_args(false);
  declareImaging(*command);
  command_ = command;
  command->add_option("--threads", threads_, "threads at most, 0: all cores; the products are the same")
      ->capture_default_str()
      ->check(CLI::NonNegativeNumber);
  command->add_option("--log", log_,
                      "FILE: also write how the CLEAN went on, a line an iteration, thinned to 2000");
  command->add_flag("--json", json_, "print one JSON object");
}

void RunCommand::declareImaging(CLI::App& command) {
  command.add_option("--half-size", halfSize_,
                     "map columns NX[,rows NY]; 16, 256, 512 or 1024 for square maps");
  command.add_option("--uv-limit", uvLimit_, "U[,V]: reach of the uv grid in units of the data's; default 2");
  command.add_option("--shift", shift_, "X,Y: centre of the map, arcseconds east and north; default 0,0");
  command.add_option("--weighting", weighting_, "natural or uniform")->capture_default_str();
  command.add_option("--uniform-box", uniformBox_,
                     "U,V: 1/cells of a uniform block, 0: the whole grid; default 1,1");
  command.add_option("--kernel", kernel_, "pillbox, gauss, lorentz or hat")->capture_default_str();
  command.add_option("--kernel-width", kernelWidth_, "U,V: cells; default 1,1");
  command.add_option("--taper", taper_, "none, gauss, lorentz or th")->capture_default_str();
  command.add_option("--taper-width", taperWidth_, "U,V: wavelengths");
  command.add_option("--taper-param", taperParam_, "P3,P4 of the th taper");
  command.add_flag("--no-vis-weights", noVisWeights_, "leave the visibilities' weights out");
}

Status RunCommand::prepare() {
  if (!from_.empty()) return prepareFrom();
  if (files_.empty()) return wrongUsage("no files are given: name the UVX files, or a map with --from");
  if (parameters_.folder.empty()) return wrongUsage("--folder is empty; give the folder for the products");
  parameters_.folder = withSeparator(parameters_.folder);
  Status status = takeImagingOptions();
  if (status.ok()) status = checkOptionsHaveEffect();
  if (status.ok()) status = imaging_.validate();
  if (status.ok()) status = checkLog();
  if (status.ok()) status = addFiles();
  if (status.ok()) status = applySelections();
  if (status.ok()) status = takeReference();
  if (status.ok()) status = problemStatus(validateRunParameters(parameters_, list_.frequencies()));
  if (!status.ok()) return status;
  // The survey put the extents of the data into the list's block; the rest comes from the options.
  imaging_.uvScaleU = list_.imaging().uvScaleU;
  imaging_.uvScaleV = list_.imaging().uvScaleV;
  list_.imaging() = imaging_;
  return makeFolder();
}

Status RunCommand::checkLog() const {
  if (log_.empty()) return {};
  if (isProductName(log_)) return wrongUsage("--log " + log_ + " has the name of a product of the run");
  for (const std::string& file : files_)
    if (isSameFile(file, log_)) return wrongUsage("--log " + log_ + " is an input of the run");
  if (isSameFile(from_, log_)) return wrongUsage("--log " + log_ + " is the map of --from");
  return {};
}

bool RunCommand::isProductName(const std::string& path) const {
  if (!fileName(path).starts_with(parameters_.prefix + "^")) return false;
  const auto folderOf = [](const std::string& folder) {
    return folder.empty() ? std::string(1, '.') : folder;
  };
  const std::string parent = folderOf(getfPath(path));
  const std::string work = folderOf(parameters_.folder);
  // Either may be still to be made.
  return isSameFile(parent, work) || std::filesystem::path(parent + "/.").lexically_normal() ==
                                         std::filesystem::path(work + "/.").lexically_normal();
}

Status RunCommand::addFiles() {
  const auto failures = list_.AddFiles(files_);
  if (!failures.empty()) return failures.front();
  // Weighing a file twice would be silent; comparing files and not names finds links and other spellings.
  std::set<FileIdentity> seen;
  for (const std::string& file : files_) {
    FileIdentity identity;
    if (identifyFile(file, identity) && !seen.insert(identity).second)
      return wrongUsage("file " + file + " is given twice; each can be used once");
  }
  return {};
}

Status RunCommand::applySelections() {
  if (selections_.empty()) return {};
  std::map<std::int64_t, std::set<int>> wanted;
  for (const std::string& text : selections_) {
    SelectionText selection;
    const Status status = parseSelection(text, selection);
    if (!status.ok()) return status;
    if (selection.file < 1 || selection.file > list_.inputs().count())
      return wrongUsage("--select " + text + ": there is no file number " + std::to_string(selection.file) +
                        "; " + std::to_string(list_.inputs().count()) + " are given");
    std::set<int>& chosen = wanted[selection.file];
    const AUVXFqTbl& table = list_.inputs().tables[static_cast<std::int32_t>(selection.file - 1)];
    for (const std::int64_t id : selection.ids) {
      const int index = id < -128 || id > 127 ? -1 : table.GetFreqSelNum(static_cast<int>(id));
      if (index < 0)
        return wrongUsage("--select " + text + ": the file has no frequency selection with ID " +
                          std::to_string(id));
      chosen.insert(index);
    }
  }
  for (const auto& [file, chosen] : wanted) {
    const auto index = static_cast<std::int32_t>(file - 1);
    for (int s = 0; s < list_.inputs().tables[index].GetFreqSels(); ++s)
      list_.setSelected(index, s, chosen.contains(s));
  }
  list_.survey();
  return {};
}

Status RunCommand::takeReference() {
  if (reference_ == "center") {
    parameters_.referenceMhz = list_.frequencies().centerMhz();
  } else if (!parseDouble(reference_, parameters_.referenceMhz)) {
    return wrongUsage("--reference " + reference_ + ": expected a frequency in MHz or 'center'");
  }
  return {};
}

Status RunCommand::takeImagingOptions() {
  const auto choose = [](const char* option, std::span<const TypeName> names, const std::string& text,
                         std::int32_t& value) {
    if (valueOf(names, text, value)) return Status();
    return wrongUsage(std::string(option) + " " + text + ": expected " + listed(names));
  };
  const auto pair = [](const char* option, const std::string& text, double& a, double& b) {
    return text.empty() ? Status() : parsePair(option, text, a, b);
  };
  ABMakeParameters& p = imaging_;
  Status status = choose("--weighting", kWeightingNames, weighting_, p.weightingMode);
  if (status.ok()) status = choose("--kernel", kKernelNames, kernel_, p.kernelType);
  if (status.ok()) status = choose("--taper", kTaperNames, taper_, p.taperType);
  if (status.ok() && !halfSize_.empty())
    status = parseWholeNumbers("--half-size", halfSize_, p.halfSizeX, p.halfSizeY);
  if (status.ok() && !uvLimit_.empty())
    status = parseNumberOrPair("--uv-limit", uvLimit_, p.uvLimitU, p.uvLimitV);
  if (status.ok()) status = pair("--shift", shift_, p.shiftX, p.shiftY);
  if (status.ok()) status = pair("--uniform-box", uniformBox_, p.uniformBoxU, p.uniformBoxV);
  if (status.ok()) status = pair("--kernel-width", kernelWidth_, p.kernelWidthU, p.kernelWidthV);
  if (status.ok()) status = pair("--taper-width", taperWidth_, p.taperWidthU, p.taperWidthV);
  if (status.ok()) status = pair("--taper-param", taperParam_, p.taperParam3, p.taperParam4);
  p.useVisWeights = noVisWeights_ ? 0 : 1;
  return status;
}

Status RunCommand::checkOptionsHaveEffect() const {
  const ABMakeParameters& p = imaging_;
  if (p.taperType == kTaperNone && !(taperWidth_.empty() && taperParam_.empty()))
    return wrongUsage("--taper-width and --taper-param need a --taper other than none");
  if (p.taperType != kTaperNone && taperWidth_.empty())
    return wrongUsage("--taper " + taper_ + " needs --taper-width: without it nothing is tapered");
  if (p.weightingMode != kUniformWeighting && !uniformBox_.empty())
    return wrongUsage("--uniform-box needs --weighting uniform");
  if (p.kernelType == kKernelPillBox && !kernelWidth_.empty())
    return wrongUsage("--kernel-width needs a --kernel other than pillbox, whose width is one cell");
  return {};
}

Status RunCommand::makeFolder() const {
  std::error_code error;
  std::filesystem::create_directories(parameters_.folder, error);
  if (std::filesystem::is_directory(parameters_.folder)) return {};
  return {StatusCode::kWriteFailed, "the work folder cannot be made: " + error.message(), parameters_.folder};
}

int RunCommand::run() {
  const double started = processSeconds();
  const Stopwatch watch;
  const CancelFlag& interrupt = interruptFlag();
  RunReport report;
  report.status = prepare();
  report.survey = list_.frequencies();
  PhaseTime process("process", 0, {{"start", started + watch.seconds()}});
  const bool usage = report.status.code() == StatusCode::kInvalidValue && report.status.file().empty();
  if (report.status.ok()) {
    TerminalProgress progress;
    HeadlessCleanWatcher watcher(&interrupt, &progress.readingBar(), &progress);
    RunCompany company;
    company.indicators = progress.indicators(interrupt);
    company.clean = &watcher;
    company.threads = threadCount(threads_);
    company.exactEngine = exactCleanEngine();
    company.tellPreFlight = [this](const PreFlight& found) { printPreFlight(found, parameters_.order); };
    if (!from_.empty())
      company.acceptInputs = [this](const std::vector<InputFileFacts>& facts) {
        return compareInputs(recalled_, files_, facts);
      };
    CleanRecord record;
    if (!log_.empty()) company.cleanObserver = &record;
    report = RunDriver(company).Run(parameters_, list_);
    imaging_ = list_.imaging();
    if (!record.lines().empty())
      if (const Status written = record.write(log_); report.status.ok()) report.status = written;
  }
  process.seconds = started + watch.seconds();
  process.parts.push_back(report.time);
  process.addOther();
  if (const std::string warning = runWarning(report); !warning.empty()) complain("warning: " + warning);
  if (json_)
    printJson(runJson(report, {parameters_, imaging_}, process));
  else
    printRun(report, process);
  if (report.status.ok()) return kExitDone;
  complain(report.status.text());
  return usage ? kExitUsage : kExitFailed;
}

}  // namespace lumo
