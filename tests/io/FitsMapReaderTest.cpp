// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

#include "FitsSample.h"
#include "io/AMapFile.h"
#include "io/FitsMapReader.h"
#include "io/MapProduct.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::FitsSample;
using test::readFile;
using test::TempFolder;
using test::writeFile;
using testing::ElementsAre;
using testing::HasSubstr;

Status readBytes(const std::string& bytes, LoadedMap& map) {
  const TempFolder folder;
  writeFile(folder.file("f.fits"), bytes);
  return readMap(folder.file("f.fits"), map);
}

LoadedMap readGood(const FitsSample& sample) {
  LoadedMap map;
  const Status status = readBytes(sample.bytes(), map);
  EXPECT_TRUE(status.ok()) << status.text();
  if (map.matrix == nullptr) map.matrix = std::make_unique<AMatrix<float>>(1, 1);
  return map;
}

std::string refusal(const FitsSample& sample) {
  LoadedMap map;
  const Status status = readBytes(sample.bytes(), map);
  EXPECT_FALSE(status.ok());
  EXPECT_EQ(map.matrix, nullptr);
  return status.message();
}

std::vector<float> pixels(const LoadedMap& map) {
  return {map.matrix->data(), map.matrix->data() + map.matrix->size()};
}

// Three columns, two rows; one arcsecond is 1/3600 degree. x = 0 lies in FITS column 2, y = 0 in FITS row 1.
const std::string kArcsec = "0.0002777777777777778";
const std::vector<float> kSix{1, 2, 3, 4, 5, 6};

TEST(FitsMapReaderTest, WithEastLeftTheColumnsAreMirrored) {
  const LoadedMap map = readGood(FitsSample(-32, {3, 2}).addSky("-" + kArcsec, kArcsec).pixels<float>(kSix));
  EXPECT_EQ(map.matrix->rows(), 2U);
  EXPECT_EQ(map.matrix->columns(), 3U);
  EXPECT_THAT(pixels(map), ElementsAre(3, 2, 1, 6, 5, 4));
  // FITS column 3 lies one step west of column 2, row 2 one step north of row 1. 1e-12: rounding of degrees.
  EXPECT_NEAR(map.range.xMin, -1.0, 1e-12);
  EXPECT_NEAR(map.range.xMax, 1.0, 1e-12);
  EXPECT_NEAR(map.range.yMin, 0.0, 1e-12);
  EXPECT_NEAR(map.range.yMax, 1.0, 1e-12);
}

TEST(FitsMapReaderTest, WithEastRightTheColumnsStayAndWithSouthUpTheRowsTurn) {
  const LoadedMap map = readGood(FitsSample(-32, {3, 2}).addSky(kArcsec, "-" + kArcsec).pixels<float>(kSix));
  EXPECT_THAT(pixels(map), ElementsAre(4, 5, 6, 1, 2, 3));
  EXPECT_NEAR(map.range.xMin, -1.0, 1e-12);
  EXPECT_NEAR(map.range.xMax, 1.0, 1e-12);
  EXPECT_NEAR(map.range.yMin, -1.0, 1e-12);
  EXPECT_NEAR(map.range.yMax, 0.0, 1e-12);
}

TEST(FitsMapReaderTest, SwappedAxesAreTransposed) {
  const LoadedMap map = readGood(FitsSample(-32, {2, 3})
                                     .add("CTYPE1  = 'DEC--SIN'")
                                     .add("CTYPE2  = 'RA---SIN'")
                                     .add("CRVAL1  = 12.25")
                                     .add("CRVAL2  = 187.5")
                                     .add("CRPIX1  = 1")
                                     .add("CRPIX2  = 2")
                                     .add("CDELT1  = " + kArcsec)
                                     .add("CDELT2  = -" + kArcsec)
                                     .pixels<float>({1, 2, 3, 4, 5, 6}));
  // The file's lines run along declination; its last line is the westernmost column.
  EXPECT_EQ(map.matrix->rows(), 2U);
  EXPECT_THAT(pixels(map), ElementsAre(5, 3, 1, 6, 4, 2));
  EXPECT_EQ(map.header.rightAscension, 187.5);
  EXPECT_EQ(map.header.declination, 12.25);
  EXPECT_NEAR(map.range.xMax, 1.0, 1e-12);
  EXPECT_NEAR(map.range.yMax, 1.0, 1e-12);
}

