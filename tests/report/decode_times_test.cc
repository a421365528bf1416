#include "host/report/decode_times.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>

#include "tests/report/report_support.h"

namespace report {
namespace {

MediaFrame Frame(std::uint64_t pts, std::uint64_t dts) {
  MediaFrame frame = FrameAt(pts);
  frame.dts = dts;
  return frame;
}

TEST(DecodeTimesTest, DtsNotAfterThePtsIsUsed) {
  DecodeTimes times;
  EXPECT_EQ(times.DecodeTimeOf(Frame(90'000, 86'400)), 86'400U);
  EXPECT_EQ(times.DecodeTimeOf(Frame(90'000, 90'000)), 90'000U);
}

TEST(DecodeTimesTest, DtsAfterThePtsOrFarBeforeItIsReplacedByThePts) {
  DecodeTimes times;
  EXPECT_EQ(times.DecodeTimeOf(Frame(90'000, 90'001)), 90'000U);
  EXPECT_EQ(times.DecodeTimeOf(Frame(1'000'000, 99'999)), 1'000'000U);
  EXPECT_EQ(times.DecodeTimeOf(Frame(0, std::numeric_limits<std::uint64_t>::max())), 0U);
  EXPECT_TRUE(times.HasValidDts());
}

TEST(DecodeTimesTest, DtsReadFromThePayloadIsReplacedByThePts) {
  constexpr std::array<std::uint8_t, 6> kUnit = {0, 0, 0, 1, 0x67, 0x42};
  DecodeTimes times;
  MediaFrame frame = Frame(126'000, 179);  // (1 << 7) + (0x67 >> 1)
  frame.data = kUnit.data();
  frame.size = static_cast<std::int32_t>(kUnit.size());
  EXPECT_EQ(times.DecodeTimeOf(frame), 126'000U);
  frame.dts = 180;
  EXPECT_EQ(times.DecodeTimeOf(frame), 180U);
}

TEST(DecodeTimesTest, FrameShorterThanATimestampIsNotReadBeyondItsEnd) {
  DecodeTimes times;
  MediaFrame frame = Frame(90'000, 0);
  frame.size = 0;
  EXPECT_EQ(times.DecodeTimeOf(frame), 90'000U);  // reads as zeros
  frame.data = nullptr;
  frame.size = 100;
  EXPECT_EQ(times.DecodeTimeOf(frame), 90'000U);
  frame.size = -1;
  EXPECT_EQ(times.DecodeTimeOf(frame), 90'000U);
}

TEST(DecodeTimesTest, ConstantDtsIsUsedForNoFrame) {
  DecodeTimes times;
  for (int n = 0; n < 3; ++n) times.DecodeTimeOf(Frame(TicksOf(n), 387));
  EXPECT_TRUE(times.HasValidDts());
  times.DecodeTimeOf(Frame(TicksOf(3), 387));
  EXPECT_FALSE(times.HasValidDts());
  for (int n = 0; n < 10; ++n) times.DecodeTimeOf(Frame(TicksOf(n + 4), TicksOf(n + 3)));
  EXPECT_FALSE(times.HasValidDts()) << "nor is the DTS of later frames used";
}

TEST(DecodeTimesTest, JumpBackIsNoConstantDts) {
  DecodeTimes times;
  for (int n = 0; n < 100; ++n) {
    const int at = n % 25;  // goes back by about a second every 25 frames
    times.DecodeTimeOf(Frame(TicksOf(at + 2), TicksOf(at)));
  }
  EXPECT_TRUE(times.HasValidDts());
}

TEST(DecodeTimesTest, RepeatedFrameIsNoConstantDts) {
  DecodeTimes times;
  for (int n = 0; n < 10; ++n) times.DecodeTimeOf(Frame(TicksOf(2), TicksOf(1)));
  EXPECT_TRUE(times.HasValidDts());
}

}  // namespace
}  // namespace report
