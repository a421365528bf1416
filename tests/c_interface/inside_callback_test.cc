// Calls from inside a callback are refused, because a stop there would wait for itself.
#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <utility>

#include "tests/c_interface/local_streams.h"
#include "tests/c_interface/recorded_downloader.h"
#include "tests/support/blocked_video_call.h"
#include "tests/support/test_limit.h"

namespace stream {

namespace c_interface_test {
namespace {

// Runs an action inside the first call of one kind.
class ActionInCallbackPlayer final : public CStreamPlayerImp {
 public:
  enum class Kind { kDuration, kBufferedTime, kClock, kAudio, kVideo, kMessage, kResult };

  ActionInCallbackPlayer(Kind kind, std::function<void()> intrude)
      : kind_(kind), intrude_(std::move(intrude)) {}

  void OnDuration(float /*seconds*/) override { Called(Kind::kDuration); }
  void OnBufferedTime(float /*seconds*/) override { Called(Kind::kBufferedTime); }
  void OnAudioClock(float /*seconds*/) override { Called(Kind::kClock); }
  void OnAudioFrame(MediaFrame /*frame*/) override { Called(Kind::kAudio); }
  void OnVideoFrame(MediaFrame /*frame*/) override { Called(Kind::kVideo); }
  void OnMessage(std::string /*line*/) override { Called(Kind::kMessage); }
  void OnPlayResult(std::string /*line*/) override { Called(Kind::kResult); }

  // Waits until the action has run. False if the time limit expires first.
  bool WaitUntilDone() {
    std::unique_lock lock(mutex_);
    return done_changed_.wait_for(lock, kTestLimit, [this] { return done_; });
  }

 private:
  void Called(Kind kind) {
    const std::lock_guard lock(mutex_);
    if (kind != kind_ || done_) return;
    intrude_();
    done_ = true;
    done_changed_.notify_all();
  }

  const Kind kind_;
  const std::function<void()> intrude_;
  std::mutex mutex_;
  std::condition_variable done_changed_;
  bool done_ = false;  // guarded by mutex_
};

using Kind = ActionInCallbackPlayer::Kind;

// Returns at the first call that is not refused, because a later one would wait for ever.
void ExpectAllRefused(sd_downloader* downloader) {
  RecordingPlayer player;
  const sd_callbacks callbacks = CallbacksTo(player);
  sd_downloader* created = downloader;
  ASSERT_EQ(sd_create(&callbacks, &created), SD_ERROR_IN_CALLBACK);
  EXPECT_EQ(created, nullptr);
  ASSERT_EQ(sd_set_start_position(downloader, 1), SD_ERROR_IN_CALLBACK);
  ASSERT_EQ(sd_begin_download(downloader, "rtmp", 4), SD_ERROR_IN_CALLBACK);
  ASSERT_EQ(sd_end_download(downloader), SD_ERROR_IN_CALLBACK);
  ASSERT_EQ(sd_destroy(downloader), SD_ERROR_IN_CALLBACK);
}

class CInterfaceInsideCallbackTest : public testing::Test {
 protected:
  RecordingPlayer other_player_;
  OwnedDownloader other_{other_player_};
};

class CInterfaceInsideEachCallbackTest : public CInterfaceInsideCallbackTest,
                                         public testing::WithParamInterface<Kind> {};

TEST_P(CInterfaceInsideEachCallbackTest, CallsAreRefusedForEveryDownloader) {
  sd_downloader* own = nullptr;
  ActionInCallbackPlayer player(GetParam(), [&] {
    ExpectAllRefused(own);
    ExpectAllRefused(other_.get());
    ExpectAllRefused(nullptr);
  });
  const OwnedDownloader downloader(player);
  own = downloader.get();
  EXPECT_EQ(Begin(own, LocalMp4("inside " + std::to_string(static_cast<int>(GetParam())))), SD_OK);
  EXPECT_TRUE(player.WaitUntilDone());
  EXPECT_EQ(sd_end_download(own), SD_OK);  // it still exists and still plays
  EXPECT_EQ(other_player_.Snapshot().messages.size(), 0U);
}

INSTANTIATE_TEST_SUITE_P(EveryKind, CInterfaceInsideEachCallbackTest,
                         testing::Values(Kind::kDuration, Kind::kBufferedTime, Kind::kClock,
                                         Kind::kAudio, Kind::kVideo, Kind::kMessage,
                                         Kind::kResult));

TEST_F(CInterfaceInsideCallbackTest, CallsOnTheCallersThreadAreRefusedUntilTheCallbackReturns) {
  sd_downloader* own = nullptr;
  ActionInCallbackPlayer player(Kind::kMessage, [&] { ExpectAllRefused(own); });
  const OwnedDownloader downloader(player);
  own = downloader.get();
  EXPECT_EQ(Begin(own, "rtmp"), SD_ERROR_UNKNOWN_SCHEME);
  EXPECT_TRUE(player.WaitUntilDone());
  EXPECT_EQ(sd_end_download(own), SD_NOT_PLAYING);
}

TEST_F(CInterfaceInsideCallbackTest, VersionAndTextsAreAvailable) {
  std::string version;
  ActionInCallbackPlayer player(
      Kind::kMessage, [&] { version = std::string(sd_version()) + sd_result_text(SD_OK); });
  const OwnedDownloader downloader(player);
  EXPECT_EQ(Begin(downloader.get(), "rtmp"), SD_ERROR_UNKNOWN_SCHEME);
  EXPECT_EQ(version, std::string(sd_version()) + sd_result_text(SD_OK));
}

TEST_F(CInterfaceInsideCallbackTest, OtherThreadsMayCallMeanwhile) {
  RecordingPlayer player;
  BlockedVideoCall call(player);
  const OwnedDownloader downloader(player);
  EXPECT_EQ(Begin(downloader.get(), LocalFlv("meanwhile")), SD_OK);
  EXPECT_TRUE(call.WaitUntilEntered());
  EXPECT_EQ(sd_set_start_position(downloader.get(), 0), SD_OK);
  EXPECT_EQ(Begin(other_.get(), "rtmp"), SD_ERROR_UNKNOWN_SCHEME);
  EXPECT_EQ(sd_end_download(other_.get()), SD_NOT_PLAYING);
  call.Release();
  EXPECT_EQ(sd_end_download(downloader.get()), SD_OK);
}

}  // namespace
}  // namespace c_interface_test

}  // namespace stream
