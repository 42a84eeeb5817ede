// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/AFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "core/PendingFile.h"
#include "core/ReadAt.h"

namespace lumo {

AFile::AFile() = default;

AFile::~AFile() {
  giveUp();
}

void AFile::giveUp() {
  if (stream_ != nullptr) std::fclose(std::exchange(stream_, nullptr));
  pending_.reset();
  size_ = position_ = 0;
}

int AFile::fail(const Status& status) {
  status_ = status.about(name_);
  return 0;
}

void AFile::setName(std::string name) {
  name_ = std::move(name);
  status_ = Status();
}

int AFile::Open(const std::string& name, int mode) {
  giveUp();
  setName(name);
  writeFailed_ = false;
  if (mode == kCreate) {
    pending_ = std::make_unique<PendingFile>(name);
    Status created = pending_->create();
    if (created.ok()) {
      // The stream gets a descriptor of its own: the lock and the sync of the first outlive it.
      const int descriptor = ::fcntl(pending_->descriptor(), F_DUPFD_CLOEXEC, 0);
      stream_ = descriptor < 0 ? nullptr : ::fdopen(descriptor, "wb");
      if (stream_ == nullptr) {
        created = {StatusCode::kWriteFailed, std::string("cannot be created: ") + std::strerror(errno)};
        if (descriptor >= 0) ::close(descriptor);
      }
    }
    if (created.ok()) return 1;
    pending_.reset();
    return fail(created);
  }
  // Without O_NONBLOCK opening a named pipe would wait for a writer.
  const int descriptor = ::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0)
    return fail({errno == ENOENT ? StatusCode::kNotFound : StatusCode::kReadFailed,
                 std::string("cannot be opened: ") + std::strerror(errno)});
  struct stat info {};
  if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
    ::close(descriptor);
    return fail({StatusCode::kReadFailed, "is not a regular file"});
  }
  stream_ = ::fdopen(descriptor, "rb");
  if (stream_ == nullptr) {
    ::close(descriptor);
    return fail({StatusCode::kReadFailed, "cannot be opened"});
  }
  size_ = static_cast<std::uint64_t>(info.st_size);
  position_ = 0;
  return 1;
}

int AFile::Close() {
  if (stream_ == nullptr) return 1;
  const bool closed = std::fclose(std::exchange(stream_, nullptr)) == 0;
  const auto pending = std::exchange(pending_, nullptr);
  size_ = position_ = 0;
  if (pending == nullptr) return 1;
  if (writeFailed_) return 0;
  if (!closed)
    return fail({StatusCode::kWriteFailed, std::string("cannot be written: ") + std::strerror(errno)});
  const Status committed = pending->commit();
  return committed.ok() ? 1 : fail(committed);
}

int AFile::Read(void* bytes, std::size_t size) {
  if (stream_ == nullptr || pending_ != nullptr)
    return fail({StatusCode::kReadFailed, "is not open for reading"});
  const std::size_t got = size == 0 ? 0 : std::fread(bytes, 1, size, stream_);
  position_ += got;
  if (got != size) return fail({StatusCode::kBadFormat, "ends before it should"});
  return 1;
}

int AFile::Write(const void* bytes, std::size_t size) {
  if (stream_ == nullptr || pending_ == nullptr)
    return fail({StatusCode::kWriteFailed, "is not open for writing"});
  if (writeFailed_) return 0;
  if (size != 0 && std::fwrite(bytes, 1, size, stream_) != size) {
    writeFailed_ = true;
    return fail({StatusCode::kWriteFailed, std::string("cannot be written: ") + std::strerror(errno)});
  }
  return 1;
}

Status AFile::readAt(std::uint64_t offset, void* bytes, std::size_t size) const {
  if (stream_ == nullptr || pending_ != nullptr)
    return {StatusCode::kReadFailed, "is not open for reading", name_};
  return lumo::readAt(::fileno(stream_), offset, bytes, size).about(name_);
}

int AFile::Rewind() {
  position_ = 0;
  if (stream_ != nullptr && std::fseek(stream_, 0, SEEK_SET) == 0) return 1;
  writeFailed_ = true;
  // Of a file being created the bytes that were still in the buffer could not be written.
  return fail({StatusCode::kWriteFailed, pending_ != nullptr
                                             ? std::string("cannot be written: ") + std::strerror(errno)
                                             : "cannot be rewound"});
}

}  // namespace lumo
