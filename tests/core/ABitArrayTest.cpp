// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <string>

#include "core/ABitArray.h"
#include "core/AFile.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::readFile;
using test::TempFolder;
using test::writeFile;

// A pattern without symmetry under reversal or a shift by a byte.
bool patternBit(int i) {
  return i % 3 == 0 || i % 7 == 5;
}

ABitArray patterned(int count) {
  ABitArray mask(count);
  for (int i = 0; i < count; ++i) mask(i, patternBit(i) ? 1 : 0);
  return mask;
}

std::string stored(const ABitArray& mask, const TempFolder& folder) {
  const std::string name = folder.file("mask.bin");
  AFile file;
  EXPECT_EQ(file.Open(name, AFile::kCreate), 1);
  EXPECT_EQ(mask.Store(file), 1);
  EXPECT_EQ(file.Close(), 1);
  return readFile(name);
}

int load(ABitArray& mask, const std::string& bytes, const TempFolder& folder) {
  const std::string name = folder.file("load.bin");
  writeFile(name, bytes);
  AFile file;
  EXPECT_EQ(file.Open(name, AFile::kRead), 1);
  return mask.Load(file);
}

std::string bytesOf(std::initializer_list<int> values) {
  std::string bytes;
  for (const int value : values) bytes.push_back(static_cast<char>(value));
  return bytes;
}

TEST(ABitArrayTest, BitsStartClear) {
  const ABitArray mask(17);
  EXPECT_EQ(mask.count(), 17);
  EXPECT_EQ(mask.setCount(), 0);
  for (int i = 0; i < 17; ++i) EXPECT_EQ(mask(i), 0) << i;
}

TEST(ABitArrayTest, WritingABitChangesThatBitAlone) {
  ABitArray mask(20);
  mask(8, 1);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(mask(i) != 0, i == 8) << i;
  mask = 1;
  mask(15, 0);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(mask(i) != 0, i != 15) << i;
}

TEST(ABitArrayTest, AnyNonZeroValueSetsABit) {
  ABitArray mask(2);
  mask(0, -1);
  mask(1, 256);
  EXPECT_NE(mask(0), 0);
  EXPECT_NE(mask(1), 0);
}

TEST(ABitArrayTest, AssigningANumberSetsOrClearsEveryBit) {
  for (const int count : {0, 1, 7, 8, 9, 64}) {
    ABitArray mask(count);
    mask = 2;
    EXPECT_EQ(mask.setCount(), count);
    for (int i = 0; i < count; ++i) EXPECT_NE(mask(i), 0) << i;
    mask = 0;
    EXPECT_EQ(mask.setCount(), 0);
    EXPECT_EQ(mask.count(), count);
  }
}

TEST(ABitArrayTest, ReadingOutsideGivesZeroAndWritingOutsideDoesNothing) {
  ABitArray mask(9);
  mask = 1;
  EXPECT_EQ(mask(-1), 0);
  EXPECT_EQ(mask(9), 0);
  EXPECT_EQ(mask(15), 0);
  mask = 0;
  mask(-1, 1);
  mask(9, 1);
  EXPECT_EQ(mask, ABitArray(9));
}

TEST(ABitArrayTest, ANegativeCountGivesNoBits) {
  ABitArray mask(-5);
  EXPECT_EQ(mask.count(), 0);
  mask = 1;
  EXPECT_EQ(mask.setCount(), 0);
}

TEST(ABitArrayTest, CopyAssignmentCopiesCountAndBits) {
  const ABitArray mask = patterned(13);
  ABitArray copy(2);
  copy = mask;
  EXPECT_EQ(copy, mask);
  copy(0, 0);
  EXPECT_NE(mask(0), 0);
}

TEST(ABitArrayTest, EqualBitsCompareEqualHoweverTheyWereSet) {
  ABitArray all(9);
  all = 1;
  ABitArray oneByOne(9);
  for (int i = 0; i < 9; ++i) oneByOne(i, 1);
  EXPECT_EQ(all, oneByOne);
  EXPECT_NE(ABitArray(8), ABitArray(9));
}

