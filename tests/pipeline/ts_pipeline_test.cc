#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "common/frame_queue.h"
#include "common/temp_files.h"
#include "tests/support/blocked_audio_call.h"
#include "tests/support/blocked_temp_folder.h"
#include "tests/support/ts_play.h"
#include "ts/ts_downloader.h"
#include "ts/ts_state.h"

namespace stream {
namespace {

using testing::ElementsAre;
using testing::StartsWith;
using ts_test::Bytes;
using ts_test::MakeStream;

class TsPipelineTest : public TsPlay {
 protected:
  std::string WriteFile(const Bytes& bytes) {
    const std::string path = (std::filesystem::current_path() / "stream.ts").string();
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return path;
  }
};

TEST_F(TsPipelineTest, EveryFrameButTheLastOfEachKindReachesThePlayer) {
  server_.Serve(MakeStream(50));
  ASSERT_TRUE(downloader_.BeginDownload(server_.Url("/plain/a.ts")));
  ASSERT_TRUE(WaitForVideo(49) && WaitForAudio(49));
  EXPECT_TRUE(Stop());
  const Record record = player_.Snapshot();
  ASSERT_EQ(record.video.size(), 49U);
  ASSERT_EQ(record.audio.size(), 49U);
  for (std::size_t i = 0; i < 49; ++i) {
    EXPECT_EQ(record.video[i].pts, 90'000U + i * 3600);
    EXPECT_EQ(record.video[i].payload, Bytes(300, static_cast<std::uint8_t>(i)));
    EXPECT_EQ(record.audio[i].payload, Bytes(60, static_cast<std::uint8_t>(i)));
  }
}

TEST_F(TsPipelineTest, StatusLinesAreReportedInOrderWithoutResultOrBufferedTime) {
  server_.Serve(MakeStream(10));
  const std::string url = server_.Url("/plain/a.ts");
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForVideo(9));
  Stop();
  const Record record = player_.Snapshot();
  EXPECT_THAT(record.messages, ElementsAre("PLAY TS:" + url, "PLAY TS OK:" + url));
  EXPECT_TRUE(record.results.empty());
  EXPECT_TRUE(record.buffered_times.empty());
}

TEST_F(TsPipelineTest, LineBreakAfterTheAddressIsReportedButNotRequested) {
  server_.Serve(MakeStream(5));
  const std::string url = server_.Url("/plain/a.ts");
  downloader_.BeginDownload(url + "\r\n");
  ASSERT_TRUE(WaitForMessage("PLAY TS OK:" + url));
  Stop();
  EXPECT_TRUE(player_.Snapshot().HasMessage("PLAY TS:" + url + "\r\n"));
  EXPECT_EQ(server_.Requests().front().path, "/plain/a.ts");
}

TEST_F(TsPipelineTest, BlocksOfAnySizeGiveTheSameFrames) {
  constexpr std::size_t kFrames = 12;  // few, since a byte at a time is slow
  server_.Serve(MakeStream(kFrames));
  std::vector<std::vector<std::string>> dumps;
  for (const std::string piece : {"1", "17", "187", "188", "4096", "1000000"}) {
    player_.Reopen();
    player_.Forget();
    downloader_.BeginDownload(server_.Url("/pieces/" + piece + "/a.ts"));
    const std::size_t expected = dumps.empty() ? kFrames - 1 : kFrames;
    ASSERT_TRUE(WaitForVideo(expected) && WaitForAudio(expected)) << "blocks of " << piece;
    Stop();
    Record record = player_.Snapshot();
    if (!dumps.empty()) {  // the frame left over from the previous run
      record.video.erase(record.video.begin());
      record.audio.erase(record.audio.begin());
    }
    dumps.push_back(Dump(record));
  }
  for (const auto& dump : dumps) EXPECT_EQ(dump, dumps.front());
}

TEST_F(TsPipelineTest, DurationIsTheSpanFromTheFirstFrameAndGrows) {
  std::promise<void> release;
  const std::shared_future<void> released = release.get_future().share();
  player_.during_video = [released] { released.wait(); };  // frames stay queued meanwhile
  server_.Serve(MakeStream(60));
  downloader_.BeginDownload(server_.Url("/gated/a.ts"));
  ASSERT_TRUE(WaitForVideo(1));
  server_.Release();
  // 59 frames are queued. The first one or two are popped before the queue is measured for the
  // first time.
  const bool grown = player_.WaitFor([](const Record& record) {
    return !record.durations.empty() && record.durations.back() > 56.5F * 0.04F;
  });
  release.set_value();
  Stop();
  ASSERT_TRUE(grown);
  const auto durations = player_.Snapshot().durations;
  EXPECT_TRUE(std::is_sorted(durations.begin(), durations.end()));
  EXPECT_LE(durations.back(), 58 * 0.04F + 0.001F);
}

TEST_F(TsPipelineTest, DeliveredVideoIsReleasedWhileAnAudioCallbackBlocks) {
  constexpr int kFrames = 300;
  server_.Serve(MakeStream(kFrames, 90'000, 100'000));
  {
    const BlockedAudioCall blocked(player_);
    downloader_.BeginDownload(server_.Url("/plain/a.ts"));
    EXPECT_TRUE(WaitForVideo(kFrames - 1));
    EXPECT_TRUE(BlockedAudioCall::WaitUntilMemoryIsNearQueueSize());
  }
  EXPECT_TRUE(WaitForAudio(kFrames - 1));
  Stop();
}

TEST_F(TsPipelineTest, LocalFilePlays) {
  const std::string url = "file://" + WriteFile(MakeStream(30));
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForVideo(29) && WaitForAudio(29));
  Stop();
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY TS:" + url, "PLAY TS OK:" + url));
}

TEST_F(TsPipelineTest, EmptyLocalFileIsOkAndHasNoFrames) {
  const std::string url = "file://" + WriteFile({});
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForMessage("PLAY TS OK:" + url));
  Stop();
  EXPECT_TRUE(player_.Snapshot().video.empty());
}

