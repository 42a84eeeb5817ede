// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <string>

#include "MapSample.h"
#include "io/FitsMapWriter.h"
#include "io/MapProduct.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::fullHeader;
using test::fullRange;
using test::ramp;
using test::RawMap;
using test::roundTrip;
using test::TempFolder;
using test::written;
using testing::HasSubstr;

constexpr float kNaNPixel = std::numeric_limits<float>::quiet_NaN();

TEST(FitsMapWriterTest, AnUnsetValueRangeBecomesThatOfTheFinitePixelsWritten) {
  AMatrix<float> matrix = ramp(6, 6);
  matrix(0, 0) = 1000.0F;  // outside the written part
  matrix(3, 3) = kNaNPixel;
  matrix(3, 4) = std::numeric_limits<float>::infinity();
  matrix(2, 2) = 7.5F;
  matrix(4, 2) = -9.25F;
  TMinMax range = fullRange(4, 4);
  range.vMin = TMinMax::kUnsetMin;
  range.vMax = TMinMax::kUnsetMax;
  const TempFolder folder;
  ASSERT_TRUE(writeMap(folder.file("m"), fullHeader(), range, matrix, AMatrixRect(1, 1, 4, 4)).ok());
  LoadedMap map;
  ASSERT_TRUE(readMap(folder.file("m"), map).ok());
  EXPECT_EQ(map.range.vMin, -9.25);
  EXPECT_EQ(map.range.vMax, 7.5);
}

TEST(FitsMapWriterTest, AValueRangeThatIsSetIsStoredAsGivenBesideTheTrueOneOfTheFile) {
  AMatrix<float> matrix = ramp(4, 4);
  matrix(1, 1) = 50.0F;
  matrix(1, 2) = -60.0F;
  const RawMap raw = written(fullHeader(), fullRange(4, 4), matrix);
  EXPECT_EQ(raw.cards.number("LVMAX"), 10.0 / 3.0);
  EXPECT_EQ(raw.cards.number("DATAMIN"), -60.0);
  EXPECT_EQ(raw.cards.number("DATAMAX"), 50.0);
}

TEST(FitsMapWriterTest, AMapWithoutAFinitePixelKeepsTheUnsetValueRange) {
  AMatrix<float> matrix(2, 2);
  for (std::size_t i = 0; i < matrix.size(); ++i) matrix.data()[i] = kNaNPixel;
  TMinMax range = fullRange(2, 2);
  range.vMin = TMinMax::kUnsetMin;
  range.vMax = TMinMax::kUnsetMax;
  EXPECT_EQ(roundTrip(fullHeader(), range, matrix).range, range);
  EXPECT_FALSE(written(fullHeader(), range, matrix).cards.has("DATAMAX"));
}

TEST(FitsMapWriterTest, FitsRowOneIsTheSouthernmostRowAndFitsColumnOneTheEasternmostColumn) {
  const AMatrix<float> matrix = ramp(4, 6);
  const RawMap raw = written(fullHeader(), fullRange(4, 6), matrix);
  ASSERT_EQ(raw.cards.number("NAXIS1"), 6.0);
  ASSERT_EQ(raw.cards.number("NAXIS2"), 4.0);
  for (int j = 1; j <= 4; ++j)
    for (int i = 1; i <= 6; ++i)
      EXPECT_EQ(raw.pixel(i, j),
                matrix(static_cast<std::uint32_t>(j - 1), static_cast<std::uint32_t>(6 - i)));
}

