// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <limits>
#include <string>

namespace lumo {

/// What the system can give to this process, in bytes.
struct MemoryRoom {
  static constexpr std::uint64_t kUnknown = std::numeric_limits<std::uint64_t>::max();

  /// The process can never hold more than this: the smallest of physical memory and swap space, the limits of
  /// its control groups (with the swap space that these allow), and its own limits on address space and data.
  std::uint64_t most = kUnknown;
  /// What sets it: "the memory and swap space of this machine", ...
  std::string mostIs;
  /// What it could get now without anything being swapped out: MemAvailable, or less where a control group
  /// has less left.
  std::uint64_t free = kUnknown;
};

/// Asks the system (Linux; elsewhere everything is unknown). What a system does not tell is left out of the
/// minimum. `root` stands for the root folder, so that a test can make a system of its own.
[[nodiscard]] MemoryRoom memoryRoom(const std::string& root = {});

/// "12.3 GB": bytes in powers of ten, three digits.
[[nodiscard]] std::string bytesText(std::uint64_t bytes);

}  // namespace lumo
