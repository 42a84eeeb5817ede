// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Leftovers.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string_view>

#include "core/PendingFile.h"

namespace lumo {

namespace {

constexpr std::size_t kDigits = 16;
constexpr std::time_t kQuietSeconds = std::time_t{24} * 3600;

/// Magic numbers of file systems on disks of this machine: ext2/3/4, XFS, Btrfs, tmpfs, overlay, F2FS, ZFS,
/// bcachefs. On SMB a lock would even keep a library from writing through a descriptor of its own.
constexpr std::array<std::uint32_t, 8> kLocalSystems = {0xEF53,     0x58465342, 0x9123683E, 0x01021994,
                                                        0x794C7630, 0xF2F52010, 0x2FC12FC1, 0xCA451A4E};

bool isTemporaryName(std::string_view name) {
  const std::string_view prefix(PendingFile::kTemporaryPrefix);
  const std::string_view suffix(kTemporarySuffix);
  if (name.size() != prefix.size() + kDigits + suffix.size() || !name.starts_with(prefix) ||
      !name.ends_with(suffix))
    return false;
  const std::string_view digits = name.substr(prefix.size(), kDigits);
  return digits.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

bool isAbandoned(int descriptor) {
  struct stat info {};
  if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) return false;
  if (hasReliableLocks(descriptor)) return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
  return std::time(nullptr) - info.st_mtim.tv_sec > kQuietSeconds;
}

}  // namespace

bool hasReliableLocks(int descriptor) {
  struct statfs info {};
  return ::fstatfs(descriptor, &info) == 0 &&
         std::find(kLocalSystems.begin(), kLocalSystems.end(), static_cast<std::uint32_t>(info.f_type)) !=
             kLocalSystems.end();
}

int removeLeftovers(const std::string& folder) {
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(folder.empty() ? "." : folder.c_str()),
                                                    ::closedir);
  if (entries == nullptr) return 0;
  const int place = ::dirfd(entries.get());
  int removed = 0;
  while (const dirent* const entry = ::readdir(entries.get())) {
    if (!isTemporaryName(entry->d_name)) continue;
    const int descriptor = ::openat(place, entry->d_name, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) continue;
    // Under the lock: a writer that comes between making its file and locking it finds it gone and makes
    // another.
    if (isAbandoned(descriptor) && ::unlinkat(place, entry->d_name, 0) == 0) ++removed;
    ::close(descriptor);
  }
  return removed;
}

}  // namespace lumo
