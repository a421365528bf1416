#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/support/ts_play.h"
#include "ts/ts_state.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using ts_test::MakeStream;

using TsRestartTest = TsPlay;

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
  EXPECT_EQ(ok.size(), 1U) << "a resumed download sends no second one";
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

TEST_F(TsRestartTest, StartPositionFetchesFromZeroAndDropsWhatLiesBeforeIt) {
  server_.Serve(MakeStream(250));  // ten seconds
  const std::string url = server_.Url("/plain/a.ts");
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForVideo(1));
  Stop();
  player_.Reopen();
  player_.Forget();
  EXPECT_TRUE(downloader_.SetStartPostion(4));
  downloader_.BeginDownload(url);
  // The frame that the first run left behind begins the play times anew, with a base of its own.
  ASSERT_TRUE(WaitForVideo(100));
  Stop();
  EXPECT_EQ(server_.Requests()[1].range, "bytes=0-");
  for (const RecordedFrame& frame : player_.Snapshot().video) {
    EXPECT_GE(frame.play_time / 90'000, 4U);
  }
}

TEST_F(TsRestartTest, StopForgetsTheStartPosition) {
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

TEST_F(TsRestartTest, SecondStartWithoutAStopAddsItsTasksBesideTheFirst) {
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
  const std::uint64_t last_pts = 90'000 + 18 * 3600;
  EXPECT_TRUE(player_.WaitFor([last_pts](const Record& record) {
    return !record.video.empty() && record.video.back().pts == last_pts;
  }));
  EXPECT_TRUE(Stop());
}

TEST_F(TsRestartTest, ThirdStartWithoutAStopWaitsForWorkersAndIsForgottenByTheStop) {
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
  EXPECT_TRUE(WaitForVideo(5));  // one left behind by the first
  Stop();
}

}  // namespace
