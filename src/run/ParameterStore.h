// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

#include "core/Status.h"
#include "io/Profile.h"
#include "run/RunParameters.h"
#include "run/UvxFileList.h"

namespace lumo {

/// Keeps the parameter set from one use of the program to the next, in two files of one folder: the profile
/// "ZELMFS.ini" (file list and run parameters) and "ZELMFS.bin" (selection masks and imaging parameter block;
/// layout: docs/formats.md).
class ParameterStore {
 public:
  static constexpr const char* kProfileName = "ZELMFS.ini";
  static constexpr const char* kBinaryName = "ZELMFS.bin";
  static constexpr const char* kSection = "ZELMFS-FILES";
  /// Largest number of files or masks that is read: more than a profile of Profile::kMaxBytes can list.
  static constexpr std::int32_t kMaxFiles = 1000000;

  /// `folder` with its separator, or empty for the current one; normally getExePath().
  explicit ParameterStore(const std::string& folder);

  /// Adds the listed files to `files` and reads the parameters; what is missing gets its default. The binary
  /// file is read only when every file was added: its masks replace those of the list, whatever their number,
  /// and its block that of the list. Nothing of this is an error; status() tells what was not read and why.
  void LoadParameters(RunParameters& parameters, UvxFileList& files);

  /// Writes both files. Afterwards `parameters.order` is the result of its own write (non-zero on success)
  /// and no longer the order. Returns 1, or 0 with the reason in status().
  int SaveParameters(RunParameters& parameters, const UvxFileList& files);

  /// Why the last load or save was not complete; ok otherwise. A missing file is complete.
  [[nodiscard]] const Status& status() const { return status_; }

 private:
  [[nodiscard]] bool loadFiles(UvxFileList& files);
  void loadValues(RunParameters& parameters);
  void loadBinary(UvxFileList& files);
  void saveFiles(const UvxFileList& files);
  void saveValues(RunParameters& parameters);
  void saveBinary(const UvxFileList& files);
  /// Keeps the first reason.
  void note(const Status& status);

  Profile profile_;
  std::string binaryPath_;
  Status status_;
};

}  // namespace lumo
