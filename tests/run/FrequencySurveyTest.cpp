// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "RunSample.h"
#include "run/FrequencySurvey.h"
#include "run/UvxFileList.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::TempFolder;
using test::UvxSample;
using test::writeUvx;

// Two files: |u| <= 2^-19 s, |v| <= 2^-20 s in the first, |u| <= 2^-20 s, |v| <= 2^-18 s in the second.
void writePair(const TempFolder& folder) {
  UvxSample one;
  one.selections = {{1, {1.40e9, 1.45e9}}, {2, {1.50e9, 1.55e9}}};
  one.points = {{-0x1p-19, 0x1p-21}, {0x1p-20, -0x1p-20}};
  writeUvx(folder.file("one.uvx"), one);
  UvxSample two;
  two.selections = {{-3, {1.70e9}}};
  two.points = {{0x1p-20, 0x1p-18}, {0, 0x1p-25}};
  writeUvx(folder.file("two.uvx"), two);
}

TEST(FrequencySurveyTest, SpansTheSelectedFrequenciesOfAllFiles) {
  const TempFolder folder;
  writePair(folder);
  UvxFileList files;
  ASSERT_EQ(files.AddFile(folder.file("one.uvx")), 1);
  ASSERT_EQ(files.AddFile(folder.file("two.uvx")), 1);
  const FrequencySurvey& survey = files.frequencies();
  EXPECT_EQ(survey.minHz, 1.40e9);
  EXPECT_EQ(survey.maxHz, 1.70e9);
  EXPECT_EQ(survey.number, 5) << "four (selection, IF) pairs of the first file and one of the second";
  EXPECT_EQ(survey.maxU, 1.55e9 * 0x1p-19) << "the first file's extent at its highest frequency";
  EXPECT_EQ(survey.maxV, 1.70e9 * 0x1p-18);
  EXPECT_EQ(survey.minText(), "1400");
  EXPECT_EQ(survey.maxText(), "1700");
  EXPECT_EQ(survey.numberText(), "5");
}

TEST(FrequencySurveyTest, ClearedSelectionsDoNotCount) {
  const TempFolder folder;
  writePair(folder);
  UvxFileList files;
  ASSERT_EQ(files.AddFile(folder.file("one.uvx")), 1);
  ASSERT_EQ(files.changeCell(1), 1);
  const FrequencySurvey& survey = files.frequencies();
  EXPECT_EQ(survey.maxHz, 1.45e9);
  EXPECT_EQ(survey.number, 2);
  EXPECT_EQ(survey.maxU, 1.45e9 * 0x1p-19);
  EXPECT_EQ(survey.maxV, 1.45e9 * 0x1p-20);
}

TEST(FrequencySurveyTest, WithAllMasksClearTheStartValuesAreShown) {
  const TempFolder folder;
  writePair(folder);
  UvxFileList files;
  ASSERT_EQ(files.AddFile(folder.file("one.uvx")), 1);
  ASSERT_EQ(files.AddFile(folder.file("two.uvx")), 1);
  for (int row = 0; row < 3; ++row) ASSERT_EQ(files.changeCell(row), 1);
  EXPECT_EQ(files.frequencies().minText(), "1e+32");
  EXPECT_EQ(files.frequencies().maxText(), "-1e+32");
  EXPECT_EQ(files.frequencies().numberText(), "0");
}

TEST(FrequencySurveyTest, AFileOfOneClearSelectionKeepsOutOfTheExtents) {
  const TempFolder folder;
  writePair(folder);
  UvxFileList files;
  ASSERT_EQ(files.AddFile(folder.file("two.uvx")), 1);
  files.setSelected(0, 0, false);
  files.survey();
  EXPECT_EQ(files.frequencies().maxU, -1e38);
  EXPECT_EQ(files.frequencies().maxV, -1e38);
}

TEST(FrequencySurveyTest, AFileThatVanishedContributesNothing) {
  const TempFolder folder;
  writePair(folder);
  UvxFileList files;
  ASSERT_EQ(files.AddFile(folder.file("one.uvx")), 1);
  ASSERT_EQ(files.AddFile(folder.file("two.uvx")), 1);
  ASSERT_EQ(std::remove(folder.file("one.uvx").c_str()), 0);
  files.survey();
  EXPECT_EQ(files.frequencies().minHz, 1.70e9);
  EXPECT_EQ(files.frequencies().number, 1);
}

TEST(FrequencySurveyTest, ChannelsOfAnIfCountOnce) {
  const TempFolder folder;
  UvxSample sample;
  sample.selections = {{1, {1.4e9, 1.5e9, 1.6e9}}};
  writeUvx(folder.file("a.uvx"), sample);
  UvxFileList files;
  ASSERT_EQ(files.AddFile(folder.file("a.uvx")), 1);
  EXPECT_EQ(files.frequencies().number, 3);
}

TEST(FrequencySurveyTest, CenterIsTheMiddleRoundedDownToAKilohertz) {
  FrequencySurvey survey;
  survey.minHz = 1.4e9;
  survey.maxHz = 1.5000019e9;
  EXPECT_EQ(survey.centerMhz(), 1450.0) << "the middle is 1450.00095 MHz";
  survey.maxHz = 1.500003e9;
  EXPECT_EQ(survey.centerMhz(), 1450.001) << "the middle is 1450.0015 MHz";
}

TEST(FrequencySurveyTest, LargestOffsetIsTakenFromTheMiddleOfTheRange) {
  const TempFolder folder;
  UvxSample sample;
  sample.selections = {{1, {1.0e9}}, {2, {1.25e9}}, {3, {1.5e9}}};
  writeUvx(folder.file("a.uvx"), sample);
  UvxFileList files;
  ASSERT_EQ(files.AddFile(folder.file("a.uvx")), 1);
  EXPECT_DOUBLE_EQ(largestFrequencyOffset(files.inputs(), files.frequencies()), 0.2);
  EXPECT_EQ(largestFrequencyOffset(VisibilityInputs(), files.frequencies()), -1e38);
}

TEST(FrequencySurveyTest, MasksThatDoNotMatchTheFilesAreTolerated) {
  const TempFolder folder;
  writePair(folder);
  UvxFileList files;
  ASSERT_EQ(files.AddFile(folder.file("one.uvx")), 1);
  ASSERT_EQ(files.AddFile(folder.file("two.uvx")), 1);
  AObjArray<ABitArray> shorter(1);
  shorter[0] = ABitArray(1);
  shorter[0] = 1;
  files.replaceSelections(shorter);
  EXPECT_EQ(files.frequencies().number, 2) << "the first selection of the first file";
  AObjArray<ABitArray> longer(3);
  for (ABitArray& mask : longer) {
    mask = ABitArray(1000);
    mask = 1;
  }
  files.replaceSelections(longer);
  EXPECT_EQ(files.frequencies().number, 5);
  files.replaceSelections(AObjArray<ABitArray>());
  EXPECT_EQ(files.frequencies().number, 0);
}

}  // namespace
}  // namespace lumo
