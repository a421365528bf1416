#include "ts/ts_demux.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/frame_queue.h"
#include "tests/support/ts_packets.h"

namespace stream {
namespace {

using namespace ts_test;  // NOLINT: the builders read best without it

class TsDemuxTest : public testing::Test {
 protected:
  TsDemuxTest() {
    ProcessTsDemuxer().Reset();
    ResetFrameQueues();
  }

  static void Feed(const Packet& packet) {
    const TsDemuxLock lock;
    EXPECT_EQ(ts_demux_feed(packet.data(), kTsPacketSize), 0);
  }
  static void Feed(const std::vector<Packet>& packets) {
    for (const Packet& packet : packets) Feed(packet);
  }
  // Feeds a whole stream, one packet per call.
  static void FeedStream(const Bytes& stream) {
    const TsDemuxLock lock;
    for (std::size_t at = 0; at < stream.size(); at += kTsPacketSize) {
      ts_demux_feed(stream.data() + at, kTsPacketSize);
    }
  }
  static void FeedTables() {
    Feed(MakePat());
    Feed(MakePmt());
  }
  static void FeedVideo(std::uint64_t pts, const Bytes& payload, int counter = 0) {
    Feed(Packetize(kVideoPid, MakePes(pts, payload, pts), counter));
  }

  template <typename Call>
  static std::string Printed(Call call) {
    testing::internal::CaptureStdout();
    call();
    return testing::internal::GetCapturedStdout();
  }

