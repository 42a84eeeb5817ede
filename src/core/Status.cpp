// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Status.h"

namespace lumo {

const char* statusCodeName(StatusCode code) {
  switch (code) {
    case StatusCode::kOk:
      return "ok";
    case StatusCode::kNotFound:
      return "not-found";
    case StatusCode::kReadFailed:
      return "read-failed";
    case StatusCode::kBadFormat:
      return "bad-format";
    case StatusCode::kUnsupported:
      return "unsupported";
    case StatusCode::kInvalidValue:
      return "invalid-value";
    case StatusCode::kNoData:
      return "no-data";
    case StatusCode::kCancelled:
      return "cancelled";
    case StatusCode::kWriteFailed:
      return "write-failed";
    case StatusCode::kOutOfMemory:
      return "out-of-memory";
  }
  return "unknown";
}

std::string Status::text() const {
  if (ok()) return "ok";
  return file_.empty() ? message_ : file_ + ": " + message_;
}

Status Status::about(const std::string& file) const {
  return file_.empty() ? Status(code_, message_, file) : *this;
}

}  // namespace lumo
