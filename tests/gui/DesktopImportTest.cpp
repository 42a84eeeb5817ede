// SPDX-License-Identifier: GPL-3.0-or-later
// "Add..." when what is chosen is a UVFITS file.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>
#include <QTimer>
#include <QUrl>

#include "convert/UvfitsBuilder.h"
#include "gui/ImportTest.h"
#include "run/RunSample.h"

namespace lumo::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class DesktopImportTest : public ImportTest {
 protected:
  /// Three records at 5 GHz.
  std::string uvfits(const char* name) {
    UvfitsBuilder builder;
    for (int i = 0; i < 3; ++i) builder.add(0.01 * (i + 1), -0.02, 258, 1, 0, 1);
    writeFile(data_.file(name), builder.bytes());
    return data_.file(name);
  }
  /// Sources A and B.
  std::string twoSources(const char* name) {
    UvfitsBuilder builder;
    builder.addParameter("SOURCE");
    builder.tables.push_back(sourceTable(1));
    builder.tables.back().numbers({1}).text("A").numbers({10, 20, 2000, 0});
    builder.tables.back().numbers({2}).text("B").numbers({30, 40, 2000, 0});
    builder.add(0.1, 0.2, 258, 1, 0, 1, {1});
    builder.add(0.3, 0.4, 258, 2, 0, 1, {2});
    writeFile(data_.file(name), builder.bytes());
    return data_.file(name);
  }
  /// UVFITS, cut in the middle of its only group.
  std::string damaged(const char* name) {
    UvfitsBuilder builder;
    builder.add(0.1, 0.2, 258, 1, 0, 1);
    const std::string bytes = builder.bytes();
    writeFile(data_.file(name), bytes.substr(0, bytes.size() - 2880 + 20));
    return data_.file(name);
  }
  std::string uvx(const char* name) {
    writeUvx(data_.file(name), UvxSample());
    return data_.file(name);
  }
  void chooseWorkFolder(const std::string& folder) {
    prompts_.folder = QString::fromStdString(folder);
    press("browse");
  }
};

/// A file in a folder that nobody can write to, whoever runs the tests.
class UnwritablePlace {
 public:
  explicit UnwritablePlace(const std::string& file)
      : descriptor_(::open(file.c_str(), O_RDONLY | O_CLOEXEC)) {}
  UnwritablePlace(const UnwritablePlace&) = delete;
  UnwritablePlace& operator=(const UnwritablePlace&) = delete;
  ~UnwritablePlace() { ::close(descriptor_); }
  [[nodiscard]] std::string name() const { return std::to_string(descriptor_); }
  [[nodiscard]] std::string path() const { return "/proc/self/fd/" + name(); }

 private:
  int descriptor_;
};

TEST_F(DesktopImportTest, AUvfitsFileIsImportedBesideItselfAndListed) {
  open();
  add({uvfits("obs.uvfits")});
  ASSERT_EQ(prompts_.questions.size(), 1u);
  EXPECT_THAT(prompts_.questions[0],
              AllOf(HasSubstr(data_.file("obs.uvfits") + " is a UVFITS file.\nImport it?"),
                    HasSubstr("The UVX files go to:\n" + data_.path() + "\n"), HasSubstr("not replaced")));
  EXPECT_THAT(listed(), ElementsAre(data_.file("obs.uvx")));
  EXPECT_THAT(prompts_.messages, IsEmpty());
  EXPECT_EQ(text("minimum"), "5000");
  EXPECT_EQ(text("folder"), data_.path());
  EXPECT_EQ(text("status"), "");
  EXPECT_TRUE(isEnabled("run"));
  EXPECT_EQ(dialog_->focusWidget()->objectName(), "add");
}

TEST_F(DesktopImportTest, WhatTheImporterNotesGoesToTheLog) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  builder.add(0.1, 0.2, 257, 1, 0, 1);  // antenna 1 with itself
  writeFile(data_.file("obs.uvf"), builder.bytes());
  open();
  add({data_.file("obs.uvf")});
  EXPECT_THAT(logText(), AllOf(HasSubstr("Imported " + data_.file("obs.uvf")),
                               HasSubstr(data_.file("obs.uvx") + ": source SRC, 1 records (0 flagged)"),
                               HasSubstr("1 autocorrelations were left out")));
}

