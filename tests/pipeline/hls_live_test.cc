#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "hls/segment_download.h"
#include "hls/segment_parse.h"
#include "tests/support/hls_play.h"
#include "tests/support/hls_tasks.h"
#include "tests/support/known_segments.h"

namespace stream {
namespace {

using hls_test::LivePlaylist;
using hls_test::SegmentUris;
using hls_test::Uris;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using ts_test::MakeStream;

class HlsLiveTest : public HlsLivePlay {
 protected:
  void PutWindow(int first, int count) {
    server_.Put(kList, LivePlaylist(first, SegmentUris(first, count)));
  }

  // Plays many windows of three segments and answers each segment request with `segment`. Returns
  // the largest number of segments known during a pause.
  std::size_t MostKnownOverManyWindows(const Reply& segment) {
    for (const std::string& name : SegmentUris(0, kWindows + 2)) server_.Put("/" + name, segment);
    PutWindow(0, 3);
    downloader_.BeginDownload(ListUrl());
    EXPECT_TRUE(WaitForPause());
    downloader_.SetStartPostion(start_position_);
    std::size_t most = 0;
    for (int first = 1; first < kWindows; ++first) {
      PutWindow(first, 3);
      EXPECT_TRUE(NextRefreshes(2));
      most = std::max(most, KnownSegments());
    }
    EXPECT_EQ(player_.Snapshot().durations.back(), 10.0F * (kWindows + 2));
    Stop();
    return most;
  }

  static constexpr int kWindows = 30;
  static constexpr std::size_t kTwoWindows = 6;

  float start_position_ = 0;
};

TEST_F(HlsLiveTest, SegmentsListedAgainAreDownloadedOnce) {
  PutSegments(MakeStream(30), SegmentUris(0, 3));
  PutWindow(0, 3);
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(29));
  EXPECT_TRUE(NextRefreshes(3));
  Stop();
  EXPECT_EQ(server_.CountRequests(kList), 5U);
  EXPECT_THAT(CountRequests(SegmentUris(0, 3)), Each(1U));
  EXPECT_THAT(player_.Snapshot().buffered_times, ElementsAre(10.0F, 20.0F, 30.0F));
  EXPECT_EQ(player_.Snapshot().video.size(), 29U);
}

TEST_F(HlsLiveTest, NewSegmentsAreDownloadedOnceAsTheWindowMovesOn) {
  const ts_test::Bytes stream = MakeStream(60);
  PutSegments(stream, SegmentUris(0, 6));
  PutWindow(0, 3);
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForPause());
  PutWindow(1, 4);
  EXPECT_TRUE(NextRefreshes(2));
  PutWindow(2, 4);
  EXPECT_TRUE(NextRefreshes(2));
  EXPECT_TRUE(WaitForVideo(59) && WaitForAudio(59));
  Stop();
  EXPECT_THAT(CountRequests(SegmentUris(0, 6)), Each(1U));
  EXPECT_EQ(Dump(player_.Snapshot()), Dump(FramesOf(stream)));
  const auto durations = player_.Snapshot().durations;
  EXPECT_EQ(durations.back(), 60.0F);
  EXPECT_TRUE(std::is_sorted(durations.begin(), durations.end()));
}

TEST_F(HlsLiveTest, DurationIsReportedAgainWhenNoQueuedSegmentIsNew) {
  const auto segments = hls_test::CutIntoSegments(MakeStream(40), 4);
  const hls_test::Uris names = SegmentUris(0, 4);
  for (std::size_t i = 0; i < names.size(); ++i) {
    server_.Put("/" + names[i], BlockedUntilRelease(Whole(segments[i])));
  }
  PutWindow(0, 3);
  downloader_.BeginDownload(ListUrl());
  // The first playlist has been queued before the second one is requested. It forgets segments that
  // were downloaded by then, which would be queued again too soon.
  EXPECT_TRUE(server_.WaitForRequests(kList, 2));
  for (const std::string& name : names) server_.Release("/" + name);
  EXPECT_TRUE(WaitForPause());
  PutWindow(1, 3);
  EXPECT_TRUE(NextRefresh());
  const std::size_t before = player_.Snapshot().durations.size();
  EXPECT_TRUE(NextRefresh());  // queues again the downloaded segments that are still listed
  const auto durations = player_.Snapshot().durations;
  ASSERT_EQ(durations.size(), before + 1);
  EXPECT_EQ(durations[before - 1], 40.0F);
  EXPECT_EQ(durations[before], 40.0F);
  Stop();
  EXPECT_THAT(CountRequests(SegmentUris(0, 4)), Each(1U));
}