TEST(FitsMapReaderTest, IntegerPixelsAreScaledAndBlankOnesBecomeNaN) {
  const auto sample = [](int bitpix) {
    return FitsSample(bitpix, {3, 1})
        .addSky(kArcsec, kArcsec)
        .add("BSCALE  = 0.5")
        .add("BZERO   = 10.0")
        .add("BLANK   = 7");
  };
  const auto check = [](const LoadedMap& map) {
    EXPECT_EQ((*map.matrix)(0, 0), 10.5F);
    EXPECT_TRUE(std::isnan((*map.matrix)(0, 1)));
    EXPECT_EQ((*map.matrix)(0, 2), 60.0F);
  };
  check(readGood(sample(8).pixels<std::uint8_t>({1, 7, 100})));
  check(readGood(sample(16).pixels<std::int16_t>({1, 7, 100})));
  check(readGood(sample(32).pixels<std::int32_t>({1, 7, 100})));
  check(readGood(sample(64).pixels<std::int64_t>({1, 7, 100})));
}

TEST(FitsMapReaderTest, DoublePixelsBecomeSinglesAndTooLargeOnesInfinite) {
  const LoadedMap map =
      readGood(FitsSample(-64, {4, 1})
                   .addSky(kArcsec, kArcsec)
                   .pixels<double>({0.1, std::numeric_limits<double>::quiet_NaN(), -1e300, 1e-42}));
  EXPECT_EQ((*map.matrix)(0, 0), 0.1F);
  EXPECT_TRUE(std::isnan((*map.matrix)(0, 1)));
  EXPECT_EQ((*map.matrix)(0, 2), -std::numeric_limits<float>::infinity());
  EXPECT_EQ((*map.matrix)(0, 3), 1e-42F);
}

TEST(FitsMapReaderTest, ScaledSinglePixelsAreScaled) {
  const LoadedMap map = readGood(
      FitsSample(-32, {2, 1}).addSky(kArcsec, kArcsec).add("BSCALE  = 2.0").pixels<float>({1.5F, -4.0F}));
  EXPECT_THAT(pixels(map), ElementsAre(3.0F, -8.0F));
}

TEST(FitsMapReaderTest, TheRecordComesFromTheStandardKeywords) {
  const LoadedMap map = readGood(FitsSample(-32, {3, 2, 1, 1})
                                     .addSky("-" + kArcsec, kArcsec)
                                     .add("CTYPE3  = 'FREQ    '")
                                     .add("CRVAL3  = 4.9D9")
                                     .add("CRPIX3  = 0")
                                     .add("CDELT3  = 1.0E8")
                                     .add("CTYPE4  = 'STOKES  '")
                                     .add("CRVAL4  = -1.0")
                                     .add("CRPIX4  = 1")
                                     .add("CDELT4  = -1")
                                     .add("RADESYS = 'ICRS'")
                                     .add("OBJECT  = '3C 84%20'")
                                     .add("BUNIT   = 'JY/BEAM'")
                                     .add("BMAJ    = 0.001")
                                     .add("BMIN    = 0.0005")
                                     .add("BPA     = -12.5")
                                     .add("DATAMIN = -0.5")
                                     .add("DATAMAX = 6.0")
                                     .add("DATE    = '27/06/89'")
                                     .add("HISTORY AIPS   IMNAME='3C84%41'")
                                     .add("HISTORY")
                                     .pixels<float>(kSix));
  EXPECT_EQ(map.header.frequency, 5.0e9);
  EXPECT_EQ(map.header.bandwidth, 1.0e8);
  EXPECT_EQ(map.header.stokes, "RR");
  EXPECT_EQ(map.header.frame, UvxFrame::kIcrs);
  EXPECT_EQ(map.header.epoch, 2000.0);
  EXPECT_EQ(map.header.sourceName, "3C 84%20");
  EXPECT_EQ(map.header.unit, "Jy/Beam");
  EXPECT_DOUBLE_EQ(map.header.beamMajor, 3.6);
  EXPECT_DOUBLE_EQ(map.header.beamMinor, 1.8);
  EXPECT_EQ(map.header.beamPa, -12.5);
  EXPECT_EQ(map.range.vMin, -0.5);
  EXPECT_EQ(map.range.vMax, 6.0);
  EXPECT_EQ(map.header.date, "27/06/89");
  EXPECT_THAT(map.header.history, ElementsAre("AIPS   IMNAME='3C84%41'", ""));
}

