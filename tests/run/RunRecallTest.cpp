// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "RunSample.h"
#include "run/RunHistory.h"
#include "run/RunRecall.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using testing::HasSubstr;

class RunRecallTest : public testing::Test {
 protected:
  RunRecallTest() {
    test::UvxSample sample;
    sample.selections.clear();
    for (int i = 0; i < 9; ++i) sample.selections.push_back({i, {1.4e9 + i * 1e7}});
    for (const char* const name : {"a.uvx", "b.uvx"}) {
      test::writeUvx(folder_.file(name), sample);
      EXPECT_EQ(files_.AddFile(folder_.file(name)), 1);
    }
    for (const int bit : {3, 4, 6}) files_.setSelected(1, bit, false);
  }
  [[nodiscard]] std::vector<std::string> history(const RunParameters& parameters = {},
                                                 const ABMakeParameters& imaging = {}) const {
    return runHistory(parameters, imaging, files_.inputs(), {{123, 0x00abcdefu}, {456, 0xfedcba98u}});
  }
  /// The history with the value of one line replaced.
  [[nodiscard]] std::vector<std::string> historyWith(const std::string& name,
                                                     const std::string& value) const {
    std::vector<std::string> lines = history();
    for (std::string& line : lines)
      if (line.starts_with(name + " = ")) line = name + " = " + value;
    return lines;
  }

  test::TempFolder folder_;
  UvxFileList files_;
  RecalledRun run_;
};

TEST_F(RunRecallTest, EveryValueComesBackAsItWas) {
  RunParameters parameters;
  parameters.iterations = 77;
  parameters.gain = 1.0 / 3;
  parameters.referenceMhz = 1439.9999999999998;
  parameters.indexMin = -0x1p-1060;
  parameters.nonNegative = true;
  parameters.prefix = "a = b";
  parameters.folder = "";
  ABMakeParameters imaging;
  imaging.uvLimitU = 2;
  imaging.uvScaleV = 1e6 / 7;
  imaging.shiftX = -0.1;
  imaging.halfSizeX = 16;
  imaging.kernelType = 3;
  imaging.useVisWeights = 0;
  ASSERT_TRUE(recallRun(history(parameters, imaging), run_).ok());
  EXPECT_EQ(run_.parameters.iterations, 77);
  EXPECT_EQ(run_.parameters.gain, 1.0 / 3);
  EXPECT_EQ(run_.parameters.referenceMhz, 1439.9999999999998);
  EXPECT_EQ(run_.parameters.indexMin, -0x1p-1060);
  EXPECT_TRUE(run_.parameters.nonNegative);
  EXPECT_FALSE(run_.parameters.variableGain);
  EXPECT_EQ(run_.parameters.prefix, "a = b");
  EXPECT_EQ(run_.parameters.folder, "");
  EXPECT_EQ(run_.imaging.uvLimitU, 2);
  EXPECT_EQ(run_.imaging.uvScaleV, 1e6 / 7);
  EXPECT_EQ(run_.imaging.shiftX, -0.1);
  EXPECT_EQ(run_.imaging.halfSizeX, 16);
  EXPECT_EQ(run_.imaging.kernelType, 3);
  EXPECT_EQ(run_.imaging.useVisWeights, 0);
  ASSERT_EQ(run_.inputs.size(), 2u);
  EXPECT_EQ(run_.inputs[1].name, folder_.file("b.uvx"));
  EXPECT_EQ(run_.inputs[1].facts.bytes, 456u);
  EXPECT_EQ(run_.inputs[1].facts.crc, 0xfedcba98u);
}

TEST_F(RunRecallTest, WhatIsAskedForBesideComesBackAndIsNotThereWithoutItsLine) {
  RunParameters parameters;
  parameters.indexError = true;
  parameters.fastClean = true;
  ASSERT_TRUE(recallRun(history(parameters), run_).ok());
  EXPECT_TRUE(run_.parameters.indexError);
  EXPECT_TRUE(run_.parameters.fastClean);
  ASSERT_TRUE(recallRun(history(), run_).ok());
  EXPECT_FALSE(run_.parameters.indexError);
  EXPECT_FALSE(run_.parameters.fastClean);
  std::vector<std::string> lines = history(parameters);
  lines.push_back("INDEXERROR = 0");
  EXPECT_THAT(recallRun(lines, run_).text(), HasSubstr("more than one line INDEXERROR"));
}

