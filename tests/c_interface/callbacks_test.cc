// The callbacks receive the same data as a player of the C++ interface.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "public/stream_downloader.h"
#include "tests/c_interface/local_streams.h"
#include "tests/c_interface/recorded_downloader.h"

namespace stream {

namespace c_interface_test {
namespace {

using Record = RecordingPlayer::Record;
using Played = bool (*)(RecordingPlayer&);
using Fields = std::tuple<std::uint64_t, std::uint64_t, std::uint64_t, std::vector<std::uint8_t>>;

std::vector<Fields> FieldsOf(const std::vector<RecordedFrame>& frames) {
  std::vector<Fields> fields;
  for (const RecordedFrame& frame : frames) {
    fields.emplace_back(frame.pts, frame.dts, frame.play_time, frame.payload);
  }
  return fields;
}

Record PlayByCpp(const std::string& address, Played played) {
  RecordingPlayer player;
  CStreamDownloader downloader(&player);
  EXPECT_TRUE(downloader.BeginDownload(address));
  EXPECT_TRUE(played(player));
  EXPECT_TRUE(downloader.EndDownload());
  return player.Snapshot();
}

Record PlayByC(const std::string& address, Played played,
               const std::function<void(sd_callbacks&)>& change = {}) {
  RecordingPlayer player;
  sd_callbacks callbacks = CallbacksTo(player);
  if (change) change(callbacks);
  const OwnedDownloader downloader(callbacks);
  EXPECT_EQ(Begin(downloader.get(), address), SD_OK);
  EXPECT_TRUE(played(player));
  EXPECT_EQ(sd_end_download(downloader.get()), SD_OK);
  return player.Snapshot();
}

void ExpectSameFrames(const Record& record, const Record& expected) {
  EXPECT_THAT(expected.video, testing::SizeIs(testing::Ge(kFrames)));
  EXPECT_EQ(FieldsOf(record.video), FieldsOf(expected.video));
  EXPECT_EQ(FieldsOf(record.audio), FieldsOf(expected.audio));
  EXPECT_EQ(record.clocks, expected.clocks);
}

TEST(CInterfaceCallbacksTest, FlvFramesEqualThoseOfTheCppInterface) {
  const Record expected = PlayByCpp(LocalFlv("by cpp"), PlayedFlv);
  const std::string address = LocalFlv("by c");
  const Record record = PlayByC(address, PlayedFlv);
  ExpectSameFrames(record, expected);
  EXPECT_EQ(record.messages,
            (std::vector{"PLAY FLV:" + address, "PLAY FLV CACHE_NO OK:" + address}));
  EXPECT_EQ(record.results, std::vector{"PLAY:FLV CACHE_NO OK:" + address});
}

TEST(CInterfaceCallbacksTest, Mp4FramesAndTimesEqualThoseOfTheCppInterface) {
  const Record expected = PlayByCpp(LocalMp4("by cpp"), PlayedMp4);
  const std::string address = LocalMp4("by c");
  const Record record = PlayByC(address, PlayedMp4);
  ExpectSameFrames(record, expected);
  ASSERT_FALSE(expected.durations.empty());
  EXPECT_EQ(record.durations.back(), expected.durations.back());
  ASSERT_FALSE(expected.buffered_times.empty());
  EXPECT_EQ(record.buffered_times.back(), expected.buffered_times.back());
  EXPECT_TRUE(record.HasMessage("PLAY MP4 OK:" + address));
  EXPECT_EQ(record.results, std::vector{"PLAY:MP4 OK:" + address});
}

TEST(CInterfaceCallbacksTest, AllCallbacksMayBeNull) {
  sd_callbacks callbacks{};
  callbacks.size = sizeof(callbacks);
  const OwnedDownloader downloader(callbacks);
  EXPECT_EQ(Begin(downloader.get(), "rtmp"), SD_ERROR_UNKNOWN_SCHEME);
  EXPECT_EQ(Begin(downloader.get(), LocalMp4("silent")), SD_OK);
  EXPECT_EQ(sd_set_start_position(downloader.get(), 1), SD_OK);
  EXPECT_EQ(sd_end_download(downloader.get()), SD_OK);
}

// Each callback is null once while the others are set. The audio clock and the audio frame are null
// together, since the recording player rejects a frame without its clock.
TEST(CInterfaceCallbacksTest, NullCallbackIsSkippedWhileTheOthersAreCalled) {
  const auto has_video = [](RecordingPlayer& player) {
    return player.WaitFor([](const Record& record) { return record.video.size() >= kFrames; });
  };
  const auto has_audio = [](RecordingPlayer& player) {
    return player.WaitFor([](const Record& record) { return record.audio.size() >= kFrames; });
  };
  Record record = PlayByC(LocalMp4("no duration"), PlayedMp4,
                          [](sd_callbacks& callbacks) { callbacks.on_duration = nullptr; });
  EXPECT_THAT(record.durations, testing::IsEmpty());
  EXPECT_THAT(record.buffered_times, testing::Not(testing::IsEmpty()));
  record = PlayByC(LocalMp4("no buffered time"), PlayedMp4,
                   [](sd_callbacks& callbacks) { callbacks.on_buffered_time = nullptr; });
  EXPECT_THAT(record.buffered_times, testing::IsEmpty());
  EXPECT_THAT(record.durations, testing::Not(testing::IsEmpty()));
  record = PlayByC(LocalMp4("no audio"), has_video, [](sd_callbacks& callbacks) {
    callbacks.on_audio_clock = nullptr;
    callbacks.on_audio_frame = nullptr;
  });
  EXPECT_THAT(record.audio, testing::IsEmpty());
  EXPECT_THAT(record.clocks, testing::IsEmpty());
  record = PlayByC(LocalMp4("no video"), has_audio,
                   [](sd_callbacks& callbacks) { callbacks.on_video_frame = nullptr; });
  EXPECT_THAT(record.video, testing::IsEmpty());
  record = PlayByC(LocalMp4("no message"), PlayedMp4,
                   [](sd_callbacks& callbacks) { callbacks.on_message = nullptr; });
  EXPECT_THAT(record.messages, testing::IsEmpty());
  record = PlayByC(LocalMp4("no result"), has_audio,
                   [](sd_callbacks& callbacks) { callbacks.on_play_result = nullptr; });
  EXPECT_THAT(record.results, testing::IsEmpty());
}

TEST(CInterfaceCallbacksTest, EachOfTwoDownloadersHasItsOwnUserPointer) {
  RecordingPlayer first_player;
  RecordingPlayer second_player;
  const OwnedDownloader first(first_player);
  const OwnedDownloader second(second_player);
  EXPECT_EQ(Begin(first.get(), LocalFlv("first")), SD_OK);
  EXPECT_TRUE(PlayedFlv(first_player));
  EXPECT_EQ(sd_end_download(second.get()), SD_NOT_PLAYING);
  EXPECT_EQ(sd_end_download(first.get()), SD_OK);
  EXPECT_THAT(second_player.Snapshot().messages, testing::IsEmpty());
  first_player.Close();

  EXPECT_EQ(Begin(second.get(), LocalFlv("second")), SD_OK);
  EXPECT_TRUE(PlayedFlv(second_player));
  EXPECT_EQ(sd_end_download(second.get()), SD_OK);
  EXPECT_EQ(FieldsOf(second_player.Snapshot().video), FieldsOf(first_player.Snapshot().video));
}

}  // namespace
}  // namespace c_interface_test

}  // namespace stream
