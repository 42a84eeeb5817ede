// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <signal.h>
#include <sys/resource.h>

#include <cstdint>

namespace lumo::test {

/// While it lives, writing past the first `bytes` of any file fails as it does on a full disk. It holds for
/// the whole process, so keep the scope short.
class FullDisk {
 public:
  explicit FullDisk(std::uint64_t bytes);
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;
  ~FullDisk();

 private:
  rlimit oldLimit_{};
  void (*oldHandler_)(int) = nullptr;
};

}  // namespace lumo::test
