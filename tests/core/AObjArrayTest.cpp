// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

#include "core/ABitArray.h"
#include "core/AMatrix.h"
#include "core/AObjArray.h"

namespace lumo {
namespace {

using ::testing::ElementsAre;

template <typename T>
std::vector<T> contents(const AArray<T>& array) {
  return std::vector<T>(array.begin(), array.end());
}

// Long enough to be kept outside the string object, so that a bad copy shows under the address sanitizer.
std::string longText(char c) {
  return std::string(100, c);
}

// Counts the elements alive.
struct Counted {
  Counted() { ++alive; }
  Counted(const Counted& other) : value(other.value) { ++alive; }
  Counted& operator=(const Counted& other) = default;
  ~Counted() { --alive; }

  static inline int alive = 0;
  int value = 0;
};

TEST(AObjArrayTest, ElementsAreConstructedOnAllocationAndDestroyedOnRelease) {
  ASSERT_EQ(Counted::alive, 0);
  {
    AObjArray<Counted> array(3);
    EXPECT_EQ(Counted::alive, 3);
    array.InsertAt(3, Counted());
    EXPECT_EQ(Counted::alive, 3 + AObjArray<Counted>::kGrowStep);
    array.Clear();
    EXPECT_EQ(Counted::alive, 0);
    array.SetSize(10);
    EXPECT_EQ(Counted::alive, 10);
  }
  EXPECT_EQ(Counted::alive, 0);
}

TEST(AObjArrayTest, CopyingAndMovingNeitherLeakNorDestroyTwice) {
  {
    AObjArray<Counted> first(2);
    first[1].value = 4;
    AObjArray<Counted> second(first);
    AObjArray<Counted> third;
    third = second;
    AObjArray<Counted> fourth(std::move(second));
    third = std::move(fourth);
    EXPECT_EQ(third[1].value, 4);
    EXPECT_EQ(first[1].value, 4);
  }
  EXPECT_EQ(Counted::alive, 0);
}

TEST(AObjArrayTest, StringsSurviveGrowthInsertionAndRemoval) {
  AObjArray<std::string> array;
  for (int i = 0; i < 300; ++i) array.InsertAt(0, longText(static_cast<char>('a' + i % 26)));
  ASSERT_EQ(array.count(), 300);
  for (int i = 0; i < 300; ++i) ASSERT_EQ(array[299 - i], longText(static_cast<char>('a' + i % 26)));
  EXPECT_EQ(array.RemoveAt(1), 299);
  EXPECT_EQ(array[0], longText(static_cast<char>('a' + 299 % 26)));
  EXPECT_EQ(array[1], longText(static_cast<char>('a' + 297 % 26)));
  EXPECT_EQ(array.RemoveAt(298), 298);
  EXPECT_EQ(array[297], longText('b'));
}

TEST(AObjArrayTest, SetSizeThenInsertAtKeepsTheElements) {
  AObjArray<std::string> array;
  array.SetSize(10);
  EXPECT_EQ(array.capacity(), 0);
  for (std::string& text : array) EXPECT_EQ(text, "");
  array[9] = longText('z');
  array.InsertAt(10, longText('y'));
  EXPECT_EQ(array.capacity(), 256);
  EXPECT_EQ(array[9], longText('z'));
  EXPECT_EQ(array[10], longText('y'));
}

TEST(AObjArrayTest, AnElementOfTheArrayItselfCanBeInserted) {
  AObjArray<std::string> array(1);
  array[0] = longText('q');
  array.InsertAt(0, array[0]);  // grows
  array.InsertAt(0, array[1]);  // does not
  EXPECT_THAT(contents(array), ElementsAre(longText('q'), longText('q'), longText('q')));
}

TEST(AObjArrayTest, AnArrayAssignedToItselfKeepsItsElements) {
  AObjArray<std::string> array(1);
  array[0] = longText('s');
  AObjArray<std::string>& same = array;
  array = same;
  EXPECT_THAT(contents(array), ElementsAre(longText('s')));
}

TEST(AObjArrayTest, CopiesOfMasksAndMatricesAreDeep) {
  AObjArray<ABitArray> masks;
  masks.InsertAt(0, ABitArray(9));
  AObjArray<ABitArray> copy(masks);
  masks[0](8, 1);
  EXPECT_EQ(copy[0](8), 0);
  EXPECT_NE(masks[0](8), 0);

  AObjArray<AMatrix<float>> maps(1);
  maps[0].resize(2, 2);
  AObjArray<AMatrix<float>> mapsCopy;
  mapsCopy = maps;
  maps[0](1, 1) = 3.0F;
  EXPECT_EQ(mapsCopy[0](1, 1), 0.0F);
}

TEST(AObjArrayTest, ANegativeSizeHasCountAndCapacityZero) {
  const AObjArray<std::string> array(-1);
  EXPECT_EQ(array.count(), 0);
  EXPECT_EQ(array.capacity(), 0);
}

}  // namespace
}  // namespace lumo
