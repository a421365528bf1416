#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "common/user_agent.h"
#include "hls/segment_parse.h"
#include "tests/support/blocked_temp_folder.h"
#include "tests/support/claimed_backlog.h"
#include "tests/support/hls_play.h"
#include "tests/support/hls_tasks.h"
#include "tests/support/simulated_clock.h"
#include "tests/support/wait_until.h"
#include "ts/ts_demux.h"

namespace stream {
namespace {

using hls_test::CutIntoSegments;
using hls_test::OnDemandPlaylist;
using hls_test::PaddedTo;
using hls_test::SegmentUris;
using hls_test::Uris;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using ts_test::Bytes;
using ts_test::MakeStream;

constexpr std::size_t kLargest = 15'728'640;

Bytes operator+(Bytes first, const Bytes& second) {
  ts_test::Append(first, second);
  return first;
}

Bytes FirstBytes(const Bytes& bytes, std::size_t count) {
  return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)};
}

std::string Text(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

// An on-demand stream of four segments, which the tests damage.
class HlsSegmentTest : public HlsPlay {
 protected:
  HlsSegmentTest() { PutOnDemand(stream_, 4); }

  // Plays the stream until the frames of `played` have been delivered, then stops. Returns the
  // console output.
  std::string PlayAndExpect(const Bytes& played) {
    const Record expected = FramesOf(played);
    testing::internal::CaptureStdout();
    downloader_.BeginDownload(ListUrl());
    EXPECT_TRUE(WaitForVideo(expected.video.size()) && WaitForAudio(expected.audio.size()) &&
                WaitForBufferedTimes(4));
    Stop();
    EXPECT_EQ(Dump(player_.Snapshot()), Dump(expected));
    EXPECT_THAT(player_.Snapshot().buffered_times, ElementsAre(10, 20, 30, 40));
    EXPECT_THAT(CountRequests(SegmentUris(0, 4)), Each(1U));
    return testing::internal::GetCapturedStdout();
  }

  const Bytes stream_ = MakeStream(80);
  const std::vector<Bytes> parts_ = CutIntoSegments(stream_, 4);
};

TEST_F(HlsSegmentTest, EveryByteOfEverySegmentIsPlayedOnceInOrder) { PlayAndExpect(stream_); }

TEST_F(HlsSegmentTest, MissingSegmentLosesOnlyItself) {
  server_.Put("/seg1.ts", WithStatus(404, Whole(std::string("404 page not found"))));
  PlayAndExpect(parts_[0] + parts_[2] + parts_[3]);
  EXPECT_EQ(bad_.Contents(), "404 page not found");
  EXPECT_TRUE(player_.Snapshot().HasMessage("PLAY M3U8 H264:" + ListUrl()));
}

TEST_F(HlsSegmentTest, HtmlPageInsteadOfASegmentLosesOnlyThatSegment) {
  const std::string page = "<html>" + std::string(1'000, '.') + "</html>";
  server_.Put("/seg1.ts", page);
  const std::string console = PlayAndExpect(parts_[0] + parts_[2] + parts_[3]);
  EXPECT_EQ(bad_.Contents(), page);
  EXPECT_THAT(console, HasSubstr("The ts packet has not sync byte\n"));
}

TEST_F(HlsSegmentTest, EmptySegmentIsSkipped) {
  server_.Put("/seg1.ts", std::string());
  PlayAndExpect(parts_[0] + parts_[2] + parts_[3]);
  EXPECT_FALSE(bad_.Exists());
}

TEST_F(HlsSegmentTest, UnreachableSegmentLosesOnlyItself) {
  {
    const HlsServer gone;
    server_.Put("/seg1.ts", RedirectTo(gone.Url("/seg1.ts")));
  }
  PlayAndExpect(parts_[0] + parts_[2] + parts_[3]);
  EXPECT_FALSE(bad_.Exists());
}

TEST_F(HlsSegmentTest, RedirectedSegmentPlays) {
  server_.Put("/moved.ts", parts_[1]);
  server_.Put("/seg1.ts", RedirectTo(server_.Url("/moved.ts")));
  PlayAndExpect(stream_);
}

TEST_F(HlsSegmentTest, ReceivedBytesOfATruncatedSegmentPlayBeforeTheNext) {
  const std::size_t received = 30 * kTsPacketSize;
  server_.Put("/seg1.ts", CutAfter(received, Whole(parts_[1])));
  PlayAndExpect(parts_[0] + FirstBytes(parts_[1], received) + parts_[2] + parts_[3]);
}

TEST_F(HlsSegmentTest, SegmentTruncatedInsideAPacketKeepsItsWholePacketsAndTheNextPlaysWhole) {
  const std::size_t whole = 30 * kTsPacketSize;
  server_.Put("/seg1.ts", CutAfter(whole + 100, Whole(parts_[1])));
  const std::string console =
      PlayAndExpect(parts_[0] + FirstBytes(parts_[1], whole) + parts_[2] + parts_[3]);
  EXPECT_THAT(console, Not(HasSubstr("sync byte")));
}

TEST_F(HlsSegmentTest, SegmentTruncatedInsideItsFirstPacketLeavesNothing) {
  server_.Put("/seg1.ts", CutAfter(kTsPacketSize - 1, Whole(parts_[1])));
  PlayAndExpect(parts_[0] + parts_[2] + parts_[3]);
}

TEST_F(HlsSegmentTest, TwoSegmentsInARowTruncatedInsideAPacketBothKeepTheirWholePackets) {
  const std::size_t whole = 10 * kTsPacketSize;
  server_.Put("/seg1.ts", CutAfter(whole + 1, Whole(parts_[1])));
  server_.Put("/seg2.ts", CutAfter(whole + 187, Whole(parts_[2])));
  PlayAndExpect(parts_[0] + FirstBytes(parts_[1], whole) + FirstBytes(parts_[2], whole) +
                parts_[3]);
}

TEST_F(HlsSegmentTest, TwoTruncatedSegmentsInARowAreBothKept) {
  const std::size_t received = 10 * kTsPacketSize;
  server_.Put("/seg1.ts", CutAfter(received, Whole(parts_[1])));
  server_.Put("/seg2.ts", CutAfter(received, Whole(parts_[2])));
  PlayAndExpect(parts_[0] + FirstBytes(parts_[1], received) + FirstBytes(parts_[2], received) +
                parts_[3]);
}

TEST_F(HlsSegmentTest, TailShorterThanAPacketIsDropped) {
  server_.Put("/seg1.ts", parts_[1] + Bytes(100, 0x47));
  PlayAndExpect(stream_);
}

TEST_F(HlsSegmentTest, LargestSegmentThatFitsIsPlayed) {
  server_.Put("/seg1.ts", PaddedTo(kLargest, parts_[1]));
  const std::string console = PlayAndExpect(stream_);
  EXPECT_THAT(console, Not(HasSubstr("given up")));
}

TEST_F(HlsSegmentTest, SegmentThatIsTooLargeIsDroppedAndTheNextPlays) {
  server_.Put("/seg1.ts", PaddedTo(kLargest + 1, parts_[1]));
  const std::string console = PlayAndExpect(parts_[0] + parts_[2] + parts_[3]);
  EXPECT_THAT(console, HasSubstr("A segment of more than 15728640 bytes is given up.\n"));
  EXPECT_FALSE(bad_.Exists());
}

TEST_F(HlsSegmentTest, TruncatedSegmentIsDroppedForALargeOneThatFitsAlone) {
  server_.Put("/seg1.ts", CutAfter(30 * kTsPacketSize, Whole(parts_[1])));
  server_.Put("/seg2.ts", PaddedTo(kLargest, parts_[2]));
  const std::string console = PlayAndExpect(parts_[0] + parts_[2] + parts_[3]);
  EXPECT_THAT(console, Not(HasSubstr("given up")));
}

TEST_F(HlsSegmentTest, SegmentThatIsTooLargeIsDroppedWithTheTruncatedOneBeforeIt) {
  server_.Put("/seg1.ts", CutAfter(30 * kTsPacketSize, Whole(parts_[1])));
  server_.Put("/seg2.ts", PaddedTo(kLargest + 1, parts_[2]));
  const std::string console = PlayAndExpect(parts_[0] + parts_[3]);
  EXPECT_THAT(console, HasSubstr("bytes is given up.\n"));
}

TEST_F(HlsSegmentTest, StalledSegmentDelaysTheNextAndThoseBeforeItPlay) {
  server_.Put("/seg2.ts", StalledAfter(kTsPacketSize, Whole(parts_[2])));
  const Record expected = FramesOf(parts_[0] + parts_[1]);
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(expected.video.size()) && WaitForAudio(expected.audio.size()));
  EXPECT_TRUE(server_.WaitForRequests("/seg2.ts", 1));
  Stop();
  EXPECT_EQ(Dump(player_.Snapshot()), Dump(expected));
  EXPECT_EQ(server_.CountRequests("/seg3.ts"), 0U);
}

TEST_F(HlsSegmentTest, SegmentThatResumesAfterAStallPlaysWhole) {
  server_.Put("/seg1.ts", GatedAfter(1'000, Whole(parts_[1])));
  testing::internal::CaptureStdout();
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(server_.WaitForRequests("/seg1.ts", 1));
  EXPECT_TRUE(WaitForVideo(1));
  server_.Release("/seg1.ts");
  EXPECT_TRUE(WaitForVideo(79) && WaitForAudio(79));
  Stop();
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(Dump(player_.Snapshot()), Dump(FramesOf(stream_)));
}

TEST_F(HlsSegmentTest, UserAgentFollowsTheMarkerInEachAddress) {
  server_.Put(kList, OnDemandPlaylist({"seg0.ts?x&pt=ios&", "seg1.ts?x&pt=android&", "seg2.ts"}));
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForBufferedTimes(3));
  Stop();
  const auto requests = server_.Requests();
  ASSERT_EQ(requests.size(), 4U);
  EXPECT_EQ(requests[1].user_agent, UserAgentFor("?x&pt=ios&"));
  EXPECT_EQ(requests[2].user_agent, UserAgentFor("?x&pt=android&"));
  EXPECT_FALSE(requests[3].has_user_agent);
}

// What is reported and kept of segments without video.
class HlsBadSegmentTest : public HlsSegmentTest {
 protected:
  // Plays `segments` until all of them have been parsed: the last segment must end with a video
  // frame of this time.
  void PlayUntilPts(const std::vector<Bytes>& segments, std::uint64_t pts) {
    const Uris names = SegmentUris(0, static_cast<int>(segments.size()), "bad");
    for (std::size_t i = 0; i < names.size(); ++i) server_.Put("/" + names[i], segments[i]);
    server_.Put(kList, OnDemandPlaylist(names));
    testing::internal::CaptureStdout();
    downloader_.BeginDownload(ListUrl());
    EXPECT_TRUE(player_.WaitFor([pts](const Record& record) {
      return !record.video.empty() && record.video.back().pts == pts;
    }));
    Stop();
    testing::internal::GetCapturedStdout();
  }

  std::vector<std::string> CodecLines() const {
    return player_.Snapshot().MessagesWith("PLAY M3U8 ");
  }

  static Bytes Join(const std::vector<ts_test::Packet>& packets) {
    Bytes bytes;
    for (const auto& packet : packets) bytes.insert(bytes.end(), packet.begin(), packet.end());
    return bytes;
  }

  const Bytes programs_ = Join({ts_test::MakePat(), ts_test::MakePmt()});
  const Bytes good_ = MakeStream(4);
  static constexpr std::uint64_t kLastPts = 90'000 + 2 * 3'600;
};

TEST_F(HlsBadSegmentTest, FirstBadSegmentStartsTheFileAndIsReportedWithItsCodec) {
  bad_.Write("of another stream");
  PlayUntilPts({programs_, good_}, kLastPts);
  EXPECT_EQ(bad_.Contents(), Text(programs_));
  EXPECT_THAT(CodecLines(),
              ElementsAre("PLAY M3U8 OK:" + ListUrl(), "PLAY M3U8 DATAERR H264:" + ListUrl()));
}

TEST_F(HlsBadSegmentTest, LaterBadSegmentsAreAppendedAndNotReported) {
  const Bytes first = Bytes(300, 'x');
  const Bytes second = Bytes(50, 'y');
  PlayUntilPts({programs_, first, second, good_}, kLastPts);
  EXPECT_EQ(bad_.Contents(), Text(programs_ + first + second));
  EXPECT_EQ(CodecLines().size(), 2U);
}

TEST_F(HlsBadSegmentTest, BadSegmentAfterAGoodOneIsAppendedToTheFileOfAnotherStream) {
  bad_.Write("of another stream");
  PlayUntilPts({good_, Bytes(50, 'y'), MakeStream(4, 900'000)}, 900'000 + 2 * 3'600);
  EXPECT_EQ(bad_.Contents(), "of another stream" + std::string(50, 'y'));
  EXPECT_THAT(CodecLines(),
              ElementsAre("PLAY M3U8 OK:" + ListUrl(), "PLAY M3U8 H264:" + ListUrl()));
}

TEST_F(HlsBadSegmentTest, UnknownCodecIsReportedAsTypeZero) {
  PlayUntilPts({Bytes(50, 'y'), good_}, kLastPts);
  EXPECT_THAT(CodecLines(),
              ElementsAre("PLAY M3U8 OK:" + ListUrl(), "PLAY M3U8 DATAERR 0:" + ListUrl()));
}

TEST_F(HlsBadSegmentTest, OtherCodecsAreReportedByNameOrNumber) {
  const std::vector<std::pair<std::uint8_t, std::string>> codecs = {{0x24, "H265"}, {0x02, "2"}};
  for (const auto& [type, name] : codecs) {
    player_.Reopen();
    player_.Forget();
    const Bytes first = Join({ts_test::MakePat(), ts_test::MakePmt({{type, ts_test::kVideoPid}})});
    PlayUntilPts({first, good_}, kLastPts);
    EXPECT_EQ(CodecLines().back(), "PLAY M3U8 DATAERR " + name + ":" + ListUrl());
    ProcessTsDemuxer().Reset();
  }
}

TEST_F(HlsBadSegmentTest, FirstBadSegmentOfASecondRunStartsTheFileAgain) {
  PlayUntilPts({programs_, Bytes(50, 'y'), good_}, kLastPts);
  player_.Reopen();
  player_.Forget();
  PlayUntilPts({programs_, good_}, kLastPts);
  EXPECT_EQ(bad_.Contents(), Text(programs_));
}

TEST_F(HlsBadSegmentTest, WithoutAPlayerTheFirstBadSegmentIsAppended) {
  bad_.Write("of another stream");
  server_.Put("/bad.ts", programs_);
  server_.Put(kList, OnDemandPlaylist({"bad.ts", "seg0.ts"}));
  CStreamDownloader silent(nullptr);
  silent.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitUntil([] {
    const std::lock_guard lock(g_frameQueueMutex);
    return g_videoQueue != nullptr && g_videoQueue->pushed > 10;
  }));
  silent.EndDownload();
  EXPECT_EQ(bad_.Contents(), "of another stream" + Text(programs_));
}

TEST_F(HlsBadSegmentTest, WithoutADirectoryNothingIsKeptAndPlaybackContinues) {
  std::filesystem::remove_all(GetTempDirA());
  PlayUntilPts({programs_, Bytes(50, 'y'), good_}, kLastPts);
  EXPECT_FALSE(bad_.Exists());
}

TEST_F(HlsBadSegmentTest, FileIsInTheUsersCacheIfTheDirectoryCannotBeCreated) {
  const BlockedTempFolder folder;
  PlayUntilPts({programs_, Bytes(50, 'y'), good_}, kLastPts);
  std::ostringstream kept;
  kept << std::ifstream(folder.InCache() + "tmpE.ts", std::ios::binary).rdbuf();
  EXPECT_EQ(kept.str(), Text(programs_ + Bytes(50, 'y')));
  EXPECT_TRUE(folder.IsBlocked());
}

TEST_F(HlsBadSegmentTest, SegmentWhoseFramesWereDeliveredMeanwhileIsGood) {
  // A few frames, then so much padding that the frames have been delivered before the end of the
  // segment is parsed.
  PlayUntilPts({PaddedTo(12'000'000, good_), PaddedTo(12'000'000, MakeStream(4, 900'000))},
               900'000 + 2 * 3'600);
  EXPECT_FALSE(bad_.Exists());
  EXPECT_THAT(CodecLines(),
              ElementsAre("PLAY M3U8 OK:" + ListUrl(), "PLAY M3U8 H264:" + ListUrl()));
}

TEST_F(HlsBadSegmentTest, SegmentWithoutVideoAfterQueuedFramesIsStillBad) {
  PlayUntilPts({MakeStream(200), Bytes(50, 'y'), MakeStream(4, 90'000'000)},
               90'000'000 + 2 * 3'600);
  EXPECT_EQ(bad_.Contents(), std::string(50, 'y'));
}

// A parse thread alone, in simulated time.
class HlsParseLoopTest : public HlsTasks {
 protected:
  HlsParseLoopTest() { ResetFrameQueues(); }
  ~HlsParseLoopTest() override { ReleaseFrameQueues(); }

  void Begin() {
    testing::internal::CaptureStdout();
    thread_ = std::thread([this] { ParseSegmentsThread(hls_, kUrl); });
  }

  void Stop() {
    hls_.running = false;
    clock_.Release();
    thread_.join();
    testing::internal::GetCapturedStdout();
  }

  // Whether the thread checks for work once per millisecond, several times, and finds none.
  bool FindsNothingToDo() {
    for (int i = 0; i < 3; ++i) {
      if (!clock_.WaitForWaiters(1)) return false;
      const std::size_t sleeps = clock_.Sleeps();
      clock_.Advance(kPace);
      if (!clock_.WaitForWaiters(1) || clock_.Sleeps() != sleeps + 1) return false;
    }
    return clock_.Sleeps(kPace) == clock_.Sleeps() && player_.Snapshot().messages.empty();
  }

  static constexpr std::chrono::milliseconds kPace{1};

  SimulatedClock clock_;
  std::thread thread_;
};

TEST_F(HlsParseLoopTest, ChecksForASegmentOncePerMillisecond) {
  Begin();
  EXPECT_TRUE(FindsNothingToDo());
  Stop();
}

// A parse thread with a segment to parse, while more frames are pending than the backlog allows.
class HlsBacklogTest : public HlsParseLoopTest {
 protected:
  HlsBacklogTest() {
    ClaimTooManyBytes();
    const Bytes segment = MakeStream(4);
    {
      const TsDemuxLock lock;
      std::copy(segment.begin(), segment.end(), stream_.g_parseBuffer->begin());
      stream_.g_parseLength = static_cast<std::int32_t>(segment.size());
    }
    Begin();
  }

  bool IsParsed() const {
    return player_.Snapshot().HasMessage("PLAY M3U8 H264:" + std::string(kUrl));
  }

  static std::uint64_t PushedVideo() {
    const std::lock_guard lock(g_frameQueueMutex);
    return g_videoQueue->pushed;
  }
};

TEST_F(HlsBacklogTest, SegmentWaitsForSpaceForItsFrames) {
  EXPECT_TRUE(FindsNothingToDo());
  EXPECT_EQ(PushedVideo(), 0U);
  ClaimNothing();
  EXPECT_TRUE(clock_.AdvanceUntil([this] { return IsParsed(); }, 1, kPace));
  Stop();
  EXPECT_EQ(PushedVideo(), 3U);
}

TEST_F(HlsBacklogTest, StopEndsTheWaitForSpace) {
  EXPECT_TRUE(FindsNothingToDo());
  Stop();
  EXPECT_EQ(player_.Snapshot().messages.size(), 1U) << "more than the end was reported";
  EXPECT_EQ(PushedVideo(), 0U);
}

// Runs entirely in simulated time: the parse thread takes a segment when the test advances the
// time.
class HlsHandOverTest : public HlsPlay {
 protected:
  ~HlsHandOverTest() override {
    clock_.Release();
    downloader_.EndDownload();
  }

  // The server answers the playlist request once the loops for parsing and delivery sleep.
  void Begin(int segments) {
    PutOnDemand(stream_, segments);
    server_.Put(kList, BlockedUntilRelease(Whole(OnDemandPlaylist(SegmentUris(0, segments)))));
    downloader_.BeginDownload(ListUrl());
    EXPECT_TRUE(clock_.WaitForWaiters(kLoops + kSegmentTask));
    server_.Release(kList);
  }

  // Advances the time whenever the segment thread has nothing left to do.
  void PlayToTheEnd() {
    const auto all = [this] {
      return player_.WaitFor(
          [](const Record& record) {
            return record.video.size() == kFrames - 1 && record.audio.size() == kFrames - 1;
          },
          std::chrono::milliseconds(0));
    };
    EXPECT_TRUE(clock_.AdvanceUntil(all, kLoops + kSegmentTask, std::chrono::milliseconds(1)));
    clock_.Release();
    Stop();
    EXPECT_EQ(Dump(player_.Snapshot()), Dump(FramesOf(stream_)));
  }

  static constexpr std::size_t kFrames = 200;
  static constexpr std::size_t kLoops = 3;
  static constexpr std::size_t kSegmentTask = 1;

  const Bytes stream_ = MakeStream(kFrames);
  SimulatedClock clock_;
};

TEST_F(HlsHandOverTest, SegmentWaitsUntilThePreviousOneIsTaken) {
  Begin(8);
  EXPECT_TRUE(server_.WaitForRequests("/seg1.ts", 1));
  EXPECT_TRUE(clock_.WaitForWaiters(kLoops + kSegmentTask))
      << "the segment thread does not wait for the hand-over";
  EXPECT_EQ(player_.Snapshot().buffered_times.size(), 1U);
  EXPECT_EQ(server_.CountRequests("/seg2.ts"), 0U);
  PlayToTheEnd();
}

TEST_F(HlsHandOverTest, ParseThreadThatAlwaysRunsLastLosesNothing) {
  Begin(40);
  PlayToTheEnd();
}

}  // namespace
}  // namespace stream
