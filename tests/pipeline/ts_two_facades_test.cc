#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "tests/support/ts_play.h"
#include "tests/support/two_facades.h"
#include "tests/support/wait_until.h"
#include "ts/ts_state.h"

namespace {

using ts_test::MakeStream;

class TsTwoFacadesTest : public TsPlay {
 protected:
  static bool WaitForReceived(std::size_t count) {
    return WaitUntil([count] { return g_tsDownloaded.load() == count; });
  }
};

TEST_F(TsTwoFacadesTest, SeekAndStartAfterAnotherFacadeAndItsPlayerAreGone) {
  const ts_test::Bytes stream = MakeStream(20);
  server_.Serve(stream);
  const std::string url = server_.Url("/plain/a.ts");
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForReceived(stream.size()));
  PlayOnAnotherFacade(server_.Url("/plain/b.ts"), "PLAY TS OK:");
  player_.Forget();
  downloader_.SetStartPostion(0);
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForVideo(19));
  EXPECT_TRUE(Stop());
  const Record record = player_.Snapshot();
  EXPECT_EQ(record.MessagesWith("PLAY TS StartPostion:").size(), 1U);
  EXPECT_TRUE(record.HasMessage("PLAY TS OK:" + url));
}

TEST_F(TsTwoFacadesTest, LinesGoToThePlayerOfTheFacadeThatWasCalled) {
  server_.Serve(MakeStream(20));
  RecordingPlayer other_player;
  CStreamDownloader other(&other_player);
  other.BeginDownload(server_.Url("/plain/a.ts"));
  ASSERT_TRUE(WaitForFrames(other_player, 10));
  other.EndDownload();
  downloader_.BeginDownload(server_.Url("/plain/b.ts"));
  ASSERT_TRUE(WaitForVideo(10));
  Stop();

  other_player.Forget();
  other.SetStartPostion(0);
  other.BeginDownload(server_.Url("/plain/b.ts"));  // the first facade's player is closed
  EXPECT_TRUE(WaitForFrames(other_player, 19));
  other.EndDownload();
  const Record record = other_player.Snapshot();
  EXPECT_EQ(record.MessagesWith("PLAY TS StartPostion:").size(), 1U);
  EXPECT_EQ(record.MessagesWith("PLAY TS RE:").size(), 1U);
  EXPECT_EQ(record.MessagesWith("PLAY TS OK:").size(), 1U);
}

TEST_F(TsTwoFacadesTest, EachRunningStartReportsToItsOwnPlayer) {
  const ts_test::Bytes stream = MakeStream(31);
  server_.Serve(stream);
  RecordingPlayer other_player;
  CStreamDownloader other(&other_player);
  downloader_.BeginDownload(server_.Url("/stall/a.ts"));
  ASSERT_TRUE(WaitForReceived(stream.size() / 2));
  other.BeginDownload(server_.Url("/stall/b.ts"));
  ASSERT_TRUE(other_player.WaitFor(
      [](const Record& record) { return record.MessagesWith("PLAY TS OK:").size() == 1; }));
  other.EndDownload();
  EXPECT_EQ(other_player.Snapshot().MessagesWith("PLAY TS NO:").size(), 1U);
  downloader_.EndDownload();
  EXPECT_EQ(player_.Snapshot().MessagesWith("PLAY TS NO:").size(), 1U);
}

TEST_F(TsTwoFacadesTest, EndAfterAnotherFacadesStopStillWaitsForTheTasks) {
  const ts_test::Bytes stream = MakeStream(31);
  server_.Serve(stream);
  downloader_.BeginDownload(server_.Url("/stall/a.ts"));
  ASSERT_TRUE(WaitForReceived(stream.size() / 2));
  PlayOnAnotherFacade(server_.Url("/plain/b.ts"), "PLAY TS OK:");
  EXPECT_FALSE(g_tsRunning.load());
  EXPECT_FALSE(Stop());  // closes the player, which no task may call any more
  EXPECT_EQ(player_.Snapshot().MessagesWith("PLAY TS NO:").size(), 1U);
}

TEST_F(TsTwoFacadesTest, StartsOfTwoFacadesAtATimeEndWithTheStop) {
  server_.Serve(MakeStream(20));
  RecordingPlayer other_player;
  for (int i = 0; i < 5; ++i) {
    CStreamDownloader other(&other_player);
    player_.Reopen();
    downloader_.BeginDownload(server_.Url("/endless/a.ts"));
    other.BeginDownload(server_.Url("/endless/b.ts"));
    EXPECT_TRUE(WaitForVideo(static_cast<std::size_t>(i + 1) * 5));
    EXPECT_TRUE(WaitForFrames(other_player, static_cast<std::size_t>(i + 1) * 5));
    downloader_.SetStartPostion(0);
    other.SetStartPostion(0);
    EXPECT_TRUE(Stop());
    EXPECT_FALSE(other.EndDownload());
  }
  EXPECT_EQ(player_.Snapshot().MessagesWith("PLAY TS StartPostion:").size(), 5U);
  EXPECT_EQ(other_player.Snapshot().MessagesWith("PLAY TS StartPostion:").size(), 5U);
}

}  // namespace
