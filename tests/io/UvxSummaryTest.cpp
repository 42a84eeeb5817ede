// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "UvxSample.h"
#include "io/AUVXFile.h"
#include "io/UvxSummary.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class UvxSummaryTest : public testing::Test {
 protected:
  std::string summary(const UvxContent& content, int groups) {
    const std::string path = folder_.file("a.uvx");
    test::writeSample(path, content, groups);
    AUVXFile file;
    EXPECT_EQ(file.Open(path, AFile::kRead), 1);
    return uvxSummary(path, file, countGroups(file));
  }

  test::TempFolder folder_;
};

TEST_F(UvxSummaryTest, NamesFileShapeSourceExtentsAndTables) {
  const std::string text = summary(test::sampleContent(2, 3), 4);
  EXPECT_THAT(text, StartsWith(folder_.file("a.uvx") +
                               ": UVX version 1, 4 groups (0 flagged), 2 IFs x 3 channels x 2 products, "
                               "unit 'JY'\n"));
  EXPECT_THAT(text, HasSubstr("source 7 0235+164 at RA 39.662209 Dec 16.616465 deg, epoch 2000\n"));
  EXPECT_THAT(text, HasSubstr("u 0 .. 3, v -6 .. 0 seconds\n"));
  EXPECT_THAT(text, HasSubstr(" AN (1 rows)"));
}

TEST_F(UvxSummaryTest, HasALineForEachIfOfEachSelection) {
  const std::string text = summary(test::sampleContent(2, 3, 2), 4);
  // Selections at 1.5 and 1.6 GHz with IFs 10 MHz apart.
  for (const char* const mhz : {"1500.000000", "1510.000000", "1600.000000", "1610.000000"})
    EXPECT_THAT(text, HasSubstr(mhz));
  EXPECT_THAT(text, HasSubstr("3 x -250k"));
  EXPECT_THAT(text, EndsWith("\n"));
}

TEST_F(UvxSummaryTest, ALongPathIsNotCut) {
  const std::string path = "/" + std::string(3000, 'x') + ".uvx";
  test::writeSample(folder_.file("a.uvx"), test::sampleContent(), 1);
  AUVXFile file;
  ASSERT_EQ(file.Open(folder_.file("a.uvx"), AFile::kRead), 1);
  EXPECT_THAT(uvxSummary(path, file, countGroups(file)), StartsWith(path + ": UVX"));
}

}  // namespace
}  // namespace lumo
