// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "core/Status.h"

namespace lumo {

/// A file being written under a temporary name in the target's folder, which takes the target's name only
/// when it is complete and on the disk: a crash of the program or of the machine leaves the old file or the
/// new one, never half of one.
///
/// Use: construct, create(), write to path(), then commit(). Without commit() the destructor removes the
/// temporary file; what a killed process left, removeLeftovers() removes.
class PendingFile {
 public:
  /// Names start with this, so that what a killed process left behind can be recognised.
  static constexpr const char* kTemporaryPrefix = ".lumo-";

  explicit PendingFile(std::string target);
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;
  ~PendingFile();

  /// The temporary name: random, so that neither another process nor another machine that writes to the same
  /// folder has it, and short, whatever the target's length. create() may choose another.
  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] const std::string& target() const { return target_; }
  /// Makes the empty file, marked as in use. Fails with kWriteFailed; also, before anything is written, when
  /// the target's name is longer than its folder takes.
  [[nodiscard]] Status create();
  /// The descriptor of create(), open for reading and writing, -1 before; it stays this object's.
  [[nodiscard]] int descriptor() const { return descriptor_; }
  /// Puts the bytes on the disk, renames to the target, replacing an old file in one step, and puts the name
  /// on the disk. Fails with kWriteFailed; the temporary file is removed then.
  [[nodiscard]] Status commit();

 private:
  void chooseName();
  [[nodiscard]] bool hold(int descriptor);

  std::string target_;
  std::string path_;
  int descriptor_ = -1;
  bool done_ = false;
};

/// Fails with kWriteFailed when the name of this file is longer than its folder takes (255 bytes as a rule).
[[nodiscard]] Status checkNameLength(const std::string& target);

/// Writes `content` to `target` as a PendingFile, after removing left-overs from its folder.
[[nodiscard]] Status writeWholeFile(const std::string& target, const std::string& content);

}  // namespace lumo
