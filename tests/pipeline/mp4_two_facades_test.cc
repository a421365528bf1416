#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <system_error>

#include "mp4/mp4_file_handle.h"
#include "mp4/mp4_state.h"
#include "tests/support/mp4_play.h"
#include "tests/support/two_facades.h"

namespace {

class Mp4TwoFacadesTest : public Mp4PlayFixture {
 protected:
  Mp4TwoFacadesTest() { ServeMovie(mp4_test::MakeMovie({.samples = 50, .video_size = 900})); }
};

TEST_F(Mp4TwoFacadesTest, SeekAndStartAfterAnotherFacadeAndItsPlayerAreGone) {
  const std::string url = server_.Address();
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForVideo(5));
  PlayOnAnotherFacade(url, "PLAY MP4 OK:");
  EXPECT_FALSE(downloader_.EndDownload());
  player_.Forget();
  downloader_.SetStartPostion(0);
  EXPECT_EQ(PlayToTheEnd(), Expected());
  const Record record = player_.Snapshot();
  EXPECT_EQ(record.MessagesWith("PLAY MP4 StartPostion:").size(), 1U);
  EXPECT_TRUE(record.HasMessage("PLAY MP4 RE:" + url));
  EXPECT_TRUE(record.HasMessage("PLAY MP4 OK:" + url));
}

TEST_F(Mp4TwoFacadesTest, EndAfterAnotherFacadesStopStillWaitsForTheTasks) {
  HeldVideoCall call(player_);
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(call.WaitUntilEntered());
  PlayOnAnotherFacade(server_.Address(), "PLAY MP4 OK:");
  EXPECT_FALSE(g_mp4Running.load());
  ExpectEndToWaitFor(call, downloader_);
}

TEST_F(Mp4TwoFacadesTest, EndAfterAnotherFacadesStopClosesTheFile) {
  const std::filesystem::path open_files = "/proc/self/fd";
  // Under wine the folder is there, but it lists the files of wine.
  constexpr bool kIsPosix = std::filesystem::path::preferred_separator == '/';
  if (!kIsPosix || !std::filesystem::exists(open_files))
    GTEST_SKIP() << "the system does not list open files";
  const auto count = [&] {
    std::size_t found = 0;
    std::error_code gone;  // what listed the folder is closed by then
    for (const auto& entry : std::filesystem::directory_iterator(open_files)) {
      const auto target = std::filesystem::read_symlink(entry.path(), gone);
      if (!gone && target.filename() == "mebo.mp4") ++found;
    }
    return found;
  };
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(WaitForVerdict());
  if (kKeepMp4Open) {
    EXPECT_GT(count(), 0U);
  }
  PlayOnAnotherFacade(server_.Address(), "PLAY MP4 OK:");
  EXPECT_FALSE(downloader_.EndDownload());
  EXPECT_EQ(count(), 0U);
}

TEST_F(Mp4TwoFacadesTest, EachRunningStartReportsToItsOwnPlayer) {
  RecordingPlayer other_player;
  CStreamDownloader other(&other_player);
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(WaitForVerdict());
  other.BeginDownload(server_.Address());
  EXPECT_TRUE(
      other_player.WaitFor([](const Record& record) { return record.results.size() == 1; }));
  other.EndDownload();
  downloader_.EndDownload();
  EXPECT_EQ(player_.Snapshot().results.size(), 1U);
  EXPECT_EQ(other_player.Snapshot().results.size(), 1U);
}

}  // namespace
