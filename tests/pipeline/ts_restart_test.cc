#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <vector>

#include "common/frame_queue.h"
#include "tests/support/ts_play.h"
#include "tests/support/wait_until.h"
#include "ts/ts_demux.h"
#include "ts/ts_packet.h"
#include "ts/ts_state.h"

namespace stream {
namespace {

using testing::HasSubstr;
using testing::Not;
using ts_test::MakeStream;

using TsRestartTest = TsPlay;

constexpr char kNoSyncByte[] = "The ts packet has not sync byte";

// Plays an address, stops in mid-stream and starts the address again.
class TsResumeTest : public TsPlay {
 protected:
  // The whole stream ends at a packet boundary; its first half does not.
  static constexpr int kFrames = 31;
  static constexpr std::size_t kTablesSize = 2 * kTsPacketSize;

  static bool AllIsParsed() {
    const TsDemuxLock feeding;
    const std::lock_guard lock(g_tsStreamLock);
    return g_tsStreamBuffer->Size() < kTsPacketSize;
  }

  // The first run: receives `received` bytes, parses them and is stopped.
  void PlayUpTo(const std::string& url, std::size_t received) {
    {
      const TsDemuxLock feeding;
      ProcessTsDemuxer().Reset();
    }
    player_.Reopen();
    downloader_.BeginDownload(url);
    ASSERT_TRUE(WaitUntil([&] { return g_tsDownloaded.load() == received && AllIsParsed(); }));
    Stop();
    player_.Reopen();
    player_.Forget();
  }

  // The second run, which must deliver exactly these frames. Returns its console output.
  std::string PlayAgain(const std::string& url, const std::vector<std::string>& expected) {
    testing::internal::CaptureStdout();
    downloader_.BeginDownload(url);
    player_.WaitFor([&](const Record& record) {
      return record.video.size() + record.audio.size() >= expected.size();
    });
    const bool parsed = WaitUntil(AllIsParsed);
    downloader_.EndDownload();
    player_.Close();
    const std::string console = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(parsed);
    EXPECT_EQ(Dump(player_.Snapshot()), expected);
    return console;
  }

  // The frames that the demultiplexer makes of the packets from `resumed` on, after it has parsed
  // the whole packets in the first `received` bytes.
  static std::vector<std::string> FramesFrom(const ts_test::Bytes& stream, std::size_t resumed,
                                             std::size_t received) {
    const TsDemuxLock feeding;
    ProcessTsDemuxer().Reset();
    ResetFrameQueues();
    Feed(stream, 0, received / kTsPacketSize * kTsPacketSize);
    TakeFrames();
    ResetFrameQueues();
    Feed(stream, (resumed + kTsPacketSize - 1) / kTsPacketSize * kTsPacketSize, stream.size());
    return Dump(TakeFrames());
  }

 private:
  static void Feed(const ts_test::Bytes& stream, std::size_t from, std::size_t to) {
    for (; from < to; from += kTsPacketSize) ts_demux_feed(stream.data() + from, kTsPacketSize);
  }

