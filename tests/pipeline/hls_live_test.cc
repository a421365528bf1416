#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/hls_play.h"
#include "tests/support/hls_tasks.h"

namespace {

using hls_test::LivePlaylist;
using hls_test::SegmentUris;
using hls_test::Uris;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using ts_test::MakeStream;

class HlsLiveTest : public HlsPlay {
 protected:
  void PutWindow(int first, int count) {
    server_.Put(kList, LivePlaylist(first, SegmentUris(first, count)));
  }
  // Waits until `count` more requests for the playlist have come.
  bool WaitForRefreshes(std::size_t count) {
    return server_.WaitForRequests(kList, server_.CountRequests(kList) + count);
  }
};

TEST_F(HlsLiveTest, SameSegmentsRefreshedAreDownloadedOnce) {
  PutSegments(MakeStream(30), SegmentUris(0, 3));
  PutWindow(0, 3);
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(29));
  EXPECT_TRUE(WaitForRefreshes(3));
  Stop();
  EXPECT_THAT(CountRequests(SegmentUris(0, 3)), Each(1U));
  EXPECT_THAT(player_.Snapshot().buffered_times, ElementsAre(10.0F, 20.0F, 30.0F));
  EXPECT_EQ(player_.Snapshot().video.size(), 29U);
}

TEST_F(HlsLiveTest, NewSegmentsAreDownloadedOnceAsTheWindowMovesOn) {
  const ts_test::Bytes stream = MakeStream(60);
  PutSegments(stream, SegmentUris(0, 6));
  PutWindow(0, 3);
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForRefreshes(2));
  PutWindow(1, 4);
  EXPECT_TRUE(WaitForRefreshes(2));
  PutWindow(2, 4);
  EXPECT_TRUE(WaitForVideo(59) && WaitForAudio(59));
  EXPECT_TRUE(WaitForRefreshes(1));
  Stop();
  EXPECT_THAT(CountRequests(SegmentUris(0, 6)), Each(1U));
  EXPECT_EQ(Dump(player_.Snapshot()), Dump(FramesOf(stream)));
  const auto durations = player_.Snapshot().durations;
  EXPECT_EQ(durations.back(), 60.0F);
  EXPECT_TRUE(std::is_sorted(durations.begin(), durations.end()));
}

TEST_F(HlsLiveTest, PlaylistThatBreaksForAWhileGoesOnWhereItWas) {
  const ts_test::Bytes stream = MakeStream(40);
  PutSegments(stream, SegmentUris(0, 4));
  PutWindow(0, 3);
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(20));
  server_.Put(kList, std::string("<html>try again later</html>"));
  EXPECT_TRUE(WaitForRefreshes(2));
  server_.Put(kList, WithStatus(503, Whole(std::string("busy"))));
  EXPECT_TRUE(WaitForRefreshes(1));
  PutWindow(1, 3);
  EXPECT_TRUE(WaitForVideo(39) && WaitForAudio(39));
  Stop();
  EXPECT_THAT(CountRequests(SegmentUris(0, 4)), Each(1U));
  EXPECT_EQ(Dump(player_.Snapshot()), Dump(FramesOf(stream)));
}

TEST_F(HlsLiveTest, BodyThatIsNoPlaylistAtFirstIsFollowedByOne) {
  PutSegments(MakeStream(20), SegmentUris(0, 2));
  server_.Put(kList, std::string("not yet"));
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForMessage("PLAY M3U8 NO:" + ListUrl()));
  PutWindow(0, 2);
  EXPECT_TRUE(WaitForVideo(19));
  Stop();
  EXPECT_TRUE(player_.Snapshot().MessagesWith("PLAY M3U8 OK:").empty());
}

TEST_F(HlsLiveTest, EncoderThatWasRestartedPlaysOnUnderTheSameNames) {
  PutSegments(MakeStream(20), SegmentUris(0, 2));
  server_.Put(kList, LivePlaylist(100, SegmentUris(0, 2)));
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(19));
  PutSegments(MakeStream(30, 9'000'000), SegmentUris(0, 3));
  PutWindow(0, 2);
  EXPECT_TRUE(WaitForRefreshes(2));
  PutWindow(0, 3);
  EXPECT_TRUE(WaitForVideo(49));  // one that the first run left behind
  Stop();
  EXPECT_THAT(CountRequests(SegmentUris(0, 3)), ElementsAre(2U, 2U, 1U));
}

