#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <random>
#include <string>
#include <thread>

#include "tests/support/ts_play.h"
#include "ts/ts_downloader.h"
#include "ts/ts_state.h"

namespace {

using testing::StartsWith;
using ts_test::MakeStream;

class TsStopTest : public TsPlay {
 protected:
  // Exactly one "PLAY TS NO:" line tells of a transfer that a stop ended.
  void ExpectOneRefusal(const std::string& url) {
    const auto refusals = player_.Snapshot().MessagesWith("PLAY TS NO:");
    ASSERT_EQ(refusals.size(), 1U);
    EXPECT_THAT(refusals.front(), StartsWith("PLAY TS NO:" + url + ":"));
  }
};

TEST_F(TsStopTest, EndOfAStoppedPipelineReturnsFalseAndPrintsNothing) {
  CTsDownloader pipeline(nullptr);
  testing::internal::CaptureStdout();
  EXPECT_FALSE(pipeline.EndDownload());
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(TsStopTest, EndOfAStoppedPipelineLeavesTheQueuesUntouched) {
  CTsDownloader pipeline(nullptr);
  ResetFrameQueues();
  const std::uint8_t byte = 1;
  FrameRecord frame;
  ASSERT_EQ(CreateFrameNode(frame, 0, 0, &byte, 1, true, true), 0);
  {
    const std::lock_guard lock(g_frameQueueMutex);
    ASSERT_EQ(PushFrame(frame, g_videoQueue), 0);
  }
  EXPECT_FALSE(pipeline.EndDownload());
  EXPECT_NE(PopVideoFrame(), nullptr);
}

TEST_F(TsStopTest, EndOfAStoppedPipelineStillResetsTheStartPosition) {
  server_.Serve(MakeStream(10));
  const std::string url = server_.Url("/plain/a.ts");
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForVideo(9));
  Stop();
  player_.Reopen();
  player_.Forget();
  downloader_.SetStartPostion(1000);
  EXPECT_FALSE(downloader_.EndDownload());
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForVideo(9));
  Stop();
}

TEST_F(TsStopTest, RunningTransferEndsWithOneRefusal) {
  server_.Serve(MakeStream(20));
  const std::string url = server_.Url("/endless/a.ts");
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForVideo(5));
  EXPECT_TRUE(Stop());
  ExpectOneRefusal(url);
}

TEST_F(TsStopTest, StalledServerDoesNotHoldUpTheStop) {
  server_.Serve(MakeStream(20));
  const std::string url = server_.Url("/stall/a.ts");
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForVideo(5));
  EXPECT_TRUE(Stop());
  ExpectOneRefusal(url);
}

TEST_F(TsStopTest, SilentServerDoesNotHoldUpTheStop) {
  const std::string url = server_.Url("/silent/a.ts");
  downloader_.BeginDownload(url);
  ASSERT_TRUE(server_.WaitForRequests(1));
  EXPECT_TRUE(Stop());
  ExpectOneRefusal(url);
}

TEST_F(TsStopTest, LocalReaderEndsAtTheStopWithOneRefusal) {
  const ts_test::Bytes stream = MakeStream(10'000);
  const std::string path = (std::filesystem::current_path() / "long.ts").string();
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(stream.data()),
             static_cast<std::streamsize>(stream.size()));
  const std::string url = "file://" + path;
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForVideo(5));
  EXPECT_TRUE(Stop());
  ExpectOneRefusal(url);
  EXPECT_LT(g_tsDownloaded.load(), stream.size());
}

TEST_F(TsStopTest, HundredStopsAtRandomTimesFromAnotherThread) {
  server_.Serve(MakeStream(200));
  std::mt19937 random(1);  // NOLINT: the same run every time
  const std::string url = server_.Url("/endless/a.ts");
  for (int i = 0; i < 100; ++i) {
    player_.Reopen();
    downloader_.BeginDownload(url);
    std::thread stopper([&] {
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 20'000));
      Stop();
    });
    stopper.join();
  }
  EXPECT_EQ(player_.Snapshot().MessagesWith("PLAY TS:").size(), 100U);
}

TEST_F(TsStopTest, StopRightAfterTheStartLeavesNoTaskForTheNext) {
  server_.Serve(MakeStream(20));
  for (int i = 0; i < 20; ++i) {
    downloader_.BeginDownload(server_.Url("/plain/other.ts"));
    downloader_.EndDownload();
  }
  player_.Forget();
  const std::size_t requests = server_.Requests().size();
  downloader_.BeginDownload(server_.Url("/plain/a.ts"));
  EXPECT_TRUE(WaitForVideo(19));
  Stop();
  EXPECT_EQ(server_.Requests().size(), requests + 1);
  EXPECT_LE(player_.Snapshot().video.size(), 20U);  // at most one was left behind in the assembler
}

TEST_F(TsStopTest, StopWhileAPlayerBlocksReturnsOnceTheCallReturns) {
  std::mutex mutex;
  std::condition_variable changed;
  bool inside = false;
  bool released = false;
  player_.during_video = [&] {
    std::unique_lock lock(mutex);
    inside = true;
    changed.notify_all();
    changed.wait(lock, [&] { return released; });
  };
  server_.Serve(MakeStream(20));
  downloader_.BeginDownload(server_.Url("/plain/a.ts"));
  {
    std::unique_lock lock(mutex);
    ASSERT_TRUE(changed.wait_for(lock, std::chrono::seconds(20), [&] { return inside; }));
  }
  EXPECT_TRUE(WaitForAudio(5)) << "the audio thread must go on";
  std::atomic<bool> stopped{false};
  std::thread stopper([&] {
    downloader_.EndDownload();
    stopped = true;
  });
  while (g_tsRunning.load()) std::this_thread::yield();
  EXPECT_FALSE(stopped) << "the video thread is still inside the player";
  {
    const std::lock_guard lock(mutex);
    released = true;
  }
  changed.notify_all();
  stopper.join();
  EXPECT_TRUE(stopped);
}

TEST_F(TsStopTest, DestructorStopsWhatPlays) {
  server_.Serve(MakeStream(20));
  {
    CStreamDownloader inner(&player_);
    inner.BeginDownload(server_.Url("/endless/a.ts"));
    ASSERT_TRUE(WaitForVideo(3));
  }
  player_.Close();
  EXPECT_FALSE(g_tsRunning.load());
}

}  // namespace