TEST(FitsMapWriterTest, TheReferencePixelIsWhereXAndYAreZeroAndTheStepsAreInDegrees) {
  TMinMax range = fullRange(8, 8);  // zero at row and column 4: FITS pixels (4, 5)
  RawMap raw = written(fullHeader(), range, ramp(8, 8));
  EXPECT_DOUBLE_EQ(raw.cards.number("CRPIX1").value(), 4.0);
  EXPECT_DOUBLE_EQ(raw.cards.number("CRPIX2").value(), 5.0);
  EXPECT_DOUBLE_EQ(raw.cards.number("CDELT1").value(), -0.1 / 3.0 / 3600.0);
  EXPECT_DOUBLE_EQ(raw.cards.number("CDELT2").value(), 0.1 / 7.0 / 3600.0);
  const double dx = 0.1 / 3.0;
  const double dy = 0.1 / 7.0;
  range.xMin += 2 * dx;  // the map looks two pixels to the east and half a pixel to the south
  range.xMax += 2 * dx;
  range.yMin -= 0.5 * dy;
  range.yMax -= 0.5 * dy;
  raw = written(fullHeader(), range, ramp(8, 8));
  EXPECT_DOUBLE_EQ(raw.cards.number("CRPIX1").value(), 6.0);
  EXPECT_DOUBLE_EQ(raw.cards.number("CRPIX2").value(), 5.5);
}

TEST(FitsMapWriterTest, TheStandardKeywordsAreThoseThatViewersExpect) {
  AMapHeader header = fullHeader();
  header.rightAscension = -10.0;
  header.beamMajor = 1.8;
  header.beamMinor = 3.6;  // the larger one: BMAJ, its angle a quarter turn on
  header.beamPa = 30.0;
  const FitsCards cards = written(header, fullRange(4, 4), ramp(4, 4)).cards;
  EXPECT_EQ(cards.number("BITPIX"), -32.0);
  EXPECT_EQ(cards.number("NAXIS"), 4.0);
  EXPECT_EQ(cards.number("NAXIS3"), 1.0);
  EXPECT_EQ(cards.number("NAXIS4"), 1.0);
  EXPECT_EQ(cards.text("CTYPE1"), "RA---SIN");
  EXPECT_EQ(cards.text("CTYPE2"), "DEC--SIN");
  EXPECT_EQ(cards.text("CTYPE3"), "FREQ");
  EXPECT_EQ(cards.text("CTYPE4"), "STOKES");
  EXPECT_EQ(cards.number("CRVAL1"), 350.0);
  EXPECT_EQ(cards.number("CRVAL2"), header.declination);
  EXPECT_EQ(cards.number("CRVAL3"), header.frequency);
  EXPECT_EQ(cards.number("CDELT3"), header.bandwidth);
  EXPECT_EQ(cards.number("CRVAL4"), 1.0);
  EXPECT_EQ(cards.number("RESTFRQ"), header.frequency);
  EXPECT_EQ(cards.text("CUNIT1"), "deg");
  EXPECT_EQ(cards.text("CUNIT3"), "Hz");
  EXPECT_EQ(cards.text("RADESYS"), "FK5");
  EXPECT_EQ(cards.number("EQUINOX"), 2000.0);
  EXPECT_EQ(cards.text("BUNIT"), "Jy/beam");
  EXPECT_EQ(cards.text("BTYPE"), "Intensity");
  EXPECT_EQ(cards.text("OBJECT"), "0415+379");
  EXPECT_DOUBLE_EQ(cards.number("BMAJ").value(), 0.001);
  EXPECT_DOUBLE_EQ(cards.number("BMIN").value(), 0.0005);
  EXPECT_DOUBLE_EQ(cards.number("BPA").value(), -60.0);
  EXPECT_THAT(cards.text("ORIGIN").value(), HasSubstr("Lumo"));
  EXPECT_EQ(cards.text("LUNIT"), "Jy/Beam");
}

TEST(FitsMapWriterTest, StokesFrameBandwidthAndBeamCardsFollowTheHeader) {
  AMapHeader header = fullHeader();
  header.stokes = "LL";
  header.bandwidth = 0.0;
  header.beamMinor = 0.0;
  header.epoch = 1950.0;
  header.kind = MapKind::kSpectralIndex;
  header.unit = "Sp. Index";
  const FitsCards cards = written(header, fullRange(4, 4), ramp(4, 4)).cards;
  EXPECT_EQ(cards.number("CRVAL4"), -2.0);
  EXPECT_EQ(cards.number("CDELT3"), 1.0);
  EXPECT_FALSE(cards.has("BMAJ"));
  EXPECT_FALSE(cards.has("BPA"));
  EXPECT_EQ(cards.text("RADESYS"), "FK4");
  EXPECT_EQ(cards.text("BTYPE"), "Spectral Index");
  EXPECT_EQ(cards.text("BUNIT"), "");
}

