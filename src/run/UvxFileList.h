// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "core/Status.h"
#include "imaging/ABMakeParameters.h"
#include "io/VisibilityInputs.h"
#include "run/FrequencyIdTable.h"
#include "run/FrequencySurvey.h"

namespace lumo {

/// Who shows what a file list has to say: a dialog, or nobody.
class FileListWatcher {
 public:
  virtual ~FileListWatcher() = default;
  /// A message box.
  virtual void showMessage(const std::string& text) = 0;
  /// The first file of the list suggests its own folder (with its separator) as the work folder.
  virtual void proposeWorkFolder(const std::string& folder) = 0;
};

/// The visibility files of a run with what the run needs of each, the choice of frequency selections, the
/// survey of what is chosen, and the imaging parameter block that the survey feeds.
///
/// Every change of files or masks surveys anew, which opens every file. While the arrays come from this class
/// they are in step; masks put in by replaceSelections() may be any number of any length.
class UvxFileList {
 public:
  static constexpr const char* kOneSourceMessage = "Sorry. Source must be 1 (one).";

  /// `watcher` may be null; it is not owned.
  explicit UvxFileList(FileListWatcher* watcher = nullptr) : watcher_(watcher), idTable_(inputs_) {}
  UvxFileList(const UvxFileList&) = delete;
  UvxFileList& operator=(const UvxFileList&) = delete;

  /// Adds a file with all of its selections chosen and selects it in the list; a path that is listed already
  /// is only selected. Returns 1, or 0 with the reason in status() and the list unchanged: the file does not
  /// open, has two or more sources (which the watcher is told), or stores no Stokes product that can be
  /// imaged.
  int AddFile(const std::string& path);
  /// AddFile for each path with one survey at the end: the cost of n files is n openings, not n squared.
  /// Returns why files were not added, empty when all were.
  std::vector<Status> AddFiles(std::span<const std::string> paths);
  /// Removes the selected file, if any, and selects the one now in its place or the last. With the last file
  /// gone the survey keeps its values, and the block's four uv fields become 0.
  void DeleteFile();
  /// Flips a row of the frequency-ID table. Returns 1, or 0 when the row cannot be toggled.
  int changeCell(std::int64_t row);
  /// Sets one bit of a file's mask without a survey; nothing outside the masks.
  void setSelected(std::int32_t file, std::int32_t selection, bool selected);
  /// Surveys again from the current masks.
  void survey();
  /// Puts in masks from elsewhere as they are and surveys.
  void replaceSelections(AObjArray<ABitArray> masks);

  [[nodiscard]] const VisibilityInputs& inputs() const { return inputs_; }
  [[nodiscard]] const FrequencySurvey& frequencies() const { return survey_; }
  [[nodiscard]] const FrequencyIdTable& idTable() const { return idTable_; }
  [[nodiscard]] ABMakeParameters& imaging() { return imaging_; }
  [[nodiscard]] const ABMakeParameters& imaging() const { return imaging_; }

  /// True when the commands that need a file are enabled ("Delete", "UVX Info...", "Make par...", "Run",
  /// "UV-Plane...", "ReRead", "Center" and the reference field).
  [[nodiscard]] bool hasFiles() const { return inputs_.count() > 0; }
  /// Index of the selected file, -1 when none is.
  [[nodiscard]] std::int32_t selected() const { return selected_; }
  /// Selects a file of the list; any other index selects none.
  void select(std::int32_t index);
  /// Why the last AddFile that returned 0 did so.
  [[nodiscard]] const Status& status() const { return status_; }

 private:
  int append(const std::string& path);
  int fail(Status status);

  FileListWatcher* watcher_;
  VisibilityInputs inputs_;
  FrequencySurvey survey_;
  FrequencyIdTable idTable_;
  ABMakeParameters imaging_;
  std::int32_t selected_ = -1;
  Status status_;
};

}  // namespace lumo
