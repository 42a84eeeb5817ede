// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "RunSample.h"
#include "run/UvxFileList.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::TempFolder;
using test::UvxSample;
using test::writeUvx;

class Recorder : public FileListWatcher {
 public:
  void showMessage(const std::string& text) override { messages.push_back(text); }
  void proposeWorkFolder(const std::string& folder) override { folders.push_back(folder); }

  std::vector<std::string> messages;
  std::vector<std::string> folders;
};

class UvxFileListTest : public testing::Test {
 protected:
  UvxFileListTest() : files_(&recorder_) {}

  std::string make(const std::string& name, const UvxSample& sample = UvxSample()) {
    writeUvx(folder_.file(name), sample);
    return folder_.file(name);
  }

  TempFolder folder_;
  Recorder recorder_;
  UvxFileList files_;
};

TEST_F(UvxFileListTest, AddingKeepsTheFiveArraysInStep) {
  UvxSample sample;
  sample.selections = {{4, {1.4e9, 1.41e9}}, {9, {1.5e9, 1.51e9}}};
  sample.products = {-1, -2};
  const std::string path = make("a.uvx", sample);
  EXPECT_EQ(files_.AddFile(path), 1);
  EXPECT_EQ(files_.AddFile(make("b.uvx")), 1);
  const VisibilityInputs& inputs = files_.inputs();
  ASSERT_EQ(inputs.names.count(), 2);
  ASSERT_EQ(inputs.tables.count(), 2);
  ASSERT_EQ(inputs.selections.count(), 2);
  ASSERT_EQ(inputs.mixes.count(), 2);
  ASSERT_EQ(inputs.sources.count(), 2);
  EXPECT_EQ(inputs.names[0], path);
  EXPECT_EQ(inputs.tables[0].GetFreqSelID(1), 9);
  EXPECT_EQ(inputs.selections[0].count(), 2);
  EXPECT_EQ(inputs.selections[0].setCount(), 2) << "a new mask is all set";
  EXPECT_EQ(inputs.sources[0], 5);
  EXPECT_EQ(inputs.mixes[0], AStokesMix(StokesQuantity::kI, 0, 1))
      << "the first mix of RR and LL is their mean";
  EXPECT_EQ(files_.selected(), 1);
}

TEST_F(UvxFileListTest, AddingTheSamePathTwiceListsItOnceAndSelectsIt) {
  const std::string first = make("a.uvx");
  ASSERT_EQ(files_.AddFile(first), 1);
  ASSERT_EQ(files_.AddFile(make("b.uvx")), 1);
  EXPECT_EQ(files_.AddFile(first), 1);
  EXPECT_EQ(files_.inputs().count(), 2);
  EXPECT_EQ(files_.selected(), 0);
}

TEST_F(UvxFileListTest, PathsAreComparedWithTheirCase) {
  ASSERT_EQ(files_.AddFile(make("a.uvx")), 1);
  EXPECT_EQ(files_.AddFile(make("A.uvx")), 1);
  EXPECT_EQ(files_.inputs().count(), 2);
}

TEST_F(UvxFileListTest, AFileThatDoesNotOpenIsNotAddedAndNothingIsShown) {
  EXPECT_EQ(files_.AddFile(folder_.file("absent.uvx")), 0);
  EXPECT_EQ(files_.status().code(), StatusCode::kNotFound);
  EXPECT_EQ(files_.AddFile(""), 0);
  test::writeFile(folder_.file("text.uvx"), "not a visibility file");
  EXPECT_EQ(files_.AddFile(folder_.file("text.uvx")), 0);
  EXPECT_EQ(files_.status().code(), StatusCode::kBadFormat);
  EXPECT_TRUE(recorder_.messages.empty());
  EXPECT_FALSE(files_.hasFiles());
}

TEST_F(UvxFileListTest, AFileOfTwoSourcesIsRefusedWithTheMessage) {
  UvxSample sample;
  sample.sources = 2;
  EXPECT_EQ(files_.AddFile(make("two.uvx", sample)), 0);
  EXPECT_EQ(recorder_.messages, std::vector<std::string>{"Sorry. Source must be 1 (one)."});
  EXPECT_EQ(files_.status().code(), StatusCode::kUnsupported);
  EXPECT_EQ(files_.inputs().count(), 0);
  EXPECT_TRUE(recorder_.folders.empty());
}

