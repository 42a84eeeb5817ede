// SPDX-License-Identifier: GPL-3.0-or-later
#include <filesystem>

#include "MsFixture.h"

namespace lumo {
namespace {

namespace fs = std::filesystem;
using test::everythingIn;
using test::MsBuilder;
using ::testing::HasSubstr;

/// Sets that must stay as they are, and sets with something wrong.
class MsDamageTest : public test::MsFixture {
 protected:
  MsDamageTest() {
    builder_.windows[0].frequencies = {5e9, 5.001e9};
    builder_.windows[0].widths = {1e6, 1e6};
    builder_.correlations = {{5, 8}};
    for (int i = 0; i < 40; ++i) builder_.add(100 + i, 200, {1, 2});
  }
  /// Replaces `from` by `to`, of one length, in a file of the set.
  void patch(const std::string& name, const std::string& from, const std::string& to) {
    const std::string path = input_ + "/" + name;
    std::string bytes = test::readFile(path);
    const auto place = bytes.find(from);
    ASSERT_NE(place, std::string::npos);
    ASSERT_EQ(from.size(), to.size());
    for (auto at = place; at != std::string::npos; at = bytes.find(from, at))
      bytes.replace(at, to.size(), to);
    test::writeFile(path, bytes);
  }
  MsBuilder builder_;
};

TEST_F(MsDamageTest, NothingInTheSetChanges) {
  for (const bool tiled : {false, true}) {
    builder_.tiled = tiled;
    builder_.write(input_);
    const auto before = everythingIn(input_);
    ASSERT_TRUE(importAgain().ok());
    EXPECT_EQ(everythingIn(input_), before);
    fs::remove_all(input_);
  }
}

TEST_F(MsDamageTest, NoLockFileIsMadeWhereThereIsNone) {
  builder_.write(input_);
  std::vector<fs::path> locks;
  for (const auto& entry : fs::recursive_directory_iterator(input_))
    if (entry.path().filename() == "table.lock") locks.push_back(entry.path());
  ASSERT_GT(locks.size(), 5U);
  for (const fs::path& lock : locks) fs::remove(lock);
  const auto before = everythingIn(input_);
  ASSERT_TRUE(importAgain().ok());
  EXPECT_EQ(everythingIn(input_), before);
}

TEST_F(MsDamageTest, AReadOnlySetIsImported) {
  builder_.write(input_);
  const auto setPermissions = [&](fs::perms folders, fs::perms files) {
    fs::permissions(input_, folders);
    for (const auto& entry : fs::recursive_directory_iterator(input_))
      fs::permissions(entry.path(), entry.is_directory() ? folders : files);
  };
  setPermissions(fs::perms::owner_read | fs::perms::owner_exec, fs::perms::owner_read);
  const auto before = everythingIn(input_);
  const Status status = importAgain();
  EXPECT_EQ(everythingIn(input_), before);
  setPermissions(fs::perms::owner_all, fs::perms::owner_read | fs::perms::owner_write);
  ASSERT_TRUE(status.ok()) << status.text();
  EXPECT_EQ(report_.files.at(0).records, 40U);
}

TEST_F(MsDamageTest, NothingIsWrittenIntoTheSet) {
  builder_.write(input_);
  const auto before = everythingIn(input_);
  for (const char* inside : {"", "/", "/new", "/new/deeper/", "/ANTENNA/../new"}) {
    options_.outFolder = input_ + inside;
    const Status status = importVisibilities(input_, options_, RunIndicators{}, report_);
    EXPECT_EQ(status.code(), StatusCode::kInvalidValue) << inside;
    EXPECT_THAT(status.message(), HasSubstr("within the Measurement Set"));
  }
  EXPECT_EQ(everythingIn(input_), before);
}

TEST_F(MsDamageTest, ATrailingSeparatorIsNoPartOfTheName) {
  builder_.write(input_);
  input_ += "/";
  ASSERT_TRUE(importAgain().ok());
  EXPECT_EQ(fileOf(0), "data.uvx");
}

TEST_F(MsDamageTest, OtherFoldersAreNoMeasurementSets) {
  fs::create_directory(input_);
  Status status = importAgain();
  EXPECT_EQ(status.code(), StatusCode::kUnsupported);
  EXPECT_THAT(status.message(), HasSubstr("no Measurement Set: there is no file table.dat"));
  test::writeFile(input_ + "/table.dat", "not a table");
  status = importAgain();
  EXPECT_FALSE(status.ok());
  EXPECT_EQ(status.file(), input_);
}

TEST_F(MsDamageTest, OtherCasacoreTablesAreRefused) {
  builder_.write(input_);
  input_ += "/SPECTRAL_WINDOW";
  const Status status = importAgain();
  EXPECT_EQ(status.code(), StatusCode::kUnsupported);
  EXPECT_THAT(status.message(), HasSubstr("expected a Measurement Set"));
}

TEST_F(MsDamageTest, AColumnOfAnUnknownKindDoesNotEndTheProgram) {
  for (const char* const table : {"FIELD/table.dat", "table.dat"}) {
    SCOPED_TRACE(table);
    fs::remove_all(input_);
    builder_.write(input_);
    patch(table, "ArrayColumnDesc<double", "XrrayColumnDesc<double");
    const Status status = importAgain();
    EXPECT_EQ(status.code(), StatusCode::kReadFailed) << status.text();
    EXPECT_THAT(status.message(), HasSubstr("the table is damaged"));
  }
}

TEST_F(MsDamageTest, MissingColumnsAreNamed) {
  for (const char* column : {"UVW", "FLAG", "FLAG_ROW", "DATA_DESC_ID"}) {
    builder_.removedColumns = {column};
    EXPECT_THAT(refusal(builder_), HasSubstr(std::string("the main table has no column ") + column));
  }
}

TEST_F(MsDamageTest, MissingSubtablesAreNamed) {
  for (const char* name : {"FIELD", "SPECTRAL_WINDOW", "POLARIZATION", "DATA_DESCRIPTION"}) {
    builder_.removedSubtables = {name};
    EXPECT_THAT(refusal(builder_), HasSubstr(std::string("has no subtable ") + name));
  }
}

TEST_F(MsDamageTest, ImagingNeedsNeitherAntennasNorHistory) {
  builder_.removedSubtables = {"ANTENNA", "HISTORY", "OBSERVATION", "POINTING", "STATE", "PROCESSOR", "FEED"};
  EXPECT_EQ(imported(builder_).groups.size(), 40U);
}

TEST_F(MsDamageTest, RowsThatPointNowhereAreNamed) {
  builder_.rows[5].field = 7;
  EXPECT_THAT(refusal(builder_), HasSubstr("row 5 has FIELD_ID 7; expected 0 to 0"));
}

TEST_F(MsDamageTest, DataDescriptionsThatPointNowhereAreNamed) {
  builder_.descriptions = {{0, 0}, {0, 0}, {0, 0}};
  builder_.rows[5].description = 1;
  builder_.rows[6].description = 2;
  builder_.danglingWindow = 1;
  builder_.danglingPolarization = 2;
  ASSERT_TRUE(import(builder_).ok());
  EXPECT_THAT(
      report_.warnings,
      ::testing::ElementsAre(HasSubstr("spectral window 99 (1 rows) was left out: the set does not list it"),
                             HasSubstr("the set does not list its POLARIZATION_ID 99")));
  EXPECT_EQ(report_.files.at(0).records, 38U);
}

TEST_F(MsDamageTest, CellsOfAnotherShapeAreNamed) {
  builder_.rows[7].data.resize(6);
  EXPECT_THAT(refusal(builder_), HasSubstr("row 7: DATA has 2 x 3 numbers; expected 2 x 2"));
  builder_.rows[7].data.resize(4);
  builder_.rows[8].flags.assign(2, 0);
  EXPECT_THAT(refusal(builder_), HasSubstr("row 8: FLAG has 2 x 1 numbers; expected 2 x 2"));
}

TEST_F(MsDamageTest, AStorageManagerThatIsNotThereIsNamed) {
  builder_.write(input_);
  patch("table.dat", "StandardStMan", "SqueezedStMan");
  const Status status = importAgain();
  EXPECT_EQ(status.code(), StatusCode::kUnsupported);
  EXPECT_THAT(status.message(), HasSubstr("squeezedstman not found"));
  EXPECT_THAT(status.message(), HasSubstr("casacore of this program cannot read"));
}

TEST_F(MsDamageTest, ColumnsInOtherUnitsAreRefused) {
  builder_.write(input_);
  patch("table.dat", std::string("\x01m", 2), std::string("\x01k", 2));
  const Status status = importAgain();
  EXPECT_THAT(status.message(), HasSubstr("column UVW is in 'k'; expected m"));
}

TEST_F(MsDamageTest, TilesThatAreMissingAreNotReadAsZeros) {
  builder_.tiled = true;
  builder_.write(input_);
  int tiles = 0;
  for (const auto& entry : fs::directory_iterator(input_)) {
    const std::string file = entry.path().string();
    if (file.find("_TSM") == std::string::npos || entry.file_size() == 0) continue;
    ++tiles;
    const std::string whole = test::readFile(file);
    for (const std::size_t length : {std::size_t{0}, whole.size() / 3, whole.size() - 1}) {
      test::writeFile(file, whole.substr(0, length));
      const Status status = importAgain();
      EXPECT_EQ(status.code(), StatusCode::kBadFormat);
      EXPECT_THAT(status.message(), HasSubstr("the set was cut short"));
    }
    test::writeFile(file, whole);
  }
  EXPECT_EQ(tiles, 2);  // DATA and FLAG
}

TEST_F(MsDamageTest, SetsCutShortDoNotCrash) {
  for (const bool tiled : {false, true}) {
    builder_.tiled = tiled;
    builder_.write(input_);
    std::vector<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(input_)) {
      const std::string name = entry.path().filename().string();
      const std::string folder = entry.path().parent_path().filename().string();
      const bool read = folder == "data.ms" || folder == "FIELD" || folder == "SPECTRAL_WINDOW" ||
                        folder == "POLARIZATION" || folder == "DATA_DESCRIPTION";
      if (entry.is_regular_file() && read && name != "table.lock" && name != "table.info")
        files.push_back(entry.path().string());
    }
    ASSERT_GT(files.size(), 10U);
    int refused = 0;
    for (const std::string& file : files) {
      const std::string whole = test::readFile(file);
      for (const std::size_t length : {std::size_t{0}, whole.size() / 3, whole.size() - 1}) {
        if (length >= whole.size()) continue;
        test::writeFile(file, whole.substr(0, length));
        const Status status = importAgain();
        if (!status.ok()) {
          EXPECT_FALSE(status.message().empty());
          EXPECT_EQ(status.file(), input_);
          ++refused;
        }
      }
      test::writeFile(file, whole);
    }
    EXPECT_GT(refused, static_cast<int>(files.size()));
    EXPECT_TRUE(importAgain().ok());
    fs::remove_all(input_);
  }
}

}  // namespace
}  // namespace lumo
