#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/stop_sleep_recorder.h"
#include "tests/support/ts_play.h"
#include "ts/ts_download.h"
#include "ts/ts_downloader.h"
#include "ts/ts_state.h"

namespace stream {
namespace {

using testing::StartsWith;
using ts_test::MakeStream;

// tests/conformance tests what every pipeline does at a stop; this file tests what only TS does.
class TsStopTest : protected RecordedStops, public TsPlay {
 protected:
  TsStopTest() : RecordedStops([] { return g_tsRunning.load(); }) {}

  bool StopPromptly() {
    const bool was_running = Stop();
    EXPECT_TRUE(sleep_recorder_.WasPrompt(std::chrono::milliseconds(10)));
    return was_running;
  }

  // Expects exactly one "PLAY TS NO:" line for a transfer that the stop ended.
  void ExpectOneRefusal(const std::string& url) {
    const auto refusals = player_.Snapshot().MessagesWith("PLAY TS NO:");
    ASSERT_EQ(refusals.size(), 1U);
    EXPECT_THAT(refusals.front(), StartsWith("PLAY TS NO:" + url + ":"));
  }
};

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

TEST_F(TsStopTest, TransferAcceptsEverythingWhileRunningAndNothingAfterTheStop) {
  CTsDownloader pipeline(nullptr);
  ts_test::Packet packet = ts_test::MakePat();
  const char* bytes = reinterpret_cast<const char*>(packet.data());
  TsTransfer transfer(PlayerPort(), 0);
  g_tsRunning = true;
  EXPECT_EQ(transfer.OnBytes(bytes, 188), packet.size());
  EXPECT_EQ(transfer.OnBytes(bytes, 188), packet.size());
  EXPECT_EQ(g_tsDownloaded.load(), 2 * packet.size());
  g_tsRunning = false;
  EXPECT_EQ(transfer.OnBytes(bytes, 188), 0U);
  EXPECT_EQ(g_tsDownloaded.load(), 2 * packet.size());
}

TEST_F(TsStopTest, RunningTransferEndsWithOneRefusal) {
  server_.Serve(MakeStream(20));
  const std::string url = server_.Url("/endless/a.ts");
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForVideo(5));
  EXPECT_TRUE(StopPromptly());
  ExpectOneRefusal(url);
}

TEST_F(TsStopTest, TransferThatReceivedNothingEndsWithOneRefusal) {
  const std::string url = server_.Url("/silent/a.ts");
  downloader_.BeginDownload(url);
  ASSERT_TRUE(server_.WaitForRequests(1));
  EXPECT_TRUE(StopPromptly());
  ExpectOneRefusal(url);
}

TEST_F(TsStopTest, FloodOfGarbageDoesNotDelayTheStop) {
  ts_test::Bytes stream = MakeStream(2);
  stream.resize(stream.size() + 5'000 * kTsPacketSize, 0);  // a console line for each packet
  server_.Serve(stream);
  testing::internal::CaptureStdout();
  downloader_.BeginDownload(server_.Url("/endless/a.ts"));
  EXPECT_TRUE(
      player_.WaitFor([&](const Record&) { return g_tsDownloaded.load() > 20 * stream.size(); }));
  EXPECT_TRUE(StopPromptly());
  testing::internal::GetCapturedStdout();
}

TEST_F(TsStopTest, LocalFileEndsAtTheStopWithOneRefusal) {
  const ts_test::Bytes stream = MakeStream(10'000);
  const std::string path = (std::filesystem::current_path() / "long.ts").string();
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(stream.data()),
             static_cast<std::streamsize>(stream.size()));
  const std::string url = "file://" + path;
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForVideo(5));
  EXPECT_TRUE(StopPromptly());
  ExpectOneRefusal(url);
  EXPECT_LT(g_tsDownloaded.load(), stream.size());
}

}  // namespace
}  // namespace stream