TEST_F(DesktopImportTest, DecliningImportsNothing) {
  open();
  prompts_.agrees = false;
  add({uvfits("obs.uvfits"), uvx("a.uvx")});
  EXPECT_EQ(prompts_.questions.size(), 1u);
  EXPECT_THAT(listed(), ElementsAre(data_.file("a.uvx")));
  EXPECT_FALSE(exists(data_.file("obs.uvx")));
  EXPECT_THAT(prompts_.messages, IsEmpty());
  EXPECT_THAT(logText(), HasSubstr("Not imported, as you wished: " + data_.file("obs.uvfits")));
}

TEST_F(DesktopImportTest, UvxFilesAloneAreAddedWithoutAQuestion) {
  open();
  add({uvx("a.uvx")});
  EXPECT_THAT(prompts_.questions, IsEmpty());
  EXPECT_THAT(listed(), ElementsAre(data_.file("a.uvx")));
}

TEST_F(DesktopImportTest, SeveralFilesAreAskedAboutOnce) {
  open();
  add({uvfits("b.uvf"), uvx("a.uvx"), uvfits("c.uvf"), data_.file("b.uvf")});
  ASSERT_EQ(prompts_.questions.size(), 1u);
  EXPECT_THAT(prompts_.questions[0], HasSubstr(data_.file("b.uvf") + " is a UVFITS file.\n" +
                                               data_.file("c.uvf") + " is a UVFITS file.\nImport them?"));
  EXPECT_THAT(listed(), ElementsAre(data_.file("a.uvx"), data_.file("b.uvx"), data_.file("c.uvx")));
}

TEST_F(DesktopImportTest, AQuestionAboutManyFilesNamesTenOfThem) {
  open();
  std::vector<std::string> paths;
  for (int i = 10; i < 22; ++i) paths.push_back(uvfits((std::to_string(i) + ".uvf").c_str()));
  prompts_.agrees = false;
  add(paths);
  ASSERT_EQ(prompts_.questions.size(), 1u);
  EXPECT_THAT(prompts_.questions[0], AllOf(HasSubstr("/19.uvf is a UVFITS file.\nand 2 more\nImport them?"),
                                           Not(HasSubstr("20.uvf"))));
}

TEST_F(DesktopImportTest, AFileThatIsThereAlreadyIsNotReplaced) {
  const std::string before = readFile(uvx("obs.uvx"));
  open();
  add({uvfits("obs.uvf")});
  EXPECT_THAT(listed(), ElementsAre(data_.file("obs_2.uvx")));
  EXPECT_EQ(readFile(data_.file("obs.uvx")), before);
  add({data_.file("obs.uvf")});
  EXPECT_THAT(listed(), ElementsAre(data_.file("obs_2.uvx"), data_.file("obs_3.uvx")));
}

TEST_F(DesktopImportTest, ADamagedFileIsToldInAMessageBoxAndTheOthersAreImported) {
  open();
  add({damaged("bad.uvf"), uvfits("good.uvf")});
  ASSERT_EQ(prompts_.messages.size(), 1u);
  EXPECT_THAT(prompts_.messages[0], HasSubstr("The import failed.\n\n" + data_.file("bad.uvf") + ": "));
  EXPECT_THAT(text("status"), HasSubstr("Not imported: " + data_.file("bad.uvf")));
  EXPECT_THAT(logText(), HasSubstr("Not imported: " + data_.file("bad.uvf")));
  EXPECT_THAT(listed(), ElementsAre(data_.file("good.uvx")));
  EXPECT_FALSE(exists(data_.file("bad.uvx")));
}

TEST_F(DesktopImportTest, EachOfTwoSourcesGetsAFileAndTheUserChoosesOne) {
  open();
  add({twoSources("obs.uvf")});
  ASSERT_EQ(prompts_.messages.size(), 1u);
  EXPECT_THAT(prompts_.messages[0],
              AllOf(HasSubstr(data_.file("obs.uvf") + " holds 2 sources."),
                    HasSubstr("A: " + data_.file("obs_A.uvx") + "\nB: " + data_.file("obs_B.uvx")),
                    HasSubstr("A run takes one source")));
  EXPECT_THAT(listed(), IsEmpty());
  EXPECT_FALSE(isEnabled("run"));
  add({data_.file("obs_B.uvx")});
  EXPECT_THAT(listed(), ElementsAre(data_.file("obs_B.uvx")));
}

