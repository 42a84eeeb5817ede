// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <string>

#include "RunSample.h"
#include "core/LittleEndian.h"
#include "run/ParameterStore.h"
#include "run/RunParameterTexts.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::readFile;
using test::TempFolder;
using test::UvxSample;
using test::writeFile;
using test::writeUvx;

std::string int32Bytes(std::int32_t value) {
  std::string bytes(4, '\0');
  storeLittle<std::int32_t>(bytes.data(), value);
  return bytes;
}

class ParameterStoreTest : public testing::Test {
 protected:
  std::string make(const std::string& name, int selections = 3) {
    UvxSample sample;
    sample.selections.clear();
    for (int i = 0; i < selections; ++i) sample.selections.push_back({i + 1, {1.4e9 + i * 1e8}});
    writeUvx(data_.file(name), sample);
    return data_.file(name);
  }
  void load() { ParameterStore(home_.path()).LoadParameters(parameters_, files_); }
  int save() {
    RunParameters copy = parameters_;
    return ParameterStore(home_.path()).SaveParameters(copy, files_);
  }
  [[nodiscard]] std::string ini() const { return home_.file("ZELMFS.ini"); }
  [[nodiscard]] std::string bin() const { return home_.file("ZELMFS.bin"); }
  void list(const std::vector<std::string>& paths) {
    std::string text = "[ZELMFS-FILES]\nNUVX=" + std::to_string(paths.size()) + "\n";
    for (std::size_t i = 0; i < paths.size(); ++i) text += "UVX" + std::to_string(i) + "=" + paths[i] + "\n";
    writeFile(ini(), text);
  }

  TempFolder home_;
  TempFolder data_;
  RunParameters parameters_;
  UvxFileList files_;
};

TEST_F(ParameterStoreTest, AFirstStartYieldsTheDefaults) {
  parameters_.iterations = 5;
  parameters_.prefix = "x";
  parameters_.nonNegative = parameters_.variableGain = true;
  parameters_.folder = "y";
  load();
  EXPECT_FALSE(files_.hasFiles());
  EXPECT_EQ(parameters_.iterations, 1000);
  EXPECT_EQ(parameters_.indexThreshold, 0.01);
  EXPECT_EQ(parameters_.indexMin, -3.0);
  EXPECT_EQ(parameters_.indexMax, 3.0);
  EXPECT_EQ(parameters_.order, 2);
  EXPECT_EQ(parameters_.gain, 0.1);
  EXPECT_EQ(parameters_.referenceMhz, 0.0);
  EXPECT_EQ(parameters_.prefix, "MFS");
  EXPECT_FALSE(parameters_.nonNegative);
  EXPECT_FALSE(parameters_.variableGain);
  EXPECT_EQ(parameters_.folder, "0");
}

TEST_F(ParameterStoreTest, WhatIsSavedIsLoadedAgain) {
  ASSERT_EQ(files_.AddFile(make("a.uvx")), 1);
  ASSERT_EQ(files_.AddFile(make(" b ; \"c\".uvx")), 1);
  ASSERT_EQ(files_.changeCell(1), 1);
  files_.imaging().halfSizeX = 32;
  files_.imaging().shiftY = -0.1;
  files_.imaging().uvLimitU = 3.5;
  parameters_ = {.iterations = 77,
                 .indexThreshold = 1.0 / 3.0,
                 .indexMin = -1.5,
                 .indexMax = 0.25,
                 .order = 3,
                 .gain = 0.05,
                 .referenceMhz = 1499.9999999999998,
                 .prefix = "a^;\"",
                 .nonNegative = true,
                 .variableGain = true,
                 .folder = "/some where/"};
  ASSERT_EQ(save(), 1);

  RunParameters loaded;
  UvxFileList again;
  ParameterStore store(home_.path());
  store.LoadParameters(loaded, again);
  EXPECT_TRUE(store.status().ok()) << store.status().text();
  ASSERT_EQ(again.inputs().count(), 2);
  EXPECT_EQ(again.inputs().names[1], data_.file(" b ; \"c\".uvx"));
  EXPECT_EQ(again.inputs().selections[0](1), 0);
  EXPECT_EQ(again.inputs().selections[0].setCount(), 2);
  EXPECT_EQ(again.frequencies().number, 5);
  EXPECT_EQ(again.imaging().halfSizeX, 32);
  EXPECT_EQ(again.imaging().shiftY, -0.1);
  EXPECT_EQ(again.imaging().uvLimitU, 3.5)
      << "the block is read after the survey, which sets its limits to 0";
  EXPECT_EQ(loaded.iterations, 77);
  EXPECT_EQ(loaded.indexThreshold, 1.0 / 3.0);
  EXPECT_EQ(loaded.indexMin, -1.5);
  EXPECT_EQ(loaded.indexMax, 0.25);
  EXPECT_EQ(loaded.order, 3);
  EXPECT_EQ(loaded.gain, 0.05);
  EXPECT_EQ(loaded.referenceMhz, 1499.9999999999998);
  EXPECT_EQ(loaded.prefix, "a^;\"");
  EXPECT_TRUE(loaded.nonNegative);
  EXPECT_TRUE(loaded.variableGain);
  EXPECT_EQ(loaded.folder, "/some where/");
}

