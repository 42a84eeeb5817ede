// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <limits>

#include "RunSample.h"
#include "run/RunChecks.h"
#include "run/UvxFileList.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::readFile;
using test::TempFolder;
using test::UvxSample;
using test::writeUvx;

class RunChecksTest : public testing::Test {
 protected:
  RunChecksTest() {
    parameters.folder = work.path();
    parameters.referenceMhz = 1450;
    writeUvx(data.file("a.uvx"), UvxSample());
    UvxSample second;
    second.selections = {{1, {1.5e9}}, {2, {1.6e9}}};
    writeUvx(data.file("b.uvx"), second);
    files.AddFile(data.file("a.uvx"));
    files.AddFile(data.file("b.uvx"));
    files.imaging().halfSizeX = files.imaging().halfSizeY = 16;
  }
  Status check() {
    ABMakeParameters imaging = files.imaging();
    return checkInputs(parameters, inStep(files.inputs()), imaging);
  }

  TempFolder data;
  TempFolder work;
  RunParameters parameters;
  UvxFileList files;
};

TEST_F(RunChecksTest, GoodInputsPassAndTheImagingBlockIsSetUp) {
  ABMakeParameters imaging = files.imaging();
  const Status status = checkInputs(parameters, inStep(files.inputs()), imaging);
  ASSERT_TRUE(status.ok()) << status.text();
  EXPECT_EQ(imaging.uvLimitU, 2) << "what 0 stands for";
}

TEST_F(RunChecksTest, AnEmptyListPasses) {
  files.select(0);
  files.DeleteFile();
  files.DeleteFile();
  parameters.folder = "/no/such/folder/";
  EXPECT_TRUE(check().ok());
}

TEST_F(RunChecksTest, AFileThatVanishedIsNamed) {
  std::filesystem::remove(data.file("b.uvx"));
  EXPECT_EQ(check().code(), StatusCode::kNotFound);
  EXPECT_EQ(check().file(), data.file("b.uvx"));
}

TEST_F(RunChecksTest, AFileReplacedByAnotherSetUpIsRefused) {
  UvxSample more;
  more.selections = {{1, {1.5e9, 1.55e9}}, {2, {1.6e9, 1.65e9}}};
  writeUvx(data.file("b.uvx"), more);
  EXPECT_EQ(check().code(), StatusCode::kBadFormat);
  UvxSample moved;
  moved.selections = {{1, {1.5e9}}, {2, {1.7e9}}};
  writeUvx(data.file("b.uvx"), moved);
  EXPECT_EQ(check().code(), StatusCode::kBadFormat);
  UvxSample renumbered;
  renumbered.selections = {{1, {1.5e9}}, {3, {1.6e9}}};
  writeUvx(data.file("b.uvx"), renumbered);
  EXPECT_EQ(check().code(), StatusCode::kBadFormat);
  UvxSample otherProducts;
  otherProducts.selections = {{1, {1.5e9}}, {2, {1.6e9}}};
  otherProducts.products = {-2, -1};
  writeUvx(data.file("b.uvx"), otherProducts);
  EXPECT_EQ(check().code(), StatusCode::kBadFormat);
}

TEST_F(RunChecksTest, NothingSelectedIsNoData) {
  for (int row = 0; row < 3; ++row) ASSERT_EQ(files.changeCell(row), 1);
  EXPECT_EQ(check().code(), StatusCode::kNoData);
  files.replaceSelections(AObjArray<ABitArray>());
  EXPECT_EQ(check().code(), StatusCode::kNoData);
}

