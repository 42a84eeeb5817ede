// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "core/Status.h"

namespace lumo {

/// A text profile: one ini file of sections with KEY=value lines, names in either case.
///
/// Strings keep every byte but a line end and NUL, which are refused: a value that an ini reader would trim
/// or unquote (blanks at an end, enclosing quotes) is written between double quotes, and one pair of
/// enclosing double quotes is taken off when a value is read. Comments and keys of others stay as they are.
///
/// The file is read at the first call and written anew (as a PendingFile) by every write call, or once by
/// flush() after hold(). A file that is there but is no profile (NUL bytes, above kMaxBytes, unreadable)
/// gives every fallback and is never written to. Not for several threads.
class Profile {
 public:
  static constexpr std::size_t kMaxBytes = std::size_t{8} << 20;

  explicit Profile(std::string path);
  Profile(const Profile&) = delete;
  Profile& operator=(const Profile&) = delete;
  ~Profile();

  /// The integer at the start of the value, 0 if it starts with none; `fallback` when the key is missing.
  [[nodiscard]] std::int32_t GetProfileInt(const std::string& section, const std::string& key,
                                           std::int32_t fallback);
  [[nodiscard]] std::string GetProfileString(const std::string& section, const std::string& key,
                                             const std::string& fallback);
  /// Return 1, or 0 with the reason in status() and the file as it was.
  int WriteProfileInt(const std::string& section, const std::string& key, std::int32_t value);
  int WriteProfileString(const std::string& section, const std::string& key, const std::string& value);

  /// Collects the writes that follow in memory, where they succeed, until flush() writes them all at once.
  void hold() { held_ = true; }
  int flush();

  /// Why the last operation that returned 0, or the reading of the file, failed.
  [[nodiscard]] const Status& status() const { return status_; }
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  struct Content;

  /// Reads the file once; false when it must not be touched.
  bool ready();
  [[nodiscard]] Status load();
  int save();
  int fail(const Status& status);

  std::string path_;
  Status status_;
  bool held_ = false;
  bool usable_ = false;
  std::unique_ptr<Content> content_;  ///< null until the file was read
};

}  // namespace lumo
