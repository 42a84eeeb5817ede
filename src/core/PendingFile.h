// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "core/Status.h"

namespace lumo {

/// A file being written under a temporary name in the target's folder, which takes the target's name only
/// when it is complete: a crash leaves the old file or the new one, never half of one.
///
/// Use: construct, write to path(), then commit(). Without commit() the destructor removes the temporary
/// file.
class PendingFile {
 public:
  /// Names start with this, so that what a killed process left behind can be recognised.
  static constexpr const char* kTemporaryPrefix = ".lumo-";

  explicit PendingFile(std::string target);
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;
  ~PendingFile();

  /// The temporary name: random, so that neither another process nor another machine that writes to the same
  /// folder has it, and short, whatever the target's length.
  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] const std::string& target() const { return target_; }
  /// Renames to the target, replacing an old file in one step. Fails with kWriteFailed; the temporary file is
  /// removed then.
  [[nodiscard]] Status commit();

 private:
  std::string target_;
  std::string path_;
  bool done_ = false;
};

/// Writes `content` to `target` as a PendingFile.
[[nodiscard]] Status writeWholeFile(const std::string& target, const std::string& content);

}  // namespace lumo
