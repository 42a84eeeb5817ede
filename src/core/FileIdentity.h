// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace lumo {

/// What tells one file from every other on this machine, whatever its names: device and number there.
using FileIdentity = std::pair<std::uint64_t, std::uint64_t>;

/// The identity of the file that a path leads to, through links. False when there is none.
[[nodiscard]] bool identifyFile(const std::string& path, FileIdentity& identity);
/// Whether two paths lead to one file. False where either leads to none.
[[nodiscard]] bool isSameFile(const std::string& one, const std::string& other);

}  // namespace lumo