TEST_F(TsPipelineTest, WithoutAPlayerFramesArePoppedAndReleased) {
  server_.Serve(MakeStream(30));
  CStreamDownloader silent(nullptr);
  EXPECT_TRUE(silent.BeginDownload(server_.Url("/plain/a.ts")));
  const auto all_taken = [] {
    const std::lock_guard lock(g_frameQueueMutex);
    return g_videoQueue->pushed == 29 && g_videoQueue->count == 0 && g_audioQueue->count == 0;
  };
  while (!all_taken()) std::this_thread::yield();
  EXPECT_TRUE(silent.EndDownload());
}

TEST_F(TsPipelineTest, UserAgentFollowsTheMarkerInTheAddress) {
  server_.Serve(MakeStream(3));
  for (const char* query : {"?x&pt=ios&", "?x&pt=android&pt=ios&", ""}) {
    player_.Reopen();
    downloader_.BeginDownload(server_.Url("/plain/a.ts") + query);
    ASSERT_TRUE(WaitForMessage("PLAY TS OK:" + server_.Url("/plain/a.ts") + query));
    Stop();
  }
  const auto requests = server_.Requests();
  ASSERT_EQ(requests.size(), 3U);
  EXPECT_THAT(requests[0].user_agent, StartsWith("Mozilla/5.0 (iPhone;"));
  EXPECT_THAT(requests[1].user_agent, StartsWith("Mozilla/5.0 (Linux; U; Android 4.0.3;"));
  EXPECT_FALSE(requests[2].has_user_agent);
}

TEST_F(TsPipelineTest, FirstRequestHasARangeFromZero) {
  server_.Serve(MakeStream(3));
  downloader_.BeginDownload(server_.Url("/plain/a.ts"));
  ASSERT_TRUE(server_.WaitForRequests(1));
  Stop();
  EXPECT_EQ(server_.Requests().front().range, "bytes=0-");
}

TEST_F(TsPipelineTest, ConsoleLogsTheEndOfEachTaskAndOfTheStop) {
  server_.Serve(MakeStream(3));
  const std::string url = server_.Url("/plain/a.ts");
  testing::internal::CaptureStdout();
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForVideo(2) && WaitForAudio(2));  // each task has started
  Stop();
  const std::string console = testing::internal::GetCapturedStdout();
  for (const char* line : {"ts Download thread stop.\n", "ts EndDownload...\n",
                           "ts video thread stop.\n", "ts audio thread stop.\n"}) {
    EXPECT_THAT(console, testing::HasSubstr(line));
  }
  EXPECT_THAT(console, testing::EndsWith("ts video clear.\nts audio clear.\n"));
}

TEST_F(TsPipelineTest, CacheFileIsKeptForTheSameAddressAndEmptiedForAnother) {
  const std::string path = GetTempDirA() + "mebo.ts";
  const auto write = [&path] { std::ofstream(path) << "kept"; };
  downloader_.BeginDownload("file:///no/such/one.ts");
  downloader_.EndDownload();
  ASSERT_TRUE(std::filesystem::exists(path));
  EXPECT_EQ(std::filesystem::file_size(path), 0U);
  write();
  downloader_.BeginDownload("file:///no/such/one.ts");
  downloader_.EndDownload();
  EXPECT_EQ(std::filesystem::file_size(path), 4U);
  downloader_.BeginDownload("file:///no/such/other.ts");
  downloader_.EndDownload();
  EXPECT_EQ(std::filesystem::file_size(path), 0U);
}

class TsBlockedFolderTest : public TsPipelineTest {
 protected:
  // Plays a stream and returns the console output.
  std::string Play() {
    server_.Serve(MakeStream(50));
    testing::internal::CaptureStdout();
    downloader_.BeginDownload(server_.Url("/plain/a.ts"));
    EXPECT_TRUE(WaitForVideo(49) && WaitForAudio(49));
    EXPECT_TRUE(Stop());
    return testing::internal::GetCapturedStdout();
  }

  BlockedTempFolder folder_;
};

TEST_F(TsBlockedFolderTest, CacheFileIsInTheUsersCache) {
  EXPECT_THAT(Play(), StartsWith(folder_.Line()));
  const std::lock_guard lock(g_tsStreamLock);
  EXPECT_EQ(*g_tsTempPath, folder_.InCache() + "mebo.ts");
  EXPECT_TRUE(std::filesystem::exists(*g_tsTempPath));
}

TEST_F(TsBlockedFolderTest, StreamPlaysWithoutAWritableDirectory) {
  folder_.BlockCache();
  EXPECT_THAT(Play(), StartsWith("Cache files cannot be written in "));
}

}  // namespace
}  // namespace stream
