// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace lumo {

/// Rows of cells, for people or for programs.
class TextTable {
 public:
  void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }

  /// Columns padded to their widest cell, two blanks between them. Control bytes become "?".
  [[nodiscard]] std::string aligned() const;
  /// Comma-separated values (RFC 4180, lines ended by a line feed).
  [[nodiscard]] std::string csv() const;

 private:
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace lumo
