#include "ts/ts_demuxer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "common/frame_queue.h"
#include "tests/support/ts_packets.h"

namespace stream {
namespace {

using ts_test::Bytes;
using ts_test::Packet;

struct SinkFrame {
  bool is_video;
  std::uint64_t pts;
  std::uint64_t dts;
  Bytes payload;
  bool intact;

  bool operator==(const SinkFrame&) const = default;
};

// A demultiplexer with a sink that records its frames.
class RecordedDemuxer final : public TsFrameSink {
 public:
  void Feed(const Packet& packet) { demuxer_->Feed(packet.data(), kTsPacketSize); }
  void Feed(const std::vector<Packet>& packets) {
    for (const Packet& packet : packets) Feed(packet);
  }
  void FeedTables() { Feed({ts_test::MakePat(), ts_test::MakePmt()}); }
  void FeedVideo(std::uint64_t pts, const Bytes& payload) {
    Feed(ts_test::Packetize(ts_test::kVideoPid, ts_test::MakePes(pts, payload, pts)));
  }
  void FeedAudio(std::uint64_t pts, const Bytes& payload) {
    Feed(ts_test::Packetize(ts_test::kAudioPid, ts_test::MakePes(pts, payload, pts)));
  }
  // Feeds a stream with `packets` packets in each call.
  void FeedInCallsOf(std::size_t packets, const Bytes& stream) {
    const std::size_t size = packets * kTsPacketSize;
    for (std::size_t at = 0; at < stream.size(); at += size) {
      const std::size_t piece = std::min(size, stream.size() - at);
      demuxer_->Feed(stream.data() + at, static_cast<std::int32_t>(piece));
    }
  }

  TsDemuxer* operator->() { return demuxer_.get(); }

  std::vector<SinkFrame> TakeFrames() { return std::exchange(frames_, {}); }

 private:
  void OnFrame(const TsFrame& frame) override {
    const Bytes payload(frame.payload.begin(), frame.payload.end());
    frames_.push_back({frame.is_video, frame.pts, frame.dts, payload, frame.intact});
  }

