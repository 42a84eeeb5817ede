// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DesktopImport.h"

#include <QFile>
#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>

#include "app/Prompts.h"
#include "app/StoreFolder.h"
#include "convert/Importer.h"
#include "core/Log.h"
#include "core/Paths.h"
#include "core/TextForm.h"

namespace lumo {

namespace {

/// Lines of a message box about many files.
constexpr std::size_t kMostLines = 10;

QString shown(const std::string& path) {
  return QFile::decodeName(path.c_str());
}

/// The lines, or the first of them and how many there are besides.
QString joined(const std::vector<QString>& lines) {
  QString text;
  for (std::size_t i = 0; i < std::min(lines.size(), kMostLines); ++i) text += lines[i] + "\n";
  if (lines.size() > kMostLines) text += QString("and %1 more\n").arg(lines.size() - kMostLines);
  return text;
}

std::vector<std::string> visibilityFilesIn(const std::string& folder) {
  std::vector<std::string> paths;
  std::error_code error;
  for (std::filesystem::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
    if (at->path().extension() == ".uvx") paths.push_back(folder + at->path().filename().string());
  return paths;
}

}  // namespace

bool DesktopImport::offer(const std::vector<std::string>& chosen, const std::string& workFolder) {
  sortOut(chosen, workFolder);
  if (inputs_.empty()) return false;
  if (prompts_.confirm(&window_, question()) && askForMissingFolder()) return true;
  for (const Input& input : inputs_) log_.add("Not imported, as you wished: " + input.what.input);
  inputs_.clear();
  return false;
}

void DesktopImport::sortOut(const std::vector<std::string>& chosen, const std::string& workFolder) {
  for (const std::string& path : chosen) {
    const Importable what = importableAt(path);
    if (what.kind == ImportKind::kNone) {
      files_.push_back(path);
      continue;
    }
    const auto isKnown = [&what](const Input& input) { return input.what.input == what.input; };
    if (std::any_of(inputs_.begin(), inputs_.end(), isKnown)) continue;
    std::string folder = getfPath(what.input);
    if (!canWriteTo(folder)) folder = canWriteTo(workFolder) ? workFolder : std::string();
    inputs_.push_back({what, folder});
  }
}

QString DesktopImport::question() const {
  std::vector<QString> names;
  std::set<QString> folders;
  for (const Input& input : inputs_) {
    const bool isSet = input.what.kind == ImportKind::kMeasurementSet;
    names.push_back(shown(input.what.input) + (isSet ? " is a Measurement Set." : " is a UVFITS file."));
    folders.insert(shown(input.folder));
  }
  QString text = joined(names) + (names.size() == 1 ? "Import it?\n" : "Import them?\n");
  const bool mustAsk = folders.erase("") > 0;
  if (!folders.empty()) {
    text += "\nThe UVX files go to:\n" + joined({folders.begin(), folders.end()});
    text += "Files that are there already are not replaced.\n";
  }
  if (mustAsk)
    text +=
        "\nNothing can be written to the folder of the data or to the work folder: the next window asks for "
        "a folder for the UVX files.\n";
  return text.trimmed();
}

bool DesktopImport::askForMissingFolder() {
  const auto isMissing = [](const Input& input) { return input.folder.empty(); };
  if (std::none_of(inputs_.begin(), inputs_.end(), isMissing)) return true;
  const QString chosen = prompts_.chooseImportFolder(&window_, {});
  if (chosen.isEmpty()) return false;
  for (Input& input : inputs_)
    if (isMissing(input)) input.folder = withSeparator(QFile::encodeName(chosen).toStdString());
  return true;
}

Status DesktopImport::run(const RunIndicators& indicators) {
  Status last;
  AProgress progress(indicators.fileBar, static_cast<double>(inputs_.size()));
  double done = 0;
  for (const Input& input : inputs_) {
    Status status = importOne(input, indicators);
    if (status.code() == StatusCode::kCancelled) return status;
    if (!status.ok()) {
      prompts_.showMessage(&window_, "The import failed.\n\n" + QString::fromStdString(status.text()));
      last = status;
    }
    progress.SetPos(++done);
  }
  return last;
}

Status DesktopImport::importOne(const Input& input, const RunIndicators& indicators) {
  indicators.setText("Import " + fileName(input.what.input));
  RunIndicators::resetBar(indicators.readingBar);
  ImportOptions options;
  options.outFolder = input.folder;
  options.taken = visibilityFilesIn(input.folder);
  ImportReport report;
  const Status status = importVisibilities(input.what.input, options, indicators, report);
  if (!status.ok()) return status.about(input.what.input);
  note(report);
  take(report);
  return {};
}

void DesktopImport::note(const ImportReport& report) {
  log_.add("Imported " + report.input);
  for (const ImportedFile& file : report.files)
    log_.add("  " + file.path + ": source " + file.source + ", " + toStr(file.records) + " records (" +
             toStr(file.flaggedRecords) + " flagged)");
  for (const std::string& line : report.notes) log_.add("  " + line);
  for (const std::string& line : report.warnings) log_.add("  Warning: " + line);
}

void DesktopImport::take(const ImportReport& report) {
  std::set<std::string> sources;
  for (const ImportedFile& file : report.files) sources.insert(file.source);
  if (sources.size() < 2) {
    for (const ImportedFile& file : report.files) files_.push_back(file.path);
    return;
  }
  std::vector<QString> lines;
  for (const ImportedFile& file : report.files)
    lines.push_back(QString::fromStdString(file.source) + ": " + shown(file.path));
  prompts_.showMessage(
      &window_, shown(report.input) +
                    QString(" holds %1 sources. Each has UVX files of its own now:\n\n").arg(sources.size()) +
                    joined(lines) + "\nA run takes one source: add the files of the one that you want.");
}

}  // namespace lumo