TEST_F(ParameterStoreTest, TheProfileHasTheKeysInTheirOrder) {
  ASSERT_EQ(files_.AddFile(make("a.uvx")), 1);
  parameters_.folder = "/w/";
  ASSERT_EQ(save(), 1);
  EXPECT_EQ(readFile(ini()), "[ZELMFS-FILES]\nNUVX=1\nUVX0=" + data_.file("a.uvx") +
                                 "\nITER=1000\nPOROG=0.01\nMINRANGE=-3\nMAXRANGE=3\nORDER=2\nGAIN=0.1\n"
                                 "FQCENTER=0\nPREFIX=MFS\nNONREG=0\nVARGAIN=0\nFOLDER=/w/\n");
}

TEST_F(ParameterStoreTest, TheBinaryFileIsCountMasksAndBlock) {
  ASSERT_EQ(files_.AddFile(make("a.uvx", 3)), 1);
  ASSERT_EQ(files_.AddFile(make("b.uvx", 9)), 1);
  ASSERT_EQ(files_.changeCell(1), 1);
  ASSERT_EQ(save(), 1);
  // 14 doubles and 6 integers of the block after its mark.
  const std::string masks = int32Bytes(2) + int32Bytes(3) + '\x05' + int32Bytes(9) + "\xFF\x01";
  const std::string content = readFile(bin());
  ASSERT_EQ(content.size(), masks.size() + 4 + std::size_t{14} * 8 + std::size_t{6} * 4);
  EXPECT_EQ(content.substr(0, masks.size()), masks);
  EXPECT_EQ(content.substr(masks.size(), 4), "AMP1");
}

TEST_F(ParameterStoreTest, OrderIsAssignedTheResultOfItsWrite) {
  parameters_.order = 7;
  ParameterStore store(home_.path());
  EXPECT_EQ(store.SaveParameters(parameters_, files_), 1);
  EXPECT_EQ(parameters_.order, 1);
  EXPECT_EQ(Profile(ini()).GetProfileInt("ZELMFS-FILES", "ORDER", 0), 7);
  ParameterStore nowhere(home_.file("absent/"));
  EXPECT_EQ(nowhere.SaveParameters(parameters_, files_), 0);
  EXPECT_EQ(parameters_.order, 0);
}

TEST_F(ParameterStoreTest, ClosingWithAbcInTheGainFieldSavesZeroForGain) {
  RunParameterTexts texts = textsOf(parameters_);
  texts.gain = "abc";
  takeUnchecked(texts, parameters_);
  ASSERT_EQ(save(), 1);
  EXPECT_EQ(Profile(ini()).GetProfileString("ZELMFS-FILES", "GAIN", ""), "0");
}

TEST_F(ParameterStoreTest, AMissingFolderKeyGivesZeroEvenWhenFilesAreListed) {
  list({make("a.uvx")});
  load();
  EXPECT_EQ(files_.inputs().count(), 1);
  EXPECT_EQ(parameters_.folder, "0");
}

