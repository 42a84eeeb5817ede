// SPDX-License-Identifier: GPL-3.0-or-later
#include <filesystem>

#include "UvfitsFixture.h"
#include "convert/ImportKind.h"
#include "io/UvxSample.h"

namespace lumo {
namespace {

namespace fs = std::filesystem;
using test::FitsHeader;
using test::UvfitsBuilder;
using test::writeFile;

class ImportKindTest : public ::testing::Test {
 protected:
  /// A folder with what makes casacore call it a table of a type.
  std::string table(const std::string& name, const std::string& type) {
    fs::create_directories(folder_.file(name));
    writeFile(folder_.file(name + "/table.dat"), "bytes");
    writeFile(folder_.file(name + "/table.info"), "Type = " + type + "\nSubType = \n\n");
    return folder_.file(name);
  }
  ImportKind kindOf(const std::string& bytes) {
    writeFile(folder_.file("file"), bytes);
    return importableAt(folder_.file("file")).kind;
  }

  test::TempFolder folder_;
};

TEST_F(ImportKindTest, AFileOfRandomGroupsIsUvfitsUnderAnyName) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  writeFile(folder_.file("a.uvx"), builder.bytes());
  const Importable found = importableAt(folder_.file("a.uvx"));
  EXPECT_EQ(found.kind, ImportKind::kUvfits);
  EXPECT_EQ(found.input, folder_.file("a.uvx"));
}

TEST_F(ImportKindTest, AFileCutBehindItsFirstHeaderIsStillUvfits) {
  EXPECT_EQ(kindOf(UvfitsBuilder().bytes().substr(0, 5760)), ImportKind::kUvfits);
}

TEST_F(ImportKindTest, TheCardOfGroupsMayStandBehindManyOthers) {
  UvfitsBuilder builder;
  builder.edit = [](FitsHeader& header) {
    header.remove("GROUPS");
    for (int i = 0; i < 200; ++i) header.history("a line of the past");
    header.logical("GROUPS", true);
  };
  EXPECT_EQ(kindOf(builder.bytes()), ImportKind::kUvfits);
}

TEST_F(ImportKindTest, AnImageIsNothingToImport) {
  FitsHeader image;
  image.logical("SIMPLE", true).whole("BITPIX", -32).whole("NAXIS", 2).whole("NAXIS1", 4).whole("NAXIS2", 4);
  EXPECT_EQ(kindOf(image.bytes()), ImportKind::kNone);
  EXPECT_EQ(kindOf(image.logical("GROUPS", true).bytes()), ImportKind::kNone);
  EXPECT_EQ(kindOf(image.set("NAXIS1", "0").set("GROUPS", "F").bytes()), ImportKind::kNone);
}

TEST_F(ImportKindTest, OtherFilesAndMissingOnesAreNothingToImport) {
  test::writeSample(folder_.file("a.uvx"), test::sampleContent(), 2);
  EXPECT_EQ(importableAt(folder_.file("a.uvx")).kind, ImportKind::kNone);
  EXPECT_EQ(kindOf(""), ImportKind::kNone);
  EXPECT_EQ(kindOf("SIMPLE"), ImportKind::kNone);
  EXPECT_EQ(kindOf(std::string(5760, ' ')), ImportKind::kNone);
  EXPECT_EQ(importableAt(folder_.file("missing")).kind, ImportKind::kNone);
  EXPECT_EQ(importableAt("").kind, ImportKind::kNone);
}

TEST_F(ImportKindTest, AMeasurementSetIsItsFolder) {
  const std::string set = table("data.ms", "Measurement Set");
  for (const std::string& path : {set, set + "/"}) {
    EXPECT_EQ(importableAt(path).kind, ImportKind::kMeasurementSet) << path;
    EXPECT_EQ(importableAt(path).input, set);
  }
}

TEST_F(ImportKindTest, ATableFileOfASetOrOfItsSubtablesStandsForTheSet) {
  const std::string set = table("data.ms", "Measurement Set");
  table("data.ms/ANTENNA", "");
  for (const char* const inside : {"/table.dat", "/table.info", "/ANTENNA/table.dat", "/ANTENNA"}) {
    EXPECT_EQ(importableAt(set + inside).kind, ImportKind::kMeasurementSet) << inside;
    EXPECT_EQ(importableAt(set + inside).input, set) << inside;
  }
}

TEST_F(ImportKindTest, OtherFilesInASetStandForThemselves) {
  const std::string set = table("data.ms", "Measurement Set");
  writeFile(set + "/notes.txt", "mine");
  EXPECT_EQ(importableAt(set + "/notes.txt").kind, ImportKind::kNone);
}

TEST_F(ImportKindTest, OtherTablesAndFoldersAreNothingToImport) {
  EXPECT_EQ(importableAt(table("image.im", "Image") + "/table.dat").kind, ImportKind::kNone);
  EXPECT_EQ(importableAt(folder_.path()).kind, ImportKind::kNone);
  fs::remove(table("half.ms", "Measurement Set") + "/table.dat");
  EXPECT_EQ(importableAt(folder_.file("half.ms")).kind, ImportKind::kNone);
}

}  // namespace
}  // namespace lumo
