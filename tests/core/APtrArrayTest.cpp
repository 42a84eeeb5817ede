// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include "core/APtrArray.h"

namespace lumo {
namespace {

struct Tracked {
  explicit Tracked(int& deletionCount) : deletions(deletionCount) {}
  Tracked(const Tracked&) = delete;
  Tracked& operator=(const Tracked&) = delete;
  ~Tracked() { ++deletions; }
  int& deletions;
};

TEST(APtrArrayTest, OwnsAtConstructionAndDeletesEveryPointeeWhenDestroyed) {
  int deletions = 0;
  {
    APtrArray<Tracked*> array;
    EXPECT_EQ(array.owning(), 1);
    for (int i = 0; i < 300; ++i) array.InsertAt(i, new Tracked(deletions));
    EXPECT_EQ(deletions, 0);
  }
  EXPECT_EQ(deletions, 300);
}

TEST(APtrArrayTest, LeavesThePointeesAloneWhenItDoesNotOwnThem) {
  int deletions = 0;
  const auto pointee = std::make_unique<Tracked>(deletions);
  {
    APtrArray<Tracked*> array;
    array.setOwning(0);
    array.InsertAt(0, pointee.get());
  }
  EXPECT_EQ(deletions, 0);
}

TEST(APtrArrayTest, RemovingOrClearingDoesNotDelete) {
  int deletions = 0;
  const auto first = std::make_unique<Tracked>(deletions);
  const auto second = std::make_unique<Tracked>(deletions);
  {
    APtrArray<Tracked*> array;
    array.InsertAt(0, first.get());
    array.InsertAt(1, second.get());
    EXPECT_EQ(array.RemoveAt(0), 1);
    EXPECT_EQ(array[0], second.get());
    array.Clear();
  }
  EXPECT_EQ(deletions, 0);
}

TEST(APtrArrayTest, DestroyingAnArrayWithNullPointersIsFine) {
  int deletions = 0;
  {
    APtrArray<Tracked*> array;
    array.InsertAt(0, nullptr);
    array.InsertAt(1, new Tracked(deletions));
  }
  EXPECT_EQ(deletions, 1);
}

TEST(APtrArrayTest, CannotBeCopiedOrMovedBecauseTwoOwnersWouldDeleteTwice) {
  EXPECT_FALSE(std::is_copy_constructible_v<APtrArray<Tracked*>>);
  EXPECT_FALSE(std::is_copy_assignable_v<APtrArray<Tracked*>>);
  EXPECT_FALSE(std::is_move_constructible_v<APtrArray<Tracked*>>);
  EXPECT_FALSE(std::is_move_assignable_v<APtrArray<Tracked*>>);
}

}  // namespace
}  // namespace lumo