TEST_F(ParameterStoreTest, MoreFilesCountedThanListedSkipsTheBinaryFile) {
  ASSERT_EQ(files_.AddFile(make("a.uvx")), 1);
  ASSERT_EQ(files_.changeCell(1), 1);
  ASSERT_EQ(save(), 1);
  writeFile(ini(), "[ZELMFS-FILES]\nNUVX=3\nUVX0=" + data_.file("a.uvx") + "\nITER=12\n");
  UvxFileList again;
  ParameterStore store(home_.path());
  store.LoadParameters(parameters_, again);
  EXPECT_EQ(again.inputs().count(), 1);
  EXPECT_EQ(again.inputs().selections[0].setCount(), 3) << "the stored mask has two bits set";
  EXPECT_EQ(parameters_.iterations, 12);
  EXPECT_EQ(store.status().code(), StatusCode::kNotFound);
}

TEST_F(ParameterStoreTest, AListedFileThatIsGoneSkipsTheBinaryFile) {
  ASSERT_EQ(files_.AddFile(make("a.uvx")), 1);
  ASSERT_EQ(files_.AddFile(make("b.uvx")), 1);
  ASSERT_EQ(files_.changeCell(0), 1);
  ASSERT_EQ(save(), 1);
  ASSERT_TRUE(std::filesystem::remove(data_.file("b.uvx")));
  UvxFileList again;
  ParameterStore(home_.path()).LoadParameters(parameters_, again);
  ASSERT_EQ(again.inputs().count(), 1);
  EXPECT_EQ(again.inputs().selections[0].setCount(), 3);
}

TEST_F(ParameterStoreTest, AHugeCountOfFilesEndsSoon) {
  writeFile(ini(), "[ZELMFS-FILES]\nNUVX=2147483647\nUVX0=" + make("a.uvx") + "\n");
  load();
  EXPECT_EQ(files_.inputs().count(), 1);
}

TEST_F(ParameterStoreTest, ANegativeCountOfFilesIsNone) {
  writeFile(ini(), "[ZELMFS-FILES]\nNUVX=-5\nUVX0=" + make("a.uvx") + "\n");
  load();
  EXPECT_EQ(files_.inputs().count(), 0);
}

TEST_F(ParameterStoreTest, AMissingBinaryFileLeavesMasksAndBlockAsAdded) {
  list({make("a.uvx")});
  ParameterStore store(home_.path());
  store.LoadParameters(parameters_, files_);
  EXPECT_EQ(files_.inputs().selections[0].setCount(), 3);
  EXPECT_EQ(files_.imaging().halfSizeX, 256);
  EXPECT_TRUE(store.status().ok()) << store.status().text();
}

TEST_F(ParameterStoreTest, AStoredCountThatDiffersFromTheFilesIsAcceptedAsItStands) {
  ASSERT_EQ(files_.AddFile(make("a.uvx")), 1);
  ASSERT_EQ(files_.AddFile(make("b.uvx")), 1);
  ASSERT_EQ(save(), 1);
  for (const std::vector<std::string>& listed :
       {std::vector{data_.file("a.uvx")},
        std::vector{data_.file("a.uvx"), data_.file("b.uvx"), make("c.uvx"), make("d.uvx")}}) {
    list(listed);
    UvxFileList again;
    ParameterStore(home_.path()).LoadParameters(parameters_, again);
    EXPECT_EQ(again.inputs().count(), static_cast<std::int32_t>(listed.size()));
    EXPECT_EQ(again.inputs().selections.count(), 2);
    EXPECT_EQ(again.idTable().rowCount(), 6);
    EXPECT_EQ(again.frequencies().number, listed.size() == 1 ? 3 : 6);
  }
}

TEST_F(ParameterStoreTest, AnEmptyBinaryFileLeavesNoMasks) {
  list({make("a.uvx")});
  writeFile(bin(), "");
  ParameterStore store(home_.path());
  store.LoadParameters(parameters_, files_);
  EXPECT_EQ(files_.inputs().selections.count(), 0);
  EXPECT_EQ(files_.frequencies().number, 0);
  EXPECT_EQ(files_.imaging().halfSizeX, 256);
  EXPECT_FALSE(store.status().ok());
}

class HostileBinary : public ParameterStoreTest, public testing::WithParamInterface<std::string> {};

