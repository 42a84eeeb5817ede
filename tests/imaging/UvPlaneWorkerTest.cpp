// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <new>
#include <thread>

#include "imaging/UvPlanePoints.h"
#include "imaging/UvPlaneSample.h"
#include "imaging/UvPlaneWorker.h"

namespace lumo {
namespace {

using test::ones;
using test::TestFile;

constexpr std::chrono::seconds kPatience(20);

UvFrame frameOf(const UvRange& visible) {
  UvFrame frame;
  frame.visible = visible;
  frame.width = 120;
  frame.height = 80;
  return frame;
}

/// Waits for the complete picture of a frame.
std::shared_ptr<const UvHitGrid> completed(const UvPlaneWorker& worker, const UvFrame& frame) {
  const auto start = std::chrono::steady_clock::now();
  while (std::chrono::steady_clock::now() - start < kPatience) {
    const UvPicture picture = worker.latest();
    if (picture.complete && picture.grid->frame() == frame) return picture.grid;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  ADD_FAILURE() << "the picture was not completed";
  return nullptr;
}

class UvPlaneWorkerTest : public testing::Test {
 protected:
  /// Two files of a spiral with 30 000 groups of 2 channels altogether.
  UvPlaneData spiral() {
    std::vector<TestFile> files;
    for (const double frequency : {1.0, 1.5}) {
      TestFile& file = files.emplace_back(std::vector<double>{frequency}, 2U);
      for (int i = 0; i < 15000; ++i) {
        const double angle = 0.01 * i;
        file.add(1e-10 * i * std::cos(angle), 1e-10 * i * std::sin(angle), ones(2));
      }
    }
    return test::uvPlaneOf(test::listTestFiles(folder_, files));
  }

  /// One file of 2000 groups near the origin that its table says have so many channels each: much to draw,
  /// little to read.
  UvPlaneData manyChannels(std::uint32_t channels) {
    TestFile file({1.0});
    for (int i = 0; i < 2000; ++i) file.add(1e-14 * i, 1e-14, ones(1));
    UvPlaneData data = test::uvPlaneOf(test::listTestFiles(folder_, {file}));
    data.tables = test::listTestFiles(other_, {TestFile({1.0}, channels)}).tables;
    return data;
  }

  /// The same picture drawn in one go.
  static UvHitGrid straight(const UvPlaneData& data, const UvFrame& frame) {
    UvHitGrid grid(frame);
    EXPECT_TRUE(readUvPoints(data, {-1e9, 1e9, -1e9, 1e9}, [&grid](std::span<const UvPoint> points) {
                  for (const UvPoint& point : points) grid.add(point);
                }).ok());
    return grid;
  }

  static void expectSame(const UvHitGrid& a, const UvHitGrid& b) {
    ASSERT_EQ(a.frame(), b.frame());
    EXPECT_GT(b.crosses(), 0U);
    for (int row = 0; row < a.frame().height; ++row)
      for (int column = 0; column < a.frame().width; ++column)
        ASSERT_EQ(a(row, column), b(row, column)) << row << ' ' << column;
  }

  test::TempFolder folder_;
  test::TempFolder other_;
};

constexpr UvRange kWhole{-2.5, 2.5, -2.5, 2.5};  // the channels' 1 MHz carries the points to about 1.5
constexpr UvRange kCorner{0.3, 0.9, -1.1, -0.2};

TEST_F(UvPlaneWorkerTest, CompletePictureHoldsEveryPointAndItsMirror) {
  const UvPlaneData data = spiral();
  UvPlaneWorker worker(data);
  worker.show(frameOf(kWhole));
  const auto grid = completed(worker, frameOf(kWhole));
  ASSERT_NE(grid, nullptr);
  EXPECT_EQ(grid->crosses(), 2U * 2U * 30000U);
  expectSame(*grid, straight(data, frameOf(kWhole)));
  EXPECT_TRUE(worker.latest().status.ok());
}

TEST_F(UvPlaneWorkerTest, APartOffTheMiddleHasMirrorsOfPointsThatLieBeyondItToo) {
  const UvPlaneData data = spiral();
  UvPlaneWorker worker(data);
  worker.show(frameOf(kWhole));
  (void)completed(worker, frameOf(kWhole));
  worker.show(frameOf(kCorner));
  const auto grid = completed(worker, frameOf(kCorner));
  ASSERT_NE(grid, nullptr);
  expectSame(*grid, straight(data, frameOf(kCorner)));
}

TEST_F(UvPlaneWorkerTest, GroupsBeyondWhatIsKeptAreReadAgain) {
  const UvPlaneData data = spiral();
  for (const std::size_t keep : {0U, 5000U, 20000U}) {
    UvPlaneWorker worker(data, {}, keep);
    for (const UvRange& range : {kWhole, kCorner, kWhole}) {
      worker.show(frameOf(range));
      const auto grid = completed(worker, frameOf(range));
      ASSERT_NE(grid, nullptr);
      expectSame(*grid, straight(data, frameOf(range)));
    }
  }
}

TEST_F(UvPlaneWorkerTest, WhenAllGroupsAreKeptTheFilesAreNotNeededAgain) {
  UvPlaneData data = spiral();
  UvPlaneWorker worker(data);
  worker.show(frameOf(kWhole));
  (void)completed(worker, frameOf(kWhole));
  const UvHitGrid expected = straight(data, frameOf(kCorner));
  for (const std::string& name : data.names) std::remove(name.c_str());
  worker.show(frameOf(kCorner));
  const auto grid = completed(worker, frameOf(kCorner));
  ASSERT_NE(grid, nullptr);
  expectSame(*grid, expected);
}

TEST_F(UvPlaneWorkerTest, ManyRequestsEndWithTheLast) {
  const UvPlaneData data = spiral();
  UvPlaneWorker worker(data);
  for (int i = 1; i <= 200; ++i) worker.show(frameOf({-2.5, 2.5 + 0.01 * i, -2.5, 2.5}));
  worker.show(frameOf(kCorner));
  const auto grid = completed(worker, frameOf(kCorner));
  ASSERT_NE(grid, nullptr);
  expectSame(*grid, straight(data, frameOf(kCorner)));
}

TEST_F(UvPlaneWorkerTest, AFileThatDoesNotOpenEndsThePictureThere) {
  UvPlaneData data = spiral();
  data.names[1] = folder_.file("gone.uvx");
  UvPlaneWorker worker(data);
  worker.show(frameOf(kWhole));
  const auto grid = completed(worker, frameOf(kWhole));
  ASSERT_NE(grid, nullptr);
  EXPECT_EQ(grid->crosses(), 2U * 2U * 15000U);
  EXPECT_EQ(worker.latest().status.code(), StatusCode::kNotFound);
}

TEST_F(UvPlaneWorkerTest, EveryPictureIsAnnounced) {
  std::atomic<int> announced{0};
  UvPlaneWorker worker(spiral(), [&announced] { ++announced; });
  EXPECT_EQ(worker.latest().grid, nullptr);
  worker.show(frameOf(kWhole));
  (void)completed(worker, frameOf(kWhole));
  const auto start = std::chrono::steady_clock::now();
  while (announced == 0 && std::chrono::steady_clock::now() - start < kPatience) std::this_thread::yield();
  EXPECT_GE(announced, 1);
}

TEST_F(UvPlaneWorkerTest, EmptyListGivesAnEmptyCompletePicture) {
  UvPlaneWorker worker(UvPlaneData{});
  worker.show(frameOf(kWhole));
  const auto grid = completed(worker, frameOf(kWhole));
  ASSERT_NE(grid, nullptr);
  EXPECT_EQ(grid->crosses(), 0U);
}

TEST_F(UvPlaneWorkerTest, StopsSoonThoughEveryGroupHasManyChannels) {
  using Clock = std::chrono::steady_clock;
  const UvPlaneData data = manyChannels(15000);
  const auto start = Clock::now();
  {
    UvPlaneWorker worker(data);
    worker.show(frameOf(kWhole));
    ASSERT_NE(completed(worker, frameOf(kWhole)), nullptr);
  }
  const auto whole = Clock::now() - start;
  auto worker = std::make_unique<UvPlaneWorker>(data);
  worker->show(frameOf(kWhole));
  std::this_thread::sleep_for(whole / 10);  // it has begun
  const auto closed = Clock::now();
  worker.reset();
  EXPECT_LT(Clock::now() - closed, whole / 3);
}

TEST_F(UvPlaneWorkerTest, SharesOfAPictureOfKeptGroupsBeginAtTheBeginning) {
  for (const std::size_t keep : {UvPlaneWorker::kMostGroupsKept, std::size_t{1000}}) {
    std::vector<UvPicture> pictures;
    const UvPlaneWorker* reporting = nullptr;
    std::atomic<bool> failed{false};
    auto worker = std::make_unique<UvPlaneWorker>(
        manyChannels(12000),
        [&] {
          pictures.push_back(reporting->latest());
          // A picture that follows a complete one comes late, one that follows a failure does not.
          if (pictures.back().complete && !failed.exchange(true)) throw std::bad_alloc();
        },
        keep);
    reporting = worker.get();
    worker->show(frameOf(kWhole));
    const auto start = std::chrono::steady_clock::now();
    while (!failed && std::chrono::steady_clock::now() - start < kPatience) std::this_thread::yield();
    ASSERT_TRUE(failed);
    worker->show(frameOf(kCorner));
    (void)completed(*worker, frameOf(kCorner));
    worker.reset();
    double last = 0.0;
    int incomplete = 0;
    for (const UvPicture& picture : pictures) {
      if (picture.grid->frame() != frameOf(kCorner) || picture.complete) continue;
      ++incomplete;
      EXPECT_GT(picture.share, last);
      EXPECT_LE(picture.share, 1.0);  // when a picture is due just after the last groups
      last = picture.share;
    }
    EXPECT_GE(incomplete, 1);
  }
}

TEST_F(UvPlaneWorkerTest, AFailureIsAnnouncedAndTheNextPictureIsDrawnAgain) {
  std::atomic<int> announced{0};
  UvPlaneWorker worker(spiral(), [&announced] {
    if (++announced == 1) throw std::bad_alloc();  // as if the picture could not be made
  });
  worker.show(frameOf(kWhole));
  const auto start = std::chrono::steady_clock::now();
  while (announced < 2 && std::chrono::steady_clock::now() - start < kPatience) std::this_thread::yield();
  ASSERT_EQ(announced, 2);
  EXPECT_FALSE(worker.latest().complete);
  EXPECT_EQ(worker.latest().status.code(), StatusCode::kOutOfMemory);
  worker.show(frameOf(kCorner));
  ASSERT_NE(completed(worker, frameOf(kCorner)), nullptr);
  EXPECT_TRUE(worker.latest().status.ok());
}

}  // namespace
}  // namespace lumo