TEST(FitsMapWriterTest, HistoryEntriesOfAnyLengthAndBytesRoundTripInPrintableCards) {
  AMapHeader header = fullHeader();
  header.history = {"100 %", "%41", "ends in a blank ", "   starts with blanks", "Gr\u00F6\u00DFe\n\t\x01"};
  for (const std::size_t length : {70U, 71U, 72U, 73U, 142U, 143U, 144U, 145U, 5000U})
    header.history.push_back(std::string(length, 'x'));
  for (std::size_t length = 60; length < 80; ++length)
    header.history.push_back(std::string(length, 'y') + "% \xFF %" + std::string(length, ' '));
  const TempFolder folder;
  ASSERT_TRUE(writeMap(folder.file("m"), header, fullRange(4, 4), ramp(4, 4)).ok());
  const RawMap raw(folder.file("m"));
  for (std::size_t i = 0; i < raw.data; ++i) ASSERT_TRUE(raw.bytes[i] >= 0x20 && raw.bytes[i] <= 0x7E) << i;
  LoadedMap map;
  ASSERT_TRUE(readMap(folder.file("m"), map).ok());
  EXPECT_EQ(map.header.history, header.history);
}

TEST(FitsMapWriterTest, NamesWithQuotesPercentSignsAndOtherBytesRoundTrip) {
  AMapHeader header = fullHeader();
  for (const std::string& name :
       {std::string("'Barnard's'"), std::string("3C%20"), std::string("caf\xC3\xA9 "), std::string(" x "),
        std::string("a\0b", 3), std::string("/ a = b")}) {
    header.sourceName = name;
    EXPECT_EQ(roundTrip(header, fullRange(4, 4), ramp(4, 4)).header.sourceName, name);
  }
}

TEST(FitsMapWriterTest, TextsBeyondTheirCardAreCutAtWholeCharacters) {
  AMapHeader header = fullHeader();
  header.sourceName = std::string(67, 'a') + "%b";
  EXPECT_EQ(roundTrip(header, fullRange(4, 4), ramp(4, 4)).header.sourceName, std::string(67, 'a'));
  header.sourceName = std::string(67, 'a') + "''";
  EXPECT_EQ(roundTrip(header, fullRange(4, 4), ramp(4, 4)).header.sourceName, std::string(67, 'a'));
}

TEST(FitsMapWriterTest, AnEmptyDateBecomesTheDayOfTheSourceDateEpochWhenThatIsSet) {
  AMapHeader header = fullHeader();
  header.date.clear();
  ASSERT_EQ(::setenv("SOURCE_DATE_EPOCH", "951868799", 1), 0);  // the last second of 29 February 2000
  EXPECT_EQ(roundTrip(header, fullRange(4, 4), ramp(4, 4)).header.date, "2000-02-29");
  const std::string first = written(header, fullRange(4, 4), ramp(4, 4)).bytes;
  EXPECT_EQ(written(header, fullRange(4, 4), ramp(4, 4)).bytes, first);
  ASSERT_EQ(::setenv("SOURCE_DATE_EPOCH", "soon", 1), 0);
  const std::string today = roundTrip(header, fullRange(4, 4), ramp(4, 4)).header.date;
  EXPECT_THAT(today, testing::MatchesRegex("2[0-9][0-9][0-9]-[01][0-9]-[0-3][0-9]"));
  EXPECT_GT(today, "2024-01-01");
  ::unsetenv("SOURCE_DATE_EPOCH");
}

}  // namespace
}  // namespace lumo