TEST(FitsMapReaderTest, ABeamThatStandsOnlyInTheAipsHistoryIsFoundTheLastOneCounting) {
  const LoadedMap map =
      readGood(FitsSample(-32, {3, 2})
                   .addSky("-" + kArcsec, kArcsec)
                   .add("HISTORY AIPS   CLEAN BMAJ=  9.0000E-03 BMIN=  9.0000E-03 BPA=   1.00")
                   .add("HISTORY AIPS   CLEAN BMAJ=  1.0000E-03 BMIN=  5.0000E-04 BPA= -30.25")
                   .add("HISTORY AIPS   CLEAN NITER=     1000 PRODUCT=1")
                   .pixels<float>(kSix));
  EXPECT_DOUBLE_EQ(map.header.beamMajor, 3.6);
  EXPECT_DOUBLE_EQ(map.header.beamMinor, 1.8);
  EXPECT_EQ(map.header.beamPa, -30.25);
}

TEST(FitsMapReaderTest, EpochIsReadWhereEquinoxIsMissing) {
  const auto sample = [](const std::string& card) {
    return FitsSample(-32, {1, 1})
        .add("CTYPE1  = 'RA---SIN'")
        .add("CTYPE2  = 'DEC--SIN'")
        .add("CDELT1  = -" + kArcsec)
        .add("CDELT2  = " + kArcsec)
        .add(card)
        .pixels<float>({1});
  };
  EXPECT_EQ(readGood(sample("EPOCH   = 1950.0")).header.epoch, 1950.0);
  EXPECT_EQ(readGood(sample("EPOCH   = 1950.0")).header.frame, UvxFrame::kByEpoch);
  EXPECT_EQ(readGood(sample("EQUINOX = 'J2000'")).header.epoch, 2000.0);
  EXPECT_EQ(readGood(sample("COMMENT nothing")).header.frame, UvxFrame::kIcrs);
}

TEST(FitsMapReaderTest, ACdMatrixAHalfTurnAndAQuarterTurnAreRead) {
  const auto sky = [] {
    return FitsSample(-32, {3, 2})
        .add("CTYPE1  = 'RA---TAN'")
        .add("CTYPE2  = 'DEC--TAN'")
        .add("CRPIX1  = 2")
        .add("CRPIX2  = 1");
  };
  EXPECT_THAT(
      pixels(readGood(sky().add("CD1_1   = -" + kArcsec).add("CD2_2   = " + kArcsec).pixels<float>(kSix))),
      ElementsAre(3, 2, 1, 6, 5, 4));
  EXPECT_THAT(pixels(readGood(sky()
                                  .add("CDELT1  = -" + kArcsec)
                                  .add("CDELT2  = " + kArcsec)
                                  .add("CROTA2  = 180.0")
                                  .pixels<float>(kSix))),
              ElementsAre(4, 5, 6, 1, 2, 3));
  // North along the lines of the file: right ascension grows with the line number.
  const LoadedMap map =
      readGood(sky().add("CD1_2   = " + kArcsec).add("CD2_1   = " + kArcsec).pixels<float>(kSix));
  EXPECT_EQ(map.matrix->rows(), 3U);
  EXPECT_THAT(pixels(map), ElementsAre(1, 4, 2, 5, 3, 6));
  EXPECT_NEAR(map.range.xMin, 0.0, 1e-12);
  EXPECT_NEAR(map.range.yMin, -1.0, 1e-12);
  EXPECT_NEAR(map.range.yMax, 1.0, 1e-12);
}