  static std::size_t CountVideo() {
    std::size_t count = 0;
    while (PopVideoFrame()) ++count;
    return count;
  }
};

Bytes PayloadOf(const FrameNodePtr& node) { return {node->data, node->data + node->size}; }

TEST_F(TsDemuxTest, FrameIsQueuedWhenTheNextPesPacketBegins) {
  FeedTables();
  const Bytes payload(500, 0x11);
  FeedVideo(90'000, payload);
  EXPECT_EQ(PopVideoFrame(), nullptr);
  FeedVideo(93'600, Bytes(10, 0x22));
  const FrameNodePtr frame = PopVideoFrame();
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(PayloadOf(frame), payload);
  EXPECT_EQ(frame->pts, 90'000U);
  EXPECT_EQ(frame->dts, 90'000U);
  EXPECT_EQ(frame->isVideo, 1U);
  EXPECT_EQ(frame->intact, 1U);
}

TEST_F(TsDemuxTest, LastPesPacketIsNeverQueued) {
  FeedStream(MakeStream(5));
  EXPECT_EQ(CountVideo(), 4U);
  for (std::size_t i = 0; i < 4; ++i) {
    const FrameNodePtr frame = PopAudioFrame();
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->isVideo, 0U);
    EXPECT_EQ(PayloadOf(frame), Bytes(60, static_cast<std::uint8_t>(i)));
  }
  EXPECT_EQ(PopAudioFrame(), nullptr);
}

TEST_F(TsDemuxTest, NothingIsQueuedBeforeTheProgramIsKnown) {
  FeedVideo(90'000, Bytes(10, 1));
  FeedTables();
  FeedVideo(93'600, Bytes(10, 2));
  FeedVideo(97'200, Bytes(10, 3));
  const FrameNodePtr frame = PopVideoFrame();
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(frame->pts, 93'600U);
  EXPECT_EQ(PopVideoFrame(), nullptr);
}

TEST_F(TsDemuxTest, Mpeg4VisualAloneYieldsNoFramesAndNoLine) {
  EXPECT_EQ(Printed([] {
              Feed(MakePat());
              Feed(MakePmt({{0x10, kVideoPid}}));
              FeedVideo(90'000, Bytes(10, 1));
              FeedVideo(93'600, Bytes(10, 2));
            }),
            "");
  EXPECT_EQ(PopVideoFrame(), nullptr);
}

TEST_F(TsDemuxTest, PesWithOnlyAPtsReadsItsDtsFromTheFollowingBytes) {
  FeedTables();
  const Bytes payload = {0x21, 0x00, 0x01, 0x00, 0x0F, 0xAA};  // reads as the timestamp 7
  Feed(Packetize(kVideoPid, MakePes(90'000, payload)));
  FeedVideo(93'600, Bytes(10, 2));
  const FrameNodePtr frame = PopVideoFrame();
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(frame->pts, 90'000U);
  EXPECT_EQ(frame->dts, 7U);
  EXPECT_EQ(PayloadOf(frame), payload);
}

TEST_F(TsDemuxTest, DtsFieldBeyondThePacketReadsAsZero) {
  FeedTables();
  Packet packet = MakePacket(kVideoPid, true, 0, MakePes(90'000, {0xAA}));
  Feed(packet);  // 15 bytes of PES at the end of the packet, so the DTS field is beyond it
  FeedVideo(93'600, Bytes(10, 2));
  const FrameNodePtr frame = PopVideoFrame();
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(frame->dts, std::uint64_t{0xAA >> 1 & 7} << 30);
  EXPECT_EQ(PayloadOf(frame), Bytes{0xAA});
}

TEST_F(TsDemuxTest, ContinuityGapMarksItsFrameAndTheNextFrameIsIntact) {
  FeedTables();
  std::vector<Packet> packets = Packetize(kVideoPid, MakePes(90'000, Bytes(700, 1)));
  packets.erase(packets.begin() + 1);
  Feed(packets);
  FeedVideo(93'600, Bytes(400, 2));
  FeedVideo(97'200, Bytes(10, 3));
  const FrameNodePtr broken = PopVideoFrame();
  ASSERT_NE(broken, nullptr);
  EXPECT_EQ(broken->intact, 0U);
  EXPECT_EQ(broken->size, 700 - 184);  // the gap is recorded, never repaired
  const FrameNodePtr next = PopVideoFrame();
  ASSERT_NE(next, nullptr);
  EXPECT_EQ(next->intact, 1U);
}

TEST_F(TsDemuxTest, EndlessPesIsCutAtOneMebibyte) {
  FeedTables();
  FeedVideo(90'000, Bytes(1'200'000, 1));
  FeedVideo(93'600, Bytes(10, 2));
  const FrameNodePtr frame = PopVideoFrame();
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(frame->size, 1'048'576);
  EXPECT_EQ(frame->intact, 0U);
}

// The audio PID of a program without audio reads as 0, which is the PID of the PAT.
TEST_F(TsDemuxTest, PatOfAProgramWithoutAudioIsNeverAudio) {
  for (int i = 0; i < 3; ++i) {
    Feed(MakePat());
    Feed(MakePmt({{0x1B, kVideoPid}}));
    FeedVideo(90'000 + static_cast<std::uint64_t>(i) * 3600, Bytes(10, 1));
  }
  EXPECT_EQ(PopAudioFrame(), nullptr);
  EXPECT_EQ(CountVideo(), 2U);
}

TEST_F(TsDemuxTest, PatIsNeverAudioEvenIfThePmtNamesItsPid) {
  for (int i = 0; i < 3; ++i) {
    Feed(MakePat());
    Feed(MakePmt({{0x1B, kVideoPid}, {0x0F, 0}}));
    FeedVideo(90'000 + static_cast<std::uint64_t>(i) * 3600, Bytes(10, 1));
  }
  EXPECT_EQ(PopAudioFrame(), nullptr);
  EXPECT_EQ(CountVideo(), 2U);
}

TEST_F(TsDemuxTest, OnlyTheFirstAudioStreamIsFollowed) {
  Feed(MakePat());
  Feed(MakePmt({{0x1B, kVideoPid}, {0x0F, 0x201}, {0x0F, 0x202}}));
  for (int i = 0; i < 2; ++i) {
    Feed(Packetize(0x201, MakePes(90'000, Bytes(10, 1)), i));
    Feed(Packetize(0x202, MakePes(90'000, Bytes(10, 2)), i));
  }
  const FrameNodePtr frame = PopAudioFrame();
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(PayloadOf(frame), Bytes(10, 1));
  EXPECT_EQ(PopAudioFrame(), nullptr);
}

TEST_F(TsDemuxTest, LeftoverBytesAreQueuedWithResetTimestampsInTheNextStream) {
  FeedStream(MakeStream(2));
  ResetFrameQueues();
  FeedStream(MakeStream(2, 500'000));
  const FrameNodePtr left = PopVideoFrame();
  ASSERT_NE(left, nullptr);
  EXPECT_EQ(left->pts, 0U);
  EXPECT_EQ(left->dts, 0U);
  EXPECT_EQ(left->size, 300);
  const FrameNodePtr left_audio = PopAudioFrame();
  ASSERT_NE(left_audio, nullptr);
  EXPECT_EQ(left_audio->pts, 0U);
  EXPECT_NE(left_audio->dts, 0U);  // only the audio DTS is not reset
  const FrameNodePtr first = PopVideoFrame();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->pts, 500'000U);
}

TEST_F(TsDemuxTest, LeftoverFrameWithAGapIsIntactInTheNextStream) {
  FeedTables();
  std::vector<Packet> packets = Packetize(kVideoPid, MakePes(90'000, Bytes(700, 1)));
  packets.erase(packets.begin() + 1);
  Feed(packets);
  ResetFrameQueues();
  FeedVideo(93'600, Bytes(10, 2));
  const FrameNodePtr left = PopVideoFrame();
  ASSERT_NE(left, nullptr);
  EXPECT_EQ(left->intact, 1U);
}

TEST_F(TsDemuxTest, CounterOfThePreviousStreamMakesNoGapInTheNext) {
  FeedTables();
  FeedVideo(90'000, Bytes(10, 1), 3);
  ResetFrameQueues();
  Feed(MakePacket(kVideoPid, false, 9, Bytes(184, 2)));  // the next stream starts in mid-frame
  FeedVideo(93'600, Bytes(10, 3));
  const FrameNodePtr left = PopVideoFrame();
  ASSERT_NE(left, nullptr);
  EXPECT_EQ(left->size, 10 + 184);
  EXPECT_EQ(left->intact, 1U);
}

TEST_F(TsDemuxTest, KnownProgramIsUsedForTheNextStream) {
  FeedStream(MakeStream(1));
  ResetFrameQueues();
  FeedVideo(93'600, Bytes(10, 2));  // without PAT and PMT
  EXPECT_NE(PopVideoFrame(), nullptr);
}

TEST_F(TsDemuxTest, PlayTimesStartAgainIfTheQueuesAreResetWithinABatch) {
  ts_context context;
  context.video_pid = kVideoPid;
  const auto parse = [&](std::uint64_t pts) {
    const TsDemuxLock lock;
    const Packet packet = MakePacket(kVideoPid, true, 0, MakePes(pts, Bytes(10, 1), pts));
    ts_parse_packets(&context, packet.data(), 1);
  };
  parse(90'000);
  parse(93'600);
  ResetFrameQueues();
  parse(97'200);
  const FrameNodePtr frame = PopVideoFrame();
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(frame->pts, 93'600U);
  EXPECT_EQ(frame->playTime, 0U);
}

TEST_F(TsDemuxTest, PacketWithoutPayloadIsSkipped) {
  FeedTables();
  FeedVideo(90'000, Bytes(10, 1));
  for (const std::uint8_t control : Bytes{0x00, 0x20}) {
    Packet packet = MakePacket(kVideoPid, true, 1, Bytes(184, 9), true);
    packet[3] = control;
    Feed(packet);
  }
  EXPECT_EQ(PopVideoFrame(), nullptr);
}

TEST_F(TsDemuxTest, PesHeaderBeyondThePacketIsReportedAndSkipped) {
  FeedTables();
  Packet packet = MakePacket(kVideoPid, true, 0, Bytes(184, 9), true);
  packet[3] = 0x30;
  packet[4] = 180;  // the payload would start at 185, and the PES header would end at 194
  EXPECT_EQ(Printed([&] { Feed(packet); }), "total_len : 194 \n");
}

TEST_F(TsDemuxTest, WrongPesHeaderLengthIsReportedAndSkipped) {
  FeedTables();
  Bytes pes = MakePes(90'000, Bytes(10, 1));
  pes[8] = 200;
  const Packet packet = MakePacket(kVideoPid, true, 0, pes, true);
  EXPECT_EQ(Printed([&] { Feed(packet); }), "total_len:213, pes_header_data_len:0xc8\n");
}

// A packet of the video PID whose payload of `size` bytes starts a PES packet and is all 0xFF.
Packet PesStartOfSize(std::size_t size) {
  return MakePacket(kVideoPid, true, 0, Bytes(size, 0xFF));
}

TEST_F(TsDemuxTest, PesHeaderThatEndsWithThePacketIsReportedAndSkipped) {
  FeedTables();
  FeedVideo(90'000, Bytes(10, 1));
  EXPECT_EQ(Printed([] { Feed(PesStartOfSize(9)); }), "total_len : 188 \n");
  EXPECT_EQ(PopVideoFrame(), nullptr) << "the previous frame is not complete yet";
}

TEST_F(TsDemuxTest, PesHeaderWithOneByteAfterItIsRead) {
  FeedTables();
  EXPECT_EQ(Printed([] { Feed(PesStartOfSize(10)); }), "total_len:442, pes_header_data_len:0xff\n");
}

TEST_F(TsDemuxTest, PesHeaderDataThatEndsWithThePacketIsReportedAndSkipped) {
  FeedTables();
  FeedVideo(90'000, Bytes(10, 1));
  EXPECT_EQ(Printed([] { Feed(MakePacket(kVideoPid, true, 0, MakePes(93'600, {}))); }),
            "total_len:188, pes_header_data_len:0x5\n");
  EXPECT_EQ(PopVideoFrame(), nullptr) << "the previous frame is not complete yet";
}

TEST_F(TsDemuxTest, PesHeaderDataWithOneByteAfterItBeginsAPesPacket) {
  FeedTables();
  FeedVideo(90'000, Bytes(10, 1));
  EXPECT_EQ(Printed([] { Feed(MakePacket(kVideoPid, true, 0, MakePes(93'600, {7}))); }), "");
  EXPECT_NE(PopVideoFrame(), nullptr);
  FeedVideo(97'200, Bytes(10, 3));
  EXPECT_EQ(PayloadOf(PopVideoFrame()), Bytes{7});
}

TEST_F(TsDemuxTest, AdaptationFieldLongerThanThePacketAddsNothing) {
  FeedTables();
  FeedVideo(90'000, Bytes(10, 1));
  Packet packet = MakePacket(kVideoPid, false, 1, Bytes(184, 9), true);
  packet[3] = 0x31;
  packet[4] = 255;
  Feed(packet);
  FeedVideo(93'600, Bytes(10, 2));
  EXPECT_EQ(PopVideoFrame()->size, 10);
}

TEST_F(TsDemuxTest, PacketWithoutASyncByteIsReportedAndSkipped) {
  FeedTables();
  Packet packet = MakePat();
  packet[0] = 0;
  EXPECT_EQ(Printed([&] { Feed(packet); }), "The ts packet has not sync byte\n");
}

TEST_F(TsDemuxTest, TailShorterThanAPacketIsIgnored) {
  const Bytes stream = MakeStream(3);
  {
    const TsDemuxLock lock;
    ts_demux_feed(stream.data(), static_cast<std::int32_t>(stream.size() - 1));
    ts_demux_feed(stream.data(), 187);
    ts_demux_feed(stream.data(), -188);
  }
  EXPECT_EQ(CountVideo(), 2U);
}

TEST_F(TsDemuxTest, MissingBufferIsReported) {
  const TsDemuxLock lock;
  EXPECT_EQ(Printed([] { ts_demux_feed(nullptr, 188); }), "parameter error\n");
  EXPECT_EQ(Printed([] { ts_parse_packets(nullptr, MakePat().data(), 1); }), "parameter error\n");
}

TEST_F(TsDemuxTest, ShortBufferThatIsNoPacketIsReportedWhileNoProgramIsKnown) {
  const TsDemuxLock lock;
  const std::uint8_t byte = 0;
  EXPECT_EQ(Printed([&] { ts_demux_feed(&byte, 1); }), "The packet isn't TS packet\n");
  EXPECT_EQ(Printed([&] { ts_demux_feed(&byte, 0); }), "");
}

TEST_F(TsDemuxTest, HtmlPageYieldsNoFrame) {
  std::string page = "<html><body>gone</body></html>";
  page.resize(1880, ' ');
  const TsDemuxLock lock;
  EXPECT_EQ(
      Printed([&] { ts_demux_feed(reinterpret_cast<const std::uint8_t*>(page.data()), 1880); }),
      "The packet isn't TS packet\n");
  EXPECT_EQ(PopVideoFrame(), nullptr);
}

}  // namespace
}  // namespace stream
