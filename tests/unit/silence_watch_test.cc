#include "common/silence_watch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>

namespace stream {
namespace {

using std::chrono::seconds;

class SilenceWatchTest : public testing::Test {
 protected:
  bool IsTooLong(SilenceWatch& watch, std::uint64_t received, seconds after) const {
    return watch.IsTooLong(received, start_ + after);
  }

  const Clock::TimePoint start_{seconds(1'000)};
  SilenceWatch watch_{seconds(10), start_};
};

TEST_F(SilenceWatchTest, TransferWithoutAnyByteIsTooLongSilentAtTheLimit) {
  EXPECT_FALSE(IsTooLong(watch_, 0, seconds(0)));
  EXPECT_FALSE(IsTooLong(watch_, 0, seconds(9)));
  EXPECT_TRUE(IsTooLong(watch_, 0, seconds(10)));
  EXPECT_TRUE(IsTooLong(watch_, 0, seconds(60)));
}

TEST_F(SilenceWatchTest, OneByteEveryNineSecondsIsNeverTooLongSilent) {
  for (int i = 1; i <= 1'000; ++i) {
    const auto now = seconds(9) * i;
    EXPECT_FALSE(IsTooLong(watch_, static_cast<std::uint64_t>(i), now));
  }
}

TEST_F(SilenceWatchTest, SilenceAfterManyBytesCountsFromTheLastOfThem) {
  EXPECT_FALSE(IsTooLong(watch_, 5'000, seconds(5)));
  EXPECT_FALSE(IsTooLong(watch_, 5'000, seconds(14)));
  EXPECT_TRUE(IsTooLong(watch_, 5'000, seconds(15)));
}

TEST_F(SilenceWatchTest, BytesFoundAfterTheLimitEndTheSilence) {
  EXPECT_FALSE(IsTooLong(watch_, 0, seconds(9)));
  EXPECT_FALSE(IsTooLong(watch_, 1, seconds(30)));
  EXPECT_FALSE(IsTooLong(watch_, 1, seconds(39)));
}

TEST_F(SilenceWatchTest, ByteCountThatRestartsEndsTheSilence) {
  EXPECT_FALSE(IsTooLong(watch_, 300, seconds(1)));
  EXPECT_FALSE(IsTooLong(watch_, 20, seconds(11)));
}

TEST_F(SilenceWatchTest, NoSilenceIsTooLongWithoutALimit) {
  SilenceWatch watch(seconds(0), start_);
  EXPECT_FALSE(IsTooLong(watch, 0, seconds(0)));
  EXPECT_FALSE(IsTooLong(watch, 0, seconds(1'000'000)));
}

}  // namespace
}  // namespace stream