TEST_F(HlsLiveTest, DownloadedSegmentsAreForgottenOnceTheyAreNoLongerListed) {
  EXPECT_LE(MostKnownOverManyWindows(Whole(MakeStream(1))), kTwoWindows);
  EXPECT_THAT(CountRequests(SegmentUris(0, kWindows + 2)), Each(1U));
}

TEST_F(HlsLiveTest, FailedSegmentsAreForgottenOnceTheyAreNoLongerListed) {
  EXPECT_LE(MostKnownOverManyWindows(CutAfter(1, Whole(MakeStream(1)))), kTwoWindows);
  EXPECT_THAT(CountRequests(SegmentUris(0, kWindows + 2)), Each(1U));
}

TEST_F(HlsLiveTest, SegmentsBeforeTheStartPositionAreForgottenOnceTheyAreNoLongerListed) {
  start_position_ = 10.0F * (kWindows + 3);
  EXPECT_LE(MostKnownOverManyWindows(Whole(MakeStream(1))), kTwoWindows);
  EXPECT_THAT(CountRequests(SegmentUris(3, kWindows - 1)), Each(0U));
}

TEST_F(HlsLiveTest, PlaylistThatFailsForAWhileContinuesWhereItWas) {
  const ts_test::Bytes stream = MakeStream(40);
  PutSegments(stream, SegmentUris(0, 4));
  PutWindow(0, 3);
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForPause());
  server_.Put(kList, std::string("<html>try again later</html>"));
  EXPECT_TRUE(NextRefreshes(2));
  server_.Put(kList, WithStatus(503, Whole(std::string("busy"))));
  EXPECT_TRUE(NextRefresh());
  PutWindow(1, 3);
  EXPECT_TRUE(NextRefresh());
  EXPECT_TRUE(WaitForVideo(39) && WaitForAudio(39));
  Stop();
  EXPECT_THAT(CountRequests(SegmentUris(0, 4)), Each(1U));
  EXPECT_EQ(Dump(player_.Snapshot()), Dump(FramesOf(stream)));
}

TEST_F(HlsLiveTest, PlaylistAfterAnInvalidBodyPlays) {
  PutSegments(MakeStream(20), SegmentUris(0, 2));
  server_.Put(kList, std::string("not yet"));
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForMessage("PLAY M3U8 NO:" + ListUrl()) && WaitForPause());
  PutWindow(0, 2);
  EXPECT_TRUE(NextRefresh());
  EXPECT_TRUE(WaitForVideo(19));
  Stop();
  EXPECT_TRUE(player_.Snapshot().MessagesWith("PLAY M3U8 OK:").empty());
}

TEST_F(HlsLiveTest, RestartedEncoderKeepsPlayingUnderTheSameNames) {
  PutSegments(MakeStream(20), SegmentUris(0, 2));
  server_.Put(kList, LivePlaylist(100, SegmentUris(0, 2)));
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(19) && WaitForPause());
  PutSegments(MakeStream(30, 9'000'000), SegmentUris(0, 3));
  PutWindow(0, 2);
  EXPECT_TRUE(NextRefreshes(2));
  PutWindow(0, 3);
  EXPECT_TRUE(NextRefresh());
  EXPECT_TRUE(WaitForVideo(49));  // includes the last frame of the first run
  Stop();
  EXPECT_THAT(CountRequests(SegmentUris(0, 3)), ElementsAre(2U, 2U, 1U));
}

