#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "hls/playlist_ingest.h"
#include "hls/playlist_thread.h"
#include "hls/segment_download.h"
#include "tests/support/hls_playlists.h"
#include "tests/support/hls_tasks.h"
#include "tests/support/known_segments.h"
#include "tests/support/simulated_clock.h"
#include "tests/support/wait_until.h"

namespace stream {
namespace {

using hls_test::LivePlaylist;
using hls_test::SegmentLines;
using hls_test::SegmentUris;
using hls_test::Uris;
using testing::ElementsAre;
using testing::IsEmpty;

class PlaylistIngestTest : public HlsTasks {
 protected:
  PlaylistIngestTest() { hls_.variantHandle.reset(); }  // so that no variant can be fetched

  // Fills the queue until it has space for just this many more segments.
  void FillQueueExcept(std::size_t free_slots) {
    const std::lock_guard lock(stream_.g_segmentQueueMutex);
    stream_.g_segmentQueue.resize(kMaxQueuedSegments - free_slots);
  }
};

TEST_F(PlaylistIngestTest, SegmentsAreQueuedInOrderAndTheirCountIsPrintedWithoutALineBreak) {
  EXPECT_EQ(Queue(LivePlaylist(0, SegmentUris(0, 3))), "QUEUEED1:3");
  EXPECT_THAT(PopSegments(), ElementsAre("seg0.ts", "seg1.ts", "seg2.ts"));
  EXPECT_EQ(popped_.front().uri, "http://host/live/seg0.ts");
  EXPECT_EQ(hls_.queuedDuration.load(), 30.0F);
}

TEST_F(PlaylistIngestTest, TextOfAPlaylistIsConsumed) {
  Queue(LivePlaylist(0, SegmentUris(0, 3)));
  EXPECT_EQ(PlaylistText(), "");
}

TEST_F(PlaylistIngestTest, SameSegmentsAreQueuedOnce) {
  Queue(LivePlaylist(0, SegmentUris(0, 3)));
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(Queue(LivePlaylist(0, SegmentUris(0, 3))), "QUEUEED1:3");
    EXPECT_EQ(WaitingSegments(), 3U);
  }
}

TEST_F(PlaylistIngestTest, AddressesThatDifferOnlyInTheirQueryAreOneSegment) {
  Queue(LivePlaylist(0, {"a.ts?token=1", "a.ts?token=2", "b.ts?token=1"}));
  EXPECT_THAT(PopSegments(), ElementsAre("a.ts?token=1", "b.ts?token=1"));
}

TEST_F(PlaylistIngestTest, DownloadedSegmentsAreForgottenWhenANewOneIsListedAndStillTakenOnce) {
  Queue(LivePlaylist(0, SegmentUris(0, 2)));
  PopAndDownload();
  EXPECT_EQ(Queue(LivePlaylist(0, SegmentUris(0, 3))),
            "QUEUEED1:3[REMOVE]: http://host/live/seg0.ts\n[REMOVE]: http://host/live/seg1.ts\n");
  EXPECT_THAT(PopAndDownload(), ElementsAre("seg2.ts"));
  EXPECT_EQ(Queue(LivePlaylist(0, SegmentUris(0, 3))),
            "QUEUEED1:3[REMOVE]: http://host/live/seg2.ts\n");
  EXPECT_EQ(WaitingSegments(), 2U) << "queued again";
  EXPECT_THAT(PopAndDownload(), IsEmpty()) << "but not taken again";
  EXPECT_EQ(hls_.queuedDuration.load(), 30.0F);
}

TEST_F(PlaylistIngestTest, NothingIsForgottenWithoutANewSegment) {
  Queue(LivePlaylist(0, SegmentUris(0, 2)));
  PopAndDownload();
  EXPECT_EQ(Queue(LivePlaylist(0, SegmentUris(0, 2))), "QUEUEED1:2");
  EXPECT_EQ(KnownSegments(), 2U);
}

TEST_F(PlaylistIngestTest, BodyWithoutAHeaderQueuesNothingAndIsKept) {
  EXPECT_EQ(Queue(SegmentLines(SegmentUris(0, 2))), "");
  EXPECT_EQ(WaitingSegments(), 0U);
  EXPECT_EQ(KnownSegments(), 0U);
  EXPECT_EQ(PlaylistText(), SegmentLines(SegmentUris(0, 2)));
}

TEST_F(PlaylistIngestTest, KeptBodyIsParsedTogetherWithTheNext) {
  Queue(SegmentLines({"early.ts"}));
  EXPECT_EQ(Queue(LivePlaylist(0, SegmentUris(0, 1))), "QUEUEED1:2");
  EXPECT_THAT(PopSegments(), ElementsAre("early.ts", "seg0.ts"));
}

TEST_F(PlaylistIngestTest, EmptyPlaylistPrintsItsCountAndQueuesNothing) {
  EXPECT_EQ(Queue("#EXTM3U\n"), "QUEUEED1:0");
  EXPECT_EQ(WaitingSegments(), 0U);
}

TEST_F(PlaylistIngestTest, EmptyPlaylistForgetsNoSegment) {
  Queue(LivePlaylist(0, SegmentUris(0, 2)));
  PopSegments();
  for (const M3u8Entry& segment : popped_) stream_.ledger.RecordNotDownloaded(segment.uri);
  Queue("#EXTM3U\n");
  EXPECT_EQ(KnownSegments(), 2U);
}

TEST_F(PlaylistIngestTest, AddressWithoutTsIsCountedButNeverQueued) {
  EXPECT_EQ(Queue(LivePlaylist(0, {"a.aac", "b.ts"})), "QUEUEED1:2");
  EXPECT_THAT(PopSegments(), ElementsAre("b.ts"));
}

TEST_F(PlaylistIngestTest, TsAnywhereInTheAddressMakesASegment) {
  Queue(LivePlaylist(0, {"a.aac?from=b.ts"}));
  EXPECT_EQ(PopSegments().size(), 1U);
}

TEST_F(PlaylistIngestTest, OnDemandPlaylistQueuesEveryAddressAndAddsUpDurations) {
  M3u8Table entries;
  entries[0] = {"a.ts", 10};
  entries[1] = {"b.aac", 5};
  entries[2] = {"c.ts", 15};
  testing::internal::CaptureStdout();
  QueueAllSegments(hls_, entries);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "QUEUEED3:3");
  EXPECT_EQ(hls_.listedDuration.load(), 30.0F);
  EXPECT_THAT(PopSegments(), ElementsAre("a.ts", "b.aac", "c.ts"));
  EXPECT_EQ(hls_.queuedDuration.load(), 30.0F);
  EXPECT_EQ(KnownSegments(), 0U);
}