// How a playlist can be had in a way that brings nothing new.
struct Trouble {
  std::string name;
  std::function<Reply(const HlsServer&, const std::string& playlist)> reply;
};
void PrintTo(const Trouble& trouble, std::ostream* out) { *out << trouble.name; }

std::vector<Trouble> Troubles() {
  const auto page = [](const std::string& body) {
    return [body](const HlsServer&, const std::string&) { return Whole(body); };
  };
  return {
      {"Unchanged", [](const HlsServer&, const std::string& playlist) { return Whole(playlist); }},
      {"Empty", page("")},
      {"HtmlPage", page("<html>try again later</html>\n")},
      {"HtmlPageWithoutALineEnd", page("<html>try again later</html>")},
      {"HtmlPageThatNamesSegments", page("<html>\n#EXTINF:10,\nseg8.ts\n</html>")},
      {"PlaylistWithoutSegments", page("#EXTM3U\n#EXT-X-TARGETDURATION:10\n")},
      {"NotFound",
       [](const HlsServer&, const std::string&) {
         return WithStatus(404, Whole(std::string("404 page not found")));
       }},
      {"CutOffBeforeTheBody",
       [](const HlsServer&, const std::string& playlist) { return CutAfter(0, Whole(playlist)); }},
      {"CutOffInTheHeader",
       [](const HlsServer&, const std::string& playlist) { return CutAfter(5, Whole(playlist)); }},
      {"CutOffInASegment",
       [](const HlsServer&, const std::string& playlist) {
         return CutAfter(playlist.size() - 4, Whole(playlist));
       }},
      {"Refused",
       [](const HlsServer&, const std::string&) {
         const HlsServer gone;
         return RedirectTo(gone.Url("/list.m3u8"));
       }},
  };
}

// Refreshes one by one, without the pauses.
class HlsRefreshTest : public HlsTasks {
 protected:
  std::string ListUrl() const { return server_.Url("/list.m3u8"); }
  std::vector<std::string> RefreshWindow(int first, int count) {
    server_.Put("/list.m3u8", LivePlaylist(first, SegmentUris(first, count)));
    EXPECT_TRUE(Refresh(ListUrl()));
    return TakeAndDownload();
  }

  HlsServer server_;
};

class HlsTroubleTest : public HlsRefreshTest, public testing::WithParamInterface<Trouble> {};

INSTANTIATE_TEST_SUITE_P(, HlsTroubleTest, testing::ValuesIn(Troubles()),
                         [](const auto& trouble) { return trouble.param.name; });

TEST_P(HlsTroubleTest, PlaylistThatComesBackGoesOnWhereItWas) {
  RefreshWindow(8, 3);
  server_.Put("/list.m3u8", GetParam().reply(server_, LivePlaylist(8, SegmentUris(8, 3))));
  for (int i = 0; i < 4; ++i) {
    Refresh(ListUrl());
    EXPECT_THAT(TakeAndDownload(), IsEmpty());
  }
  EXPECT_THAT(RefreshWindow(9, 3), ElementsAre("seg11.ts"));
  EXPECT_THAT(RefreshWindow(10, 3), ElementsAre("seg12.ts"));
}

TEST_F(HlsRefreshTest, PlaylistCutOffAnywhereLosesAndDoublesNothing) {
  int first = 8;
  RefreshWindow(first, 3);
  const std::size_t length = LivePlaylist(first, SegmentUris(first, 3)).size();
  for (std::size_t cut = 0; cut < length; ++cut) {
    ++first;  // the one that is cut off lists a new segment
    server_.Put("/list.m3u8", CutAfter(cut, Whole(LivePlaylist(first, SegmentUris(first, 3)))));
    EXPECT_FALSE(Refresh(ListUrl()));
    EXPECT_THAT(TakeAndDownload(), IsEmpty());
    EXPECT_THAT(RefreshWindow(first, 3), ElementsAre("seg" + std::to_string(first + 2) + ".ts"))
        << "cut off after " << cut << " bytes";
  }
}

}  // namespace
