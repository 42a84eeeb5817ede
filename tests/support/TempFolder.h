// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace lumo::test {

/// A new empty folder, removed with everything in it at the end of the scope.
class TempFolder {
 public:
  TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder();

  /// With its trailing separator.
  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] std::string file(const std::string& name) const { return path_ + name; }

 private:
  std::string path_;
};

/// The whole content of a file; fails the test when it cannot be read.
[[nodiscard]] std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& content);
[[nodiscard]] bool exists(const std::string& path);

}  // namespace lumo::test