TEST_F(PlaylistIngestTest, OnDemandSegmentsThatDifferOnlyInTheirQueryAreTwo) {
  M3u8Table entries;
  entries[0] = {"a.ts?1", 10};
  entries[1] = {"a.ts?2", 10};
  testing::internal::CaptureStdout();
  QueueAllSegments(hls_, entries);
  testing::internal::GetCapturedStdout();
  EXPECT_THAT(PopSegments(), ElementsAre("a.ts?1", "a.ts?2"));
}

TEST_F(PlaylistIngestTest, SegmentWithAChangedQueryIsNotTakenAgain) {
  Queue(LivePlaylist(0, {"a.ts?1", "b.ts?1"}));
  PopAndDownload();
  Queue(LivePlaylist(0, {"a.ts?2", "b.ts?2", "c.ts?2"}));
  EXPECT_THAT(PopAndDownload(), ElementsAre("c.ts?2"));
  Queue(LivePlaylist(0, {"a.ts?3", "b.ts?3", "c.ts?3"}));
  EXPECT_THAT(PopAndDownload(), IsEmpty());
}

TEST_F(PlaylistIngestTest, OnDemandSegmentListedTwiceIsTakenOnce) {
  M3u8Table entries;
  entries[0] = {"a.ts", 10};
  entries[1] = {"a.ts", 10};
  testing::internal::CaptureStdout();
  QueueAllSegments(hls_, entries);
  testing::internal::GetCapturedStdout();
  EXPECT_THAT(PopSegments(), ElementsAre("a.ts"));
  EXPECT_EQ(hls_.listedDuration.load(), 20.0F);
  EXPECT_EQ(hls_.queuedDuration.load(), 10.0F);
}