TEST_F(DesktopImportTest, WhereNothingCanBeWrittenBesideTheFileTheWorkFolderIsTaken) {
  const UnwritablePlace place(uvfits("obs.uvf"));
  open();
  chooseWorkFolder(work_.path());
  add({place.path()});
  ASSERT_EQ(prompts_.questions.size(), 1u);
  EXPECT_THAT(prompts_.questions[0], HasSubstr("The UVX files go to:\n" + work_.path() + "\n"));
  EXPECT_THAT(listed(), ElementsAre(work_.file(place.name() + ".uvx")));
}

TEST_F(DesktopImportTest, WithoutAFolderToWriteToOneIsAskedFor) {
  const UnwritablePlace place(uvfits("obs.uvf"));
  open();
  chooseWorkFolder("/proc/");
  prompts_.importFolder = QString::fromStdString(work_.path());
  add({place.path()});
  ASSERT_EQ(prompts_.questions.size(), 1u);
  EXPECT_THAT(prompts_.questions[0], AllOf(HasSubstr("Nothing can be written"), Not(HasSubstr("go to:"))));
  EXPECT_THAT(listed(), ElementsAre(work_.file(place.name() + ".uvx")));
}

TEST_F(DesktopImportTest, GivingUpTheChoiceOfAFolderImportsNothing) {
  const UnwritablePlace place(uvfits("obs.uvf"));
  open();
  chooseWorkFolder("/proc/");
  add({place.path()});
  EXPECT_THAT(listed(), IsEmpty());
  EXPECT_THAT(prompts_.messages, IsEmpty());
  EXPECT_THAT(logText(), HasSubstr("Not imported, as you wished: " + place.path()));
}

TEST_F(DesktopImportTest, AFolderThatCannotBeWrittenToIsToldInAMessageBox) {
  const UnwritablePlace place(uvfits("obs.uvf"));
  open();
  chooseWorkFolder("/proc/");
  prompts_.importFolder = "/proc";
  add({place.path()});
  ASSERT_EQ(prompts_.messages.size(), 1u);
  EXPECT_THAT(prompts_.messages[0], HasSubstr("The import failed.\n\n/proc/" + place.name() + ".uvx"));
  EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(DesktopImportTest, AnImportCanBeCancelled) {
  open();
  std::string label;
  bool canAdd = true;
  // The first turn of the event loop after "Add..." was pressed is in the import.
  QTimer::singleShot(0, dialog_.get(), [&] {
    label = get<QPushButton>("run").text().toStdString();
    canAdd = isEnabled("add");
    press("run");
  });
  add({uvfits("obs.uvf"), uvfits("more.uvf")});
  EXPECT_EQ(label, "Cancel");
  EXPECT_FALSE(canAdd);
  EXPECT_EQ(text("status"), "Cancelled");
  EXPECT_THAT(logText(), HasSubstr("The import was cancelled"));
  EXPECT_THAT(prompts_.messages, IsEmpty());
  EXPECT_THAT(listed(), IsEmpty());
  EXPECT_FALSE(exists(data_.file("obs.uvx")));
  EXPECT_FALSE(exists(data_.file("more.uvx")));
  EXPECT_EQ(get<QPushButton>("run").text(), "Run");
  EXPECT_TRUE(isEnabled("add"));
}

TEST_F(DesktopImportTest, ClosingDuringAnImportAsksWhetherToCancelIt) {
  open();
  QTimer::singleShot(0, dialog_.get(), [&] { press("close"); });
  add({uvfits("obs.uvf")});
  ASSERT_EQ(prompts_.questions.size(), 2u);
  EXPECT_EQ(prompts_.questions[1], "An import is going on. Cancel it?");
  EXPECT_TRUE(dialog_->isVisible());
  EXPECT_EQ(text("status"), "Cancelled");
}

TEST_F(DesktopImportTest, FilesDroppedOnTheWindowAreAddedLikeChosenOnes) {
  open();
  drop({uvx("a.uvx"), uvfits("b.uvf")});
  EXPECT_THAT(prompts_.questions, ElementsAre(HasSubstr("b.uvf is a UVFITS file.")));
  EXPECT_THAT(listed(), ElementsAre(data_.file("a.uvx"), data_.file("b.uvx")));
}

TEST_F(DesktopImportTest, NothingIsTakenInThatIsNoFile) {
  CLumoDlg& dialog = open();
  QMimeData words;
  words.setText("words");
  QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &words, Qt::LeftButton, Qt::NoModifier);
  enter.ignore();
  QApplication::sendEvent(&dialog, &enter);
  EXPECT_FALSE(enter.isAccepted());
}

}  // namespace
}  // namespace lumo::test
