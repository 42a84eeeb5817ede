// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "imaging/ImagerHandOver.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

/// Remembers every call, and shows a window after so many searches.
class FakeLink : public ImagerLink {
 public:
  Window findWindow(const std::string& className) override {
    calls.push_back("find " + className);
    return searchesWithout-- > 0 ? 0 : 77;
  }
  void start(const std::string& command) override { calls.push_back("start " + command); }
  void wait(std::chrono::milliseconds time) override {
    calls.push_back("wait " + std::to_string(time.count()));
  }
  void post(Window window, unsigned message, std::uintptr_t first, std::intptr_t second) override {
    calls.push_back("post " + std::to_string(window) + ' ' + std::to_string(message) + ' ' +
                    std::to_string(first) + ' ' + std::to_string(second));
  }

  int searchesWithout = 0;
  std::vector<std::string> calls;
};

ABitArray bits(const std::vector<int>& values) {
  ABitArray array(static_cast<std::int32_t>(values.size()));
  for (std::size_t i = 0; i < values.size(); ++i) array(static_cast<std::int32_t>(i), values[i]);
  return array;
}

class ImagerHandOverTest : public testing::Test {
 protected:
  ImagerHandOverTest() {
    data_.uExtent = 123456789.0;
    data_.vExtent = 0.000012345678;
    addFile("/data/a b.uvx", {1, 0, 1});
    addFile("/data/none.uvx", {0, 0});
    addFile("/data/c.uvx", {0, 1});
  }

  void addFile(const std::string& name, const std::vector<int>& rows) {
    data_.names.InsertAt(data_.names.count(), name);
    data_.selections.InsertAt(data_.selections.count(), bits(rows));
  }
  HandOver handOver(ImagerLink* link = nullptr) {
    return handOverToImager(data_, folder_.path(), 4711, link);
  }
  void occupy(int slot) { test::writeFile(handOverPath(folder_.path(), slot), "waiting"); }

  UvPlaneData data_;
  test::TempFolder folder_;
  FakeLink link_;
};

TEST_F(ImagerHandOverTest, FileHasVExtentThenUExtentWithSixDigitsThenEverySelectedRow) {
  ASSERT_EQ(handOver().slot, 0);
  EXPECT_EQ(test::readFile(folder_.file("mfs_zel0.dat")),
            "1.23457e-05\t1.23457e+08\n0\t/data/a b.uvx\n2\t/data/a b.uvx\n1\t/data/c.uvx\n");
}

TEST_F(ImagerHandOverTest, SlotZeroInUseAndSlotOneFreeMeansFileOneAndSecondParameterOne) {
  occupy(0);
  const HandOver result = handOver(&link_);
  EXPECT_EQ(result.slot, 1);
  EXPECT_TRUE(result.posted);
  EXPECT_TRUE(test::exists(folder_.file("mfs_zel1.dat")));
  EXPECT_EQ(test::readFile(folder_.file("mfs_zel0.dat")), "waiting");
  EXPECT_EQ(link_.calls, (std::vector<std::string>{"find ZELImageFrameWnd", "post 77 1369 4711 1"}));
}

TEST_F(ImagerHandOverTest, AFileWithNoSelectedRowsContributesNoLine) {
  EXPECT_EQ(handOverText(data_).find("none.uvx"), std::string::npos);
}

TEST_F(ImagerHandOverTest, WithNoRowsSelectedAtAllTheFileHoldsOnlyLineOne) {
  for (std::int32_t i = 0; i < data_.selections.count(); ++i) data_.selections[i] = 0;
  EXPECT_EQ(handOverText(data_), "1.23457e-05\t1.23457e+08\n");
}

TEST_F(ImagerHandOverTest, WithTheImagerNotRunningOneStartIsFollowedByOneWaitOfASecondAndOneMoreSearch) {
  link_.searchesWithout = 100;
  const HandOver result = handOver(&link_);
  EXPECT_EQ(link_.calls,
            (std::vector<std::string>{"find ZELImageFrameWnd", "start " + folder_.path() + "zelimag.exe",
                                      "wait 1000", "find ZELImageFrameWnd"}));
  EXPECT_FALSE(result.posted);
  EXPECT_TRUE(test::exists(folder_.file("mfs_zel0.dat")));  // and it occupies its slot
  EXPECT_EQ(freeHandOverSlot(folder_.path()), 1);
}

TEST_F(ImagerHandOverTest, AnImagerThatComesUpInThatSecondGetsTheMessage) {
  link_.searchesWithout = 1;
  EXPECT_TRUE(handOver(&link_).posted);
  ASSERT_EQ(link_.calls.size(), 5U);
  EXPECT_EQ(link_.calls.back(), "post 77 1369 4711 0");
}

TEST_F(ImagerHandOverTest, WithTenSlotsInUseNothingIsWrittenAndNothingPosted) {
  for (int slot = 0; slot < 10; ++slot) occupy(slot);
  const HandOver result = handOver(&link_);
  EXPECT_FALSE(result.slot.has_value());
  EXPECT_TRUE(link_.calls.empty());
  EXPECT_FALSE(result.status.ok());
  for (int slot = 0; slot < 10; ++slot)
    EXPECT_EQ(test::readFile(handOverPath(folder_.path(), slot)), "waiting");
  const std::filesystem::directory_iterator files(folder_.path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 10);
}

TEST_F(ImagerHandOverTest, TheFirstFreeSlotIsTakenEvenBelowUsedOnes) {
  occupy(0);
  occupy(1);
  occupy(3);
  EXPECT_EQ(handOver().slot, 2);
}

TEST_F(ImagerHandOverTest, WithoutALinkOnlyTheFileIsWritten) {
  const HandOver result = handOver(nullptr);
  EXPECT_EQ(result.slot, 0);
  EXPECT_FALSE(result.posted);
  EXPECT_TRUE(test::exists(folder_.file("mfs_zel0.dat")));
}

TEST_F(ImagerHandOverTest, NothingIsPostedAboutAFileThatCannotBeWritten) {
  const HandOver result = handOverToImager(data_, folder_.file("no/such/"), 4711, &link_);
  EXPECT_EQ(result.status.code(), StatusCode::kWriteFailed);
  EXPECT_FALSE(result.slot.has_value());
  EXPECT_TRUE(link_.calls.empty());
}

TEST_F(ImagerHandOverTest, ExtentsBeforeAnySelectionAreWrittenAsTheyAre) {
  data_.uExtent = data_.vExtent = -1e38;
  EXPECT_EQ(handOverText(data_).substr(0, 14), "-1e+38\t-1e+38\n");
}

}  // namespace
}  // namespace lumo