TEST_F(PlaylistIngestTest, OnDemandPlaylistWithoutEntriesEndsTheWaitOnceWithAnEmptyBatch) {
  testing::internal::CaptureStdout();
  QueueAllSegments(hls_, {});
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "QUEUEED3:0");
  EXPECT_THAT(PopQueuedSegments(hls_, history_), IsEmpty()) << "returns at once";
  std::thread producer([this] { Queue(LivePlaylist(0, SegmentUris(0, 1))); });
  EXPECT_EQ(PopQueuedSegments(hls_, history_).size(), 1U) << "waits for a segment";
  producer.join();
}

TEST_F(PlaylistIngestTest, WakeUpByAnOnDemandPlaylistWithoutEntriesIsForgottenAtAStop) {
  testing::internal::CaptureStdout();
  QueueAllSegments(hls_, {});
  testing::internal::GetCapturedStdout();
  stream_.Clear();
  std::thread producer([this] { Queue(LivePlaylist(0, SegmentUris(0, 1))); });
  EXPECT_EQ(PopQueuedSegments(hls_, history_).size(), 1U);
  producer.join();
}

TEST_F(PlaylistIngestTest, StopEndsTheWaitForSegments) {
  std::thread stopper([this] {
    hls_.running = false;
    stream_.WakeTasks();
  });
  EXPECT_THAT(PopQueuedSegments(hls_, history_), IsEmpty());
  stopper.join();
}

TEST_F(PlaylistIngestTest, SegmentsQueuedLaterEndTheWait) {
  std::thread producer([this] { Queue(LivePlaylist(0, SegmentUris(0, 1))); });
  EXPECT_EQ(PopQueuedSegments(hls_, history_).size(), 1U);
  producer.join();
}

TEST_F(PlaylistIngestTest, PauseEndsAtOnceWhenStopped) {
  SimulatedClock clock;
  std::thread pause([this] { PauseBetweenRefreshes(hls_); });
  EXPECT_TRUE(clock.WaitForWaiters(1));
  hls_.running = false;
  stream_.WakeTasks();
  pause.join();
  EXPECT_EQ(clock.Elapsed(), Clock::Duration::zero());
}

TEST_F(PlaylistIngestTest, NoPauseAfterAStop) {
  const SimulatedClock clock;
  hls_.running = false;
  PauseBetweenRefreshes(hls_);
  EXPECT_EQ(clock.Elapsed(), Clock::Duration::zero());
}

TEST_F(PlaylistIngestTest, PauseLastsASecondWhateverIsQueued) {
  constexpr std::chrono::milliseconds kSecond{1000};
  SimulatedClock clock;
  std::thread pause([this] { PauseBetweenRefreshes(hls_); });
  EXPECT_TRUE(clock.WaitForWaiters(1));
  Queue(LivePlaylist(0, SegmentUris(0, 1)));
  clock.Advance(kSecond - std::chrono::milliseconds(1));
  EXPECT_EQ(clock.Waiting(), 1U);
  clock.Advance(std::chrono::milliseconds(1));
  pause.join();
}