TEST_F(RunRecallTest, TheHistoryOfTheRecalledRunIsTheHistory) {
  ASSERT_TRUE(recallRun(history(), run_).ok());
  std::vector<InputFileFacts> facts;
  for (const RecalledInput& input : run_.inputs) facts.push_back(input.facts);
  EXPECT_EQ(runHistory(run_.parameters, run_.imaging, files_.inputs(), facts), history());
}

TEST_F(RunRecallTest, SelectionsComeBack) {
  ASSERT_TRUE(recallRun(history(), run_).ok());
  const ABitArray before = files_.inputs().selections[1];
  UvxFileList again;
  for (const RecalledInput& input : run_.inputs) ASSERT_EQ(again.AddFile(input.name), 1);
  ASSERT_TRUE(recallSelections(run_, again).ok());
  EXPECT_EQ(again.inputs().selections[1], before);
  EXPECT_EQ(again.inputs().selections[0].setCount(), 9);
  run_.inputs[0].selected = "none";
  ASSERT_TRUE(recallSelections(run_, again).ok());
  EXPECT_EQ(again.inputs().selections[0].setCount(), 0);
}

TEST_F(RunRecallTest, SelectionsThatAreNoRowsOfTheFileAreRefused) {
  ASSERT_TRUE(recallRun(history(), run_).ok());
  for (const char* const text : {"9", "0-9", "3-2", "-1", "", ",", "0,", "x", "1-2-3"}) {
    run_.inputs[0].selected = text;
    EXPECT_FALSE(recallSelections(run_, files_).ok()) << text;
  }
}

TEST_F(RunRecallTest, AMissingLineIsNamed) {
  for (const char* const name : {"GAIN", "halfSizeY", "NUVX", "UVX1.CRC32", "UVX0"}) {
    std::vector<std::string> lines = history();
    std::erase_if(lines,
                  [&](const std::string& line) { return line.starts_with(std::string(name) + " = "); });
    EXPECT_THAT(recallRun(lines, run_).text(), HasSubstr(std::string("no line ") + name));
  }
}

TEST_F(RunRecallTest, AValueOfTheWrongKindIsNamed) {
  for (const auto& [name, value] :
       std::vector<std::pair<std::string, std::string>>{{"GAIN", "much"},
                                                        {"ITER", "1.5"},
                                                        {"ITER", "4000000000"},
                                                        {"NONREG", "2"},
                                                        {"UVX0.CRC32", "abcdefg0"},
                                                        {"UVX0.CRC32", "abc"},
                                                        {"UVX1.BYTES", "-1"},
                                                        {"NUVX", "0"},
                                                        {"NUVX", "99999999"}}) {
    const Status status = recallRun(historyWith(name, value), run_);
    EXPECT_FALSE(status.ok());
    EXPECT_THAT(status.text(), HasSubstr(name + " = " + value));
  }
}

TEST_F(RunRecallTest, ATextThatEndsBeforeItsEndIsRefused) {
  for (const char* const name : {"PREFIX", "UVX0"}) {
    const std::string text = std::string("../photo.jpg") + '\0';
    EXPECT_THAT(recallRun(historyWith(name, text), run_).text(), HasSubstr(std::string(name) + " = "));
  }
}

TEST_F(RunRecallTest, ALineThatStandsTwiceIsRefused) {
  std::vector<std::string> lines = history();
  lines.push_back("GAIN = 0.5");
  EXPECT_THAT(recallRun(lines, run_).text(), HasSubstr("more than one line GAIN"));
}

TEST_F(RunRecallTest, EveryChangedInputIsNamed) {
  ASSERT_TRUE(recallRun(history(), run_).ok());
  const std::vector<std::string> names = {"a", "b"};
  EXPECT_TRUE(compareInputs(run_, names, {{123, 0x00abcdefu}, {456, 0xfedcba98u}}).ok());
  const std::string text = compareInputs(run_, names, {{123, 0x00abcdeeu}, {457, 0xfedcba98u}}).text();
  EXPECT_THAT(text, HasSubstr("a (same size, other content)"));
  EXPECT_THAT(text, HasSubstr("b (457 bytes, then 456)"));
}

}  // namespace
}  // namespace lumo