TEST(FitsMapReaderTest, CrotaTurnsAsAipsMeansIt) {
  // A quarter turn: x = -cdelt2 * q, y = cdelt1 * p for pixel steps (p, q).
  const LoadedMap map = readGood(
      FitsSample(-32, {3, 2}).addSky("-" + kArcsec, kArcsec).add("CROTA2  = 90.0").pixels<float>(kSix));
  EXPECT_EQ(map.matrix->rows(), 3U);
  EXPECT_THAT(pixels(map), ElementsAre(6, 3, 5, 2, 4, 1));
}

TEST(FitsMapReaderTest, AnImageWithoutCoordinatesIsReadWithEastLeftAboutItsMiddle) {
  const LoadedMap map = readGood(FitsSample(-32, {3, 2}).pixels<float>(kSix));
  EXPECT_THAT(pixels(map), ElementsAre(3, 2, 1, 6, 5, 4));
  EXPECT_EQ(map.range.xMin, -1.0);
  EXPECT_EQ(map.range.xMax, 1.0);
  EXPECT_EQ(map.range.yMin, -1.0);
  EXPECT_EQ(map.range.yMax, 0.0);
  EXPECT_TRUE(std::isnan(map.header.rightAscension));
  EXPECT_GT(map.range.vMin, map.range.vMax);
}

TEST(FitsMapReaderTest, AngleUnitsOfTheAxesAreHonoured) {
  const LoadedMap map = readGood(FitsSample(-32, {3, 2})
                                     .addSky("-1.0", "1.0")
                                     .add("CUNIT1  = 'mas'")
                                     .add("CUNIT2  = 'mas'")
                                     .pixels<float>(kSix));
  EXPECT_NEAR(map.range.xMax, 0.001, 1e-15);
}

TEST(FitsMapReaderTest, WhatIsNotOnePlaneOfTheSkyIsRefusedBySentence) {
  const auto sky = [](std::vector<std::int64_t> lengths) {
    return FitsSample(-32, std::move(lengths)).addSky("-" + kArcsec, kArcsec);
  };
  EXPECT_THAT(refusal(sky({3, 2, 2}).pixels<float>(std::vector<float>(12))), HasSubstr("cube of 2 planes"));
  EXPECT_THAT(refusal(sky({3, 2, 1, 4}).pixels<float>(std::vector<float>(24))), HasSubstr("axis 4"));
  EXPECT_THAT(refusal(sky({3, 2}).add("CROTA2  = 20.0").pixels<float>(kSix)), HasSubstr("rotated"));
  EXPECT_THAT(refusal(sky({3, 2}).add("LONPOLE = 90.0").pixels<float>(kSix)), HasSubstr("LONPOLE"));
  EXPECT_THAT(refusal(FitsSample(-32, {6}).pixels<float>(kSix)), HasSubstr("has 1 axes"));
  EXPECT_THAT(refusal(FitsSample(-32, {})), HasSubstr("no image"));
  EXPECT_THAT(refusal(FitsSample(-32, {0, 3})), HasSubstr("no image"));
  EXPECT_THAT(refusal(FitsSample(-32, {0, 3}).add("GROUPS  = T").add("PCOUNT  = 1").add("GCOUNT  = 1")),
              HasSubstr("random groups"));
  EXPECT_THAT(refusal(FitsSample(-32, {3, 2}).add("CTYPE1  = 'RA---SIN'").add("CTYPE2  = 'FREQ'")),
              HasSubstr("only one of the axes"));
  EXPECT_THAT(refusal(FitsSample(-32, {3, 2}).addSky("0.0", kArcsec).pixels<float>(kSix)),
              HasSubstr("pixel size"));
  EXPECT_THAT(refusal(sky({3, 2}).add("CUNIT1  = 'furlong'").pixels<float>(kSix)), HasSubstr("CUNIT1"));
  EXPECT_THAT(refusal(FitsSample(16, {2, 1}).add("BSCALE  = 0.0").pixels<std::int16_t>({1, 2})),
              HasSubstr("BSCALE"));
}