// The segment thread in simulated time. All queued segments end before the start position, so
// nothing is requested.
class SegmentLoopTest : public PlaylistIngestTest {
 protected:
  SegmentLoopTest() { hls_.startPosition = 1'000; }

  bool IsTaken(std::size_t batches) {
    return player_.WaitFor(
        [batches](const auto& record) { return record.durations.size() == batches; });
  }

  void Stop() {
    hls_.running = false;
    clock_.Release();
    stream_.WakeTasks();
    segments_.join();
  }

  static constexpr std::chrono::milliseconds kPace{1};

  SimulatedClock clock_;
  std::thread segments_;
};

TEST_F(SegmentLoopTest, NextBatchIsTakenAfterAMillisecond) {
  Queue(LivePlaylist(0, SegmentUris(0, 1)));
  segments_ = std::thread([this] { DownloadPartsThread(hls_); });
  for (int batch = 1; batch <= 3; ++batch) {
    EXPECT_TRUE(IsTaken(static_cast<std::size_t>(batch)));
    EXPECT_TRUE(clock_.WaitForWaiters(1));
    EXPECT_EQ(clock_.Sleeps(kPace), static_cast<std::size_t>(batch));
    Queue(LivePlaylist(batch, SegmentUris(batch, 1)));
    EXPECT_EQ(WaitingSegments(), 1U) << "the batch was taken too early";
    clock_.Advance(kPace);
  }
  EXPECT_TRUE(IsTaken(4));
  EXPECT_EQ(clock_.Elapsed(), 3 * kPace);
  Stop();
}

TEST_F(PlaylistIngestTest, RestartUnderTheSameNamesIsPlayedAtOnce) {
  Queue(LivePlaylist(100, SegmentUris(0, 3)));
  PopAndDownload();
  Queue(LivePlaylist(103, SegmentUris(3, 3)));
  PopAndDownload();
  EXPECT_EQ(Queue(LivePlaylist(0, SegmentUris(0, 3))), "QUEUEED1:3");
  EXPECT_THAT(PopAndDownload(), ElementsAre("seg0.ts", "seg1.ts", "seg2.ts"));
  Queue(LivePlaylist(0, SegmentUris(0, 4)));
  EXPECT_THAT(PopAndDownload(), ElementsAre("seg3.ts"));
  Queue(LivePlaylist(1, SegmentUris(1, 4)));
  EXPECT_THAT(PopAndDownload(), ElementsAre("seg4.ts"));
}

TEST_F(PlaylistIngestTest, RestartThatDoesNotAdvanceIsPlayedOnce) {
  Queue(LivePlaylist(100, SegmentUris(0, 3)));
  PopAndDownload();
  Queue(LivePlaylist(0, SegmentUris(0, 3)));
  EXPECT_THAT(PopAndDownload(), ElementsAre("seg0.ts", "seg1.ts", "seg2.ts"));
  for (int i = 0; i < 20; ++i) {
    Queue(LivePlaylist(0, SegmentUris(0, 3)));
    EXPECT_THAT(PopAndDownload(), IsEmpty());
  }
}

TEST_F(PlaylistIngestTest, SegmentsWaitingAtARestartArePlayedToo) {
  Queue(LivePlaylist(100, SegmentUris(0, 2)));
  Queue(LivePlaylist(0, SegmentUris(0, 1)));
  Queue(LivePlaylist(0, SegmentUris(0, 2)));
  EXPECT_THAT(PopAndDownload(), ElementsAre("seg0.ts", "seg1.ts", "seg0.ts", "seg1.ts"));
}

TEST_F(PlaylistIngestTest, LateCopyOfAPlaylistIsCountedAndOtherwiseIgnored) {
  Queue(LivePlaylist(100, SegmentUris(10, 3)));
  PopAndDownload();
  Queue(LivePlaylist(101, SegmentUris(11, 3)));
  PopAndDownload();
  EXPECT_EQ(Queue(LivePlaylist(100, SegmentUris(10, 3))), "QUEUEED1:3");
  EXPECT_EQ(WaitingSegments(), 0U) << "nothing is queued again";
  EXPECT_THAT(PopAndDownload(), IsEmpty());
  Queue(LivePlaylist(102, SegmentUris(12, 3)));
  EXPECT_THAT(PopAndDownload(), ElementsAre("seg14.ts"));
}

TEST_F(PlaylistIngestTest, NewSegmentsAreQueuedAtOnceAlsoUnderSmallerNumbers) {
  Queue(LivePlaylist(100, SegmentUris(10, 3)));
  PopAndDownload();
  Queue(LivePlaylist(90, SegmentUris(0, 3)));
  EXPECT_THAT(PopAndDownload(), ElementsAre("seg0.ts", "seg1.ts", "seg2.ts"));
  Queue(LivePlaylist(101, SegmentUris(11, 3)));
  EXPECT_THAT(PopAndDownload(), ElementsAre("seg13.ts"));
}

TEST_F(PlaylistIngestTest, ReusedNameIsLeftForALaterRefreshIfTheQueueIsFull) {
  const auto list = [](int first) {
    Uris names;
    for (int i = first; i < first + 3; ++i) names.push_back("r" + std::to_string(i % 4) + ".ts");
    return LivePlaylist(first, names);
  };
  Queue(list(0));
  PopAndDownload();
  Queue(list(1));
  PopAndDownload();
  FillQueueExcept(0);
  Queue(list(2));
  FillQueueExcept(kMaxQueuedSegments);
  Queue(list(2));
  EXPECT_THAT(PopAndDownload(), ElementsAre("r0.ts"));
}

TEST_F(PlaylistIngestTest, SegmentWhoseNameIsReusedWhileItWaitsIsReplaced) {
  Queue(LivePlaylist(0, {"r0.ts", "r1.ts", "r2.ts"}));
  const auto first = PopQueuedSegments(hls_, history_);
  Queue(LivePlaylist(1, {"r1.ts", "r2.ts", "r0.ts"}));
  Queue(LivePlaylist(2, {"r2.ts", "r0.ts", "r1.ts"}));
  EXPECT_TRUE(stream_.ledger.IsReplaced(first[0])) << "while the segment thread works on its batch";
  EXPECT_TRUE(stream_.ledger.IsReplaced(first[1]));
  EXPECT_FALSE(stream_.ledger.IsReplaced(first[2]));
  Queue(LivePlaylist(4, {"r1.ts", "r2.ts", "r0.ts"}));
  const auto second = PopQueuedSegments(hls_, history_);
  ASSERT_EQ(second.size(), 4U);
  EXPECT_TRUE(stream_.ledger.IsReplaced(second[0])) << "while it waited in the queue";
  EXPECT_FALSE(stream_.ledger.IsReplaced(second[1]));
  EXPECT_FALSE(stream_.ledger.IsReplaced(second[2]));
  EXPECT_FALSE(stream_.ledger.IsReplaced(second[3]));
}

TEST_F(PlaylistIngestTest, ReplacedSegmentsDoNotAccumulate) {
  for (int first = 0; first < 300; ++first) {
    Uris names;
    for (int i = first; i < first + 5; ++i) names.push_back("r" + std::to_string(i % 8) + ".ts");
    Queue(LivePlaylist(first, names));
    EXPECT_EQ(PopAndDownload().size(), first == 0 ? 5U : 1U);
    EXPECT_LE(stream_.ledger.CurrentSizes().replaced, 1U);
  }
  EXPECT_LE(KnownSegments(), 8U);
}

TEST_F(PlaylistIngestTest, PlaylistWithoutASequenceNeverRestarts) {
  const auto list = [](int first) { return "#EXTM3U\n" + SegmentLines(SegmentUris(first, 3)); };
  Queue(list(3));
  PopAndDownload();
  Queue(list(0));
  EXPECT_THAT(PopAndDownload(), ElementsAre("seg0.ts", "seg1.ts", "seg2.ts"));
  Queue(list(3));
  EXPECT_THAT(PopAndDownload(), IsEmpty());
}

TEST_F(PlaylistIngestTest, SegmentsThatEndBeforeTheStartPositionAreSkipped) {
  hls_.startPosition = 31;
  Queue(LivePlaylist(0, SegmentUris(0, 3)));
  testing::internal::CaptureStdout();
  std::thread segments([this] { DownloadPartsThread(hls_); });
  EXPECT_TRUE(WaitUntil([this] { return hls_.position.load() == 30.0F; }));
  hls_.running = false;
  stream_.WakeTasks();
  segments.join();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "m3u8 DownloadParts thread stop.\n");
  EXPECT_TRUE(player_.Snapshot().buffered_times.empty());
  EXPECT_EQ(player_.Snapshot().durations.front(), 30.0F);
  EXPECT_EQ(KnownSegments(), 3U) << "they are still in the state kSegmentQueued";
}

