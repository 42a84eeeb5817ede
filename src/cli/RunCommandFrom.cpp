// SPDX-License-Identifier: GPL-3.0-or-later
// The part of RunCommand that repeats a run from the history of one of its maps.
#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "cli/Console.h"
#include "cli/RunCommand.h"
#include "core/Paths.h"
#include "core/TextForm.h"
#include "core/Version.h"
#include "io/AMapFile.h"
#include "io/AMapHeader.h"

namespace lumo {

namespace {

Status readHistory(const std::string& path, std::vector<std::string>& history) {
  AMapFile file;
  if (file.Open(path, AFile::kRead) == 0) return file.status().about(path);
  AMapHeader header;
  if (header.Load(file) == 0) return Status(file.status()).about(path);
  history = header.history;
  return {};
}

/// Whether a text is a part of a file's name that leads to no other folder and can be shown.
bool isPlainName(const std::string& text) {
  return std::none_of(text.begin(), text.end(), [](char c) {
    return c == kDirSeparator || static_cast<unsigned char>(c) < ' ' || c == 0x7F;
  });
}

/// The map was made by another version of the program, whose numbers may differ.
void tellOtherVersion(const std::vector<std::string>& history) {
  constexpr std::string_view kProgram = "PROGRAM = ";
  for (const std::string& line : history)
    if (line.starts_with(kProgram) && line.substr(kProgram.size()) != programVersion())
      complain("note: the map was made by " + printable(line.substr(kProgram.size())) + ", this is " +
               programVersion());
}

}  // namespace

Status RunCommand::checkFromStandsAlone() const {
  constexpr std::array<std::string_view, 8> kAllowed = {"files", "--from",    "--folder", "--prefix",
                                                        "--log", "--threads", "--json",   "--help"};
  for (const CLI::Option* const option : command_->get_options()) {
    if (option->count() == 0) continue;
    const std::string name = option->get_name();
    if (std::find(kAllowed.begin(), kAllowed.end(), name) == kAllowed.end())
      return {StatusCode::kInvalidValue,
              name + " cannot stand beside --from, which takes everything from the map's history"};
  }
  return {};
}

Status RunCommand::checkMapIsNoProduct() const {
  if (!isProductName(from_)) return {};
  return {StatusCode::kInvalidValue,
          "the map of --from lies among the products that the run would replace; give another "
          "--folder or --prefix"};
}

Status RunCommand::prepareFrom() {
  Status status = checkFromStandsAlone();
  std::vector<std::string> history;
  if (status.ok()) status = readHistory(from_, history);
  if (status.ok()) status = recallRun(history, recalled_).about(from_);
  if (!status.ok()) return status;
  tellOtherVersion(history);

  const RunParameters given = parameters_;
  parameters_ = recalled_.parameters;
  parameters_.folder = withSeparator(given.folder);
  if (command_->get_option("--prefix")->count() > 0)
    parameters_.prefix = given.prefix;
  else if (!isPlainName(parameters_.prefix))
    return {StatusCode::kInvalidValue, "the prefix in the map's history, " + printable(parameters_.prefix) +
                                           ", is more than the start of a name; give one with --prefix"};
  status = checkMapIsNoProduct();
  if (!status.ok()) return status;

  if (files_.empty()) {
    for (const RecalledInput& input : recalled_.inputs) files_.push_back(input.name);
  } else if (files_.size() != recalled_.inputs.size()) {
    return {StatusCode::kInvalidValue, "the run of the map had " +
                                           toStr(static_cast<std::int64_t>(recalled_.inputs.size())) +
                                           " input files; give as many, in the same order, or none"};
  }
  imaging_ = recalled_.imaging;
  status = checkLog();
  if (status.ok()) status = addFiles();
  if (status.ok()) status = recallSelections(recalled_, list_);
  if (status.ok()) status = imaging_.validate();
  if (status.ok()) status = problemStatus(validateRunParameters(parameters_, list_.frequencies()));
  if (!status.ok()) return status;
  list_.imaging() = imaging_;
  return makeFolder();
}

}  // namespace lumo