TEST(FitsMapReaderTest, AHeaderThatPromisesMoreThanTheFileHoldsIsRefusedBeforeMemoryIsTaken) {
  EXPECT_THAT(refusal(FitsSample(-32, {2000000000, 2000000000}).pixels<float>(kSix)), HasSubstr("cut short"));
  EXPECT_THAT(refusal(FitsSample(-64, {2147483647, 2147483647}).pixels<float>(kSix)), HasSubstr("cut short"));
  EXPECT_FALSE(refusal(FitsSample(-64, {9223372036854775807, 4}).pixels<float>(kSix)).empty());
  EXPECT_FALSE(refusal(FitsSample(-32, {-5, 4}).pixels<float>(kSix)).empty());
  EXPECT_FALSE(refusal(FitsSample(-32, std::vector<std::int64_t>(999, 1)).pixels<float>(kSix)).empty());
}

TEST(FitsMapReaderTest, OtherFilesAreRefusedBySentence) {
  LoadedMap map;
  EXPECT_THAT(readBytes("", map).message(), HasSubstr("not a FITS file"));
  EXPECT_THAT(readBytes("\x89PNG\r\n\x1a\n and so on", map).message(), HasSubstr("not a FITS file"));
  EXPECT_THAT(readBytes("\x1f\x8b\x08 a compressed file", map).message(), HasSubstr("uncompress"));
  EXPECT_FALSE(readBytes("SIMPLE  =                    T", map).ok());
  const TempFolder folder;
  EXPECT_EQ(readMap(folder.file("none.exm"), map).code(), StatusCode::kNotFound);
  EXPECT_EQ(readMap(folder.path(), map).code(), StatusCode::kReadFailed);
}

TEST(FitsMapReaderTest, OnlyThePrimaryHduCounts) {
  std::string bytes = FitsSample(-32, {3, 2}).addSky("-" + kArcsec, kArcsec).pixels<float>(kSix).bytes();
  std::string extension = FitsSample(-32, {2, 1}).pixels<float>({8, 9}).bytes();
  extension.replace(0, 30, "XTENSION= 'IMAGE   '          ");
  LoadedMap map;
  ASSERT_TRUE(readBytes(bytes + extension, map).ok());
  EXPECT_THAT(pixels(map), ElementsAre(3, 2, 1, 6, 5, 4));
}

// A map of this program as another one leaves it: the cards it does not know are kept.
std::string ownMap(const std::vector<std::pair<std::string, std::string>>& changes) {
  const TempFolder folder;
  AMapHeader header;
  header.unit = "Jy/Beam";
  header.rightAscension = 10.0;
  header.declination = 20.0;
  header.epoch = 2000.0;
  header.stokes = "I";
  header.frequency = 5e9;
  header.bandwidth = 1e8;
  header.beamMajor = 3.6;
  header.beamMinor = 1.8;
  header.beamPa = 10.0;
  header.beamArea = 25.0;
  TMinMax range;
  range.xMin = range.yMin = -2.0;
  range.xMax = range.yMax = 1.0;
  AMatrix<float> matrix(4, 4);
  EXPECT_TRUE(writeMap(folder.file("m"), header, range, matrix).ok());
  std::string bytes = readFile(folder.file("m"));
  for (const auto& [key, value] : changes) {
    const auto at = bytes.find(key);
    EXPECT_NE(at, std::string::npos) << key;
    std::string card = key + value;
    card.resize(80, ' ');
    bytes.replace(at, 80, card);
  }
  return bytes;
}