TEST(ABitArrayTest, StoresTheCountAndThenBitsFromTheLeastSignificant) {
  const TempFolder folder;
  ABitArray mask(10);
  mask(0, 1);
  mask(3, 1);
  mask(9, 1);
  EXPECT_EQ(stored(mask, folder), bytesOf({10, 0, 0, 0, 0x09, 0x02}));
}

TEST(ABitArrayTest, AMaskOfAllBitsStoresZerosInTheUnusedBits) {
  const TempFolder folder;
  ABitArray mask(10);
  mask = 1;
  EXPECT_EQ(stored(mask, folder), bytesOf({10, 0, 0, 0, 0xFF, 0x03}));
}

TEST(ABitArrayTest, EveryCountAroundAByteComesBackAsItWasStored) {
  const TempFolder folder;
  for (const int count : {0, 1, 7, 8, 9, 15, 16, 17, 127, 1000}) {
    const ABitArray mask = patterned(count);
    const std::string bytes = stored(mask, folder);
    EXPECT_EQ(bytes.size(), 4u + static_cast<unsigned>(count + 7) / 8) << count;
    ABitArray back(3);
    EXPECT_EQ(load(back, bytes, folder), 1) << count;
    EXPECT_EQ(back.count(), count);
    for (int i = 0; i < count; ++i) EXPECT_EQ(back(i) != 0, patternBit(i)) << i;
  }
}

TEST(ABitArrayTest, SeveralMasksInOneFileAreReadOneAfterTheOther) {
  const TempFolder folder;
  const std::string bytes = stored(patterned(9), folder) + stored(patterned(1), folder) + "rest";
  writeFile(folder.file("two.bin"), bytes);
  AFile file;
  ASSERT_EQ(file.Open(folder.file("two.bin"), AFile::kRead), 1);
  ABitArray first;
  ABitArray second;
  EXPECT_EQ(first.Load(file), 1);
  EXPECT_EQ(second.Load(file), 1);
  EXPECT_EQ(first, patterned(9));
  EXPECT_EQ(second, patterned(1));
  EXPECT_EQ(file.remaining(), 4u);
}

TEST(ABitArrayTest, UnusedBitsThatAFileHasSetAreNotTaken) {
  const TempFolder folder;
  ABitArray mask;
  ASSERT_EQ(load(mask, bytesOf({3, 0, 0, 0, 0xFF}), folder), 1);
  EXPECT_EQ(mask.setCount(), 3);
  ABitArray expected(3);
  expected = 1;
  EXPECT_EQ(mask, expected);
}

TEST(ABitArrayTest, ACountThatTheFileCannotHoldIsRefusedAndLeavesTheArrayEmpty) {
  const TempFolder folder;
  ABitArray mask(5);
  EXPECT_EQ(load(mask, bytesOf({0xFF, 0xFF, 0xFF, 0x7F, 1, 2, 3}), folder), 0);
  EXPECT_EQ(mask.count(), 0);
  EXPECT_EQ(load(mask, bytesOf({17, 0, 0, 0, 1, 2}), folder), 0);
  EXPECT_EQ(mask.count(), 0);
}

TEST(ABitArrayTest, ANegativeCountInAFileIsRefused) {
  const TempFolder folder;
  ABitArray mask(5);
  EXPECT_EQ(load(mask, bytesOf({0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3, 4}), folder), 0);
  EXPECT_EQ(load(mask, bytesOf({0, 0, 0, 0x80}), folder), 0);
  EXPECT_EQ(mask.count(), 0);
}

TEST(ABitArrayTest, AFileThatEndsInsideTheCountIsRefused) {
  const TempFolder folder;
  ABitArray mask(5);
  EXPECT_EQ(load(mask, bytesOf({8, 0, 0}), folder), 0);
  EXPECT_EQ(load(mask, "", folder), 0);
  EXPECT_EQ(mask.count(), 0);
}

TEST(ABitArrayTest, StoringIntoAFileThatIsNotOpenFails) {
  AFile file;
  EXPECT_EQ(patterned(3).Store(file), 0);
}

}  // namespace
}  // namespace lumo