  static Record TakeFrames() {
    Record record;
    const auto copy = [](const FrameNode& frame) {
      return RecordedFrame{
          frame.pts, frame.dts, frame.playTime, {frame.data, frame.data + frame.size}};
    };
    while (const FrameNodePtr frame = PopVideoFrame()) record.video.push_back(copy(*frame));
    while (const FrameNodePtr frame = PopAudioFrame()) record.audio.push_back(copy(*frame));
    return record;
  }
};

TEST_F(TsResumeTest, FramesAfterTheReceivedBytesPlayWhereverTheStopWas) {
  const ts_test::Bytes stream = MakeStream(kFrames);
  server_.Serve(stream);
  std::size_t count = 0;
  for (std::size_t received = kTablesSize; received < stream.size() - 3 * kTsPacketSize;
       received += 5 * kTsPacketSize / 2 + 3) {
    const std::string url = server_.Url("/ends/" + std::to_string(received) + "/a.ts");
    SCOPED_TRACE(received % kTsPacketSize);
    const auto expected = FramesFrom(stream, received, received);
    ASSERT_GT(expected.size(), 2U);
    PlayUpTo(url, received);
    EXPECT_THAT(PlayAgain(url, expected), Not(HasSubstr(kNoSyncByte)));
    ++count;
    ASSERT_EQ(server_.Requests().size(), 2 * count);
    EXPECT_EQ(server_.Requests().back().range, "bytes=" + std::to_string(received) + "-");
  }
  EXPECT_GT(count, 30U);
}

TEST_F(TsResumeTest, DownloadStoppedInMidPacketContinuesAtTheNextPacket) {
  const ts_test::Bytes stream = MakeStream(kFrames);
  server_.Serve(stream);
  const std::string url = server_.Url("/gated/a.ts");
  const std::size_t received = stream.size() / 2;
  ASSERT_NE(received % kTsPacketSize, 0U);
  const auto expected = FramesFrom(stream, received, received);
  PlayUpTo(url, received);
  server_.Release();
  EXPECT_THAT(PlayAgain(url, expected), Not(HasSubstr(kNoSyncByte)));
  EXPECT_EQ(player_.Snapshot().messages,
            (std::vector<std::string>{"PLAY TS:" + url, "PLAY TS RE:" + url}));
}

TEST_F(TsResumeTest, LocalFileResumesAtTheNextPacket) {
  const ts_test::Bytes stream = MakeStream(kFrames);
  for (const std::size_t received : {1000U, 10'000U, 10'241U}) {
    const std::string path =
        (std::filesystem::current_path() / (std::to_string(received) + ".ts")).string();
    const auto append = [&](std::size_t from, std::size_t to) {
      std::ofstream(path, std::ios::binary | std::ios::app)
          .write(reinterpret_cast<const char*>(stream.data()) + from,
                 static_cast<std::streamsize>(to - from));
    };
    std::filesystem::remove(path);
    append(0, received);
    const auto expected = FramesFrom(stream, received, received);
    PlayUpTo("file://" + path, received);
    append(received, stream.size());
    EXPECT_THAT(PlayAgain("file://" + path, expected), Not(HasSubstr(kNoSyncByte)));
  }
}

TEST_F(TsResumeTest, ServerWithoutRangesPlaysFromItsBeginning) {
  const ts_test::Bytes stream = MakeStream(kFrames);
  server_.Serve(stream);
  constexpr std::size_t kReceived = 2001;
  const std::string url = server_.Url("/whole/" + std::to_string(kReceived) + "/a.ts");
  const auto expected = FramesFrom(stream, 0, kReceived);
  PlayUpTo(url, kReceived);
  EXPECT_THAT(PlayAgain(url, expected), Not(HasSubstr(kNoSyncByte)));
  EXPECT_EQ(server_.Requests().back().range, "bytes=2001-");
}

TEST_F(TsResumeTest, SecondStartInMidPacketWithoutAStopSplitsNoPacket) {
  const ts_test::Bytes stream = MakeStream(kFrames);
  server_.Serve(stream);
  const std::string url = server_.Url("/gated/a.ts");
  testing::internal::CaptureStdout();
  downloader_.BeginDownload(url);
  ASSERT_TRUE(
      WaitUntil([&] { return g_tsDownloaded.load() == stream.size() / 2 && AllIsParsed(); }));
  downloader_.BeginDownload(url);
  ASSERT_TRUE(server_.WaitForRequests(2));
  server_.Release();
  // Both downloads receive the second half.
  const bool received = WaitUntil([&] { return g_tsDownloaded.load() == stream.size() / 2 * 3; });
  const bool parsed = WaitUntil(AllIsParsed);
  downloader_.EndDownload();
  EXPECT_THAT(testing::internal::GetCapturedStdout(), Not(HasSubstr(kNoSyncByte)));
  EXPECT_TRUE(received && parsed);
}

TEST_F(TsRestartTest, SameAddressResumesAtTheReceivedCount) {
  const ts_test::Bytes stream = MakeStream(30);
  server_.Serve(stream);
  const std::string url = server_.Url("/stall/a.ts");
  const std::string received = std::to_string(stream.size() / 2);
  downloader_.BeginDownload(url);
  ASSERT_TRUE(
      player_.WaitFor([&](const Record&) { return g_tsDownloaded.load() == stream.size() / 2; }));
  Stop();
  player_.Reopen();
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForMessage("PLAY TS RE:" + url));
  ASSERT_TRUE(server_.WaitForRequests(2));
  Stop();
  EXPECT_EQ(server_.Requests()[1].range, "bytes=" + received + "-");
  const auto ok = player_.Snapshot().MessagesWith("PLAY TS OK:");
  EXPECT_EQ(ok.size(), 1U) << "a resumed download reports no second one";
}

TEST_F(TsRestartTest, OtherAddressStartsFromZero) {
  server_.Serve(MakeStream(5));
  downloader_.BeginDownload(server_.Url("/plain/a.ts"));
  ASSERT_TRUE(WaitForVideo(4));
  Stop();
  player_.Reopen();
  downloader_.BeginDownload(server_.Url("/plain/b.ts"));
  ASSERT_TRUE(WaitForMessage("PLAY TS OK:" + server_.Url("/plain/b.ts")));
  Stop();
  EXPECT_EQ(server_.Requests()[1].range, "bytes=0-");
  EXPECT_TRUE(player_.Snapshot().MessagesWith("PLAY TS RE:").empty());
}

TEST_F(TsRestartTest, StartPositionFetchesFromZeroAndDropsEarlierFrames) {
  server_.Serve(MakeStream(250));  // ten seconds
  const std::string url = server_.Url("/plain/a.ts");
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForVideo(1));
  Stop();
  player_.Reopen();
  player_.Forget();
  EXPECT_TRUE(downloader_.SetStartPostion(4));
  downloader_.BeginDownload(url);
  // The frame left over from the first run restarts the play times, with a base of its own.
  ASSERT_TRUE(WaitForVideo(100));
  Stop();
  EXPECT_EQ(server_.Requests()[1].range, "bytes=0-");
  for (const RecordedFrame& frame : player_.Snapshot().video) {
    EXPECT_GE(frame.play_time / 90'000, 4U);
  }
}

TEST_F(TsRestartTest, StreamThatHasEndedPlaysAgainOnlyAfterAPositionWasSet) {
  const ts_test::Bytes stream = MakeStream(30);
  server_.Serve(stream);
  const std::string url = server_.Url("/plain/a.ts");
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForVideo(29) && WaitForAudio(29));
  Stop();
  player_.Reopen();
  player_.Forget();
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitUntil([&] { return server_.Requests().size() == 2; }));
  downloader_.EndDownload();
  EXPECT_TRUE(player_.Snapshot().video.empty());
  EXPECT_EQ(server_.Requests()[1].range, "bytes=" + std::to_string(stream.size()) + "-");
  downloader_.SetStartPostion(0);
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForVideo(29) && WaitForAudio(29));
  Stop();
  EXPECT_EQ(server_.Requests()[2].range, "bytes=0-");
}