TEST_F(PlaylistIngestTest, SegmentsAreLeftForALaterRefreshIfTheQueueIsFull) {
  FillQueueExcept(2);
  EXPECT_EQ(Queue(LivePlaylist(0, SegmentUris(0, 3))), "QUEUEED1:3");
  EXPECT_EQ(WaitingSegments(), kMaxQueuedSegments);
  EXPECT_EQ(KnownSegments(), 2U);
  Queue(LivePlaylist(0, SegmentUris(0, 3)));
  EXPECT_EQ(WaitingSegments(), kMaxQueuedSegments);
  FillQueueExcept(kMaxQueuedSegments);
  Queue(LivePlaylist(0, SegmentUris(0, 3)));
  EXPECT_THAT(PopSegments(), ElementsAre("seg2.ts"));
}

// A live stream of many segments.
class LongLiveTest : public PlaylistIngestTest {
 protected:
  // Refreshes a window of `length` segments `count` times; it advances by `step`. Every segment
  // must be taken once, in order. `done` is called for each.
  template <typename Done>
  void Play(int count, int length, int step, Done done) {
    std::vector<std::string> played;
    for (int i = 0; i < count; ++i) {
      Queue(LivePlaylist(i * step, SegmentUris(i * step, length)));
      const std::size_t before = popped_.size();
      for (const std::string& name : PopSegments()) played.push_back(name);
      for (std::size_t at = before; at < popped_.size(); ++at) done(popped_[at].uri, at);
      most_known_ = std::max(most_known_, KnownSegments());
    }
    EXPECT_EQ(played, SegmentUris(0, (count - 1) * step + length));
  }