TEST_F(HlsLiveTest, LateCopyPlaysNothingTwice) {
  const ts_test::Bytes stream = MakeStream(60);
  PutSegments(stream, SegmentUris(0, 6));
  PutWindow(0, 3);
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForPause());
  for (const int first : {2, 0, 1, 3}) {
    PutWindow(first, 3);
    EXPECT_TRUE(NextRefreshes(2));
  }
  EXPECT_TRUE(WaitForVideo(59) && WaitForAudio(59));
  Stop();
  EXPECT_THAT(CountRequests(SegmentUris(0, 6)), Each(1U));
  EXPECT_EQ(Dump(player_.Snapshot()), Dump(FramesOf(stream)));
}

TEST_F(HlsLiveTest, NamesReusedInARingKeepPlaying) {
  constexpr int kSegments = 7;
  constexpr int kNames = 3;
  const ts_test::Bytes stream = MakeStream(70);
  const auto parts = hls_test::CutIntoSegments(stream, kSegments);
  const auto put = [&](int first) {  // two segments; the second may reuse an old name
    Uris names;
    for (int i = first; i < first + 2; ++i) {
      names.push_back("r" + std::to_string(i % kNames) + ".ts");
      server_.Put("/" + names.back(), parts[static_cast<std::size_t>(i)]);
    }
    server_.Put(kList, LivePlaylist(first, names));
  };
  put(0);
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForPause());
  for (int first = 1; first + 2 <= kSegments; ++first) {
    put(first);
    EXPECT_TRUE(NextRefresh());
    EXPECT_EQ(player_.Snapshot().buffered_times.size(), static_cast<std::size_t>(first) + 2);
  }
  EXPECT_TRUE(WaitForVideo(69) && WaitForAudio(69));
  Stop();
  EXPECT_EQ(Dump(player_.Snapshot()), Dump(FramesOf(stream)));
}

// A reply to a playlist request that lists no new segment.
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

// Refreshes one by one, without the pauses between them.
class HlsRefreshTest : public HlsTasks {
 protected:
  std::string ListUrl() const { return server_.Url("/list.m3u8"); }
  std::vector<std::string> RefreshWindow(int first, int count) {
    server_.Put("/list.m3u8", LivePlaylist(first, SegmentUris(first, count)));
    EXPECT_TRUE(Refresh(ListUrl()));
    return PopAndDownload();
  }

  HlsServer server_;
};

class HlsTroubleTest : public HlsRefreshTest, public testing::WithParamInterface<Trouble> {};

INSTANTIATE_TEST_SUITE_P(, HlsTroubleTest, testing::ValuesIn(Troubles()),
                         [](const auto& trouble) { return trouble.param.name; });

TEST_P(HlsTroubleTest, PlaylistThatRecoversContinuesWhereItWas) {
  RefreshWindow(8, 3);
  server_.Put("/list.m3u8", GetParam().reply(server_, LivePlaylist(8, SegmentUris(8, 3))));
  for (int i = 0; i < 4; ++i) {
    Refresh(ListUrl());
    EXPECT_THAT(PopAndDownload(), IsEmpty());
  }
  EXPECT_THAT(RefreshWindow(9, 3), ElementsAre("seg11.ts"));
  EXPECT_THAT(RefreshWindow(10, 3), ElementsAre("seg12.ts"));
}

TEST_F(HlsRefreshTest, PlaylistTruncatedAnywhereLosesAndRepeatsNothing) {
  int first = 8;
  RefreshWindow(first, 3);
  const std::size_t length = LivePlaylist(first, SegmentUris(first, 3)).size();
  for (std::size_t cut = 0; cut < length; ++cut) {
    ++first;  // the truncated playlist lists a new segment
    server_.Put("/list.m3u8", CutAfter(cut, Whole(LivePlaylist(first, SegmentUris(first, 3)))));
    EXPECT_FALSE(Refresh(ListUrl()));
    EXPECT_THAT(PopAndDownload(), IsEmpty());
    EXPECT_THAT(RefreshWindow(first, 3), ElementsAre("seg" + std::to_string(first + 2) + ".ts"))
        << "cut off after " << cut << " bytes";
  }
}

