// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

#include "io/UvxWriter.h"

namespace lumo::fuzz {

/// A visibility file of one source with IDs 1, 2, ... for its selections and the products RR and LL.
[[nodiscard]] UvxContent sampleContent(std::uint32_t ifs, std::uint32_t channels, std::int32_t selections);
/// Writes it with `groups` groups, the selections by turns. Ends the process when it cannot be written.
void writeSampleUvx(const std::string& name, const UvxContent& content, int groups);
/// The same of two IFs, two channels and three selections: what the lists of the targets name.
void writeSampleUvx(const std::string& name);

/// Writes a map of `rows` x `columns` pixels of this program.
void writeSampleMap(const std::string& name, std::uint32_t rows, std::uint32_t columns);

}  // namespace lumo::fuzz
