// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Program.h"
#include "support/RealData.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using ::testing::HasSubstr;

class ImportCommandTest : public testing::Test {
 protected:
  int import(test::Words words) {
    words.insert(words.begin(), "import");
    words.insert(words.end(), {"--out", folder_.file("out")});
    const test::Program program(folder_, words);
    const int status = program.wait();
    out_ = program.out();
    err_ = program.err();
    return status;
  }
  test::TempFolder folder_;
  std::string out_, err_;
};

TEST_F(ImportCommandTest, AFolderThatIsNoMeasurementSetIsRefused) {
  EXPECT_EQ(import({folder_.path()}), 1);
  EXPECT_THAT(err_, HasSubstr("is a folder, but no Measurement Set"));
}

TEST_F(ImportCommandTest, AveragesOfNoChannelsAreAWrongCommandLine) {
  EXPECT_EQ(import({folder_.file("x.uvf"), "--average", "0"}), 2);
  EXPECT_EQ(import({folder_.file("x.uvf"), "--average", "-4"}), 2);
  EXPECT_EQ(import({folder_.file("x.uvf"), "--average", "some"}), 2);
}

TEST_F(ImportCommandTest, AColumnIsRefusedWhereThereAreNone) {
  test::writeFile(folder_.file("x.uvf"), "SIMPLE");
  EXPECT_EQ(import({folder_.file("x.uvf"), "--column", "data"}), 1);
  EXPECT_THAT(err_, HasSubstr("a column (data) can be chosen in Measurement Sets only"));
}

TEST_F(ImportCommandTest, UvfitsChannelsAreAveraged) {
  LUMO_NEEDS_REAL_DATA();
  EXPECT_EQ(import({test::realDataFolder() + "vlba-j0414-1996/vis_multichan.vis", "--average", "8"}), 0)
      << err_;
  EXPECT_THAT(out_, HasSubstr("16 IFs x 1 channels x 1 products"));
  // The mean of channels 0 to 7 of 0.5 MHz from 4600.99 MHz on.
  EXPECT_THAT(out_, HasSubstr("4602.740000"));
}

TEST_F(ImportCommandTest, AMeasurementSetIsImportedAndItsColumnNamed) {
  LUMO_NEEDS_REAL_DATA();
  const int status = import({test::realDataFolder() + "lofar-3c48-2013-ms/lofar-3c48-regular.ms"});
#if LUMO_MS
  EXPECT_EQ(status, 0) << err_;
  EXPECT_THAT(out_,
              HasSubstr("note: the visibilities are those of column CORRECTED_DATA (the set also has DATA)"));
  EXPECT_TRUE(test::exists(folder_.file("out/lofar-3c48-regular.uvx")));
#else
  EXPECT_EQ(status, 1);
  EXPECT_THAT(err_, HasSubstr("it was built without casacore"));
#endif
}

}  // namespace
}  // namespace lumo
