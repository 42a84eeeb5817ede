// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>

#include <cstdlib>
#include <numeric>
#include <utility>
#include <vector>

#include "core/AArray.h"

namespace lumo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

template <typename T>
std::vector<T> contents(const AArray<T>& array) {
  return std::vector<T>(array.begin(), array.end());
}

AArray<int> arrayOf(std::initializer_list<int> values) {
  AArray<int> array;
  for (const int value : values) array.InsertAt(array.count(), value);
  return array;
}

// Records the sizes asked for, and releases everything itself.
class RecordingArray : public AArray<int> {
 public:
  RecordingArray() = default;
  RecordingArray(const RecordingArray&) = delete;
  RecordingArray& operator=(const RecordingArray&) = delete;
  ~RecordingArray() override { releaseStorage(); }

  std::vector<int> requests;
  int live = 0;

 protected:
  int* allocate(std::int32_t n) override {
    requests.push_back(n);
    ++live;
    return static_cast<int*>(std::malloc(sizeof(int) * static_cast<std::size_t>(n)));
  }
  void release(int* storage) override {
    if (storage != nullptr) --live;
    std::free(storage);
  }
};

TEST(AArrayTest, InsertingIntoAnEmptyArrayWithCapacityZeroAllocates256Elements) {
  RecordingArray array;
  EXPECT_EQ(array.capacity(), 0);
  EXPECT_EQ(array.InsertAt(0, 5), 0);
  EXPECT_EQ(array.capacity(), 256);
  EXPECT_EQ(array.count(), 1);
  EXPECT_THAT(array.requests, ElementsAre(256));
}

TEST(AArrayTest, GrowsByAFixedStepNotGeometrically) {
  RecordingArray array;
  for (int i = 0; i < 1025; ++i) array.InsertAt(i, i);
  EXPECT_THAT(array.requests, ElementsAre(256, 512, 768, 1024, 1280));
  EXPECT_EQ(array.live, 1);
  for (int i = 0; i < 1025; ++i) ASSERT_EQ(array[i], i);
}

TEST(AArrayTest, ClearReleasesTheStorageThroughTheArraysOwnOperation) {
  RecordingArray array;
  array.InsertAt(0, 1);
  array.Clear();
  EXPECT_EQ(array.live, 0);
  EXPECT_EQ(array.count(), 0);
  EXPECT_EQ(array.capacity(), 0);
  array.InsertAt(0, 2);
  EXPECT_THAT(contents(array), ElementsAre(2));
}

TEST(AArrayTest, InsertAtMovesTheElementsFromTheIndexUpByOne) {
  AArray<int> array = arrayOf({1, 2, 3});
  EXPECT_EQ(array.InsertAt(1, 9), 1);
  EXPECT_THAT(contents(array), ElementsAre(1, 9, 2, 3));
  EXPECT_EQ(array.InsertAt(0, 8), 0);
  EXPECT_THAT(contents(array), ElementsAre(8, 1, 9, 2, 3));
  EXPECT_EQ(array.InsertAt(5, 7), 5);
  EXPECT_THAT(contents(array), ElementsAre(8, 1, 9, 2, 3, 7));
}

TEST(AArrayTest, AnElementOfTheArrayItselfCanBeInsertedWhileItGrows) {
  AArray<int> array;
  for (int i = 0; i < 256; ++i) array.InsertAt(i, i);
  array.InsertAt(0, array[255]);
  EXPECT_EQ(array[0], 255);
  EXPECT_EQ(array[256], 255);
}

TEST(AArrayTest, AnElementAboveTheInsertionPointCanBeInsertedWithoutGrowth) {
  AArray<int> array = arrayOf({1, 2, 3});
  array.InsertAt(0, array[2]);
  EXPECT_THAT(contents(array), ElementsAre(3, 1, 2, 3));
}

TEST(AArrayTest, RemovingAtTheLastIndexLeavesEarlierElementsUntouchedAndCountIsTheIndex) {
  AArray<int> array = arrayOf({1, 2, 3});
  EXPECT_EQ(array.RemoveAt(2), 2);
  EXPECT_THAT(contents(array), ElementsAre(1, 2));
  EXPECT_EQ(array.capacity(), 256);
}

TEST(AArrayTest, RemovingBelowTheLastIndexMovesTheRestDown) {
  AArray<int> array = arrayOf({1, 2, 3, 4});
  EXPECT_EQ(array.RemoveAt(0), 3);
  EXPECT_THAT(contents(array), ElementsAre(2, 3, 4));
  EXPECT_EQ(array.RemoveAt(1), 2);
  EXPECT_THAT(contents(array), ElementsAre(2, 4));
}

TEST(AArrayTest, RemovingTheOnlyElementLeavesAnEmptyArrayThatKeepsItsStorage) {
  AArray<int> array = arrayOf({1});
  EXPECT_EQ(array.RemoveAt(0), 0);
  EXPECT_THAT(contents(array), IsEmpty());
  EXPECT_TRUE(array.empty());
  EXPECT_EQ(array.capacity(), 256);
}

TEST(AArrayTest, RemovingFromAnEmptyArrayLeavesItEmpty) {
  AArray<int> array;
  EXPECT_EQ(array.RemoveAt(0), 0);
  EXPECT_EQ(array.count(), 0);
}

