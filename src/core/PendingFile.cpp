// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/PendingFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <random>
#include <utility>

#include "core/AFile.h"
#include "core/Leftovers.h"
#include "core/Paths.h"
#include "core/TextForm.h"

namespace lumo {

namespace {

std::string hexadecimal(unsigned value) {
  char digits[2 * sizeof value];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, 16).ptr;
  return std::string(sizeof digits - static_cast<std::size_t>(end - digits), '0').append(digits, end);
}

std::string folderOf(const std::string& path) {
  const std::string folder = getfPath(path);
  return folder.empty() ? "." : folder;
}

/// Some file systems have nothing to do for a sync and say that they cannot.
bool synced(int descriptor) {
  return ::fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP;
}

/// A folder that may not be read cannot be opened for a sync: then the name comes to the disk with time.
bool syncFolder(const std::string& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return true;
  const bool done = synced(descriptor);
  const int error = errno;
  ::close(descriptor);
  errno = error;
  return done;
}

}  // namespace

PendingFile::PendingFile(std::string target) : target_(std::move(target)) {
  chooseName();
}

PendingFile::~PendingFile() {
  if (!done_) ::unlink(path_.c_str());
  if (descriptor_ >= 0) ::close(descriptor_);
}

void PendingFile::chooseName() {
  // Random, not the process number: machines that share a work folder, and containers whose processes are
  // always number 1, would meet their own left-overs.
  std::random_device random;
  path_ =
      getfPath(target_) + kTemporaryPrefix + hexadecimal(random()) + hexadecimal(random()) + kTemporarySuffix;
}

bool PendingFile::hold(int descriptor) {
  struct stat info {};
  const bool locks = hasReliableLocks(descriptor);
  if ((locks && ::flock(descriptor, LOCK_EX | LOCK_NB) != 0) || ::fstat(descriptor, &info) != 0 ||
      info.st_nlink == 0) {
    ::close(descriptor);
    return false;
  }
  descriptor_ = descriptor;
  return true;
}

Status PendingFile::create() {
  const auto failed = [this](const std::string& why) {
    return Status(StatusCode::kWriteFailed, "cannot be created: " + why, target_);
  };
  if (Status status = checkNameLength(target_); !status.ok()) return status;
  constexpr int kAttempts = 100;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const int descriptor = ::open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0 && errno != EEXIST) return failed(std::strerror(errno));
    if (descriptor >= 0 && hold(descriptor)) return {};
    chooseName();
  }
  return failed("no temporary name is free");
}

Status PendingFile::commit() {
  const auto failed = [this](const char* what) {
    return Status(StatusCode::kWriteFailed, std::string(what) + std::strerror(errno), target_);
  };
  if (descriptor_ < 0) descriptor_ = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor_ >= 0 && !synced(descriptor_)) return failed("cannot be written: ");
  if (std::rename(path_.c_str(), target_.c_str()) != 0) return failed("cannot be created: ");
  done_ = true;
  return syncFolder(folderOf(target_)) ? Status() : failed("its name cannot be written to the disk: ");
}

Status checkNameLength(const std::string& target) {
  const long longest = ::pathconf(folderOf(target).c_str(), _PC_NAME_MAX);
  const auto length = static_cast<std::int64_t>(fileName(target).size());
  if (longest <= 0 || length <= longest) return {};
  return {StatusCode::kWriteFailed,
          "cannot be created: its name has " + toStr(length) + " bytes, the folder takes names of " +
              toStr(std::int64_t{longest}),
          target};
}

Status writeWholeFile(const std::string& target, const std::string& content) {
  removeLeftovers(folderOf(target));
  AFile file;
  if (file.Open(target, AFile::kCreate) == 0 || file.Write(content.data(), content.size()) == 0 ||
      file.Close() == 0)
    return file.status();
  return {};
}

}  // namespace lumo