  static void Downloaded(const std::string& uri, std::size_t /*at*/) {
    g_hlsStream->ledger.SetSegmentState(uri, kSegmentDownloaded);
  }

  std::size_t most_known_ = 0;
};

TEST_F(LongLiveTest, SegmentsWhoseNamesDoNotSortByAgeArePlayedOnce) {
  Play(1'300, 6, 1, Downloaded);
}

TEST_F(LongLiveTest, WindowOfMoreThanAThousandSegmentsIsPlayedOnce) {
  Play(4, 1'500, 0, Downloaded);
  EXPECT_EQ(popped_.size(), 1'500U);
}

TEST_F(LongLiveTest, LongWindowThatAdvancesIsPlayedOnce) { Play(5, 1'500, 3, Downloaded); }

TEST_F(LongLiveTest, DownloadedSegmentsDoNotAccumulate) {
  Play(500, 6, 1, Downloaded);
  EXPECT_LE(most_known_, 14U);
}

TEST_F(LongLiveTest, SegmentsThatAreNeverDownloadedDoNotAccumulate) {
  Play(500, 6, 1,
       [this](const std::string& uri, std::size_t) { stream_.ledger.RecordNotDownloaded(uri); });
  EXPECT_LE(most_known_, 14U);
}

TEST_F(LongLiveTest, MixOfBothDoesNotAccumulate) {
  Play(500, 6, 2, [this](const std::string& uri, std::size_t at) {
    at % 3 == 0 ? stream_.ledger.RecordNotDownloaded(uri)
                : stream_.ledger.SetSegmentState(uri, kSegmentDownloaded);
  });
  EXPECT_LE(most_known_, 16U);
}

}  // namespace
}  // namespace stream
