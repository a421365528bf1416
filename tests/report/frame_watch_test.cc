#include "host/report/frame_watch.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "tests/report/report_support.h"

namespace report {
namespace {

FrameWatch WatchOf(const std::vector<std::uint64_t>& ticks) {
  FrameWatch watch;
  for (const std::uint64_t each : ticks) watch.Add(0, FrameAt(each));
  return watch;
}

TEST(FrameWatchTest, ReorderedVideoFramesAreNoJumps) {
  FrameWatch watch;
  std::uint64_t decoded = 0;
  for (const int shown : {0, 3, 1, 2, 6, 4, 5, 9, 7, 8}) {
    MediaFrame frame = FrameAt(TicksOf(shown + 1));
    const std::uint64_t dts = TicksOf(0) + decoded++ * kTicksOfFrame;
    frame.dts = dts == frame.pts ? 8'528'338'974 : dts;  // arbitrary instead of equal to the PTS
    watch.Add(0, frame);
  }
  EXPECT_EQ(watch.Steps().gaps.count, 0U);
  EXPECT_EQ(watch.Steps().backs.count, 0U);
  EXPECT_EQ(watch.Steps().reached_pts, TicksOf(10));
}

TEST(FrameWatchTest, ArbitraryDtsIsReplacedByThePts) {
  FrameWatch watch;
  for (int n = 0; n < 10; ++n) {
    MediaFrame frame = FrameAt(TicksOf(n));
    frame.dts = 8'528'338'974 - static_cast<std::uint64_t>(n % 3);
    watch.Add(0, frame);
  }
  EXPECT_EQ(watch.Steps().gaps.count, 0U);
  EXPECT_EQ(watch.Steps().backs.count, 0U);
}

TEST(FrameWatchTest, StepOfAlmostHalfASecondIsNoGapAndALongerOneIs) {
  const auto count_with_step = [](std::uint64_t step) {
    std::vector<std::uint64_t> ticks;
    for (int n = 0; n < 10; ++n) ticks.push_back(TicksOf(n));
    ticks.push_back(ticks.back() + step);
    return WatchOf(ticks).Steps().gaps.count;
  };
  EXPECT_EQ(count_with_step(44'999), 0U);
  EXPECT_EQ(count_with_step(45'001), 1U);
}

TEST(FrameWatchTest, SlideShowHasNoGapsButALostSlideIsOne) {
  std::vector<std::uint64_t> ticks;
  for (std::uint64_t n = 0; n < 20; ++n) ticks.push_back(n * 90'000);
  EXPECT_EQ(WatchOf(ticks).Steps().gaps.count, 0U);
  ticks.push_back(ticks.back() + 4 * 90'000);
  EXPECT_EQ(WatchOf(ticks).Steps().gaps.count, 1U);
}

TEST(FrameWatchTest, WideGapAmongTheFirstFramesIsCounted) {
  EXPECT_EQ(WatchOf({0, 3600, 3600 + 181'000}).Steps().gaps.count, 1U);
}

TEST(FrameWatchTest, JumpBackIsListedWithBothEnds) {
  const FrameWatch watch = WatchOf({180'000, 183'600, 90'000, 93'600});
  ASSERT_EQ(watch.Steps().backs.listed.size(), 1U);
  EXPECT_EQ(watch.Steps().backs.listed[0].index, 2U);
  EXPECT_EQ(watch.Steps().backs.listed[0].from, 183'600U);
  EXPECT_EQ(watch.Steps().backs.listed[0].to, 90'000U);
  EXPECT_EQ(watch.Steps().reached_pts, 93'600U);
}

TEST(FrameWatchTest, ManyJumpsAreAllCountedAndOnlyTheFirstListed) {
  FrameWatch watch;
  for (int n = 0; n < 2000; ++n) watch.Add(n, FrameAt(n % 2 == 0 ? 900'000 : 90'000));
  EXPECT_EQ(watch.Steps().backs.count, 1000U);
  EXPECT_EQ(watch.Steps().backs.listed.size(), kMaxJumpsListed);
  EXPECT_GT(watch.Steps().gaps.count, 900U);
}

TEST(FrameWatchTest, TimestampsAtTheLimitsOfTheirRangeAreCounted) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  const FrameWatch watch = WatchOf({0, kMost, 0, kMost, 0});
  EXPECT_EQ(watch.Steps().backs.count, 2U);
  EXPECT_EQ(watch.Steps().gaps.count, 2U);
}

TEST(FrameWatchTest, RepeatedTimestampIsCounted) {
  EXPECT_EQ(WatchOf({0, 0, 0, 3600}).Steps().same_time, 2U);
}

TEST(FrameWatchTest, SizesAndSilencesAreKept) {
  FrameWatch watch;
  MediaFrame frame = FrameAt(0);
  watch.Add(10, frame);
  frame = FrameAt(3600);
  frame.size = 7;
  watch.Add(60, frame);
  watch.Add(70, FrameAt(7200));
  EXPECT_EQ(watch.frames, 3U);
  EXPECT_EQ(watch.bytes, 207U);
  EXPECT_EQ(watch.smallest, 7U);
  EXPECT_EQ(watch.largest, 100U);
  EXPECT_EQ(watch.longest_silence_ms, 50);
  EXPECT_EQ(watch.longest_silence_at_ms, 60);
}

TEST(FrameWatchTest, GapInRealTimeMakesNoLaterFrameLate) {
  FrameWatch watch;
  for (int n = 0; n < 200; ++n) {
    if (n < 50 || n >= 100) watch.Add(n * kMsOfFrame, FrameAt(TicksOf(n)));
  }
  EXPECT_EQ(watch.Steps().gaps.count, 1U);
  EXPECT_EQ(watch.Steps().late_frames, 0U);
}

}  // namespace
}  // namespace report
