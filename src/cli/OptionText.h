// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/Status.h"

namespace lumo {

// Values of options that hold more than one number. Failures are kInvalidValue and name the option.

/// "A,B", or "A" alone for two equal numbers.
[[nodiscard]] Status parseNumberOrPair(const std::string& option, const std::string& text, double& a,
                                       double& b);
/// "A,B", both required.
[[nodiscard]] Status parsePair(const std::string& option, const std::string& text, double& a, double& b);
/// "A,B" or "A" of whole numbers.
[[nodiscard]] Status parseWholeNumbers(const std::string& option, const std::string& text, std::int32_t& a,
                                       std::int32_t& b);
/// "A,B,...", at least one number.
[[nodiscard]] Status parseNumberList(const std::string& option, const std::string& text,
                                     std::vector<double>& values);

/// One "--select FILE_NUMBER:ID[,ID...]" or "FILE_NUMBER:none".
struct SelectionText {
  std::int64_t file = 0;          ///< counted from 1
  std::vector<std::int64_t> ids;  ///< empty for "none"
};
[[nodiscard]] Status parseSelection(const std::string& text, SelectionText& selection);

}  // namespace lumo
