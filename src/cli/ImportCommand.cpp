// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/ImportCommand.h"

#include <cstdio>

#include "cli/BandTable.h"
#include "cli/Console.h"
#include "cli/Interrupt.h"
#include "cli/TerminalProgress.h"
#include "convert/Importer.h"
#include "core/TextForm.h"

namespace lumo {

namespace {

void print(const ImportReport& report) {
  for (const ImportedFile& file : report.files) {
    std::printf("%s -> %s\n", report.input.c_str(), file.path.c_str());
    std::printf("  source %s, %llu records (%llu flagged), %u IFs x %u channels x %u products\n",
                printable(file.source).c_str(), static_cast<unsigned long long>(file.records),
                static_cast<unsigned long long>(file.flaggedRecords), file.shape.ifs, file.shape.channels,
                file.shape.products);
    printBands(file.bands);
  }
  if (report.autocorrelations != 0)
    std::printf("  %llu autocorrelations left out\n",
                static_cast<unsigned long long>(report.autocorrelations));
  for (const std::string& note : report.notes) std::printf("  note: %s\n", printable(note).c_str());
  for (const std::string& warning : report.warnings) complain("warning: " + report.input + ": " + warning);
}

}  // namespace

void ImportCommand::declare(CLI::App& program) {
  CLI::App* const command = program.add_subcommand(
      "import", "Convert UVFITS files and Measurement Sets to UVX, one file per source and set-up shape");
  command->add_option("inputs", inputs_, "UVFITS files and Measurement Sets")->required();
  command->add_option("--out", options_.outFolder, "folder for the UVX files")->required();
  command->add_option("--source", options_.source, "import this source (field) only");
  command->add_option("--column", options_.column,
                      "Measurement Sets: column with the visibilities (data, corrected or a name; default: "
                      "CORRECTED_DATA where there is one, else DATA)");
  command
      ->add_option(
          "--average", options_.average,
          "average every N channels, with their weights, into an IF with a uv point of its own (default: "
          "IFs as they are; gridding puts all channels of an IF at its first channel's uv point)")
      ->check(CLI::Range(1U, 1U << 20));
}

int ImportCommand::run() {
  int result = kExitDone;
  options_.inputs = inputs_;
  for (const std::string& input : inputs_) {
    ImportReport report;
    Status status;
    {
      TerminalProgress progress;
      progress.setText("Import " + input);
      status = importVisibilities(input, options_, progress.indicators(interruptFlag()), report);
    }
    if (!status.ok()) {
      // One bad file does not keep the others from being imported; the exit status tells.
      result = reportFailure(status.about(input));
      if (status.code() == StatusCode::kCancelled) break;
      continue;
    }
    print(report);
    for (const ImportedFile& file : report.files) options_.taken.push_back(file.path);
  }
  return result;
}

}  // namespace lumo
