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

using test::TempFolder;
using test::UvxSample;
using test::writeUvx;

class RunChecksTest : public testing::Test {
 protected:
  RunChecksTest() {
    parameters_.folder = work_.path();
    parameters_.referenceMhz = 1450;
    writeUvx(data_.file("a.uvx"), UvxSample());
    UvxSample second;
    second.selections = {{1, {1.5e9}}, {2, {1.6e9}}};
    writeUvx(data_.file("b.uvx"), second);
    files_.AddFile(data_.file("a.uvx"));
    files_.AddFile(data_.file("b.uvx"));
    files_.imaging().halfSizeX = files_.imaging().halfSizeY = 16;
  }
  Status check() {
    ABMakeParameters imaging = files_.imaging();
    return checkInputs(parameters_, inStep(files_.inputs()), imaging);
  }

  TempFolder data_;
  TempFolder work_;
  RunParameters parameters_;
  UvxFileList files_;
};

TEST_F(RunChecksTest, GoodInputsPassAndTheImagingBlockIsSetUp) {
  ABMakeParameters imaging = files_.imaging();
  const Status status = checkInputs(parameters_, inStep(files_.inputs()), imaging);
  ASSERT_TRUE(status.ok()) << status.text();
  EXPECT_EQ(imaging.uvLimitU, 2) << "what 0 stands for";
}

TEST_F(RunChecksTest, AnEmptyListPasses) {
  files_.select(0);
  files_.DeleteFile();
  files_.DeleteFile();
  parameters_.folder = "/no/such/folder/";
  EXPECT_TRUE(check().ok());
}

TEST_F(RunChecksTest, AFileThatVanishedIsNamed) {
  std::filesystem::remove(data_.file("b.uvx"));
  EXPECT_EQ(check().code(), StatusCode::kNotFound);
  EXPECT_EQ(check().file(), data_.file("b.uvx"));
}

TEST_F(RunChecksTest, AFileReplacedByAnotherSetUpIsRefused) {
  UvxSample more;
  more.selections = {{1, {1.5e9, 1.55e9}}, {2, {1.6e9, 1.65e9}}};
  writeUvx(data_.file("b.uvx"), more);
  EXPECT_EQ(check().code(), StatusCode::kBadFormat);
  UvxSample moved;
  moved.selections = {{1, {1.5e9}}, {2, {1.7e9}}};
  writeUvx(data_.file("b.uvx"), moved);
  EXPECT_EQ(check().code(), StatusCode::kBadFormat);
  UvxSample renumbered;
  renumbered.selections = {{1, {1.5e9}}, {3, {1.6e9}}};
  writeUvx(data_.file("b.uvx"), renumbered);
  EXPECT_EQ(check().code(), StatusCode::kBadFormat);
  UvxSample otherProducts;
  otherProducts.selections = {{1, {1.5e9}}, {2, {1.6e9}}};
  otherProducts.products = {-2, -1};
  writeUvx(data_.file("b.uvx"), otherProducts);
  EXPECT_EQ(check().code(), StatusCode::kBadFormat);
}

TEST_F(RunChecksTest, NothingSelectedIsNoData) {
  for (int row = 0; row < 3; ++row) ASSERT_EQ(files_.changeCell(row), 1);
  EXPECT_EQ(check().code(), StatusCode::kNoData);
  files_.replaceSelections(AObjArray<ABitArray>());
  EXPECT_EQ(check().code(), StatusCode::kNoData);
}

TEST_F(RunChecksTest, AnImpossibleExtentIsNoData) {
  for (const double extent :
       {0.0, -1.0, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    files_.imaging().uvScaleV = extent;
    EXPECT_EQ(check().code(), StatusCode::kNoData) << extent;
  }
}

TEST_F(RunChecksTest, AnImagingBlockThatCannotBeUsedIsRefused) {
  files_.imaging().halfSizeX = 17;
  EXPECT_EQ(check().code(), StatusCode::kInvalidValue);
  files_.imaging().halfSizeX = 16;
  EXPECT_TRUE(check().ok());
}

TEST_F(RunChecksTest, AMissingWorkFolderIsRefused) {
  parameters_.folder = work_.file("absent/");
  EXPECT_EQ(check().code(), StatusCode::kNotFound);
  parameters_.folder = work_.path();
  parameters_.prefix = "sub/MFS";
  EXPECT_EQ(check().code(), StatusCode::kNotFound) << "the prefix may hold a folder too";
}

TEST_F(RunChecksTest, AnInputThatIsAProductIsRefused) {
  for (const char* name :
       {"MFS^dm0.exm", "MFS^cln_res19.exm", "MFS^sindex.exm", "MFS^sindex_err.exm", "MFS^freqrange.txt",
        "MFS^residual0.exm", "MFSresidual0.exm", "MFSsindex.exm", "MFS^bm2.exm"}) {
    writeUvx(work_.file(name), UvxSample());
    UvxFileList own;
    ASSERT_EQ(own.AddFile(work_.path() + "./" + name), 1);
    own.imaging().halfSizeX = own.imaging().halfSizeY = 16;
    const Status status = checkInputs(parameters_, inStep(own.inputs()), own.imaging());
    EXPECT_EQ(status.code(), StatusCode::kInvalidValue) << name;
    std::filesystem::remove(work_.file(name));
  }
}

TEST_F(RunChecksTest, BeamsAndMapsOfHighOrdersAreProductsToo) {
  parameters_.order = 25;
  writeUvx(work_.file("MFS^bm48.exm"), UvxSample());
  UvxFileList own;
  ASSERT_EQ(own.AddFile(work_.file("MFS^bm48.exm")), 1);
  own.imaging().halfSizeX = own.imaging().halfSizeY = 16;
  EXPECT_EQ(checkInputs(parameters_, inStep(own.inputs()), own.imaging()).code(), StatusCode::kInvalidValue);
}

TEST_F(RunChecksTest, InStepGivesOneMaskPerFileAndOneBitPerSelection) {
  AObjArray<ABitArray> masks(1);
  masks[0] = ABitArray(5);
  masks[0] = 1;
  files_.replaceSelections(masks);
  const VisibilityInputs inputs = inStep(files_.inputs());
  ASSERT_EQ(inputs.selections.count(), 2);
  EXPECT_EQ(inputs.selections[0].count(), 1);
  EXPECT_EQ(inputs.selections[0].setCount(), 1);
  EXPECT_EQ(inputs.selections[1].count(), 2);
  EXPECT_EQ(inputs.selections[1].setCount(), 0);
}

TEST_F(RunChecksTest, RemovingOldProductsTakesTwentyIndicesAndKeepsTheIndexMap) {
  for (const char* kind : {"^bm", "^dm", "^cln", "^cln_res"})
    for (const int i : {0, 19, 20})
      test::writeFile(work_.file("MFS" + (kind + std::to_string(i)) + ".exm"), "old");
  for (const char* name :
       {"MFSsindex.exm", "MFSresidual0.exm", "MFS^sindex.exm", "MFS^residual0.exm", "MFS^freqrange.txt"})
    test::writeFile(work_.file(name), "old");
  removeOldProducts(parameters_);
  std::vector<std::string> left;
  for (const auto& entry : std::filesystem::directory_iterator(work_.path()))
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
