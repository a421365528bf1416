// Records and strings that cross the boundary between two separately linked programs: this one and
// the library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>

#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "public/stream_downloader.h"
#include "tests/support/recording_player.h"
#include "tests/support/ts_packets.h"

namespace stream {
namespace {

constexpr int kFrames = 60;
constexpr std::uint64_t kFirstPts = 90'000;

// Passes every call on to a recording player and counts the threads that call it.
class ThreadCountingPlayer final : public CStreamPlayerImp {
 public:
  explicit ThreadCountingPlayer(RecordingPlayer& recorder) : recorder_(recorder) {}

  void OnDuration(float seconds) override { CountThread().OnDuration(seconds); }
  void OnBufferedTime(float seconds) override { CountThread().OnBufferedTime(seconds); }
  void OnAudioClock(float seconds) override { CountThread().OnAudioClock(seconds); }
  void OnAudioFrame(MediaFrame frame) override { CountThread().OnAudioFrame(frame); }
  void OnVideoFrame(MediaFrame frame) override { CountThread().OnVideoFrame(frame); }
  void OnMessage(std::string line) override { CountThread().OnMessage(std::move(line)); }
  void OnPlayResult(std::string line) override { CountThread().OnPlayResult(std::move(line)); }

  std::size_t Threads() const {
    const std::lock_guard lock(mutex_);
    return threads_.size();
  }

 private:
  RecordingPlayer& CountThread() {
    const std::lock_guard lock(mutex_);
    threads_.insert(std::this_thread::get_id());
    return recorder_;
  }

  RecordingPlayer& recorder_;
  mutable std::mutex mutex_;
  std::set<std::thread::id> threads_;  // guarded by mutex_
};

// A local file in a folder with a space in its name. Its address is too long to be stored inside a
// string object.
std::string MakeLocalStream() {
  const std::filesystem::path folder = std::filesystem::current_path() / "boundary test";
  std::filesystem::create_directory(folder);
  const ts_test::Bytes stream = ts_test::MakeStream(kFrames, kFirstPts);
  std::ofstream(folder / "stream.ts", std::ios::binary)
      .write(reinterpret_cast<const char*>(stream.data()),
             static_cast<std::streamsize>(stream.size()));
  return "file://" + (folder / "stream.ts").string();
}

bool PlayedWhole(const RecordingPlayer::Record& record) {
  return record.video.size() >= kFrames - 1 && record.audio.size() >= kFrames - 1;
}

void ExpectFrames(const std::vector<RecordedFrame>& frames, std::size_t size, bool has_dts) {
  ASSERT_EQ(frames.size(), static_cast<std::size_t>(kFrames - 1));
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const std::uint64_t pts = kFirstPts + i * 3600;
    EXPECT_EQ(frames[i].pts, pts);
    EXPECT_EQ(has_dts ? frames[i].dts : pts, pts);
    EXPECT_EQ(frames[i].payload, ts_test::Bytes(size, static_cast<std::uint8_t>(i)));
  }
}

TEST(WindowsBoundaryTest, FramesAndStringsArriveFromSeveralThreads) {
  const std::string address = MakeLocalStream();
  RecordingPlayer recorder;
  ThreadCountingPlayer player(recorder);
  CStreamDownloader downloader(&player);
  ASSERT_TRUE(downloader.BeginDownload(address));
  EXPECT_TRUE(recorder.WaitFor(PlayedWhole));
  EXPECT_TRUE(downloader.EndDownload());
  recorder.Close();

  const RecordingPlayer::Record record = recorder.Snapshot();
  ExpectFrames(record.video, 300, true);
  ExpectFrames(record.audio, 60, false);
  EXPECT_EQ(record.clocks.size(), record.audio.size());
  EXPECT_TRUE(record.HasMessage("PLAY TS:" + address));     // from this thread
  EXPECT_TRUE(record.HasMessage("PLAY TS OK:" + address));  // from the download thread
  EXPECT_GE(player.Threads(), 4U);  // this one, the download thread, and one for each kind of frame
}

// Strings are allocated on one side of the boundary and released on the other, thousands of times.
TEST(WindowsBoundaryTest, StringsOfAllLengthsGoBothWays) {
  RecordingPlayer player;
  CStreamDownloader downloader(&player);
  for (std::size_t length = 1; length < 3000; ++length) {
    const std::string address(length, 'x');
    EXPECT_FALSE(downloader.BeginDownload(address));
    ASSERT_EQ(player.Snapshot().messages, std::vector{"PLAY UNKOWN:" + address});
    player.Forget();
  }
}

TEST(WindowsBoundaryTest, RestartsAndPositionsWorkAcrossTheBoundary) {
  const std::string address = MakeLocalStream();
  RecordingPlayer player;
  CStreamDownloader downloader(&player);
  ASSERT_TRUE(downloader.BeginDownload(address));
  EXPECT_TRUE(player.WaitFor(PlayedWhole));
  EXPECT_TRUE(downloader.EndDownload());
  player.Forget();

  EXPECT_TRUE(downloader.SetStartPostion(2.0F));
  ASSERT_TRUE(downloader.BeginDownload(address));
  EXPECT_TRUE(player.WaitFor([](const auto& record) { return !record.video.empty(); }));
  EXPECT_TRUE(downloader.EndDownload());
  const RecordingPlayer::Record record = player.Snapshot();
  EXPECT_TRUE(record.HasMessage("PLAY TS RE:" + address));
  EXPECT_THAT(record.MessagesWith("PLAY TS StartPostion:00:00:02.000"), testing::SizeIs(1));
  EXPECT_GE(record.video.front().play_time, 2 * 90'000U);
}

TEST(WindowsBoundaryTest, AssignmentAndZeroFillCanBeCalled) {
  RecordingPlayer player;
  CStreamDownloader first(&player);
  CStreamDownloader second(nullptr);
  second = first;
  EXPECT_FALSE(second.BeginDownload("rtmp"));
  EXPECT_EQ(player.Snapshot().messages.size(), 1U);

  second.__autoclassinit2(sizeof(second));
  EXPECT_FALSE(second.BeginDownload("rtmp"));  // the player is no longer set
  EXPECT_EQ(player.Snapshot().messages.size(), 1U);
}

}  // namespace
}  // namespace stream
