// Starting, stopping and start positions: the results of the functions and the calls of the
// callbacks.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "tests/c_interface/local_streams.h"
#include "tests/c_interface/recorded_downloader.h"
#include "tests/support/blocked_video_call.h"

namespace stream {

namespace c_interface_test {
namespace {

using Lines = std::vector<std::string>;
using CInterfaceBeginTest = RecordedDownloader;
using CInterfaceEndTest = RecordedDownloader;
using CInterfacePositionTest = RecordedDownloader;

TEST_F(CInterfaceBeginTest, NullAddressIsRefused) {
  EXPECT_EQ(sd_begin_download(downloader_.get(), nullptr, 10), SD_ERROR_NULL_ADDRESS);
  EXPECT_EQ(sd_begin_download(downloader_.get(), nullptr, 0), SD_ERROR_NULL_ADDRESS);
}

TEST_F(CInterfaceBeginTest, EmptyAddressIsRefusedWithoutALine) {
  EXPECT_EQ(sd_begin_download(downloader_.get(), "http://127.0.0.1/a.ts", 0),
            SD_ERROR_EMPTY_ADDRESS);
  EXPECT_EQ(player_.Snapshot().messages, Lines());
}

TEST_F(CInterfaceBeginTest, UnknownSchemeIsRefusedWithItsLine) {
  EXPECT_EQ(Begin(downloader_.get(), "rtmp://host/a.flv"), SD_ERROR_UNKNOWN_SCHEME);
  EXPECT_EQ(player_.Snapshot().messages, Lines{"PLAY UNKOWN:rtmp://host/a.flv"});
}

TEST_F(CInterfaceBeginTest, AddressThatBeginsWithAControlByteHasAnUnknownScheme) {
  EXPECT_EQ(Begin(downloader_.get(), "\nhttp://127.0.0.1/a.ts"), SD_ERROR_UNKNOWN_SCHEME);
  EXPECT_EQ(player_.Snapshot().messages, Lines{"PLAY UNKOWN:\nhttp://127.0.0.1/a.ts"});
}

TEST_F(CInterfaceBeginTest, AddressNeedNotBeTerminated) {
  const std::string text = "rtmp://host/a and more";
  EXPECT_EQ(sd_begin_download(downloader_.get(), text.data(), 13), SD_ERROR_UNKNOWN_SCHEME);
  EXPECT_EQ(player_.Snapshot().messages, Lines{"PLAY UNKOWN:rtmp://host/a"});
}

TEST_F(CInterfaceBeginTest, ZerosInAnAddressAreKeptInItsLine) {
  const std::string zeros("rtmp\0\0//host\0", 13);
  EXPECT_EQ(Begin(downloader_.get(), zeros), SD_ERROR_UNKNOWN_SCHEME);
  EXPECT_EQ(player_.Snapshot().messages, Lines{"PLAY UNKOWN:" + zeros});
}

TEST_F(CInterfaceBeginTest, BytesAboveAsciiAreKeptInItsLine) {
  EXPECT_EQ(Begin(downloader_.get(), "rtmp://\xE4\xB8\xAD\xFF"), SD_ERROR_UNKNOWN_SCHEME);
  EXPECT_EQ(player_.Snapshot().messages, Lines{"PLAY UNKOWN:rtmp://\xE4\xB8\xAD\xFF"});
}

TEST_F(CInterfaceBeginTest, LineHoldsAnAddressOfAMillionBytes) {
  const std::string address = "rtmp://" + std::string(1'000'000, 'a');
  EXPECT_EQ(Begin(downloader_.get(), address), SD_ERROR_UNKNOWN_SCHEME);
  EXPECT_EQ(player_.Snapshot().messages, Lines{"PLAY UNKOWN:" + address});
}

TEST_F(CInterfaceBeginTest, LengthBeyondAllMemoryIsRefused) {
  constexpr std::size_t kLargest = std::numeric_limits<std::size_t>::max();
  for (const std::size_t length : {kLargest, kLargest / 2 + 1}) {
    EXPECT_EQ(sd_begin_download(downloader_.get(), "http", length), SD_ERROR_OUT_OF_MEMORY);
  }
  EXPECT_EQ(player_.Snapshot().messages, Lines());
}

TEST_F(CInterfaceBeginTest, MissingFileIsStarted) {
  const std::string address = "file:///no/such.flv";
  EXPECT_EQ(Begin(downloader_.get(), address), SD_OK);
  EXPECT_TRUE(player_.WaitFor([](const Record& record) { return !record.results.empty(); }));
  EXPECT_EQ(sd_end_download(downloader_.get()), SD_OK);
  EXPECT_EQ(player_.Snapshot().messages, (Lines{"PLAY FLV:" + address, "PLAY FLV NO:" + address}));
  EXPECT_EQ(player_.Snapshot().results, Lines{"PLAY:FLV NO:" + address});
}

TEST_F(CInterfaceEndTest, ReturnsNotPlayingBeforeAnyStart) {
  EXPECT_EQ(sd_end_download(downloader_.get()), SD_NOT_PLAYING);
}

TEST_F(CInterfaceEndTest, SecondStopReturnsNotPlaying) {
  EXPECT_EQ(Begin(downloader_.get(), LocalFlv("second stop")), SD_OK);
  EXPECT_EQ(sd_end_download(downloader_.get()), SD_OK);
  EXPECT_EQ(sd_end_download(downloader_.get()), SD_NOT_PLAYING);
}

// Plays until the blocked callback has been entered and audio has been delivered.
void PlayInto(BlockedVideoCall& call, RecordingPlayer& player, sd_downloader* downloader,
              const std::string& address) {
  EXPECT_EQ(Begin(downloader, address), SD_OK);
  EXPECT_TRUE(call.WaitUntilEntered());
  EXPECT_TRUE(player.WaitFor([](const auto& record) { return !record.audio.empty(); }));
}

TEST_F(CInterfaceEndTest, StopWaitsForARunningCallback) {
  BlockedVideoCall call(player_);
  PlayInto(call, player_, downloader_.get(), LocalFlv("stopped"));
  EXPECT_EQ(StopDuringBlockedCall(call, [this] { return sd_end_download(downloader_.get()); }),
            SD_OK);
  player_.Close();  // any later call fails the test
}

TEST_F(CInterfaceEndTest, DestructionWaitsForARunningCallback) {
  RecordingPlayer player;
  BlockedVideoCall call(player);
  const sd_callbacks callbacks = CallbacksTo(player);
  sd_downloader* downloader = nullptr;
  ASSERT_EQ(sd_create(&callbacks, &downloader), SD_OK);
  PlayInto(call, player, downloader, LocalFlv("destroyed"));
  EXPECT_EQ(StopDuringBlockedCall(call, [downloader] { return sd_destroy(downloader); }), SD_OK);
  player.Close();  // any later call fails the test
}

TEST_F(CInterfaceEndTest, SameDownloaderPlaysAgain) {
  const std::string address = LocalFlv("again");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(Begin(downloader_.get(), address), SD_OK);
    EXPECT_TRUE(PlayedFlv(player_));
    EXPECT_EQ(sd_end_download(downloader_.get()), SD_OK);
    EXPECT_EQ(player_.Snapshot().video.size(), kFlvVideoFrames);
    player_.Forget();
  }
}

TEST_F(CInterfacePositionTest, ReturnsNothingStartedBeforeAnyStart) {
  EXPECT_EQ(sd_set_start_position(downloader_.get(), 10), SD_NOTHING_STARTED);
  EXPECT_EQ(player_.Snapshot().messages, Lines());
}

TEST_F(CInterfacePositionTest, FramesBeforeThePositionAreDropped) {
  constexpr std::size_t kDropped = 5;
  const std::string address = LocalMp4("position");
  EXPECT_EQ(Begin(downloader_.get(), address), SD_OK);
  EXPECT_TRUE(PlayedMp4(player_));
  EXPECT_EQ(sd_end_download(downloader_.get()), SD_OK);
  player_.Forget();

  EXPECT_EQ(sd_set_start_position(downloader_.get(), kDropped * mp4_test::kFrameMs / 1000.0F),
            SD_OK);
  EXPECT_EQ(Begin(downloader_.get(), address), SD_OK);
  EXPECT_TRUE(player_.WaitFor(
      [](const Record& record) { return record.video.size() >= kFrames - kDropped; }));
  EXPECT_EQ(sd_end_download(downloader_.get()), SD_OK);
  const Record record = player_.Snapshot();
  EXPECT_THAT(record.MessagesWith("PLAY MP4 StartPostion:00:00:00.200 Q:"), testing::SizeIs(1));
  EXPECT_EQ(record.video.front().pts, kDropped * mp4_test::kFrameMs * mp4_test::kTicksPerMs);
}

}  // namespace
}  // namespace c_interface_test

}  // namespace stream
