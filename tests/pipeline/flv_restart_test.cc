#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "common/temp_files.h"
#include "flv/flv_stream.h"
#include "tests/support/blocked_temp_folder.h"
#include "tests/support/flv_play.h"

namespace stream {
namespace {

using flv_test::Bytes;
using flv_test::Join;
using flv_test::MakeStream;

class FlvRestartTest : public FlvPlayFixture {
 protected:
  static std::string RestartFile() { return GetTempDirA() + "mebo.flv"; }

  // Plays a stream from a second server while others play, and expects each of its video frames
  // once. Two threads deliver them, so their order is not checked.
  void ExpectToPlayBesideOthers() {
    constexpr std::size_t kNalSize = 1234;  // the others have video frames of other sizes
    constexpr std::size_t kPictures = 100;
    const auto is_picture = [](const RecordedFrame& frame) {
      return frame.payload.size() == kNalSize + 4;
    };
    TestServer other;
    other.Serve(MakeStream(kPictures, kNalSize));
    downloader_.BeginDownload(other.Url("/plain/other.flv"));
    EXPECT_TRUE(player_.WaitFor([&](const Record& record) {
      return std::count_if(record.video.begin(), record.video.end(), is_picture) == kPictures;
    }));
    EXPECT_TRUE(Stop());
    std::set<std::uint64_t> times;
    for (const RecordedFrame& frame : player_.Snapshot().video) {
      if (is_picture(frame)) {
        EXPECT_TRUE(times.insert(frame.dts).second) << "delivered twice: " << frame.dts;
      }
    }
    EXPECT_EQ(times.size(), kPictures);
    EXPECT_EQ(other.Requests().size(), 1U);
  }

  void StartAgain() {
    player_.Reopen();
    player_.Forget();
  }
};

TEST_F(FlvRestartTest, SameAddressIsReportedAndPlaysFromTheBeginning) {
  const Bytes stream = MakeStream(30);
  server_.Serve(stream);
  const std::string url = server_.Url("/plain/a.flv");
  ExpectAllFrames(url, stream);
  EXPECT_TRUE(player_.Snapshot().MessagesWith("PLAY FLV RE:").empty());
  StartAgain();
  ExpectAllFrames(url, stream);
  EXPECT_THAT(player_.Snapshot().messages,
              testing::ElementsAre("PLAY FLV:" + url, "PLAY FLV RE:" + url, OkLine(url)));
  EXPECT_EQ(server_.Requests()[1].range, "bytes=0-");
}

TEST_F(FlvRestartTest, SameAddressAfterAStopInMidTransferPlaysFromTheBeginning) {
  server_.Serve(MakeStream(100));
  const std::string url = server_.Url("/stall/a.flv");
  for (int run = 0; run < 2; ++run) {
    StartAgain();
    downloader_.BeginDownload(url);
    ASSERT_TRUE(WaitForVideo(20));
    Stop();
    const Record record = player_.Snapshot();
    EXPECT_EQ(record.video.front().payload, (Bytes{0, 0, 0, 1, 0x67, 1, 2, 3}));
    EXPECT_EQ(record.video[2].dts, 0U);
  }
  EXPECT_EQ(server_.Requests()[1].range, "bytes=0-");
}

TEST_F(FlvRestartTest, SameAddressKeepsTheRestartFileAndAnotherEmptiesIt) {
  const auto play_and_stop = [this](const std::string& url) {
    downloader_.BeginDownload(url);
    downloader_.EndDownload();
  };
  std::filesystem::remove(RestartFile());
  play_and_stop("file:///no/such/one.flv");
  ASSERT_TRUE(std::filesystem::exists(RestartFile()));
  EXPECT_EQ(std::filesystem::file_size(RestartFile()), 0U);
  std::ofstream(RestartFile()) << "kept";
  play_and_stop("file:///no/such/one.flv");
  EXPECT_EQ(std::filesystem::file_size(RestartFile()), 4U);
  play_and_stop("file:///no/such/other.flv");
  EXPECT_EQ(std::filesystem::file_size(RestartFile()), 0U);
}

TEST_F(FlvRestartTest, NothingIsWrittenToTheRestartFileWhileAStreamPlays) {
  const Bytes stream = MakeStream(30);
  server_.Serve(stream);
  ExpectAllFrames(server_.Url("/plain/a.flv"), stream);
  EXPECT_EQ(std::filesystem::file_size(RestartFile()), 0U);
}

TEST_F(FlvRestartTest, OtherAddressPlaysWithoutTheRestartLine) {
  const Bytes stream = MakeStream(10);
  server_.Serve(stream);
  ExpectAllFrames(server_.Url("/plain/a.flv"), stream);
  StartAgain();
  ExpectAllFrames(server_.Url("/plain/b.flv"), stream);
  EXPECT_TRUE(player_.Snapshot().MessagesWith("PLAY FLV RE:").empty());
}

TEST_F(FlvRestartTest, BytesOfAStoppedStreamAreNotInTheNext) {
  const Bytes stream = MakeStream(100);
  server_.Serve(stream);
  for (int run = 0; run < 3; ++run) {
    StartAgain();
    downloader_.BeginDownload(server_.Url("/stall/a.flv"));
    ASSERT_TRUE(WaitForVideo(3));
    EXPECT_GT(g_flvStream->UnreadSize(), 0U)
        << "no unread bytes, so the next stream proves nothing";
    Stop();
    StartAgain();
    ExpectAllFrames(server_.Url("/plain/b.flv"), stream);
  }
}

TEST_F(FlvRestartTest, AudioConfigurationIsReusedByAStreamWithoutOne) {
  const Bytes with = Join({flv_test::Header(), flv_test::AacHeaderTag(flv_test::kStereo48),
                           flv_test::AacTag(0, {1, 2}), flv_test::LastBackPointer()});
  const Bytes without =
      Join({flv_test::Header(), flv_test::AacTag(0, {3, 4, 5}), flv_test::LastBackPointer()});
  server_.Serve(with);
  ExpectAllFrames(server_.Url("/plain/a.flv"), with);
  StartAgain();
  server_.Serve(without);
  downloader_.BeginDownload(server_.Url("/plain/b.flv"));
  ASSERT_TRUE(WaitForAudio(1));
  Stop();
  EXPECT_EQ(DumpText(DumpOf(player_.Snapshot())),
            DumpText(ParseFlv(without, flv_test::kStereo48).frames));
}

TEST_F(FlvRestartTest, SecondStartWithoutAStopRunsBesideTheFirst) {
  const std::string url = ServeLive();
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForVideo(5));
  downloader_.BeginDownload(url);
  EXPECT_TRUE(server_.WaitForRequests(2)) << "the second download runs beside the first";
  EXPECT_TRUE(WaitForMessage("PLAY FLV RE:" + url));
  EXPECT_TRUE(Stop());
}

TEST_F(FlvRestartTest, OneStopEndsTwoImmediateStarts) {
  const std::string url = ServeLive();
  downloader_.BeginDownload(url);
  downloader_.BeginDownload(url);
  ASSERT_TRUE(server_.WaitForRequests(2));
  EXPECT_TRUE(Stop());
  StartAgain();
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForVideo(50)) << "the first two starts are still active";
  EXPECT_TRUE(Stop());
  EXPECT_EQ(server_.Requests().size(), 3U);
}

