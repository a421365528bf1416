// A downloader of the C interface with callbacks that forward to a player of the C++ interface, so
// that both interfaces can be compared.
#ifndef TESTS_C_INTERFACE_RECORDED_DOWNLOADER_H_
#define TESTS_C_INTERFACE_RECORDED_DOWNLOADER_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "c_interface/stream_downloader_c.h"
#include "public/stream_player.h"
#include "tests/support/recording_player.h"

namespace stream {

namespace c_interface_test {

inline CStreamPlayerImp& PlayerOf(void* user) { return *static_cast<CStreamPlayerImp*>(user); }

inline MediaFrame FrameOf(const sd_frame& record) {
  return {record.pts, record.dts, record.play_time, record.size, record.data, record.reserved};
}

// `player` is borrowed and passed as the user pointer.
inline sd_callbacks CallbacksTo(CStreamPlayerImp& player) {
  sd_callbacks callbacks;
  callbacks.size = sizeof(callbacks);
  callbacks.user = &player;
  callbacks.on_duration = [](void* user, float seconds) { PlayerOf(user).OnDuration(seconds); };
  callbacks.on_buffered_time = [](void* user, float seconds) {
    PlayerOf(user).OnBufferedTime(seconds);
  };
  callbacks.on_audio_clock = [](void* user, float seconds) {
    PlayerOf(user).OnAudioClock(seconds);
  };
  callbacks.on_audio_frame = [](void* user, const sd_frame* frame) {
    PlayerOf(user).OnAudioFrame(FrameOf(*frame));
  };
  callbacks.on_video_frame = [](void* user, const sd_frame* frame) {
    PlayerOf(user).OnVideoFrame(FrameOf(*frame));
  };
  callbacks.on_message = [](void* user, const char* line, std::size_t length) {
    EXPECT_EQ(line[length], '\0');
    PlayerOf(user).OnMessage(std::string(line, length));
  };
  callbacks.on_play_result = [](void* user, const char* line, std::size_t length) {
    EXPECT_EQ(line[length], '\0');
    PlayerOf(user).OnPlayResult(std::string(line, length));
  };
  return callbacks;
}

inline sd_result Begin(sd_downloader* downloader, const std::string& url) {
  return sd_begin_download(downloader, url.data(), url.size());
}

// Creates, owns and destroys a downloader. A failure fails the test.
class OwnedDownloader {
 public:
  explicit OwnedDownloader(const sd_callbacks& callbacks) {
    EXPECT_EQ(sd_create(&callbacks, &downloader_), SD_OK);
  }
  explicit OwnedDownloader(CStreamPlayerImp& player) : OwnedDownloader(CallbacksTo(player)) {}
  ~OwnedDownloader() { EXPECT_EQ(sd_destroy(downloader_), SD_OK); }
  OwnedDownloader(const OwnedDownloader&) = delete;
  OwnedDownloader& operator=(const OwnedDownloader&) = delete;

  sd_downloader* get() const { return downloader_; }

 private:
  sd_downloader* downloader_ = nullptr;
};

// A downloader with a recording player.
class RecordedDownloader : public testing::Test {
 protected:
  using Record = RecordingPlayer::Record;

  RecordingPlayer player_;
  OwnedDownloader downloader_{player_};
};

}  // namespace c_interface_test

}  // namespace stream

#endif  // TESTS_C_INTERFACE_RECORDED_DOWNLOADER_H_
