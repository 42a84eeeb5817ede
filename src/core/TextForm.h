// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace lumo {

// Numbers as text and back. None of these depends on the process's locale: a desktop program may set a locale
// with a decimal comma, and files written under it must still read back.

/// The shortest text that reads back to the same double; "nan", "inf", "-inf" for values that are not finite.
[[nodiscard]] std::string valToStr(double value);
/// `digits` significant digits, general notation ("%.*g").
[[nodiscard]] std::string nValToStr(double value, int digits);
/// Six significant digits, general notation ("%g", the default of a text stream).
[[nodiscard]] std::string generalText(double value);
[[nodiscard]] std::string toStr(std::int64_t value);
/// What printf would print of numbers and short names, cut after 511 bytes. For tables that people read: the
/// decimal point is that of the process's locale, which the front ends leave at "C".
[[nodiscard, gnu::format(printf, 1, 2)]] std::string formatted(const char* format, ...);

/// The text with every control byte replaced by "?": what came from a file must not steer a terminal.
[[nodiscard]] std::string printable(std::string_view text);

/// One field of comma-separated values (RFC 4180): in quotation marks where it holds a comma, a quotation
/// mark or a line end.
[[nodiscard]] std::string csvField(std::string_view text);

/// Number at the start of the text after white space, 0 if there is none; what follows is ignored.
[[nodiscard]] double textToDouble(std::string_view text);
/// Integer at the start of the text after white space, 0 if there is none; clamped to the 32-bit range.
[[nodiscard]] std::int32_t textToInt(std::string_view text);
/// Reads the whole text as one number; false (and `value` untouched) if anything else stands in it.
[[nodiscard]] bool parseDouble(std::string_view text, double& value);
/// Reads the whole text as one decimal integer; false (and `value` untouched) otherwise or out of range.
[[nodiscard]] bool parseInt(std::string_view text, std::int64_t& value);

}  // namespace lumo
