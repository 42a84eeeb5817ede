// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/ReadAt.h"

#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace lumo {

Status readAt(int descriptor, std::uint64_t offset, void* bytes, std::size_t size) {
  auto* to = static_cast<char*>(bytes);
  while (size > 0) {
    const ssize_t got = ::pread(descriptor, to, size, static_cast<off_t>(offset));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return {StatusCode::kReadFailed, std::string("cannot be read: ") + std::strerror(errno)};
    if (got == 0) return {StatusCode::kBadFormat, "ends before it should"};
    to += got;
    offset += static_cast<std::uint64_t>(got);
    size -= static_cast<std::size_t>(got);
  }
  return {};
}

}  // namespace lumo
