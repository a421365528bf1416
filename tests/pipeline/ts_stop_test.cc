#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <future>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <utility>

#include "tests/support/ts_play.h"
#include "ts/ts_download.h"
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

TEST_F(TsStopTest, TransferTakesEverythingWhileRunningAndNothingAfterTheStop) {
  CTsDownloader pipeline(nullptr);
  ts_test::Packet packet = ts_test::MakePat();
  const char* bytes = reinterpret_cast<const char*>(packet.data());
  TsTransfer transfer(PlayerPort(), 0);
  g_tsRunning = true;
  EXPECT_EQ(transfer.Take(bytes, 188), packet.size());
  EXPECT_EQ(transfer.Take(bytes, 188), packet.size());
  EXPECT_EQ(g_tsDownloaded.load(), 2 * packet.size());
  g_tsRunning = false;
  EXPECT_EQ(transfer.Take(bytes, 188), 0U);
  EXPECT_EQ(g_tsDownloaded.load(), 2 * packet.size());
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

TEST_F(TsStopTest, FloodOfGarbageDoesNotHoldUpTheStop) {
  ts_test::Bytes stream = MakeStream(2);
  stream.resize(stream.size() + 5'000 * kTsPacketSize, 0);  // a console line for each packet
  server_.Serve(stream);
  testing::internal::CaptureStdout();
  downloader_.BeginDownload(server_.Url("/endless/a.ts"));
  EXPECT_TRUE(
      player_.WaitFor([&](const Record&) { return g_tsDownloaded.load() > 20 * stream.size(); }));
  EXPECT_TRUE(Stop());
  testing::internal::GetCapturedStdout();
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
  downloader_.BeginDownload(server_.Url("/plain/a.ts"));
  EXPECT_TRUE(WaitForVideo(19));
  Stop();
  EXPECT_EQ(server_.CountRequests("/plain/a.ts"), 1U);
  EXPECT_LE(player_.Snapshot().video.size(), 20U);  // at most one was left behind in the assembler
}

TEST_F(TsStopTest, StopWaitsForAPlayerThatBlocksInACall) {
  std::promise<void> entered;
  std::promise<void> release;
  std::atomic<bool> stopped{false};
  std::atomic<bool> stopped_before_return{false};
  player_.during_video = [&, first = true]() mutable {
    if (!std::exchange(first, false)) return;
    entered.set_value();
    release.get_future().wait();
    stopped_before_return = stopped.load();
  };
  server_.Serve(MakeStream(20));
  downloader_.BeginDownload(server_.Url("/plain/a.ts"));
  ASSERT_EQ(entered.get_future().wait_for(std::chrono::seconds(20)), std::future_status::ready);
  EXPECT_TRUE(WaitForAudio(5)) << "the audio thread must go on";
  std::thread stopper([&] {
    downloader_.EndDownload();
    stopped = true;
  });
  while (g_tsRunning.load()) std::this_thread::yield();
  release.set_value();
  stopper.join();
  EXPECT_FALSE(stopped_before_return);
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
