// SPDX-License-Identifier: GPL-3.0-or-later
#include <random>

#include "UvfitsFixture.h"

namespace lumo {
namespace {

using test::FitsHeader;
using test::UvfitsBuilder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class UvfitsDamageTest : public test::UvfitsFixture {
 protected:
  static UvfitsBuilder full() {
    UvfitsBuilder builder;
    builder.axis("IF").pixels = 2;
    builder.axis("STOKES").pixels = 2;
    builder.addParameter("SOURCE");
    builder.addParameter("FREQSEL");
    builder.tables.push_back(test::antennaTable());
    builder.tables.back().text("A").numbers({1, 2, 3, 1}).text("B").numbers({4, 5, 6, 2});
    builder.tables.push_back(test::frequencyTable(2));
    builder.tables.back().numbers({1, 0, 5e6, 1e6, 1e6, 1e6, 1e6, 1, 1});
    builder.tables.push_back(test::sourceTable(2));
    builder.tables.back().numbers({1}).text("S1").numbers({10, 20, 2000, 0, 0});
    builder.tables.back().numbers({2}).text("S2").numbers({30, 40, 2000, 0, 0});
    for (int i = 0; i < 40; ++i) builder.add(0.01 * i, -0.02 * i, 258 + i, 1, 2, 3, {1.0 + i % 2, 1});
    return builder;
  }
  /// Whatever an import of damaged bytes ends in, the outputs it reports can be read.
  void survive(const std::string& bytes) {
    const Status status = importBytes(bytes);
    if (status.ok()) {
      EXPECT_FALSE(report_.files.empty());
    } else {
      EXPECT_FALSE(status.message().empty());
      EXPECT_EQ(status.file(), input_);
    }
    for (const ImportedFile& file : report_.files) {
      AUVXFile uvx;
      EXPECT_EQ(uvx.Open(file.path, AFile::kRead), 1) << uvx.status().text();
      EXPECT_EQ(uvx.groupCount(), file.records);
    }
  }
};

TEST_F(UvfitsDamageTest, TheUndamagedFileIsAccepted) {
  const Status status = import(full());
  EXPECT_TRUE(status.ok()) << status.text();
  EXPECT_EQ(report_.files.size(), 2U);
}

TEST_F(UvfitsDamageTest, AFileCutBeforeItsTablesIsRefused) {
  const UvfitsBuilder builder = full();
  const std::string bytes = builder.bytes();
  for (std::size_t size = 0; size <= builder.primaryBytes(); size += 97) {
    EXPECT_FALSE(importBytes(bytes.substr(0, size)).ok()) << size;
    EXPECT_TRUE(report_.files.empty());
  }
}

TEST_F(UvfitsDamageTest, AFileCutInItsTablesNeverCrashes) {
  const UvfitsBuilder builder = full();
  const std::string bytes = builder.bytes();
  for (std::size_t size = builder.primaryBytes(); size < bytes.size(); size += 61)
    survive(bytes.substr(0, size));
}

TEST_F(UvfitsDamageTest, DamagedBytesNeverCrash) {
  const std::string whole = full().bytes();
  std::mt19937 random(20240501);
  for (int trial = 0; trial < 400; ++trial) {
    SCOPED_TRACE(trial);
    std::string bytes = whole;
    const int hits = 1 + static_cast<int>(random() % 8);
    for (int i = 0; i < hits; ++i) bytes[random() % bytes.size()] = static_cast<char>(random());
    survive(bytes);
  }
}

TEST_F(UvfitsDamageTest, DamagedDigitsInHeadersNeverCrash) {
  const std::string whole = full().bytes();
  std::vector<std::size_t> digits;
  for (std::size_t i = 0; i < whole.size(); ++i)
    if (whole[i] >= '0' && whole[i] <= '9') digits.push_back(i);
  std::mt19937 random(77);
  for (int trial = 0; trial < 400; ++trial) {
    SCOPED_TRACE(trial);
    std::string bytes = whole;
    for (int i = 0; i < 3; ++i) {
      // A longer run of digits makes the sizes absurd, which a single one rarely does.
      const std::size_t at = digits[random() % digits.size()];
      for (std::size_t k = 0; k < random() % 12 && at - k > 0 && (k == 0 || bytes[at - k] == ' '); ++k)
        bytes[at - k] = static_cast<char>('0' + random() % 10);
    }
    survive(bytes);
  }
}

TEST_F(UvfitsDamageTest, ATableThatClaimsAMillionColumnsIsNotOpened) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  builder.tables.push_back(test::antennaTable());
  builder.tables.back().text("A").numbers({1, 2, 3, 1}).card("TFIELDS", "93548925");
  EXPECT_THAT(refusal(builder), HasSubstr("HDU 2 is damaged")) << "the frequency table may be behind it";
  builder.tables.insert(builder.tables.begin(), test::frequencyTable(1));
  builder.tables.front().numbers({1, 1e9, 1e6, 1e6, 1});
  EXPECT_EQ(imported(builder).frequencies.GetFreq(0, 0, 0), 6e9);
  EXPECT_THAT(report_.warnings, ElementsAre(HasSubstr("HDU 3 is damaged")));
}

// cfitsio copies such a name and the zero behind it into 70 bytes.
TEST_F(UvfitsDamageTest, AColumnNameWithoutQuotesThatFillsItsCardIsDamage) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  builder.tables.push_back(test::antennaTable());
  builder.tables.back().text("A").numbers({1, 2, 3, 1}).card("TTYPE1", std::string(70, 'X'));
  EXPECT_THAT(refusal(builder), HasSubstr("HDU 2 is damaged"));
}

