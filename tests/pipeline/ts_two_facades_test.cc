#include <gtest/gtest.h>

#include <cstddef>
#include <mutex>
#include <string>

#include "tests/support/ts_play.h"
#include "tests/support/two_facades.h"
#include "tests/support/wait_until.h"
#include "ts/ts_downloader.h"
#include "ts/ts_state.h"

namespace stream {
namespace {

using ts_test::MakeStream;

// tests/conformance tests what every pipeline does beside another facade; this file tests what only
// TS does.
class TsTwoFacadesTest : public TsPlay {
 protected:
  static bool WaitForReceived(std::size_t count) {
    return WaitUntil([count] { return g_tsDownloaded.load() == count; });
  }
};

TEST_F(TsTwoFacadesTest, AddressPlayedLastByOneFacadeIsTheSameForTheOther) {
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

TEST_F(TsTwoFacadesTest, EachRunningStartReportsItsRefusalToItsOwnPlayer) {
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

TEST_F(TsTwoFacadesTest, PlayerOfTheLatestStartReplacesThePreviousOne) {
  server_.Serve(MakeStream(20));
  RecordingPlayer other_player;
  CTsDownloader first(&player_);
  CTsDownloader second(&other_player);
  const auto report = [](const std::string& line) {
    const std::lock_guard lock(g_tsStreamLock);
    g_tsPlayer.Message(line);
  };
  first.BeginDownload(server_.Url("/plain/a.ts"));
  report("to the first");
  EXPECT_TRUE(first.EndDownload());
  second.BeginDownload(server_.Url("/plain/a.ts"));
  report("to the second");
  EXPECT_TRUE(second.EndDownload());
  EXPECT_TRUE(player_.Snapshot().HasMessage("to the first"));
  EXPECT_FALSE(player_.Snapshot().HasMessage("to the second"));
  EXPECT_TRUE(other_player.Snapshot().HasMessage("to the second"));
}

}  // namespace
}  // namespace stream