TEST_F(HlsRefreshTest, SegmentWhoseNameIsReusedWhileQueuedIsNotFetchedTwice) {
  for (const char* path : {"/r0.ts", "/r1.ts", "/r2.ts"}) server_.Put(path, std::string("x"));
  QueueOrPutBack(ListUrl(), LivePlaylist(0, {"r0.ts", "r1.ts", "r2.ts"}));
  QueueOrPutBack(ListUrl(), LivePlaylist(1, {"r1.ts", "r2.ts", "r0.ts"}));
  std::thread parse([this] { ParseSegmentsThread(hls_, ListUrl()); });
  std::thread download([this] { DownloadPartsThread(hls_); });
  EXPECT_TRUE(
      player_.WaitFor([](const auto& record) { return record.buffered_times.size() == 4; }));
  hls_.running = false;
  stream_.WakeTasks();
  download.join();
  parse.join();
  std::vector<std::string> paths;
  for (const auto& request : server_.Requests()) paths.push_back(request.path);
  EXPECT_THAT(paths, ElementsAre("/r1.ts", "/r2.ts", "/r0.ts"));
  EXPECT_THAT(player_.Snapshot().buffered_times, ElementsAre(10.0F, 20.0F, 30.0F, 40.0F));
}

// `count` names from a ring of `ring` names.
Uris RingUris(int first, int count, int ring) {
  Uris uris;
  for (int i = first; i < first + count; ++i)
    uris.push_back("r" + std::to_string(i % ring) + ".ts");
  return uris;
}