TEST_F(RunChecksTest, AnImpossibleExtentIsNoData) {
  for (const double extent :
       {0.0, -1.0, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    files.imaging().uvScaleV = extent;
    EXPECT_EQ(check().code(), StatusCode::kNoData) << extent;
  }
}

TEST_F(RunChecksTest, AnImagingBlockThatCannotBeUsedIsRefused) {
  files.imaging().halfSizeX = 17;
  EXPECT_EQ(check().code(), StatusCode::kInvalidValue);
  files.imaging().halfSizeX = 16;
  EXPECT_TRUE(check().ok());
}

TEST_F(RunChecksTest, AMissingWorkFolderIsRefused) {
  parameters.folder = work.file("absent/");
  EXPECT_EQ(check().code(), StatusCode::kNotFound);
  parameters.folder = work.path();
  parameters.prefix = "sub/MFS";
  EXPECT_EQ(check().code(), StatusCode::kNotFound) << "the prefix may hold a folder too";
}

TEST_F(RunChecksTest, AnInputThatIsAProductIsRefused) {
  for (const char* name :
       {"MFS^dm0.exm", "MFS^cln_res19.exm", "MFS^sindex.exm", "MFS^sindex_err.exm", "MFS^freqrange.txt",
        "MFS^residual0.exm", "MFSresidual0.exm", "MFSsindex.exm", "MFS^bm2.exm"}) {
    writeUvx(work.file(name), UvxSample());
    UvxFileList own;
    ASSERT_EQ(own.AddFile(work.path() + "./" + name), 1);
    own.imaging().halfSizeX = own.imaging().halfSizeY = 16;
    const Status status = checkInputs(parameters, inStep(own.inputs()), own.imaging());
    EXPECT_EQ(status.code(), StatusCode::kInvalidValue) << name;
    std::filesystem::remove(work.file(name));
  }
}

TEST_F(RunChecksTest, BeamsAndMapsOfHighOrdersAreProductsToo) {
  parameters.order = 25;
  writeUvx(work.file("MFS^bm48.exm"), UvxSample());
  UvxFileList own;
  ASSERT_EQ(own.AddFile(work.file("MFS^bm48.exm")), 1);
  own.imaging().halfSizeX = own.imaging().halfSizeY = 16;
  EXPECT_EQ(checkInputs(parameters, inStep(own.inputs()), own.imaging()).code(), StatusCode::kInvalidValue);
}

TEST_F(RunChecksTest, InStepGivesOneMaskPerFileAndOneBitPerSelection) {
  AObjArray<ABitArray> masks(1);
  masks[0] = ABitArray(5);
  masks[0] = 1;
  files.replaceSelections(masks);
  const VisibilityInputs inputs = inStep(files.inputs());
  ASSERT_EQ(inputs.selections.count(), 2);
  EXPECT_EQ(inputs.selections[0].count(), 1);
  EXPECT_EQ(inputs.selections[0].setCount(), 1);
  EXPECT_EQ(inputs.selections[1].count(), 2);
  EXPECT_EQ(inputs.selections[1].setCount(), 0);
}

TEST_F(RunChecksTest, RemovingOldProductsTakesTwentyIndicesAndKeepsTheIndexMap) {
  for (const char* kind : {"^bm", "^dm", "^cln", "^cln_res"})
    for (const int i : {0, 19, 20})
      test::writeFile(work.file("MFS" + (kind + std::to_string(i)) + ".exm"), "old");
  for (const char* name :
       {"MFSsindex.exm", "MFSresidual0.exm", "MFS^sindex.exm", "MFS^residual0.exm", "MFS^freqrange.txt"})
    test::writeFile(work.file(name), "old");
  removeOldProducts(parameters);
  std::vector<std::string> left;
  for (const auto& entry : std::filesystem::directory_iterator(work.path()))
    left.push_back(entry.path().filename());
  std::sort(left.begin(), left.end());
  EXPECT_EQ(left,
            (std::vector<std::string>{"MFS^bm20.exm", "MFS^cln20.exm", "MFS^cln_res20.exm", "MFS^dm20.exm",
                                      "MFS^freqrange.txt", "MFS^residual0.exm", "MFS^sindex.exm"}));
}

TEST_F(RunChecksTest, WithAnEmptyPrefixAndFolderZeroTheNamesBeginWithZero) {
  const RunParameters plain{.prefix = ""};
  const std::vector<std::string> paths = oldProductPaths(plain);
  EXPECT_NE(std::find(paths.begin(), paths.end(), "0^cln0.exm"), paths.end());
  EXPECT_NE(std::find(paths.begin(), paths.end(), "0sindex.exm"), paths.end());
}

}  // namespace
}  // namespace lumo
