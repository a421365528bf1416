#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "tests/support/ts_play.h"
#include "ts/ts_download.h"
#include "ts/ts_downloader.h"
#include "ts/ts_state.h"

namespace stream {
namespace {

using ts_test::Bytes;
using ts_test::MakeStream;

class TsFaultTest : public TsPlay {
 protected:
  // Runs the download task alone, on this thread, until the transfer ends by itself.
  void DownloadToItsEnd(const std::string& url) {
    CTsDownloader pipeline(&player_);
    g_tsRunning = true;
    DownloadTs(url, PlayerPort(&player_));
    g_tsRunning = false;
  }
};

TEST_F(TsFaultTest, TransferThatSucceedsIsLogged) {
  server_.Serve(MakeStream(3));
  const std::string url = server_.Url("/plain/a.ts");
  testing::internal::CaptureStdout();
  DownloadToItsEnd(url);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "[DOWNLOAD]: " + url + "\n");
}

TEST_F(TsFaultTest, LongHtmlPageIsRefusedAtItsFirstBlockAndNotLogged) {
  server_.Serve("<html>" + std::string(5'000'000, '.'));
  testing::internal::CaptureStdout();
  DownloadToItsEnd(server_.Url("/plain/a.ts"));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(player_.Snapshot().MessagesWith("PLAY TS NO:").size(), 1U);
  EXPECT_EQ(g_tsDownloaded.load(), 0U);
}

TEST_F(TsFaultTest, HtmlPageEndsTheTransferWithNothingStaged) {
  const std::string page = "<html><body>404</body></html>";
  server_.Serve(page);
  const std::string url = server_.Url("/plain/a.ts");
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForMessage("PLAY TS NO:" + url + ":" + page));
  {
    const std::lock_guard lock(g_tsStreamLock);
    EXPECT_EQ(g_tsStreamBuffer->Size(), 0U);
  }
  EXPECT_EQ(g_tsDownloaded.load(), 0U);
  Stop();
  EXPECT_TRUE(player_.Snapshot().MessagesWith("PLAY TS OK:").empty());
}

TEST_F(TsFaultTest, TextOfTheHtmlPageEndsAtItsFirstZero) {
  server_.Serve(std::string("<html>gone\0never told", 21));
  const std::string url = server_.Url("/plain/a.ts");
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForMessage("PLAY TS NO:" + url + ":<html>gone"));
  Stop();
}

TEST_F(TsFaultTest, EmptyBodyGivesNoFrameAndNoOutcome) {
  server_.Serve(std::string());
  DownloadToItsEnd(server_.Url("/plain/a.ts"));
  EXPECT_EQ(server_.Requests().size(), 1U);
  EXPECT_TRUE(player_.Snapshot().messages.empty());
}

TEST_F(TsFaultTest, MissingLocalFileIsNotReported) {
  testing::internal::CaptureStdout();
  DownloadToItsEnd("file:///no/such/file.ts");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_TRUE(player_.Snapshot().messages.empty());
}

TEST_F(TsFaultTest, TruncatedBodyPlaysUpToTheCut) {
  const Bytes stream = MakeStream(40);
  server_.Serve(stream);
  downloader_.BeginDownload(server_.Url("/cut/a.ts"));
  EXPECT_TRUE(WaitForVideo(18));
  Stop();
  EXPECT_LT(player_.Snapshot().video.size(), 22U);
}

TEST_F(TsFaultTest, ErrorPageWithoutHtmlIsTreatedAsAStream) {
  const std::string url = server_.Url("/nowhere/a.ts");
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForMessage("PLAY TS OK:" + url));
  Stop();
  EXPECT_TRUE(player_.Snapshot().video.empty());
}

TEST_F(TsFaultTest, RefusedConnectionIsNotReported) {
  std::string url;
  {
    const TestServer gone;
    url = gone.Url("/plain/a.ts");
  }
  testing::internal::CaptureStdout();
  DownloadToItsEnd(url);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_TRUE(player_.Snapshot().messages.empty());
}

TEST_F(TsFaultTest, GarbageBetweenGoodStreamsIsSurvived) {
  std::mt19937 random(3);  // NOLINT: the same run every time
  Bytes garbage(1'000 * 188);
  for (std::uint8_t& byte : garbage) byte = static_cast<std::uint8_t>(random());
  for (std::size_t at = 0; at < garbage.size(); at += 188) {
    if (random() % 2 == 0) garbage[at] = 0x47;
    if (random() % 4 == 0) {  // on one of the PIDs that are parsed
      garbage[at + 1] = static_cast<std::uint8_t>((garbage[at + 1] & 0x40) | 1);
      garbage[at + 2] = static_cast<std::uint8_t>(random() % 3);
    }
  }
  Bytes stream = MakeStream(5);
  ts_test::Append(stream, garbage);
  ts_test::Append(stream, MakeStream(5, 5'000'000));
  server_.Serve(stream);
  testing::internal::CaptureStdout();  // a line for each bad packet
  downloader_.BeginDownload(server_.Url("/plain/a.ts"));
  EXPECT_TRUE(player_.WaitFor([](const Record& record) {
    return !record.video.empty() && record.video.back().pts == 5'000'000 + 3 * 3600;
  }));
  Stop();
  testing::internal::GetCapturedStdout();
}

TEST_F(TsFaultTest, TruncatedLastPacketIsIgnored) {
  Bytes stream = MakeStream(20);
  stream.resize(stream.size() - 100);
  server_.Serve(stream);
  downloader_.BeginDownload(server_.Url("/plain/a.ts"));
  EXPECT_TRUE(WaitForVideo(19));
  Stop();
}

TEST_F(TsFaultTest, DamagedPacketInAGoodStreamLosesOnlyItself) {
  Bytes stream = MakeStream(30);
  // The second video packet of frame 10. The stream is PAT, PMT, then three packets per frame.
  const std::size_t at = (2 + 10 * 3 + 1) * 188;
  stream[at] = 0;
  server_.Serve(stream);
  downloader_.BeginDownload(server_.Url("/plain/a.ts"));
  ASSERT_TRUE(WaitForVideo(29));
  Stop();
  const Record record = player_.Snapshot();
  EXPECT_LT(record.video[10].payload.size(), 300U);
  EXPECT_EQ(record.video[11].payload.size(), 300U);
}

}  // namespace
}  // namespace stream