// A live playlist, by itself or as the variant of a master playlist.
class HlsSequenceTest : public HlsRefreshTest, public testing::WithParamInterface<bool> {
 protected:
  HlsSequenceTest() {
    if (GetParam()) {
      server_.Put("/list.m3u8", hls_test::MasterPlaylist({{500'000, "low.m3u8"}}));
    }
  }

  // Refreshes once with this window and returns the segments requested afterwards.
  Uris See(std::int64_t first, const Uris& uris) {
    server_.Put(GetParam() ? "/low.m3u8" : "/list.m3u8", LivePlaylist(first, uris));
    EXPECT_TRUE(Refresh(ListUrl()));
    Uris asked_for = PopAndDownload();
    played_.insert(played_.end(), asked_for.begin(), asked_for.end());
    return asked_for;
  }
  Uris See(int first, int count) { return See(first, SegmentUris(first, count)); }

  Uris played_;
};

INSTANTIATE_TEST_SUITE_P(, HlsSequenceTest, testing::Bool(), [](const auto& source) {
  return source.param ? "OfAVariant" : "OfTheTopLevel";
});

TEST_P(HlsSequenceTest, CacheNodeThatAdvancesSixSegmentsLatePlaysNothingTwice) {
  for (int first = 0; first < 40; ++first) {
    See(first, 6);
    if (first < 6) continue;
    EXPECT_THAT(See(first - 6, 6), IsEmpty());
    EXPECT_THAT(See(first - first % 6, 6), IsEmpty()) << "the same window or an older one";
  }
  EXPECT_EQ(played_, SegmentUris(0, 45));
}

TEST_P(HlsSequenceTest, LaggingCacheNodeThatAnswersAloneForAWhilePlaysNothingTwice) {
  for (int first = 0; first <= 20; ++first) See(first, 6);
  for (int first = 15; first <= 40; ++first) See(first, 6);
  EXPECT_EQ(played_, SegmentUris(0, 46));
}

TEST_P(HlsSequenceTest, OldCopyServedForFourRefreshesPlaysNothingTwice) {
  for (int first = 0; first <= 10; ++first) See(first, 4);
  for (const int old : {9, 3, 0}) {
    for (int i = 0; i < 4; ++i) EXPECT_THAT(See(old, 4), IsEmpty());
  }
  See(11, 4);
  EXPECT_EQ(played_, SegmentUris(0, 15));
}

TEST_P(HlsSequenceTest, RestartWithNewNamesAndSmallerNumbersIsRequestedAtOnce) {
  for (int first = 100; first <= 110; ++first) See(first, 3);
  for (int count = 1; count <= 3; ++count) {
    const Uris names = SegmentUris(0, count, "new");
    EXPECT_THAT(See(0, names), ElementsAre(names.back()));
  }
  EXPECT_THAT(See(1, SegmentUris(1, 3, "new")), ElementsAre("new3.ts"));
}

TEST_P(HlsSequenceTest, RestartWithTheSameNamesPlaysEachOnceAmongLateCopiesOfThePreviousRun) {
  for (int first = 100; first <= 110; ++first) See(first, SegmentUris(first - 100, 3));
  played_.clear();
  for (int first = 0; first < 10; ++first) {
    See(first, 3);
    EXPECT_THAT(See(110, SegmentUris(10, 3)), IsEmpty());
  }
  EXPECT_EQ(played_, SegmentUris(0, 12));
}

TEST_P(HlsSequenceTest, RestartWithTheSameNamesAndNumbersEventuallyPlays) {
  for (int first = 0; first <= 60; ++first) See(first, 3);
  played_.clear();
  for (int first = 0; first < 40; ++first) See(first, 3);
  EXPECT_EQ(played_, SegmentUris(13, 29));
}

TEST_P(HlsSequenceTest, RingOfEightNamesKeepsPlayingOverFortyWindows) {
  for (const int length : {3, 5, 8}) {
    SCOPED_TRACE(length);
    history_ = {};
    stream_.Clear();
    played_.clear();
    for (int first = 0; first < 40; ++first) {
      See(first, RingUris(first, length, 8));
      EXPECT_THAT(See(first, RingUris(first, length, 8)), IsEmpty()) << "the window has not moved";
    }
    EXPECT_EQ(played_, RingUris(0, 39 + length, 8));
  }
}

TEST_P(HlsSequenceTest, ZeroDurationSegmentsThatLeaveTheWindowShiftNoNumber) {
  for (int first = 0; first < 30; ++first) {
    std::string text = "#EXTM3U\n#EXT-X-MEDIA-SEQUENCE:" + std::to_string(first) + "\n";
    for (int i = first; i < first + 5; ++i) {  // every third has a duration of 0
      text += (i % 3 == 0 ? "#EXTINF:0,\nr" : "#EXTINF:2,\nr") + std::to_string(i % 6) + ".ts\n";
    }
    server_.Put(GetParam() ? "/low.m3u8" : "/list.m3u8", text);
    EXPECT_TRUE(Refresh(ListUrl()));
    for (const std::string& name : PopAndDownload()) played_.push_back(name);
  }
  Uris expected;
  for (int i = 0; i < 34; ++i) {
    if (i % 3 != 0) expected.push_back("r" + std::to_string(i % 6) + ".ts");
  }
  EXPECT_EQ(played_, expected);
}

TEST_P(HlsSequenceTest, SequenceNumbersThatDoNotCountSegmentsPlayEachSegmentOnce) {
  const std::vector<std::function<std::int64_t(int refresh, int first)>> numberings = {
      [](int, int) { return 0; },
      [](int, int) { return 1; },
      [](int refresh, int) { return refresh; },
      [](int refresh, int) { return 1'700'000'000 + refresh; },
      [](int, int first) { return 1'700'000'000 + first * 10; },
  };
  for (const auto& number : numberings) {
    history_ = {};
    stream_.Clear();
    played_.clear();
    for (int refresh = 0; refresh < 60; ++refresh) {
      const int first = refresh / 3;
      See(number(refresh, first), SegmentUris(first, 3));
    }
    EXPECT_EQ(played_, SegmentUris(0, 22));
  }
}

}  // namespace
}  // namespace stream
