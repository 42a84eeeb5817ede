// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/PendingFile.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <random>
#include <utility>

#include "core/AFile.h"
#include "core/Paths.h"

namespace lumo {

namespace {

std::string hexadecimal(unsigned value) {
  char digits[2 * sizeof value];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, 16).ptr;
  return std::string(sizeof digits - static_cast<std::size_t>(end - digits), '0').append(digits, end);
}

}  // namespace

PendingFile::PendingFile(std::string target) : target_(std::move(target)) {
  // Random, not the process number: machines that share a work folder, and containers whose processes are
  // always number 1, would meet their own left-overs.
  std::random_device random;
  path_ = getfPath(target_) + kTemporaryPrefix + hexadecimal(random()) + hexadecimal(random()) + ".tmp";
}

PendingFile::~PendingFile() {
  if (!done_) std::remove(path_.c_str());
}

Status PendingFile::commit() {
  if (std::rename(path_.c_str(), target_.c_str()) != 0)
    return {StatusCode::kWriteFailed, std::string("cannot be created: ") + std::strerror(errno), target_};
  done_ = true;
  return {};
}

Status writeWholeFile(const std::string& target, const std::string& content) {
  AFile file;
  if (file.Open(target, AFile::kCreate) == 0 || file.Write(content.data(), content.size()) == 0 ||
      file.Close() == 0)
    return file.status();
  return {};
}

}  // namespace lumo