TEST_F(TsRestartTest, StopResetsTheStartPosition) {
  server_.Serve(MakeStream(30));
  const std::string url = server_.Url("/plain/a.ts");
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForVideo(29));
  downloader_.SetStartPostion(10);
  Stop();
  player_.Reopen();
  player_.Forget();
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForVideo(29)) << "frames below ten seconds were dropped";
  Stop();
}

TEST_F(TsRestartTest, SecondStartWithoutAStopRunsBesideTheFirst) {
  server_.Serve(MakeStream(20));
  const std::string url = server_.Url("/endless/a.ts");
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForVideo(5));
  downloader_.BeginDownload(url);
  EXPECT_TRUE(server_.WaitForRequests(2)) << "the second download runs beside the first";
  EXPECT_TRUE(WaitForMessage("PLAY TS RE:" + url));
  EXPECT_TRUE(Stop());
}

TEST_F(TsRestartTest, OtherAddressWithoutAStopPlaysBesideAStalledOne) {
  server_.Serve(MakeStream(20));
  downloader_.BeginDownload(server_.Url("/stall/a.ts"));
  ASSERT_TRUE(WaitForVideo(5));
  downloader_.BeginDownload(server_.Url("/plain/b.ts"));
  constexpr std::uint64_t last_pts = 90'000 + 18 * 3600;
  EXPECT_TRUE(player_.WaitFor([](const Record& record) {
    return !record.video.empty() && record.video.back().pts == last_pts;
  }));
  EXPECT_TRUE(Stop());
}

TEST_F(TsRestartTest, ThirdStartWithoutAStopWaitsForWorkersAndIsDiscardedByTheStop) {
  server_.Serve(MakeStream(20));
  const std::string url = server_.Url("/endless/a.ts");
  for (int i = 0; i < 3; ++i) downloader_.BeginDownload(url);
  ASSERT_TRUE(server_.WaitForRequests(2));
  EXPECT_TRUE(Stop());
  player_.Reopen();
  downloader_.BeginDownload(server_.Url("/plain/b.ts"));
  EXPECT_TRUE(WaitForVideo(19));
  Stop();
  EXPECT_EQ(server_.CountRequests("/endless/a.ts"), 2U);
}

TEST_F(TsRestartTest, SecondFacadeInTheProcessPlaysAfterTheFirstIsGone) {
  server_.Serve(MakeStream(5));
  {
    CStreamDownloader first(&player_);
    first.BeginDownload(server_.Url("/plain/a.ts"));
    ASSERT_TRUE(WaitForVideo(4));
  }
  player_.Forget();
  downloader_.BeginDownload(server_.Url("/plain/b.ts"));
  EXPECT_TRUE(WaitForVideo(5));  // includes one left over from the first facade
  Stop();
}

}  // namespace
}  // namespace stream