TEST_F(FlvRestartTest, OtherAddressWithoutAStopPlaysFullyBesideAStalledOne) {
  server_.Serve(MakeStream(100));
  downloader_.BeginDownload(server_.Url("/stall/a.flv"));
  ASSERT_TRUE(WaitForVideo(5));
  ExpectToPlayBesideOthers();
}

// Three starts have more tasks than the pool has workers.
TEST_F(FlvRestartTest, ThirdStartWithoutAStopPlaysFullyBesideTwoStalledOnes) {
  server_.Serve(MakeStream(100));
  downloader_.BeginDownload(server_.Url("/stall/a.flv"));
  downloader_.BeginDownload(server_.Url("/stall/b.flv"));
  ASSERT_TRUE(server_.WaitForRequests(2));
  ExpectToPlayBesideOthers();
  StartAgain();
  ExpectAllFrames(server_.Url("/plain/c.flv"), MakeStream(100));
  EXPECT_EQ(server_.Requests().size(), 3U);
}

TEST_F(FlvRestartTest, SecondFacadeInTheProcessPlaysAfterTheFirstIsGone) {
  const Bytes stream = MakeStream(20);
  server_.Serve(stream);
  {
    CStreamDownloader first(&player_);
    first.BeginDownload(server_.Url("/plain/a.flv"));
    ASSERT_TRUE(WaitForVideo(4));
  }
  player_.Forget();
  ExpectAllFrames(server_.Url("/plain/b.flv"), stream);
}

class FlvBlockedFolderTest : public FlvRestartTest {
 protected:
  // Plays a whole stream and returns the console output.
  std::string PlayWhole() {
    const Bytes stream = MakeStream(30);
    const FrameDump expected = ParseFlv(stream).frames;
    server_.Serve(stream);
    testing::internal::CaptureStdout();
    downloader_.BeginDownload(server_.Url("/plain/a.flv"));
    EXPECT_TRUE(WaitForVideo(expected.video.size()) && WaitForAudio(expected.audio.size()));
    EXPECT_TRUE(Stop());
    EXPECT_EQ(DumpText(DumpOf(player_.Snapshot())), DumpText(expected));
    return testing::internal::GetCapturedStdout();
  }

  BlockedTempFolder folder_;
};

TEST_F(FlvBlockedFolderTest, RestartFileIsInTheUsersCache) {
  EXPECT_THAT(PlayWhole(), testing::StartsWith(folder_.Line()));
  EXPECT_TRUE(std::filesystem::exists(folder_.InCache() + "mebo.flv"));
}

TEST_F(FlvBlockedFolderTest, StreamPlaysWithoutAWritableDirectory) {
  folder_.BlockCache();
  EXPECT_THAT(PlayWhole(), testing::StartsWith("Cache files cannot be written in "));
}

}  // namespace
}  // namespace stream
