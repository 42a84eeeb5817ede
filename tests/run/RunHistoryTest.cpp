// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <map>

#include "RunSample.h"
#include "core/TextForm.h"
#include "core/Version.h"
#include "run/RunHistory.h"
#include "run/UvxFileList.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

// What a program that reads the history back would do.
std::map<std::string, std::string> readBack(const std::vector<std::string>& lines) {
  std::map<std::string, std::string> values;
  for (const std::string& line : lines) {
    const auto sign = line.find(" = ");
    EXPECT_NE(sign, std::string::npos) << line;
    EXPECT_TRUE(values.emplace(line.substr(0, sign), line.substr(sign + 3)).second) << line;
  }
  return values;
}

TEST(RunHistoryTest, EveryParameterReadsBackToTheSameValue) {
  RunParameters parameters;
  parameters.gain = 1.0 / 3.0;
  parameters.referenceMhz = 1499.9999999999998;
  parameters.variableGain = true;
  parameters.prefix = "a = b";
  ABMakeParameters imaging;
  imaging.uvScaleU = 1e5 / 7;
  imaging.shiftY = -0.1;
  imaging.taperParam4 = 5e-324;
  imaging.halfSizeY = 128;
  auto values = readBack(runHistory(parameters, imaging, VisibilityInputs(), {}));
  EXPECT_EQ(values["PROGRAM"], programVersion());
  EXPECT_EQ(values["ITER"], "1000");
  EXPECT_EQ(textToDouble(values["GAIN"]), 1.0 / 3.0);
  EXPECT_EQ(textToDouble(values["FQCENTER"]), 1499.9999999999998);
  EXPECT_EQ(values["NONREG"], "0");
  EXPECT_EQ(values["VARGAIN"], "1");
  EXPECT_EQ(values["PREFIX"], "a = b");
  EXPECT_EQ(values["FOLDER"], "0");
  EXPECT_EQ(textToDouble(values["uvScaleU"]), 1e5 / 7);
  EXPECT_EQ(textToDouble(values["shiftY"]), -0.1);
  EXPECT_EQ(textToDouble(values["taperParam4"]), 5e-324);
  EXPECT_EQ(values["halfSizeY"], "128");
  EXPECT_EQ(values["NUVX"], "0");
  // Program, 11 run parameters, 20 imaging parameters, the number of files.
  EXPECT_EQ(values.size(), 1u + 11 + 20 + 1);
}

TEST(RunHistoryTest, TheErrorMapHasALineOnlyWhereItWasAskedFor) {
  RunParameters parameters;
  const auto without = runHistory(parameters, ABMakeParameters(), VisibilityInputs(), {});
  parameters.indexError = true;
  auto values = readBack(runHistory(parameters, ABMakeParameters(), VisibilityInputs(), {}));
  EXPECT_EQ(values["INDEXERROR"], "1");
  EXPECT_EQ(values.size(), without.size() + 1);
}

TEST(RunHistoryTest, EveryFileIsToldWithSizeChecksumAndSelections) {
  const test::TempFolder folder;
  test::UvxSample sample;
  sample.selections.clear();
  for (int i = 0; i < 9; ++i) sample.selections.push_back({i, {1.4e9 + i * 1e7}});
  test::writeUvx(folder.file("a.uvx"), sample);
  test::writeUvx(folder.file("b.uvx"), sample);
  test::writeUvx(folder.file("c.uvx"), sample);
  UvxFileList files;
  for (const char* name : {"a.uvx", "b.uvx", "c.uvx"}) ASSERT_EQ(files.AddFile(folder.file(name)), 1);
  for (const int bit : {3, 4, 6}) files.setSelected(1, bit, false);
  for (int bit = 0; bit < 9; ++bit) files.setSelected(2, bit, false);
  auto values = readBack(runHistory(RunParameters(), ABMakeParameters(), files.inputs(),
                                    {{123, 0x00abcdefu}, {std::uint64_t{1} << 40, 0xFFFFFFFFu}, {0, 0}}));
  EXPECT_EQ(values["NUVX"], "3");
  EXPECT_EQ(values["UVX0"], folder.file("a.uvx"));
  EXPECT_EQ(values["UVX0.BYTES"], "123");
  EXPECT_EQ(values["UVX0.CRC32"], "00abcdef");
  EXPECT_EQ(values["UVX0.SELECTED"], "all");
  EXPECT_EQ(values["UVX1.BYTES"], "1099511627776");
  EXPECT_EQ(values["UVX1.CRC32"], "ffffffff");
  EXPECT_EQ(values["UVX1.SELECTED"], "0-2,5,7-8");
  EXPECT_EQ(values["UVX2.SELECTED"], "none");
}

}  // namespace
}  // namespace lumo
