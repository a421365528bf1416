#include "public/stream_downloader.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "hls/hls_stream.h"
#include "tests/support/recording_player.h"
#include "tests/support/throwing_player.h"

namespace stream {
namespace {

using Fields = std::array<void*, 6>;

// The layout of the facade is part of the contract, so the tests read it as bytes.
Fields FieldsOf(const CStreamDownloader& downloader) {
  Fields fields{};
  static_assert(sizeof(fields) == sizeof(downloader));
  std::memcpy(fields.data(), static_cast<const void*>(&downloader), sizeof(fields));
  return fields;
}

class StreamDownloaderTest : public testing::Test {
 protected:
  // The first line that BeginDownload reports for an address where nothing exists.
  std::string FirstLine(const std::string& url) {
    player_.Forget();
    downloader_.BeginDownload(url);
    downloader_.EndDownload();
    const auto messages = player_.Snapshot().messages;
    return messages.empty() ? "" : messages.front();
  }

  RecordingPlayer player_;
  CStreamDownloader downloader_{&player_};
};

TEST_F(StreamDownloaderTest, EmptyAddressIsRefusedWithoutALine) {
  EXPECT_FALSE(downloader_.BeginDownload(""));
  EXPECT_TRUE(player_.Snapshot().messages.empty());
}

TEST_F(StreamDownloaderTest, LineBreakAfterAnFlvAddressIsRemovedButReportedAsReceived) {
  EXPECT_EQ(FirstLine("file:///no/such.flv\r\n"), "PLAY FLV:file:///no/such.flv\r\n");
}

TEST_F(StreamDownloaderTest, LineBreakIsCutBeforeTheFormatIsChosen) {
  EXPECT_EQ(FirstLine("http://127.0.0.1/a\r\n.flv"), "PLAY MP4:http://127.0.0.1/a\r\n.flv");
}

TEST_F(StreamDownloaderTest, RtmpAddressIsRefused) {
  EXPECT_FALSE(downloader_.BeginDownload("rtmp://host/a.flv"));
  EXPECT_EQ(player_.Snapshot().messages, std::vector<std::string>{"PLAY UNKOWN:rtmp://host/a.flv"});
}

TEST_F(StreamDownloaderTest, RtmpAddressWithHttpInItsQueryGoesToMp4) {
  EXPECT_EQ(FirstLine("rtmp://host/a?from=http"), "PLAY MP4:rtmp://host/a?from=http");
}

TEST_F(StreamDownloaderTest, RtmpAddressWithHttpAndAMarkerGoesToThatFormat) {
  EXPECT_EQ(FirstLine("rtmp://host/a.flv?from=http"), "PLAY FLV:rtmp://host/a.flv?from=http");
}

TEST_F(StreamDownloaderTest, AddressInCapitalsIsRefused) {
  EXPECT_FALSE(downloader_.BeginDownload("HTTP://HOST/A.TS"));
  EXPECT_EQ(FirstLine("HTTP://HOST/A.TS"), "PLAY UNKOWN:HTTP://HOST/A.TS");
}

TEST_F(StreamDownloaderTest, ExtensionInCapitalsIsIgnored) {
  EXPECT_EQ(FirstLine("http://127.0.0.1/A.TS"), "PLAY MP4:http://127.0.0.1/A.TS");
}

TEST_F(StreamDownloaderTest, FileAddressThatEndsInFlvGoesToFlv) {
  EXPECT_EQ(FirstLine("file:///no/such.flv"), "PLAY FLV:file:///no/such.flv");
}

TEST_F(StreamDownloaderTest, FileAddressWithoutAKnownMarkerGoesToMp4) {
  EXPECT_EQ(FirstLine("file:///no/such"), "PLAY MP4:file:///no/such");
}

TEST_F(StreamDownloaderTest, FileSchemeThatIsNotAtTheStartIsRefused) {
  EXPECT_EQ(FirstLine("x file:///no/such.flv"), "PLAY UNKOWN:x file:///no/such.flv");
}

TEST_F(StreamDownloaderTest, M3u8HasPriorityOverTsInTheQuery) {
  EXPECT_EQ(FirstLine("http://127.0.0.1/list.m3u8?next=a.ts"),
            "PLAY M3U8:http://127.0.0.1/list.m3u8?next=a.ts");
}

TEST_F(StreamDownloaderTest, TsHasPriorityOverFlv) {
  EXPECT_EQ(FirstLine("file:///no/such.flv.ts"), "PLAY TS:file:///no/such.flv.ts");
}

TEST_F(StreamDownloaderTest, TsMarkerCountsAnywhere) {
  EXPECT_EQ(FirstLine("file:///no/such.tsx"), "PLAY TS:file:///no/such.tsx");
}

TEST_F(StreamDownloaderTest, AddressThatStartsWithAControlByteIsRefused) {
  EXPECT_EQ(FirstLine("\nhttp://127.0.0.1/a.ts"), "PLAY UNKOWN:\nhttp://127.0.0.1/a.ts");
}

TEST_F(StreamDownloaderTest, HighByteWithoutAPartnerEndsTheAddressBeforeItsMarker) {
  EXPECT_EQ(FirstLine("http://127.0.0.1/\xE4\xB8\xAD.flv"),
            "PLAY MP4:http://127.0.0.1/\xE4\xB8\xAD.flv");
}

TEST_F(StreamDownloaderTest, EndAndPositionReturnFalseWithoutAPipeline) {
  EXPECT_FALSE(downloader_.EndDownload());
  EXPECT_FALSE(downloader_.SetStartPostion(10));
  EXPECT_TRUE(player_.Snapshot().messages.empty());
}

TEST_F(StreamDownloaderTest, StoppedPipelineStillTakesPositions) {
  FirstLine("file:///no/such.ts");
  EXPECT_FALSE(downloader_.EndDownload());
  EXPECT_TRUE(downloader_.SetStartPostion(3725.5F));
  EXPECT_EQ(player_.Snapshot().messages.back().substr(0, 36),
            "PLAY TS StartPostion:01:02:05.500 Q:");
}

TEST_F(StreamDownloaderTest, EveryExistingPipelineTakesAPositionInAFixedOrder) {
  for (const char* url : {"file:///no/such.ts", "file:///no/such.mp4", "file:///no/such.flv",
                          "file:///no/such.m3u8"}) {
    FirstLine(url);
  }
  player_.Forget();
  EXPECT_TRUE(downloader_.SetStartPostion(1));
  const auto messages = player_.Snapshot().messages;
  ASSERT_EQ(messages.size(), 4U);
  EXPECT_EQ(messages[0], "PLAY M3U8 StartPostion:00:00:01.000");
  EXPECT_TRUE(messages[1].starts_with("PLAY MP4 StartPostion:00:00:01.000 Q:"));
  EXPECT_TRUE(messages[2].starts_with("PLAY FLV StartPostion:00:00:01.000 Q:"));
  EXPECT_TRUE(messages[3].starts_with("PLAY TS StartPostion:00:00:01.000 Q:"));
}

TEST_F(StreamDownloaderTest, EveryRunningPipelineIsStoppedInAFixedOrder) {
  for (const char* url : {"file:///no/such.ts", "file:///no/such.mp4", "file:///no/such.flv",
                          "file:///no/such.m3u8"}) {
    downloader_.BeginDownload(url);
  }
  testing::internal::CaptureStdout();
  EXPECT_TRUE(downloader_.EndDownload());
  const std::string console = testing::internal::GetCapturedStdout();
  const std::size_t hls = console.find("m3u8 EndDownload...\n");
  const std::size_t mp4 = console.find("mp4 EndDownload...\n");
  const std::size_t flv = console.find("flv EndDownload...\n");
  const std::size_t ts = console.find("\nts EndDownload...\n");
  EXPECT_LT(hls, mp4);
  EXPECT_LT(mp4, flv);
  EXPECT_LT(flv, ts);
  EXPECT_NE(ts, std::string::npos);
  EXPECT_FALSE(downloader_.EndDownload());
}

TEST_F(StreamDownloaderTest, StopReturnsTrueIfOnePipelineRuns) {
  FirstLine("file:///no/such.ts");
  downloader_.BeginDownload("file:///no/such.m3u8");
  EXPECT_TRUE(downloader_.EndDownload());
  downloader_.BeginDownload("file:///no/such.ts");
  EXPECT_TRUE(downloader_.EndDownload());
}

TEST_F(StreamDownloaderTest, DestructorStopsTheHlsPipeline) {
  {
    CStreamDownloader inner(&player_);
    inner.BeginDownload("file:///no/such.m3u8");
    EXPECT_TRUE(g_hlsStream->ActiveRuns());
  }
  EXPECT_FALSE(g_hlsStream->ActiveRuns());
  EXPECT_EQ(player_.Snapshot().messages.back(), "PLAY STOP OK");
}

TEST_F(StreamDownloaderTest, FacadeWithoutAPlayerIsSilent) {
  CStreamDownloader silent(nullptr);
  EXPECT_FALSE(silent.BeginDownload("rtmp://host/a"));
  EXPECT_TRUE(silent.BeginDownload("file:///no/such.m3u8"));
  EXPECT_TRUE(silent.EndDownload());
  EXPECT_TRUE(silent.BeginDownload("file:///no/such.ts"));
  EXPECT_TRUE(silent.EndDownload());
  EXPECT_TRUE(silent.BeginDownload("file:///no/such.mp4"));
  EXPECT_TRUE(silent.EndDownload());
}

TEST_F(StreamDownloaderTest, PlayerThatThrowsDisturbsNoCallOfTheFacade) {
  ThrowingPlayer player;
  CStreamDownloader downloader(&player);
  EXPECT_FALSE(downloader.BeginDownload("rtmp://host/a"));
  for (const char* url : {"http://127.0.0.1:1/a.m3u8", "http://127.0.0.1:1/a.ts"}) {
    EXPECT_TRUE(downloader.BeginDownload(url));
    EXPECT_TRUE(downloader.SetStartPostion(1));
    EXPECT_TRUE(downloader.EndDownload());
    EXPECT_FALSE(downloader.EndDownload()) << "the stop was incomplete";
  }
  EXPECT_GE(player.calls, 7);
}

TEST_F(StreamDownloaderTest, AssignmentSharesPlayerAndPipelines) {
  FirstLine("file:///no/such.ts");
  CStreamDownloader other(nullptr);
  EXPECT_EQ(&(other = downloader_), &other);
  EXPECT_EQ(FieldsOf(other), FieldsOf(downloader_));
  EXPECT_TRUE(other.SetStartPostion(1));
}

TEST(StreamDownloaderLayoutTest, PlayerIsTheFirstOfSixPointers) {
  RecordingPlayer player;
  const CStreamDownloader downloader(&player);
  const Fields fields = FieldsOf(downloader);
  EXPECT_EQ(fields[0], static_cast<CStreamPlayerImp*>(&player));
  for (std::size_t i = 1; i < fields.size(); ++i) EXPECT_EQ(fields[i], nullptr);
}

TEST(StreamDownloaderLayoutTest, AutoClassInitZeroesTheGivenBytes) {
  RecordingPlayer player;
  CStreamDownloader downloader(&player);
  downloader.__autoclassinit2(sizeof(void*));
  EXPECT_EQ(FieldsOf(downloader)[0], nullptr);
}

}  // namespace
}  // namespace stream