TEST_F(UvfitsDamageTest, AValueLongerThanACardHasRoomForIsDamage) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  std::string bytes = builder.bytes();
  const std::size_t end = bytes.find("END     ");
  ASSERT_NE(end, std::string::npos);
  bytes.replace(end, 80, "A='" + std::string(68, 'x') + "''yyyyyy'");
  bytes.replace(end + 80, 4, "END ");
  EXPECT_THAT(importBytes(bytes).message(), HasSubstr("no FITS card"));
}

TEST_F(UvfitsDamageTest, AMandatoryCardWithoutAValueNeverCrashes) {
  const std::string whole = full().bytes();
  for (const std::string key :
       {"BITPIX  =", "NAXIS   =", "NAXIS1  =", "NAXIS2  =", "PCOUNT  =", "GCOUNT  ="}) {
    ASSERT_NE(whole.find(key), std::string::npos) << key;
    for (std::size_t at = whole.find(key); at != std::string::npos; at = whole.find(key, at + 1)) {
      std::string bytes = whole;
      bytes.replace(at + key.size(), 80 - key.size(), std::string(80 - key.size(), ' '));
      survive(bytes);
      const std::size_t end = bytes.find("END     ", at);  // and the card again, as the header's last
      bytes.replace(end + 80, 4, "END ");
      bytes.replace(end, 80, whole, at, 80);
      survive(bytes);
    }
  }
}

TEST_F(UvfitsDamageTest, AnImageIsRefused) {
  FitsHeader header;
  header.logical("SIMPLE", true).whole("BITPIX", -32).whole("NAXIS", 2);
  header.whole("NAXIS1", 4).whole("NAXIS2", 4);
  std::string bytes = header.bytes();
  bytes.resize(bytes.size() + 2880, '\0');
  const Status status = importBytes(bytes);
  EXPECT_EQ(status.code(), StatusCode::kUnsupported);
  EXPECT_THAT(status.message(), HasSubstr("GROUPS = T"));
}

TEST_F(UvfitsDamageTest, TheTableFormIsRefused) {
  FitsHeader header;
  header.logical("SIMPLE", true).whole("BITPIX", 8).whole("NAXIS", 2);
  header.whole("NAXIS1", 777777701).whole("NAXIS2", 0).logical("EXTEND", true);
  const Status status = importBytes(header.bytes());
  EXPECT_THAT(status.message(), HasSubstr("777777701"));
}

