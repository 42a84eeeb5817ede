// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumo {

// Text in FITS cards, which hold printable ASCII only (docs/formats.md).

/// Bytes as printable ASCII: "%", every byte outside 0x20..0x7E, and a blank at the end become %XX.
[[nodiscard]] std::string toFitsText(std::string_view bytes);
/// The bytes of such a text. A "%" without two hexadecimal digits behind it stands for itself.
[[nodiscard]] std::string fromFitsText(std::string_view text);
/// At most `limit` characters of an escaped text, never ending inside a %XX.
[[nodiscard]] std::string_view cutFitsText(std::string_view text, std::size_t limit);

/// The HISTORY lines (at most 72 characters each) of one entry: every line but the last ends in a "%" that
/// says that the next one continues it.
[[nodiscard]] std::vector<std::string> toHistoryLines(std::string_view entry);
/// The entries of HISTORY lines written by toHistoryLines().
[[nodiscard]] std::vector<std::string> fromHistoryLines(const std::vector<std::string>& lines);

}  // namespace lumo