TEST(FitsMapReaderTest, ExactValuesGiveWayWhereAnotherProgramChangedTheStandardKeywords) {
  LoadedMap map;
  ASSERT_TRUE(readBytes(ownMap({}), map).ok());
  EXPECT_EQ(map.header.beamArea, 25.0);
  EXPECT_EQ(map.header.unit, "Jy/Beam");

  ASSERT_TRUE(readBytes(ownMap({{"BMAJ    =", " 0.002"}}), map).ok());
  EXPECT_DOUBLE_EQ(map.header.beamMajor, 7.2);
  EXPECT_EQ(map.header.frequency, 5e9);
  EXPECT_TRUE(std::isnan(map.header.beamArea));

  ASSERT_TRUE(readBytes(ownMap({{"CRPIX1  =", " 1.0"}}), map).ok());  // one column cut off on the east side
  EXPECT_NEAR(map.range.xMax, 0.0, 1e-12);
  EXPECT_NEAR(map.range.xMin, -3.0, 1e-12);
  EXPECT_TRUE(std::isnan(map.header.beamArea));

  ASSERT_TRUE(
      readBytes(ownMap({{"CRVAL1  =", " 11.0"}, {"CRVAL3  =", " 6E9"}, {"BUNIT   =", " 'K'"}}), map).ok());
  EXPECT_EQ(map.header.rightAscension, 11.0);
  EXPECT_EQ(map.header.frequency, 6e9);
  EXPECT_EQ(map.header.unit, "K");

  ASSERT_TRUE(readBytes(ownMap({{"CRVAL4  =", " 4.0"}}), map).ok());
  EXPECT_EQ(map.header.stokes, "V");
}

TEST(FitsMapReaderTest, EveryTruncationIsRefused) {
  const TempFolder folder;
  const std::string whole = ownMap({});
  for (std::size_t length = 0; length < whole.size(); length += 97) {
    LoadedMap map;
    writeFile(folder.file("f"), whole.substr(0, length));
    EXPECT_FALSE(readMap(folder.file("f"), map).ok()) << length;
    EXPECT_EQ(map.matrix, nullptr);
  }
}

TEST(FitsMapReaderTest, DamagedHeadersNeverCrashAndNeverYieldMoreThanTheFileHolds) {
  const TempFolder folder;
  const std::string whole = ownMap({});
  std::mt19937 random(20240607);
  const std::string alphabet = std::string("0123456789-+.EDT'= /ABNXISCR\xFF") + '\0';
  int read = 0;
  for (int round = 0; round < 400; ++round) {
    std::string bytes = whole;
    const int changes = 1 + static_cast<int>(random() % 6);
    for (int i = 0; i < changes; ++i) bytes[random() % 4000] = alphabet[random() % alphabet.size()];
    LoadedMap map;
    writeFile(folder.file("f"), bytes);
    if (!readMap(folder.file("f"), map).ok()) continue;
    ++read;
    ASSERT_LE(map.matrix->size(), bytes.size());
  }
  EXPECT_GT(read, 0);  // else the damage never reached the reader's later steps
}

// With a "=" this far in front the value has 76 characters, and the pair of quotes stands where cfitsio
// counts wrongly.
TEST(FitsMapReaderTest, ACardWhoseValueIsLongerThanFitsHasRoomForIsRefused) {
  const std::string value = "'" + std::string(68, 'x') + "''yyyyy";
  EXPECT_THAT(refusal(FitsSample(-32, {3, 2}).add("A=" + value).pixels<float>(kSix)),
              HasSubstr("no FITS card"));
  readGood(FitsSample(-32, {3, 2}).add("HISTORY A=" + value).add("A = 1").pixels<float>(kSix));
}

// cfitsio reads these cards by their place and takes an empty NAXIS for 0: what another card of that name
// says further on must not count.
TEST(FitsMapReaderTest, AMandatoryCardIsTheOneInItsPlace) {
  for (const std::string key : {"BITPIX  ", "NAXIS   ", "NAXIS1  ", "NAXIS2  "}) {
    std::string bytes =
        FitsSample(-32, {3, 2}).add("OBJECT  = 'another'").addSky("1", "1").pixels<float>(kSix).bytes();
    const std::size_t place = bytes.find(key + "=");
    const std::size_t later = bytes.find("OBJECT  =");
    LoadedMap map;
    EXPECT_TRUE(readBytes(bytes, map).ok()) << key;
    bytes.replace(later, 80, bytes, place, 80);
    EXPECT_TRUE(readBytes(bytes, map).ok()) << key;
    bytes.replace(place + 9, 71, std::string(71, ' '));
    EXPECT_THAT(readBytes(bytes, map).message(), HasSubstr("broken header")) << key;
  }
}

}  // namespace
}  // namespace lumo
