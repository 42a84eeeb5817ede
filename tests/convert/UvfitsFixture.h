// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "UvfitsBuilder.h"
#include "convert/ImportReport.h"
#include "convert/UvfitsImporter.h"
#include "core/LittleEndian.h"
#include "core/Progress.h"
#include "io/AUVXComplex.h"
#include "io/AUVXFile.h"
#include "io/AUVXFqTbl.h"
#include "io/AUVXSources.h"
#include "support/TempFolder.h"

namespace lumo::test {

/// What stands in an imported UVX file.
struct UvxReadBack {
  struct Group {
    UvxRecord record;
    std::vector<AUVXComplex> visibilities;
  };
  std::vector<Group> groups;
  AUVXFqTbl frequencies;
  std::vector<AUVXSourceItem> sources;
  std::string unit;
  std::string history;
  std::string antennaTable;
  double uMax = 0;
};

inline std::string tableText(const AUVXFile& file, const char* name) {
  const auto table = file.GetTable(name);
  return table ? std::string(reinterpret_cast<const char*>(table->data()), table->size()) : std::string();
}

inline UvxReadBack readUvx(const std::string& path) {
  UvxReadBack back;
  AUVXFile file;
  const int opened = file.Open(path, AFile::kRead);
  EXPECT_EQ(opened, 1) << file.status().text();
  if (opened != 1) return back;
  const AUVXSources sources(file);
  for (std::int32_t i = 0; i < sources.count(); ++i) back.sources.push_back(sources[i]);
  back.frequencies = AUVXFqTbl(file, back.sources.at(0).id);
  back.unit = file.unit();
  back.uMax = file.uMax();
  back.history = tableText(file, "HI");
  back.antennaTable = tableText(file, "AN");
  for (std::uint64_t g = 0; g < file.groupCount(); ++g) {
    UvxReadBack::Group group{UvxRecord::load(file.groupAt(g)), {}};
    for (std::uint64_t i = 0; i < file.shape().visibilities(); ++i) {
      const std::uint8_t* const at = file.groupAt(g) + UvxRecord::kBytes + 12 * i;
      group.visibilities.emplace_back(loadLittle<float>(at), loadLittle<float>(at + 4),
                                      loadLittle<float>(at + 8));
    }
    back.groups.push_back(std::move(group));
  }
  return back;
}

/// Writes what a builder makes and imports it.
class UvfitsFixture : public ::testing::Test {
 protected:
  Status import(const UvfitsBuilder& builder) { return importBytes(builder.bytes()); }
  Status importBytes(const std::string& bytes) {
    writeFile(input_, bytes);
    options_.outFolder = folder_.file("out");
    return importUvfits(input_, options_, RunIndicators{}, report_);
  }
  /// Imports a file that must be accepted and reads its only output back.
  UvxReadBack imported(const UvfitsBuilder& builder) {
    const Status status = import(builder);
    EXPECT_TRUE(status.ok()) << status.text();
    EXPECT_EQ(report_.files.size(), 1U);
    return report_.files.empty() ? UvxReadBack() : readUvx(report_.files[0].path);
  }
  /// Imports a file that must be refused without leaving an output; gives the sentence.
  std::string refusal(const UvfitsBuilder& builder) {
    const Status status = import(builder);
    EXPECT_FALSE(status.ok());
    EXPECT_EQ(status.file(), input_);
    EXPECT_TRUE(report_.files.empty());
    EXPECT_FALSE(exists(folder_.file("out/data.uvx")));
    return status.message();
  }

  TempFolder folder_;
  std::string input_ = folder_.file("data.uvf");
  ImportOptions options_;
  ImportReport report_;
};

}  // namespace lumo::test
