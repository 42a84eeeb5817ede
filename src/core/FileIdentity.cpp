// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/FileIdentity.h"

#include <sys/stat.h>

namespace lumo {

bool identifyFile(const std::string& path, FileIdentity& identity) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return false;
  identity = {static_cast<std::uint64_t>(info.st_dev), static_cast<std::uint64_t>(info.st_ino)};
  return true;
}

bool isSameFile(const std::string& one, const std::string& other) {
  FileIdentity first;
  FileIdentity second;
  return identifyFile(one, first) && identifyFile(other, second) && first == second;
}

}  // namespace lumo
