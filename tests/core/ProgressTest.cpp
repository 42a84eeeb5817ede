// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>

#include <limits>
#include <string>
#include <vector>

#include "core/Progress.h"

namespace lumo {
namespace {

using ::testing::ElementsAre;

class RecordingBar : public ProgressBar {
 public:
  void setPos(int percent) override { positions.push_back(percent); }
  std::vector<int> positions;
};

class RecordingText : public StatusText {
 public:
  void setText(std::string_view text) override { texts.emplace_back(text); }
  std::vector<std::string> texts;
};

TEST(AProgressTest, SendsThePercentageRoundedAtTheHalf) {
  RecordingBar bar;
  AProgress progress(&bar, 200.0);
  progress.SetPos(0.9);  // 0.45 %
  progress.SetPos(1.0);  // 0.5 %
  progress.SetPos(2.9);  // 1.45 %
  progress.SetPos(3.0);  // 1.5 %
  progress.SetPos(200.0);
  EXPECT_THAT(bar.positions, ElementsAre(0, 1, 2, 100));
}

TEST(AProgressTest, SendsAPercentageOnlyWhenItChanges) {
  RecordingBar bar;
  AProgress progress(&bar, 1e6);
  for (int i = 0; i <= 1000000; i += 100) progress.SetPos(i);
  ASSERT_EQ(bar.positions.size(), 101u);
  for (int i = 0; i <= 100; ++i) EXPECT_EQ(bar.positions[static_cast<std::size_t>(i)], i);
}

TEST(AProgressTest, PositionsOutsideTheRangeStayWithin0And100) {
  RecordingBar bar;
  AProgress progress(&bar, 10.0);
  progress.SetPos(-1e300);
  progress.SetPos(1e300);
  EXPECT_THAT(bar.positions, ElementsAre(0, 100));
}

TEST(AProgressTest, ARangeOfZeroIsDone) {
  RecordingBar bar;
  AProgress progress(&bar, 0.0);
  progress.SetPos(0.0);
  EXPECT_THAT(bar.positions, ElementsAre(100));
}

TEST(AProgressTest, ANumberThatIsNoneCountsAsNothingDone) {
  RecordingBar bar;
  AProgress progress(&bar, 10.0);
  progress.SetPos(10.0);
  progress.SetPos(std::numeric_limits<double>::quiet_NaN());
  EXPECT_THAT(bar.positions, ElementsAre(100, 0));
}

TEST(AProgressTest, WithoutABarNothingHappens) {
  AProgress progress(nullptr, 1.0);
  EXPECT_NO_FATAL_FAILURE(progress.SetPos(1.0));
}

TEST(RunIndicatorsTest, TextGoesToTheStatusTextWhenThereIsOne) {
  RecordingText text;
  RunIndicators indicators;
  indicators.setText("lost");
  indicators.statusText = &text;
  indicators.setText("reading");
  indicators.setText("");
  EXPECT_THAT(text.texts, ElementsAre("reading", ""));
}

TEST(RunIndicatorsTest, AnyNonZeroCancelFlagCancels) {
  RunIndicators indicators;
  EXPECT_FALSE(indicators.cancelled());
  CancelFlag flag{0};
  indicators.cancel = &flag;
  EXPECT_FALSE(indicators.cancelled());
  flag = -1;
  EXPECT_TRUE(indicators.cancelled());
}

}  // namespace
}  // namespace lumo