TEST_P(HostileBinary, DoesNoHarm) {
  list({make("a.uvx"), make("b.uvx")});
  writeFile(bin(), GetParam());
  ParameterStore store(home_.path());
  store.LoadParameters(parameters_, files_);
  EXPECT_FALSE(store.status().ok());
  EXPECT_EQ(store.status().file(), bin());
  EXPECT_EQ(files_.inputs().count(), 2);
  EXPECT_EQ(files_.imaging().halfSizeX, 256) << "the block keeps its defaults";
  for (std::int64_t row = 0; row < files_.idTable().rowCount(); ++row) {
    EXPECT_FALSE(files_.idTable().rowText(row).empty());
    files_.changeCell(row);
  }
  EXPECT_EQ(files_.AddFile(make("c.uvx")), 1);
  files_.DeleteFile();
  EXPECT_EQ(save(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Files, HostileBinary,
    testing::Values(std::string("\x01"), int32Bytes(-1), int32Bytes(std::numeric_limits<std::int32_t>::max()),
                    int32Bytes(std::numeric_limits<std::int32_t>::min()), int32Bytes(2),
                    int32Bytes(0) + "AMP2",
                    int32Bytes(1) + int32Bytes(std::numeric_limits<std::int32_t>::max()),
                    int32Bytes(2) + int32Bytes(3) + '\x07' + int32Bytes(-4),
                    int32Bytes(2) + int32Bytes(3) + '\x07' + int32Bytes(80) + "\xFF",
                    int32Bytes(1) + int32Bytes(3) + '\x07' + "AMP1" + std::string(20, '\x7F'),
                    int32Bytes(1000) + std::string(4000, '\0'), std::string(5000, '\xFF')));

TEST_F(ParameterStoreTest, ABrokenProfileGivesDefaultsAndStaysAsItIs) {
  const std::string content("[ZELMFS-FILES]\nITER=5\n\0", 23);
  writeFile(ini(), content);
  ParameterStore store(home_.path());
  store.LoadParameters(parameters_, files_);
  EXPECT_EQ(parameters_.iterations, 1000);
  EXPECT_EQ(store.status().file(), ini());
  EXPECT_EQ(store.SaveParameters(parameters_, files_), 0);
  EXPECT_EQ(readFile(ini()), content);
}

TEST_F(ParameterStoreTest, SavingRemovesWhatAKilledProgramLeft) {
  writeFile(home_.file(".lumo-0123456789abcdef.tmp"), "half");
  EXPECT_EQ(save(), 1);
  EXPECT_FALSE(test::exists(home_.file(".lumo-0123456789abcdef.tmp")));
}

TEST_F(ParameterStoreTest, FilesOfAnyNameAndAnyPrefixAreKept) {
  const std::vector<std::string> names = {"with space  two",
                                          " blank at both ends ",
                                          "it's \"quoted\"",
                                          "\"quoted\"",
                                          "[section]",
                                          "KEY=value; comment",
                                          "MFS^cln0",
                                          "Квазар 3C 84°",
                                          "latin-1 \xe4\xf6",
                                          "\xff\xfe",
                                          "#hash",
                                          std::string(255, 'n')};
  for (const std::string& name : names) {
    files_.AddFile(make(name));
    parameters_.prefix = name;
    RunParameters copy = parameters_;
    ASSERT_EQ(ParameterStore(home_.path()).SaveParameters(copy, files_), 1) << name;
    UvxFileList loadedFiles;
    RunParameters loaded;
    ParameterStore store(home_.path());
    store.LoadParameters(loaded, loadedFiles);
    EXPECT_TRUE(store.status().ok()) << store.status().text();
    EXPECT_EQ(loaded.prefix, name);
    ASSERT_EQ(loadedFiles.inputs().count(), files_.inputs().count());
    EXPECT_EQ(loadedFiles.inputs().names[files_.inputs().count() - 1], data_.file(name));
  }
}

TEST_F(ParameterStoreTest, AFailureToWriteTheBinaryFileLeavesTheProfileWritten) {
  std::filesystem::create_directory(bin());
  ParameterStore store(home_.path());
  EXPECT_EQ(store.SaveParameters(parameters_, files_), 0);
  EXPECT_EQ(store.status().code(), StatusCode::kWriteFailed);
  EXPECT_EQ(Profile(ini()).GetProfileInt("ZELMFS-FILES", "ITER", 0), 1000);
}

}  // namespace
}  // namespace lumo
