// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Paths.h"

#include <filesystem>
#include <system_error>

namespace lumo {

std::string getfPath(const std::string& path) {
  const auto last = path.find_last_of(kDirSeparator);
  return last == std::string::npos ? std::string() : path.substr(0, last + 1);
}

std::string fileName(const std::string& path) {
  const auto last = path.find_last_of(kDirSeparator);
  return last == std::string::npos ? path : path.substr(last + 1);
}

std::string getExePath() {
  std::error_code error;
  const auto exe = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::string() : getfPath(exe.string());
}

std::string withSeparator(const std::string& folder) {
  if (folder.empty() || folder.back() == kDirSeparator) return folder;
  return folder + kDirSeparator;
}

}  // namespace lumo
