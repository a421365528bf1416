#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "flv/flv_stream.h"
#include "tests/support/flv_play.h"
#include "tests/support/two_facades.h"

namespace {

using flv_test::Bytes;
using flv_test::MakeStream;

using FlvTwoFacadesTest = FlvPlayFixture;

TEST_F(FlvTwoFacadesTest, SeekAndStartAfterAnotherFacadeAndItsPlayerAreGone) {
  const Bytes stream = MakeStream(30);
  server_.Serve(stream);
  const std::string url = server_.Url("/plain/a.flv");
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForVideo(5));
  PlayOnAnotherFacade(server_.Url("/plain/b.flv"), "PLAY FLV CACHE_NO OK:");
  EXPECT_FALSE(downloader_.EndDownload());
  player_.Forget();
  downloader_.SetStartPostion(0);
  ExpectAllFrames(url, stream);
  const Record record = player_.Snapshot();
  EXPECT_EQ(record.MessagesWith("PLAY FLV StartPostion:").size(), 1U);
  EXPECT_TRUE(record.HasMessage("PLAY FLV RE:" + url));
  EXPECT_TRUE(record.HasMessage(OkLine(url)));
}

TEST_F(FlvTwoFacadesTest, EndAfterAnotherFacadesStopStillWaitsForTheTasks) {
  server_.Serve(MakeStream(30));
  HeldVideoCall call(player_);
  downloader_.BeginDownload(server_.Url("/plain/a.flv"));
  ASSERT_TRUE(call.WaitUntilEntered());
  PlayOnAnotherFacade(server_.Url("/plain/b.flv"), "PLAY FLV CACHE_NO OK:");
  EXPECT_FALSE(g_flvRunning.load());
  ExpectEndToWaitFor(call, downloader_);
}

TEST_F(FlvTwoFacadesTest, EachRunningStartReportsToItsOwnPlayer) {
  server_.Serve(MakeStream(30));
  RecordingPlayer other_player;
  CStreamDownloader other(&other_player);
  const std::string url = server_.Url("/plain/a.flv");
  const std::string other_url = server_.Url("/plain/b.flv");
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForMessage(OkLine(url)));
  other.BeginDownload(other_url);
  EXPECT_TRUE(other_player.WaitFor(
      [&](const Record& record) { return record.HasMessage(OkLine(other_url)); }));
  other.EndDownload();
  downloader_.EndDownload();
  EXPECT_EQ(player_.Snapshot().MessagesWith("PLAY FLV").size(), 2U);
  EXPECT_EQ(other_player.Snapshot().MessagesWith("PLAY FLV").size(), 2U);
}

}  // namespace
