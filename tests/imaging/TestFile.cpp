// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/TestFile.h"

#include <gtest/gtest.h>

#include <utility>

namespace lumo::test {

namespace {

UvxSelection makeSelection(std::int32_t id, const std::vector<double>& frequencies) {
  UvxSelection selection{id, {}};
  for (const double frequency : frequencies) selection.bands.push_back({frequency, 1e6});
  return selection;
}

}  // namespace

TestFile::TestFile(const std::vector<double>& frequencies, std::uint32_t channels) {
  content.shape = {static_cast<std::uint32_t>(frequencies.size()), channels, 1};
  content.unit = "JY";
  content.sources = {{1, "0716+714", UvxFrame::kIcrs, 110.472702, 71.343434, 2000.0}};
  content.products = {1};
  addSelection(1, frequencies);
}

void TestFile::addSelection(std::int32_t id, const std::vector<double>& frequencies) {
  content.selections.push_back(makeSelection(id, frequencies));
  used = all();
}

void TestFile::storeHands() {
  content.products = {-1, -2};
  content.shape.products = 2;
  mix = AStokesMix(StokesQuantity::kI, 0, 1);
}

TestFile::Group& TestFile::add(double u, double v, std::vector<AUVXComplex> values) {
  Group group;
  group.record.freqSel = static_cast<std::int8_t>(content.selections[0].id);
  group.record.u = static_cast<float>(u);
  group.record.v = static_cast<float>(v);
  group.record.source = static_cast<std::int16_t>(source);
  group.values = std::move(values);
  groups.push_back(std::move(group));
  return groups.back();
}

ABitArray TestFile::all() const {
  ABitArray bits(static_cast<std::int32_t>(content.selections.size()));
  bits = 1;
  return bits;
}

void writeTestFile(const TestFile& file, const std::string& path) {
  UvxWriter writer;
  ASSERT_TRUE(writer.begin(path, file.content).ok());
  for (const TestFile::Group& group : file.groups) {
    const Status appended = writer.append(group.record, group.values);
    ASSERT_TRUE(appended.ok()) << appended.text();
  }
  ASSERT_TRUE(writer.finish().ok());
}

VisibilityInputs listTestFiles(const TempFolder& folder, const std::vector<TestFile>& files) {
  VisibilityInputs inputs;
  for (const TestFile& file : files) {
    const std::int32_t i = inputs.count();
    const std::string path = folder.file(std::to_string(i) + ".uvx");
    writeTestFile(file, path);
    AUVXFile opened;
    EXPECT_EQ(opened.Open(path, AFile::kRead), 1) << opened.status().text();
    inputs.names.InsertAt(i, path);
    inputs.tables.InsertAt(i, AUVXFqTbl(opened, file.source));
    inputs.selections.InsertAt(i, file.used);
    inputs.mixes.InsertAt(i, file.mix);
    inputs.sources.InsertAt(i, file.source);
  }
  return inputs;
}

}  // namespace lumo::test