TEST_F(UvxFileListTest, AFileWithoutAnImageableProductIsRefusedBeforeAnythingChanges) {
  UvxSample sample;
  sample.products = {-3, -4};
  files_.imaging().halfSizeX = 32;
  EXPECT_EQ(files_.AddFile(make("cross.uvx", sample)), 0);
  EXPECT_EQ(files_.status().code(), StatusCode::kUnsupported);
  EXPECT_EQ(files_.inputs().count(), 0);
  EXPECT_EQ(files_.inputs().mixes.count(), 0);
  EXPECT_EQ(files_.imaging().halfSizeX, 32);
}

TEST_F(UvxFileListTest, TheFirstFileResetsTheImagingBlockAndProposesItsFolder) {
  files_.imaging().halfSizeX = 32;
  files_.imaging().shiftX = 4;
  ASSERT_EQ(files_.AddFile(make("a.uvx")), 1);
  EXPECT_EQ(files_.imaging().halfSizeX, 256);
  EXPECT_EQ(files_.imaging().shiftX, 0);
  EXPECT_EQ(recorder_.folders, std::vector<std::string>{folder_.path()});
  files_.imaging().halfSizeX = 16;
  ASSERT_EQ(files_.AddFile(make("b.uvx")), 1);
  EXPECT_EQ(files_.imaging().halfSizeX, 16) << "only the first file resets the block";
  EXPECT_EQ(recorder_.folders.size(), 1u);
}

TEST_F(UvxFileListTest, EverySurveyWritesTheUvFieldsOfTheBlock) {
  ASSERT_EQ(files_.AddFile(make("a.uvx")), 1);
  EXPECT_EQ(files_.imaging().uvScaleU, 1.4e9 * 0x1p-20);
  EXPECT_EQ(files_.imaging().uvScaleV, 1.4e9 * 0x1p-20);
  files_.imaging().uvLimitU = files_.imaging().uvLimitV = 3;
  files_.imaging().uvScaleU = 7;
  files_.survey();
  EXPECT_EQ(files_.imaging().uvLimitU, 0);
  EXPECT_EQ(files_.imaging().uvLimitV, 0);
  EXPECT_EQ(files_.imaging().uvScaleU, 1.4e9 * 0x1p-20);
}

TEST_F(UvxFileListTest, DeletingSelectsTheEntryNowAtTheSamePlace) {
  for (const char* name : {"a.uvx", "b.uvx", "c.uvx"}) ASSERT_EQ(files_.AddFile(make(name)), 1);
  files_.select(1);
  files_.DeleteFile();
  ASSERT_EQ(files_.inputs().count(), 2);
  EXPECT_EQ(files_.inputs().names[1], folder_.file("c.uvx"));
  EXPECT_EQ(files_.selected(), 1);
  files_.DeleteFile();
  EXPECT_EQ(files_.selected(), 0) << "the last entry when there is none at the place";
  EXPECT_EQ(files_.inputs().names[0], folder_.file("a.uvx"));
}

TEST_F(UvxFileListTest, DeletingSurveysTheFilesThatRemain) {
  UvxSample high;
  high.selections = {{1, {5e9}}};
  ASSERT_EQ(files_.AddFile(make("a.uvx")), 1);
  ASSERT_EQ(files_.AddFile(make("b.uvx", high)), 1);
  files_.DeleteFile();
  EXPECT_EQ(files_.frequencies().maxHz, 1.4e9);
  EXPECT_EQ(files_.frequencies().number, 1);
  EXPECT_EQ(files_.idTable().rowCount(), 1);
}

TEST_F(UvxFileListTest, DeletingWithoutASelectionDoesNothing) {
  ASSERT_EQ(files_.AddFile(make("a.uvx")), 1);
  files_.select(-1);
  files_.DeleteFile();
  EXPECT_EQ(files_.inputs().count(), 1);
}