TEST(AArrayTest, SetSizeOnAnEmptyArrayRecordsCapacityZeroAndTheNextInsertAtReallocatesTo256) {
  RecordingArray array;
  array.SetSize(10);
  EXPECT_EQ(array.count(), 10);
  EXPECT_EQ(array.capacity(), 0);
  std::iota(array.begin(), array.end(), 100);
  array.InsertAt(10, 7);
  EXPECT_THAT(array.requests, ElementsAre(10, 256));
  EXPECT_EQ(array.capacity(), 256);
  EXPECT_THAT(contents(array), ElementsAre(100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 7));
}

TEST(AArrayTest, SetSizeBeyondTheCapacityRecordsTheOldCount) {
  RecordingArray array;
  for (int i = 0; i < 3; ++i) array.InsertAt(i, i);
  array.SetSize(300);
  EXPECT_THAT(array.requests, ElementsAre(256, 300));
  EXPECT_EQ(array.count(), 300);
  EXPECT_EQ(array.capacity(), 3);
  EXPECT_EQ(array[2], 2);
}

TEST(AArrayTest, SetSizeWithinTheCapacityOnlySetsTheCount) {
  RecordingArray array;
  for (int i = 0; i < 5; ++i) array.InsertAt(i, i);
  array.SetSize(2);
  EXPECT_THAT(contents(array), ElementsAre(0, 1));
  array.SetSize(5);
  EXPECT_THAT(contents(array), ElementsAre(0, 1, 2, 3, 4));
  EXPECT_EQ(array.capacity(), 256);
  EXPECT_THAT(array.requests, ElementsAre(256));
}

TEST(AArrayTest, InsertAtAfterALargeSetSizeHasRoomForEveryElement) {
  AArray<int> array;
  array.SetSize(1000);  // recorded capacity 0, so one growth step would be too little
  std::iota(array.begin(), array.end(), 0);
  array.InsertAt(1000, 1000);
  for (int i = 0; i <= 1000; ++i) ASSERT_EQ(array[i], i);
  EXPECT_GT(array.capacity(), 1000);
}

TEST(AArrayTest, ShrinkingRightAfterTheRecordedCapacityFellBehindStaysInsideTheStorage) {
  RecordingArray array;
  array.SetSize(10);  // recorded capacity 0
  std::iota(array.begin(), array.end(), 0);
  array.SetSize(5);  // above the recorded capacity: allocates, and records the old count
  EXPECT_EQ(array.count(), 5);
  EXPECT_EQ(array.capacity(), 10);
  ASSERT_GE(array.requests.back(), 10);  // what is recorded must be there
  for (int i = 5; i < 10; ++i) array.InsertAt(i, 10 * i);
  EXPECT_THAT(contents(array), ElementsAre(0, 1, 2, 3, 4, 50, 60, 70, 80, 90));
}

TEST(AArrayTest, AConstructedArrayOfNegativeSizeHasCountAndCapacityZero) {
  AArray<int> array(-3);
  EXPECT_EQ(array.count(), 0);
  EXPECT_EQ(array.capacity(), 0);
  array.InsertAt(0, 4);
  EXPECT_THAT(contents(array), ElementsAre(4));
}

TEST(AArrayTest, ANegativeSetSizeCountsAsZero) {
  AArray<int> array = arrayOf({1, 2});
  array.SetSize(-1);
  EXPECT_EQ(array.count(), 0);
  EXPECT_THAT(contents(array), IsEmpty());
}

TEST(AArrayTest, AConstructedArrayHasExactlyItsCountAsCapacity) {
  AArray<double> array(7);
  EXPECT_EQ(array.count(), 7);
  EXPECT_EQ(array.capacity(), 7);
  array.InsertAt(7, 1.5);
  EXPECT_EQ(array.capacity(), 263);
}

TEST(AArrayTest, CopiesAreDeep) {
  AArray<int> first = arrayOf({1, 2, 3});
  AArray<int> second(first);
  AArray<int> third = arrayOf({9});
  third = first;
  first[0] = 7;
  EXPECT_THAT(contents(second), ElementsAre(1, 2, 3));
  EXPECT_THAT(contents(third), ElementsAre(1, 2, 3));
}

TEST(AArrayTest, AnArrayAssignedToItselfKeepsItsElements) {
  AArray<int> array = arrayOf({1, 2, 3});
  AArray<int>& same = array;
  array = same;
  EXPECT_THAT(contents(array), ElementsAre(1, 2, 3));
}

TEST(AArrayTest, AnEmptyArrayCanBeCopied) {
  const AArray<int> empty;
  AArray<int> array = arrayOf({1});
  array = empty;
  EXPECT_EQ(array.count(), 0);
  EXPECT_EQ(array.capacity(), 0);
}

TEST(AArrayTest, MovingHandsOverTheElements) {
  AArray<int> first = arrayOf({1, 2});
  AArray<int> second(std::move(first));
  EXPECT_THAT(contents(second), ElementsAre(1, 2));
  AArray<int> third;
  third = std::move(second);
  EXPECT_THAT(contents(third), ElementsAre(1, 2));
}

}  // namespace
}  // namespace lumo
