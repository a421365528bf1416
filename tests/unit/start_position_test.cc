#include "common/start_position.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "common/format_text.h"

namespace stream {
namespace {

TEST(StartPositionTest, HoursMinutesSecondsAndMillisecondsArePadded) {
  EXPECT_EQ(StartPositionLine("TS", 3725.5F, 0), "PLAY TS StartPostion:01:02:05.500 Q:0.000000s");
}

TEST(StartPositionTest, MillisecondsAreTruncated) {
  EXPECT_EQ(PositionMilliseconds(1.9996F), 1999);
  EXPECT_EQ(PositionMilliseconds(-1.9996F), -1999);
  EXPECT_EQ(StartPositionLine("M3U8", 59.9996F), "PLAY M3U8 StartPostion:00:00:59.999");
}

TEST(StartPositionTest, HoursWrapAtSixty) {
  EXPECT_EQ(StartPositionLine("FLV", 216'000.0F, 0),
            "PLAY FLV StartPostion:00:00:00.000 Q:0.000000s");
}

TEST(StartPositionTest, ElapsedTicksAreDividedByAThousand) {
  EXPECT_EQ(StartPositionLine("MP4", 1.0F, 250), "PLAY MP4 StartPostion:00:00:01.000 Q:0.250000s");
}

TEST(StartPositionTest, LineWithoutATimeEndsAfterThePosition) {
  EXPECT_EQ(StartPositionLine("M3U8", 3725.5F), "PLAY M3U8 StartPostion:01:02:05.500");
  EXPECT_EQ(StartPositionLine("M3U8", 216'000.0F), "PLAY M3U8 StartPostion:00:00:00.000");
}

TEST(StartPositionTest, PositionsBeyond32BitsBecomeTheSmallestNumber) {
  constexpr int kMin = std::numeric_limits<int>::min();
  EXPECT_EQ(PositionMilliseconds(3'000'000.0F), kMin);
  EXPECT_EQ(PositionMilliseconds(-3'000'000.0F), kMin);
  EXPECT_EQ(PositionMilliseconds(std::numeric_limits<float>::infinity()), kMin);
  EXPECT_EQ(PositionMilliseconds(std::numeric_limits<float>::quiet_NaN()), kMin);
}

TEST(StartPositionTest, FrameAtNinePointNineSecondsIsBeforeTenAndNotBeforeNine) {
  EXPECT_TRUE(IsBeforeStart(10.0F, 891'000));
  EXPECT_FALSE(IsBeforeStart(9.0F, 891'000));
  EXPECT_FALSE(IsBeforeStart(0.0F, 0));
}

TEST(FormatTextTest, TextAbove1024CharactersIsEmpty) {
  const std::string longest(1024, 'x');
  EXPECT_EQ(FormatText("%s", longest.c_str()), longest);
  EXPECT_EQ(FormatText("%sy", longest.c_str()), "");
}

TEST(FormatTextTest, FixedTextHasSixDigitsAfterThePoint) {
  EXPECT_EQ(FixedText(0), "0.000000");
  EXPECT_EQ(FixedText(0.002), "0.002000");
  EXPECT_EQ(FixedText(1234.5678915), "1234.567892");
  EXPECT_EQ(FixedText(-0.5), "-0.500000");
}

TEST(FormatTextTest, FixedTextOfTheLargestNumberIsComplete) {
  const std::string text = FixedText(std::numeric_limits<double>::lowest());
  EXPECT_TRUE(text.starts_with("-17976931348623157")) << text;
  EXPECT_EQ(text.find('.'), 1U + 309) << text;
  EXPECT_TRUE(text.ends_with(".000000")) << text;
}

}  // namespace
}  // namespace stream
