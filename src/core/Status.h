// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <utility>

namespace lumo {

/// What kind of thing went wrong; front ends map it to exit codes and JSON.
enum class StatusCode {
  kOk,
  kNotFound,      ///< a file or folder is not there
  kReadFailed,    ///< it is there but cannot be read
  kBadFormat,     ///< its content breaks the format's rules
  kUnsupported,   ///< its content is valid but not something this program handles
  kInvalidValue,  ///< a parameter is outside its range
  kNoData,        ///< nothing usable is left to work on
  kCancelled,     ///< the user asked to stop
  kWriteFailed,   ///< a file could not be written
  kOutOfMemory,
};

/// The text form used in JSON, e.g. "bad-format".
[[nodiscard]] const char* statusCodeName(StatusCode code);

/// Outcome of an operation with the reason of a failure: a code, a sentence for an astronomer (what, where,
/// expected, found) and the file concerned, if any. Operations with int results keep one beside the result.
class [[nodiscard]] Status {
 public:
  Status() = default;
  Status(StatusCode code, std::string message, std::string file = {})
      : code_(code), message_(std::move(message)), file_(std::move(file)) {}

  [[nodiscard]] bool ok() const { return code_ == StatusCode::kOk; }
  [[nodiscard]] StatusCode code() const { return code_; }
  [[nodiscard]] const std::string& message() const { return message_; }
  [[nodiscard]] const std::string& file() const { return file_; }
  /// One line for a person: "FILE: message", or the message alone.
  [[nodiscard]] std::string text() const;
  /// The same status, about `file` if it names none yet.
  [[nodiscard]] Status about(const std::string& file) const;

 private:
  StatusCode code_ = StatusCode::kOk;
  std::string message_;
  std::string file_;
};

}  // namespace lumo