TEST_F(UvfitsDamageTest, FitsIdiIsRefused) {
  FitsHeader header;
  header.logical("SIMPLE", true).whole("BITPIX", 8).whole("NAXIS", 0).logical("EXTEND", true);
  header.logical("GROUPS", true).whole("GCOUNT", 0).whole("PCOUNT", 0);
  test::FitsTable table("UV_DATA");
  table.column("UU---SIN", "1E").numbers({1});
  const Status status = importBytes(header.bytes() + table.bytes());
  EXPECT_THAT(status.message(), HasSubstr("FITS-IDI"));
}

TEST_F(UvfitsDamageTest, TheCompressedFormIsRefused) {
  UvfitsBuilder builder;
  builder.bitpix = 16;
  builder.axis("COMPLEX").pixels = 2;
  builder.addParameter("WEIGHT");
  builder.addParameter("SCALE");
  builder.add(1, 2, 258, 1, 0, 1, {1, 1});
  EXPECT_THAT(refusal(builder), HasSubstr("compressed form"));
  UvfitsBuilder single;
  single.axis("COMPLEX").pixels = 1;
  single.add(1, 2, 258, 1, 0, 1);
  EXPECT_THAT(refusal(single), HasSubstr("NAXIS2 (COMPLEX) is 1"));
}

TEST_F(UvfitsDamageTest, UnknownProductsAreRefused) {
  for (const double code : {-9.0, 0.0, 5.0, -1.5, 1e30}) {
    UvfitsBuilder builder;
    builder.axis("STOKES").value = code;
    builder.add(0.1, 0.2, 258, 1, 0, 1);
    EXPECT_THAT(refusal(builder), HasSubstr("product code")) << code;
  }
}

TEST_F(UvfitsDamageTest, StokesAxesThatAreNoSequenceAreRefused) {
  struct Case {
    std::int64_t pixels;
    double value;
    double step;
  };
  for (const Case& one : {Case{2, -1, 0}, Case{3, -3, -1}, Case{2, 1, -2}, Case{5, 1, 1}}) {
    UvfitsBuilder builder;
    builder.axis("STOKES") = {"STOKES", one.pixels, one.value, 1, one.step};
    builder.add(0.1, 0.2, 258, 1, 0, 1);
    EXPECT_THAT(refusal(builder), HasSubstr("the STOKES axis")) << one.value;
  }
}

TEST_F(UvfitsDamageTest, AnAxisOfSeveralPixelsWithoutMeaningIsRefused) {
  UvfitsBuilder builder;
  builder.axes.push_back({"BEAM", 2, 1, 1, 1});
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  EXPECT_THAT(refusal(builder), HasSubstr("CTYPE8 'BEAM'"));
}

TEST_F(UvfitsDamageTest, MissingAxesAreNamed) {
  for (const char* type : {"COMPLEX", "STOKES", "FREQ"}) {
    UvfitsBuilder builder;
    builder.add(0.1, 0.2, 258, 1, 0, 1);
    // The axis of one pixel keeps its place but loses its name.
    builder.axis("COMPLEX").pixels = std::string(type) == "COMPLEX" ? 1 : 3;
    builder.axis(type).type = "OTHER";
    EXPECT_THAT(refusal(builder), HasSubstr(type));
  }
}

TEST_F(UvfitsDamageTest, ACardThatIsNoNumberIsNamed) {
  UvfitsBuilder builder;
  builder.add(0.1, 0.2, 258, 1, 0, 1);
  builder.edit = [](FitsHeader& header) { header.text("CRVAL4", "five"); };
  EXPECT_THAT(refusal(builder), HasSubstr("CRVAL4 holds 'five'"));
}

TEST_F(UvfitsDamageTest, OtherFilesAreRefused) {
  EXPECT_THAT(importBytes("").message(), HasSubstr("not a FITS file"));
  EXPECT_THAT(importBytes(std::string(5000, 'x')).message(), HasSubstr("not a FITS file"));
  EXPECT_EQ(importUvfits(folder_.file("absent"), options_, RunIndicators{}, report_).code(),
            StatusCode::kNotFound);
}

}  // namespace
}  // namespace lumo