TEST_F(UvxFileListTest, DeletingTheOnlyFileKeepsTheSurveyAndClearsTheUvFields) {
  ASSERT_EQ(files_.AddFile(make("a.uvx")), 1);
  files_.imaging().uvLimitU = files_.imaging().uvLimitV = 2;
  files_.DeleteFile();
  EXPECT_EQ(files_.frequencies().minText(), "1400");
  EXPECT_EQ(files_.frequencies().maxText(), "1400");
  EXPECT_EQ(files_.frequencies().numberText(), "1");
  EXPECT_EQ(files_.imaging().uvLimitU, 0);
  EXPECT_EQ(files_.imaging().uvLimitV, 0);
  EXPECT_EQ(files_.imaging().uvScaleU, 0);
  EXPECT_EQ(files_.imaging().uvScaleV, 0);
  EXPECT_FALSE(files_.hasFiles()) << "which disables the commands that need a file";
  EXPECT_EQ(files_.selected(), -1);
  EXPECT_EQ(files_.idTable().rowCount(), 0);
}

TEST_F(UvxFileListTest, AddingManyFilesAtOnceGivesWhatAddingThemSinglyGives) {
  std::vector<std::string> paths;
  for (int i = 0; i < 30; ++i) {
    UvxSample sample;
    sample.selections = {{1, {1.4e9 + i * 1e7}}, {2, {2.4e9 + i * 1e7}}};
    paths.push_back(make("f" + std::to_string(i) + ".uvx", sample));
  }
  paths.push_back(paths[3]);
  UvxFileList single;
  for (const std::string& path : paths) ASSERT_EQ(single.AddFile(path), 1);
  EXPECT_TRUE(files_.AddFiles(paths).empty());
  EXPECT_EQ(files_.inputs().count(), 30);
  EXPECT_EQ(files_.selected(), 3);
  EXPECT_EQ(files_.idTable().rowCount(), 60);
  EXPECT_EQ(files_.frequencies().number, single.frequencies().number);
  EXPECT_EQ(files_.frequencies().maxHz, single.frequencies().maxHz);
  EXPECT_EQ(files_.imaging().uvScaleU, single.imaging().uvScaleU);
}

TEST_F(UvxFileListTest, AddingManyFilesTellsWhichWereNotAdded) {
  const std::vector<std::string> paths = {make("a.uvx"), folder_.file("absent.uvx"), make("b.uvx")};
  const std::vector<Status> failures = files_.AddFiles(paths);
  ASSERT_EQ(failures.size(), 1u);
  EXPECT_EQ(failures[0].file(), folder_.file("absent.uvx"));
  EXPECT_EQ(files_.inputs().count(), 2);
}

TEST_F(UvxFileListTest, AFileAddedAfterForeignMasksGetsItsOwnMask) {
  UvxSample sample;
  sample.selections = {{1, {1.4e9}}, {2, {1.5e9}}, {3, {1.6e9}}};
  ASSERT_EQ(files_.AddFile(make("a.uvx")), 1);
  for (const int foreign : {0, 5}) {
    files_.replaceSelections(AObjArray<ABitArray>(foreign));
    const std::int32_t before = files_.inputs().count();
    ASSERT_EQ(files_.AddFile(make("n" + std::to_string(foreign) + ".uvx", sample)), 1);
    ASSERT_EQ(files_.inputs().selections.count(), before + 1) << foreign;
    EXPECT_EQ(files_.inputs().selections[before].setCount(), 3) << foreign;
  }
}

TEST_F(UvxFileListTest, DeletingWithFewerMasksThanFilesIsHarmless) {
  for (const char* name : {"a.uvx", "b.uvx", "c.uvx"}) ASSERT_EQ(files_.AddFile(make(name)), 1);
  files_.replaceSelections(AObjArray<ABitArray>(1));
  files_.DeleteFile();
  EXPECT_EQ(files_.inputs().names.count(), 2);
  EXPECT_EQ(files_.inputs().selections.count(), 1);
}

}  // namespace
}  // namespace lumo
