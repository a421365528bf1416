#include "common/player_port.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "common/once_per_start.h"
#include "tests/support/recording_player.h"
#include "tests/support/throwing_player.h"

namespace stream {
namespace {

TEST(WholeSecondsTest, FractionOfASecondIsDropped) {
  EXPECT_EQ(WholeSeconds(89'999), 0.0F);
  EXPECT_EQ(WholeSeconds(90'000), 1.0F);
  EXPECT_EQ(WholeSeconds(891'000), 9.0F);  // 9.9 s
}

FrameRecord ThreeByteFrame(std::uint8_t* payload) {
  FrameRecord frame;
  frame.pts = 180'000;
  frame.dts = 170'000;
  frame.playTime = 179'999;
  frame.data = payload;
  frame.size = 3;
  return frame;
}

TEST(PlayerPortTest, VideoFrameArrivesWithItsTimesAndPayload) {
  RecordingPlayer player;
  std::uint8_t payload[] = {1, 2, 3};
  PlayerPort(&player).VideoFrame(ThreeByteFrame(payload));
  const auto record = player.Snapshot();
  ASSERT_EQ(record.video.size(), 1U);
  EXPECT_EQ(record.video[0].pts, 180'000U);
  EXPECT_EQ(record.video[0].dts, 170'000U);
  EXPECT_EQ(record.video[0].play_time, 179'999U);
  EXPECT_EQ(record.video[0].payload, (std::vector<std::uint8_t>{1, 2, 3}));
  EXPECT_TRUE(record.clocks.empty());
}

TEST(PlayerPortTest, AudioFrameIsPrecededByItsClock) {
  RecordingPlayer player;  // fails the test if a frame precedes its clock
  std::uint8_t payload[] = {1, 2, 3};
  PlayerPort(&player).AudioFrame(ThreeByteFrame(payload));
  const auto record = player.Snapshot();
  EXPECT_EQ(record.clocks, std::vector<float>{1.0F});
  EXPECT_EQ(record.audio.size(), 1U);
}

TEST(PlayerPortTest, AudioClockDropsTheFractionOfASecond) {
  RecordingPlayer player;
  FrameRecord frame;
  for (const std::uint64_t play_time : {89'999U, 90'000U}) {
    frame.playTime = play_time;
    PlayerPort(&player).AudioFrame(frame);
  }
  EXPECT_EQ(player.Snapshot().clocks, (std::vector<float>{0.0F, 1.0F}));
}

TEST(PlayerPortTest, LinesAndTimesUseTheCallsOfTheirKind) {
  RecordingPlayer player;
  const PlayerPort port(&player);
  port.Message("PLAY M3U8 OK:");
  port.PlayResult("PLAY:M3U8 OK:");
  port.Duration(30);
  port.BufferedTime(10);
  const auto record = player.Snapshot();
  EXPECT_EQ(record.messages, std::vector<std::string>{"PLAY M3U8 OK:"});
  EXPECT_EQ(record.results, std::vector<std::string>{"PLAY:M3U8 OK:"});
  EXPECT_EQ(record.durations, std::vector<float>{30.0F});
  EXPECT_EQ(record.buffered_times, std::vector<float>{10.0F});
  EXPECT_TRUE(static_cast<bool>(port));
}

TEST(PlayerPortTest, NothingIsCalledWithoutAPlayer) {
  const PlayerPort nobody(nullptr);
  std::uint8_t payload[] = {1, 2, 3};
  nobody.Message("PLAY TS:");
  nobody.PlayResult("PLAY:M3U8 OK:");
  nobody.Duration(1);
  nobody.BufferedTime(1);
  nobody.VideoFrame(ThreeByteFrame(payload));
  nobody.AudioFrame(ThreeByteFrame(payload));
  EXPECT_FALSE(static_cast<bool>(nobody));
}

TEST(PlayerPortTest, ExceptionOfThePlayerEndsOnlyThatCall) {
  ThrowingPlayer player;
  const PlayerPort port(&player);
  std::uint8_t payload[] = {1, 2, 3};
  port.Message("PLAY TS:");
  port.PlayResult("PLAY:M3U8 OK:");
  port.Duration(1);
  port.BufferedTime(1);
  port.VideoFrame(ThreeByteFrame(payload));
  port.AudioFrame(ThreeByteFrame(payload));
  EXPECT_EQ(player.calls, 7) << "the frame is delivered although its clock threw";
}

TEST(PlayerPortTest, ExceptionOfThePlayerIsLoggedOncePerStart) {
  ThrowingPlayer player;
  const PlayerPort port(&player);
  testing::internal::CaptureStdout();
  for (int start = 0; start < 2; ++start) {
    CountStart();
    port.Duration(1);
    port.BufferedTime(1);
  }
  const std::string line = "the player threw in OnDuration: boom; a player must not throw\n";
  EXPECT_EQ(testing::internal::GetCapturedStdout(), line + line);
}

}  // namespace
}  // namespace stream