  std::vector<SinkFrame> frames_;
  std::unique_ptr<TsDemuxer> demuxer_ = std::make_unique<TsDemuxer>(*this);
};

using Frames = std::vector<SinkFrame>;

TEST(TsDemuxerTest, FrameIsEmittedWithAllItsFieldsWhenTheNextPesPacketBegins) {
  RecordedDemuxer demuxer;
  demuxer.FeedTables();
  const Bytes payload(500, 0x11);
  demuxer.FeedVideo(90'000, payload);
  EXPECT_EQ(demuxer.TakeFrames(), Frames());
  demuxer.FeedVideo(93'600, Bytes(10, 0x22));
  EXPECT_EQ(demuxer.TakeFrames(), (Frames{{true, 90'000, 90'000, payload, true}}));
}

TEST(TsDemuxerTest, AudioFrameIsEmittedAsAudio) {
  RecordedDemuxer demuxer;
  demuxer.FeedTables();
  demuxer.FeedAudio(90'000, Bytes(60, 0x33));
  demuxer.FeedAudio(91'920, Bytes(60, 0x44));
  EXPECT_EQ(demuxer.TakeFrames(), (Frames{{false, 90'000, 90'000, Bytes(60, 0x33), true}}));
}

TEST(TsDemuxerTest, FrameWithAContinuityGapIsNotIntact) {
  RecordedDemuxer demuxer;
  demuxer.FeedTables();
  std::vector<Packet> packets =
      ts_test::Packetize(ts_test::kVideoPid, ts_test::MakePes(90'000, Bytes(700, 1)));
  packets.erase(packets.begin() + 1);
  demuxer.Feed(packets);
  demuxer.FeedVideo(93'600, Bytes(10, 2));
  const Frames frames = demuxer.TakeFrames();
  ASSERT_EQ(frames.size(), 1U);
  EXPECT_FALSE(frames[0].intact);
}

TEST(TsDemuxerTest, FeedInPiecesOfAnySizeGivesTheSameFrames) {
  const Bytes stream = ts_test::MakeStream(20);
  RecordedDemuxer whole;
  whole->Feed(stream.data(), static_cast<std::int32_t>(stream.size()));
  const Frames expected = whole.TakeFrames();
  ASSERT_EQ(expected.size(), 2U * 19);
  for (const std::size_t packets : {1U, 2U, 3U, 7U, 50U}) {
    RecordedDemuxer pieces;
    pieces.FeedInCallsOf(packets, stream);
    EXPECT_EQ(pieces.TakeFrames(), expected) << packets << " packets in a call";
  }
}

TEST(TsDemuxerTest, GlobalQueuesGetNothing) {
  ResetFrameQueues();
  RecordedDemuxer demuxer;
  demuxer.FeedInCallsOf(1, ts_test::MakeStream(5));
  EXPECT_EQ(demuxer.TakeFrames().size(), 8U);
  EXPECT_EQ(PopVideoFrame(), nullptr);
  EXPECT_EQ(PopAudioFrame(), nullptr);
}

TEST(TsDemuxerTest, ResetOfTheGlobalQueuesDoesNotResetTimestamps) {
  RecordedDemuxer demuxer;
  demuxer.FeedTables();
  demuxer.FeedVideo(90'000, Bytes(10, 1));
  ResetFrameQueues();
  demuxer.FeedVideo(93'600, Bytes(10, 2));
  EXPECT_EQ(demuxer.TakeFrames(), (Frames{{true, 90'000, 90'000, Bytes(10, 1), true}}));
}

TEST(TsDemuxerTest, FlushEmitsTheLastFramesOnceVideoFirst) {
  RecordedDemuxer demuxer;
  demuxer.FeedTables();
  demuxer.FeedAudio(91'000, Bytes(60, 0x33));
  demuxer.FeedVideo(90'000, Bytes(300, 0x11));
  demuxer->Flush();
  EXPECT_EQ(demuxer.TakeFrames(), (Frames{{true, 90'000, 90'000, Bytes(300, 0x11), true},
                                          {false, 91'000, 91'000, Bytes(60, 0x33), true}}));
  demuxer->Flush();
  EXPECT_EQ(demuxer.TakeFrames(), Frames());
}

TEST(TsDemuxerTest, FlushOfANewDemultiplexerEmitsNothing) {
  RecordedDemuxer demuxer;
  demuxer->Flush();
  EXPECT_EQ(demuxer.TakeFrames(), Frames());
}

TEST(TsDemuxerTest, NextPesPacketAfterAFlushEmitsNothing) {
  RecordedDemuxer demuxer;
  demuxer.FeedTables();
  demuxer.FeedVideo(90'000, Bytes(10, 1));
  demuxer->Flush();
  demuxer.TakeFrames();
  demuxer.FeedVideo(93'600, Bytes(10, 2));
  EXPECT_EQ(demuxer.TakeFrames(), Frames());
}

TEST(TsDemuxerTest, ResetDropsUnfinishedFramesAndForgetsThePrograms) {
  RecordedDemuxer demuxer;
  demuxer.FeedTables();
  demuxer.FeedVideo(90'000, Bytes(10, 1));
  demuxer->Reset();
  demuxer->Flush();
  EXPECT_EQ(demuxer.TakeFrames(), Frames()) << "the unfinished frame";
  demuxer.FeedVideo(93'600, Bytes(10, 2));
  demuxer.FeedVideo(97'200, Bytes(10, 3));
  demuxer->Flush();
  EXPECT_EQ(demuxer.TakeFrames(), Frames()) << "frames of a program that is not known any more";
}

TEST(TsDemuxerTest, SameStreamAfterAResetGivesTheSameFrames) {
  const Bytes stream = ts_test::MakeStream(5);
  RecordedDemuxer demuxer;
  demuxer.FeedInCallsOf(1, stream);
  const Frames first = demuxer.TakeFrames();
  demuxer->Reset();
  demuxer.FeedInCallsOf(1, stream);
  EXPECT_EQ(demuxer.TakeFrames(), first);
}

// A PES start overwrites the timestamps and the continuity state, so only a frame that begins with
// a continuation packet shows whether the reset cleared them.
TEST(TsDemuxerTest, ContinuationPacketsAfterAResetGiveTheFramesOfANewInstance) {
  constexpr std::uint16_t kPids[] = {ts_test::kVideoPid, ts_test::kAudioPid};
  const auto continuation = [](std::uint16_t pid, int counter) {
    return ts_test::MakePacket(pid, false, counter, Bytes(184, 5));
  };
  const auto continue_and_begin = [&](RecordedDemuxer& demuxer) {
    demuxer.FeedTables();
    for (const std::uint16_t pid : kPids) demuxer.Feed(continuation(pid, 9));
    demuxer.FeedVideo(93'600, Bytes(10, 2));
    demuxer.FeedAudio(93'600, Bytes(20, 3));
    return demuxer.TakeFrames();
  };
  RecordedDemuxer used;
  used.FeedTables();
  used.FeedVideo(90'000, Bytes(10, 1));
  used.FeedAudio(90'000, Bytes(20, 1));
  for (const std::uint16_t pid : kPids) used.Feed(continuation(pid, 4));  // after a gap
  used->Reset();
  const Frames frames = continue_and_begin(used);
  EXPECT_EQ(frames.size(), 2U);
  RecordedDemuxer unused;
  EXPECT_EQ(frames, continue_and_begin(unused));
}

TEST(TsDemuxerTest, ResetOfTheStreamsKeepsProgramsAndBytesButNotTimestamps) {
  RecordedDemuxer demuxer;
  demuxer.FeedTables();
  demuxer.FeedVideo(90'000, Bytes(10, 1));
  demuxer.FeedAudio(91'000, Bytes(20, 2));
  demuxer->ResetStreams();
  demuxer.FeedVideo(500'000, Bytes(10, 3));
  demuxer.FeedAudio(500'000, Bytes(20, 4));
  EXPECT_EQ(demuxer.TakeFrames(),
            (Frames{{true, 0, 0, Bytes(10, 1), true}, {false, 0, 91'000, Bytes(20, 2), true}}));
}

TEST(TsDemuxerTest, ProgramOfOneInstanceIsUnknownToAnother) {
  RecordedDemuxer one;
  RecordedDemuxer other;
  one.FeedTables();
  other.FeedVideo(90'000, Bytes(10, 1));
  other->Flush();
  EXPECT_EQ(other.TakeFrames(), Frames());
}

TEST(TsDemuxerTest, ResetOfOneInstanceLeavesTheFramesOfAnother) {
  RecordedDemuxer one;
  RecordedDemuxer other;
  for (RecordedDemuxer* demuxer : {&one, &other}) demuxer->FeedTables();
  one.FeedVideo(90'000, Bytes(10, 1));
  other.FeedVideo(180'000, Bytes(10, 2));
  other->Reset();
  one.FeedVideo(93'600, Bytes(10, 3));
  EXPECT_EQ(one.TakeFrames(), (Frames{{true, 90'000, 90'000, Bytes(10, 1), true}}));
  EXPECT_EQ(other.TakeFrames(), Frames());
}

TEST(TsDemuxerTest, ContextOfTheCallerReplacesItsOwn) {
  RecordedDemuxer demuxer;
  ts_context context;
  context.video_pid = ts_test::kVideoPid;
  for (const std::uint64_t pts : {90'000U, 93'600U}) {
    for (const Packet& packet :
         ts_test::Packetize(ts_test::kVideoPid, ts_test::MakePes(pts, Bytes(10, 1), pts))) {
      demuxer->ParsePackets(context, packet.data(), 1);
    }
  }
  EXPECT_EQ(demuxer.TakeFrames(), (Frames{{true, 90'000, 90'000, Bytes(10, 1), true}}));
  EXPECT_EQ(context.av_packet_count, 2U);
}

}  // namespace
}  // namespace stream
