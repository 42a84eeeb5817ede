// SPDX-License-Identifier: GPL-3.0-or-later
#include "UvfitsFixture.h"

namespace lumo {
namespace {

using test::FitsHeader;
using test::UvfitsBuilder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class UvfitsSourcesTest : public test::UvfitsFixture {
 protected:
  /// Sources 3 "3C 84" with an offset of 5 MHz and 8 "M/87", two groups and one group; the axes say nothing.
  static UvfitsBuilder twoSources() {
    UvfitsBuilder builder;
    builder.addParameter("SOURCE");
    builder.axis("RA").value = 0;
    builder.axis("DEC").value = 0;
    builder.tables.push_back(test::sourceTable(1));
    builder.tables.back().numbers({3}).text("3C 84").numbers({49.95, 41.51, 2000, 5e6});
    builder.tables.back().numbers({8}).text("M/87").numbers({187.7, 12.39, 1950, 0});
    builder.add(0.1, 0.2, 258, 1, 0, 1, {3});
    builder.add(0.3, 0.4, 258, 2, 0, 1, {8});
    builder.add(0.5, 0.6, 258, 3, 0, 1, {3});
    return builder;
  }
};

TEST_F(UvfitsSourcesTest, EachSourceGetsAFileOfItsOwn) {
  ASSERT_TRUE(import(twoSources()).ok());
  ASSERT_EQ(report_.files.size(), 2U);
  EXPECT_EQ(report_.files[0].path, folder_.file("out/data_3C_84.uvx"));
  EXPECT_EQ(report_.files[1].path, folder_.file("out/data_M_87.uvx"));
  const auto first = test::readUvx(report_.files[0].path);
  const auto second = test::readUvx(report_.files[1].path);
  ASSERT_EQ(first.groups.size(), 2U);
  ASSERT_EQ(second.groups.size(), 1U);
  EXPECT_EQ(first.groups[1].visibilities.at(0).Re(), 3.0F);
  EXPECT_EQ(second.groups[0].record.source, 8);
  ASSERT_EQ(first.sources.size(), 1U);
  EXPECT_EQ(first.sources[0].name, "3C 84");
  EXPECT_EQ(first.sources[0].id, 3);
  EXPECT_EQ(first.sources[0].rightAscension, 49.95);
  EXPECT_EQ(second.sources[0].declination, 12.39);
  EXPECT_EQ(first.sources[0].epoch, 2000.0);
  EXPECT_EQ(second.sources[0].epoch, 1950.0);
}

TEST_F(UvfitsSourcesTest, ASourcesFrequencyOffsetIsAdded) {
  ASSERT_TRUE(import(twoSources()).ok());
  EXPECT_EQ(report_.files.at(0).bands.at(0).frequency, 5.005e9);
  EXPECT_EQ(report_.files.at(1).bands.at(0).frequency, 5e9);
}

TEST_F(UvfitsSourcesTest, OneSourceCanBeChosen) {
  options_.source = "M/87";
  ASSERT_TRUE(import(twoSources()).ok());
  ASSERT_EQ(report_.files.size(), 1U);
  EXPECT_EQ(report_.files[0].source, "M/87");
  EXPECT_EQ(report_.files[0].records, 1U);
}

TEST_F(UvfitsSourcesTest, AnUnknownChoiceListsWhatThereIs) {
  options_.source = "M 31";
  const Status status = import(twoSources());
  EXPECT_EQ(status.code(), StatusCode::kNoData);
  EXPECT_THAT(status.message(), HasSubstr("3C 84, M/87"));
}

TEST_F(UvfitsSourcesTest, SourcesWithOneNameGetDifferentFiles) {
  UvfitsBuilder builder = twoSources();
  builder.tables[0] = test::sourceTable(1);
  builder.tables[0].numbers({3}).text("A").numbers({49.95, 41.51, 2000, 0});
  builder.tables[0].numbers({8}).text("A").numbers({187.7, 12.39, 2000, 0});
  ASSERT_TRUE(import(builder).ok());
  ASSERT_EQ(report_.files.size(), 2U);
  EXPECT_NE(report_.files[0].path, report_.files[1].path);
}

TEST_F(UvfitsSourcesTest, AGroupOfAnUnlistedSourceIsNamed) {
  UvfitsBuilder builder = twoSources();
  builder.groups[1].parameters[6] = 9;
  EXPECT_THAT(refusal(builder), HasSubstr("group 2 has source number 9"));
}

TEST_F(UvfitsSourcesTest, SourceNumbersWithoutATableOrAPositionAreRefused) {
  UvfitsBuilder builder = twoSources();
  builder.tables.clear();
  EXPECT_THAT(refusal(builder), HasSubstr("AIPS SU"));
}

TEST_F(UvfitsSourcesTest, TheHeaderGivesASingleSourcesPosition) {
  UvfitsBuilder builder;
  builder.axis("RA").value = -10;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  const auto source = imported(builder).sources.at(0);
  EXPECT_EQ(source.name, "SRC");
  EXPECT_EQ(source.rightAscension, 350.0);
  EXPECT_EQ(source.declination, 20.0);
  EXPECT_EQ(source.epoch, 2000.0);
  EXPECT_EQ(source.frame, UvxFrame::kByEpoch);
  EXPECT_EQ(report_.files[0].path, folder_.file("out/data.uvx"));
}

TEST_F(UvfitsSourcesTest, EpochsComeInManyDialects) {
  struct Case {
    const char* card;
    const char* value;
    double epoch;
  };
  for (const Case& one : {Case{"EQUINOX", "'J2000   '", 2000}, Case{"EQUINOX", "'B1950   '", 1950},
                          Case{"EQUINOX", "1.950000000E+03", 1950}, Case{"EPOCH", "2000.0", 2000},
                          Case{"EPOCH", "1.95E+03", 1950}}) {
    UvfitsBuilder builder;
    builder.add(0.1, 0.2, 258, 1, 0, 1);
    builder.edit = [&](FitsHeader& header) { header.remove("EQUINOX").set(one.card, one.value); };
    EXPECT_EQ(imported(builder).sources.at(0).epoch, one.epoch) << one.card << one.value;
  }
}

TEST_F(UvfitsSourcesTest, TheFrameComesFromRadesys) {
  for (const auto& [name, frame] : {std::pair{"ICRS", UvxFrame::kIcrs}, std::pair{"FK5", UvxFrame::kFk5},
                                    std::pair{"FK4", UvxFrame::kFk4}}) {
    UvfitsBuilder builder;
    builder.add(0.1, 0.2, 258, 1, 0, 1);
    builder.edit = [name = name](FitsHeader& header) { header.remove("EQUINOX").text("RADESYS", name); };
    const auto source = imported(builder).sources.at(0);
    EXPECT_EQ(source.frame, frame);
    EXPECT_EQ(source.epoch, frame == UvxFrame::kFk4 ? 1950.0 : 2000.0);
  }
}

TEST_F(UvfitsSourcesTest, OtherEpochsAndFramesAreRefused) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  builder.edit = [](FitsHeader& header) { header.number("EQUINOX", 1989.48); };
  EXPECT_THAT(refusal(builder), HasSubstr("EQUINOX is 1989.48"));
  builder.edit = [](FitsHeader& header) { header.text("RADESYS", "GAPPT"); };
  EXPECT_THAT(refusal(builder), HasSubstr("GAPPT"));
}

TEST_F(UvfitsSourcesTest, AMissingEpochIsReported) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  builder.edit = [](FitsHeader& header) { header.remove("EQUINOX"); };
  EXPECT_EQ(imported(builder).sources.at(0).epoch, 2000.0);
  EXPECT_THAT(report_.warnings, ElementsAre(HasSubstr("J2000")));
}

TEST_F(UvfitsSourcesTest, NonsenseTelescopesDoNotMatter) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  builder.edit = [](FitsHeader& header) { header.text("TELESCOP", "\xFF?? 42"); };
  EXPECT_EQ(imported(builder).groups.size(), 1U);
}

TEST_F(UvfitsSourcesTest, ASourceNameIsCutAtItsNul) {
  UvfitsBuilder builder = twoSources();
  builder.tables[0] = test::sourceTable(1);
  builder.tables[0].numbers({3}).text(std::string("B\0\x07junk", 7)).numbers({1, 2, 2000, 0});
  builder.tables[0].numbers({8}).text("../../C").numbers({3, 4, 2000, 0});
  ASSERT_TRUE(import(builder).ok());
  EXPECT_EQ(report_.files.at(0).source, "B");
  EXPECT_EQ(report_.files.at(1).path, folder_.file("out/data_.._.._C.uvx"));
}

}  // namespace
}  // namespace lumo
