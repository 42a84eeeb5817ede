// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/MappedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "core/ReadAt.h"

namespace lumo {

Status MappedFile::open(const std::string& name) {
  close();
  const int descriptor = ::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0)
    return {errno == ENOENT ? StatusCode::kNotFound : StatusCode::kReadFailed,
            std::string("cannot be opened: ") + std::strerror(errno), name};
  struct stat info {};
  if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
    ::close(descriptor);
    return {StatusCode::kReadFailed, "is not a regular file", name};
  }
  const auto size = static_cast<std::uint64_t>(info.st_size);
  void* const mapped =
      size == 0 ? nullptr
                : ::mmap(nullptr, static_cast<std::size_t>(size), PROT_READ, MAP_SHARED, descriptor, 0);
  const int error = errno;
  if (mapped == MAP_FAILED) {
    ::close(descriptor);
    return {StatusCode::kReadFailed, std::string("cannot be mapped: ") + std::strerror(error), name};
  }
  data_ = static_cast<const std::uint8_t*>(mapped);
  size_ = size;
  name_ = name;
  descriptor_ = descriptor;
  if (size != 0) guard_.watch(mapped, static_cast<std::size_t>(size));
  return {};
}

void MappedFile::close() {
  guard_.forget();
  if (data_ != nullptr) ::munmap(const_cast<std::uint8_t*>(data_), static_cast<std::size_t>(size_));
  if (descriptor_ >= 0) ::close(descriptor_);
  data_ = nullptr;
  size_ = 0;
  descriptor_ = -1;
}

Status MappedFile::check() const {
  if (descriptor_ < 0) return {};
  struct stat info {};
  const bool known = ::fstat(descriptor_, &info) == 0;
  const auto now = static_cast<std::uint64_t>(info.st_size);
  if (known && now < size_)
    return {StatusCode::kReadFailed,
            "was cut short while it was read: it had " + std::to_string(size_) + " bytes, it has " +
                std::to_string(now),
            name_};
  if (!known || guard_.lost())
    return {StatusCode::kReadFailed, "cannot be read any more: its disk or network gives no data", name_};
  return {};
}

Status MappedFile::readAt(std::uint64_t offset, void* bytes, std::size_t size) const {
  if (descriptor_ < 0) return {StatusCode::kReadFailed, "is not open for reading", name_};
  return lumo::readAt(descriptor_, offset, bytes, size).about(name_);
}

void MappedFile::release(std::uint64_t begin, std::uint64_t end) const {
  const auto page = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
  begin = (begin + page - 1) / page * page;
  end = std::min(end, size_) / page * page;
  if (data_ == nullptr || begin >= end) return;
  ::madvise(const_cast<std::uint8_t*>(data_ + begin), static_cast<std::size_t>(end - begin), MADV_DONTNEED);
}

}  // namespace lumo
