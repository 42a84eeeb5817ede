// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/TempFolder.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace lumo::test {

TempFolder::TempFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "lumo-test-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
  path_ = pattern + "/";
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string readFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream.good()) << path;
  std::ostringstream content;
  content << stream.rdbuf();
  return content.str();
}

void writeFile(const std::string& path, const std::string& content) {
  std::ofstream stream(path, std::ios::binary | std::ios::trunc);
  stream << content;
  stream.flush();
  EXPECT_TRUE(stream.good()) << path;
}

bool exists(const std::string& path) {
  return std::filesystem::exists(path);
}

}  // namespace lumo::test
