// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "core/MemoryRoom.h"
#include "core/ProcessFacts.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

constexpr std::uint64_t kGib = std::uint64_t{1} << 30;

class MemoryRoomTest : public testing::Test {
 protected:
  void put(const std::string& path, const std::string& content) {
    const std::string whole = folder_.file(path);
    std::filesystem::create_directories(std::filesystem::path(whole).parent_path());
    test::writeFile(whole, content);
  }
  void putMachine(const std::string& swapKib) {
    put("proc/meminfo",
        "MemTotal:        8388608 kB\nMemFree:  1 kB\nMemAvailable:    4194304 kB\nSwapTotal: " + swapKib +
            " kB\n");
  }
  [[nodiscard]] MemoryRoom ask() const {
    std::string root = folder_.path();
    while (root.back() == '/') root.pop_back();
    return memoryRoom(root);
  }

  test::TempFolder folder_;
};

TEST_F(MemoryRoomTest, AMachineGivesItsMemoryAndItsSwapSpace) {
  putMachine("0");
  EXPECT_EQ(ask().most, 8 * kGib);
  EXPECT_EQ(ask().mostIs, "the memory of this machine");
  EXPECT_EQ(ask().free, 4 * kGib);
  putMachine("2097152");
  EXPECT_EQ(ask().most, 10 * kGib);
  EXPECT_EQ(ask().free, 4 * kGib) << "swapping is not free memory";
}

TEST_F(MemoryRoomTest, TheSmallestLimitOfTheControlGroupsHolds) {
  putMachine("2097152");
  put("proc/self/cgroup", "0::/user/job\n");
  put("sys/fs/cgroup/user/job/memory.max", "max\n");
  EXPECT_EQ(ask().most, 10 * kGib);
  put("sys/fs/cgroup/user/memory.max", std::to_string(3 * kGib) + "\n");
  put("sys/fs/cgroup/user/memory.current", std::to_string(2 * kGib) + "\n");
  put("sys/fs/cgroup/user/memory.stat", "anon 5\ninactive_file " + std::to_string(kGib / 2) + "\n");
  EXPECT_EQ(ask().most, 5 * kGib) << "with the swap space of the machine";
  EXPECT_EQ(ask().mostIs, "the limit of this process's control group");
  EXPECT_EQ(ask().free, 3 * kGib / 2) << "cached files can be taken back";
  put("sys/fs/cgroup/user/memory.swap.max", "0\n");
  EXPECT_EQ(ask().most, 3 * kGib);
  put("sys/fs/cgroup/memory.max", std::to_string(kGib) + "\n");
  put("sys/fs/cgroup/memory.swap.max", "0\n");
  EXPECT_EQ(ask().most, kGib) << "the folder that a container sees as its own";
}

TEST_F(MemoryRoomTest, ControlGroupsOfTheFirstVersionAreAskedToo) {
  putMachine("0");
  put("proc/self/cgroup", "12:cpu,cpuacct:/a\n4:memory:/a/b\n");
  put("sys/fs/cgroup/memory/a/b/memory.limit_in_bytes", std::to_string(kGib) + "\n");
  put("sys/fs/cgroup/memory/a/b/memory.usage_in_bytes", std::to_string(kGib / 4) + "\n");
  // The "no limit" of that version.
  put("sys/fs/cgroup/memory/a/memory.limit_in_bytes", "9223372036854771712\n");
  EXPECT_EQ(ask().most, kGib);
  EXPECT_EQ(ask().free, 3 * kGib / 4);
}

TEST_F(MemoryRoomTest, ASystemThatTellsNothingHasNoLimit) {
  EXPECT_EQ(ask().most, MemoryRoom::kUnknown);
  EXPECT_EQ(ask().free, MemoryRoom::kUnknown);
}

TEST_F(MemoryRoomTest, ThisProcessFitsIntoThisMachine) {
  const MemoryRoom room = memoryRoom();
  EXPECT_GT(room.most, residentBytes());
  EXPECT_GT(residentBytes(), 100'000u);
  EXPECT_GT(room.free, 0u);
}

TEST(BytesTextTest, NumbersHaveThreeDigitsAndPowersOfTen) {
  EXPECT_EQ(bytesText(0), "0 B");
  EXPECT_EQ(bytesText(999), "999 B");
  EXPECT_EQ(bytesText(1000), "1 kB");
  EXPECT_EQ(bytesText(999'600), "1 MB");
  EXPECT_EQ(bytesText(12'345'678'901), "12.3 GB");
  EXPECT_EQ(bytesText(2'000'000'000'000'000), "2e+03 TB");
}

}  // namespace
}  // namespace lumo
