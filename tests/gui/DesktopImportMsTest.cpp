// SPDX-License-Identifier: GPL-3.0-or-later
// "Add..." when what is chosen is a Measurement Set.
#include <gmock/gmock.h>

#include <filesystem>

#include "convert/MsBuilder.h"
#include "gui/ImportTest.h"

namespace lumo::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class DesktopImportMsTest : public ImportTest {
 protected:
  /// Two rows at 5 GHz.
  std::string set(const char* name) {
    MsBuilder builder;
    builder.add(3000, 4000, 1);
    builder.add(-2000, 1000, 1);
    builder.write(data_.file(name));
    return data_.file(name);
  }
};

TEST_F(DesktopImportMsTest, AFileChosenInASetMeansTheSet) {
  const std::string path = set("obs.ms");
  open();
  add({path + "/table.dat", path + "/table.info", path + "/ANTENNA/table.dat"});
  ASSERT_EQ(prompts_.questions.size(), 1u);
  EXPECT_THAT(prompts_.questions[0], HasSubstr(path + " is a Measurement Set.\nImport it?"));
  EXPECT_THAT(prompts_.questions[0], HasSubstr("The UVX files go to:\n" + data_.path() + "\n"));
  EXPECT_THAT(prompts_.messages, IsEmpty());
  EXPECT_THAT(listed(), ElementsAre(data_.file("obs.uvx")));
  EXPECT_EQ(text("minimum"), "5000");
}

TEST_F(DesktopImportMsTest, ASetDroppedOnTheWindowIsOfferedToo) {
  const std::string path = set("obs.ms");
  open();
  drop({path});
  EXPECT_THAT(prompts_.questions, ElementsAre(HasSubstr(path + " is a Measurement Set.")));
  EXPECT_THAT(listed(), ElementsAre(data_.file("obs.uvx")));
}

TEST_F(DesktopImportMsTest, ADamagedSetIsToldInAMessageBox) {
  const std::string path = set("obs.ms");
  std::filesystem::remove_all(path + "/SPECTRAL_WINDOW");
  open();
  add({path + "/table.dat"});
  ASSERT_EQ(prompts_.messages.size(), 1u);
  EXPECT_THAT(prompts_.messages[0], HasSubstr("The import failed.\n\n" + path + ": "));
  EXPECT_THAT(prompts_.messages[0], HasSubstr("SPECTRAL_WINDOW"));
  EXPECT_THAT(listed(), IsEmpty());
}

}  // namespace
}  // namespace lumo::test
