// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "MsBuilder.h"
#include "UvfitsFixture.h"
#include "convert/Importer.h"

namespace lumo::test {

/// Writes the set that a builder makes and imports it.
class MsFixture : public ::testing::Test {
 protected:
  Status import(const MsBuilder& builder) {
    std::filesystem::remove_all(input_);
    builder.write(input_);
    return importAgain();
  }
  Status importAgain() {
    options_.outFolder = folder_.file("out");
    return importVisibilities(input_, options_, RunIndicators{}, report_);
  }
  /// Imports a set that must be accepted and reads its only output back.
  UvxReadBack imported(const MsBuilder& builder) {
    const Status status = import(builder);
    EXPECT_TRUE(status.ok()) << status.text();
    EXPECT_EQ(report_.files.size(), 1U);
    return report_.files.empty() ? UvxReadBack() : readUvx(report_.files[0].path);
  }
  /// Imports a set that must be refused without leaving an output; gives the sentence.
  std::string refusal(const MsBuilder& builder) {
    const Status status = import(builder);
    EXPECT_FALSE(status.ok());
    EXPECT_EQ(status.file(), input_);
    EXPECT_TRUE(report_.files.empty());
    EXPECT_FALSE(exists(folder_.file("out/data.uvx")));
    return status.message();
  }
  [[nodiscard]] std::string fileOf(std::size_t index) const {
    return std::filesystem::path(report_.files.at(index).path).filename().string();
  }

  TempFolder folder_;
  std::string input_ = folder_.file("data.ms");
  ImportOptions options_;
  ImportReport report_;
};

/// Path, time of change and bytes of everything below a folder.
inline std::map<std::string, std::pair<std::filesystem::file_time_type, std::string>> everythingIn(
    const std::string& folder) {
  std::map<std::string, std::pair<std::filesystem::file_time_type, std::string>> all;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
    all[entry.path().string()] = {entry.last_write_time(),
                                  entry.is_regular_file() ? readFile(entry.path().string()) : std::string()};
  return all;
}

}  // namespace lumo::test
