// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "core/Status.h"

namespace lumo {

class PendingFile;

/// A binary file open for reading or being created. Base of the visibility and map files.
///
/// A created file appears under its name only when Close() succeeds (see PendingFile); one that is destroyed
/// or opened anew before that is given up, so that no early return can publish half a file. Operations return
/// non-zero on success; status() says why the last failure happened.
class AFile {
 public:
  static constexpr int kRead = 0;
  static constexpr int kCreate = 1;

  AFile();
  AFile(const AFile&) = delete;
  AFile& operator=(const AFile&) = delete;
  virtual ~AFile();

  /// Opens `name` for reading (kRead) or creates it (kCreate). A file already open is closed first.
  virtual int Open(const std::string& name, int mode);
  /// Closes; for a created file 0 means that it does not exist (an old one of that name is untouched).
  virtual int Close();
  /// Reads exactly `size` bytes; 0 if the file ends before.
  int Read(void* bytes, std::size_t size);
  int Write(const void* bytes, std::size_t size);
  /// Reads exactly `size` bytes from `offset` on of a file open for reading, and leaves position and status()
  /// alone. Several threads may do so at once.
  [[nodiscard]] Status readAt(std::uint64_t offset, void* bytes, std::size_t size) const;
  /// Goes back to the first byte.
  int Rewind();

  /// Bytes between the current position and the end that a file open for reading had when it was opened.
  [[nodiscard]] std::uint64_t remaining() const { return position_ < size_ ? size_ - position_ : 0; }
  [[nodiscard]] const std::string& name() const { return name_; }
  /// Why the last operation that returned 0 did so.
  [[nodiscard]] const Status& status() const { return status_; }

 protected:
  /// Records the failure (about this file unless it names another) and returns 0.
  int fail(const Status& status);
  void setName(std::string name);
  /// Closes; a file being created is given up.
  void giveUp();

 private:
  std::string name_;
  Status status_;
  std::FILE* stream_ = nullptr;
  std::unique_ptr<PendingFile> pending_;
  std::uint64_t size_ = 0;
  std::uint64_t position_ = 0;
  bool writeFailed_ = false;
};

}  // namespace lumo
