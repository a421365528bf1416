// Demultiplexes real transport streams and compares the frames with ffprobe and ffmpeg.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <random>
#include <span>

#include "common/byte_buffer.h"
#include "common/frame_queue.h"
#include "tests/golden/frame_dump.h"
#include "tests/golden/media_samples.h"
#include "tests/golden/media_tools.h"
#include "tests/golden/reference_reader.h"
#include "ts/ts_demux.h"
#include "ts/ts_packet.h"

namespace stream {
namespace {

using Bytes = std::span<const std::uint8_t>;

void FeedPacketByPacket(Bytes stream) {
  for (std::size_t at = 0; at + kTsPacketSize <= stream.size(); at += kTsPacketSize) {
    ts_demux_feed(stream.data() + at, static_cast<std::int32_t>(kTsPacketSize));
  }
}

void FeedInOneCall(Bytes stream) {
  ts_demux_feed(stream.data(), static_cast<std::int32_t>(stream.size()));
}

// Feeds as the pipeline does: appends each block to the staging buffer and feeds the whole packets
// that it then holds.
void FeedInPieces(Bytes stream, const std::function<std::size_t()>& next_size) {
  CByteBuffer staged;
  ASSERT_EQ(staged.Initialize(), kBufferOk);
  while (!stream.empty()) {
    const Bytes piece = stream.first(std::min(stream.size(), next_size()));
    stream = stream.subspan(piece.size());
    ASSERT_EQ(staged.Append(piece.data(), static_cast<std::uint32_t>(piece.size())), kBufferOk);
    const auto whole = staged.Size() / kTsPacketSize * kTsPacketSize;
    FeedPacketByPacket({staged.ContinuePtr(), whole});
    ASSERT_EQ(staged.MoveStart(static_cast<std::uint32_t>(whole)), kBufferOk);
  }
}

FrameDump Demultiplex(Bytes stream, const std::function<void(Bytes)>& feed) {
  const TsDemuxLock lock;
  ProcessTsDemuxer().Reset();
  ResetFrameQueues();
  feed(stream);
  return PopQueuedFrames();
}

// A PES packet is queued when the next one begins, so the last packet of the reference has no
// counterpart.
void ExpectReferenceButItsLastPacket(const std::vector<DumpedFrame>& frames,
                                     const ReferenceStream& reference) {
  ASSERT_FALSE(frames.empty());
  ASSERT_EQ(frames.size() + 1, reference.packets.size());
  std::vector<std::uint8_t> payloads;
  for (std::size_t i = 0; i < frames.size(); ++i) {
    SCOPED_TRACE("frame " + std::to_string(i));
    const ReferencePacket& packet = reference.packets[i];
    EXPECT_EQ(frames[i].pts, packet.pts);
    if (packet.dts != packet.pts) {
      EXPECT_EQ(frames[i].dts, packet.dts);
    }
    EXPECT_EQ(frames[i].payload.size(), packet.size);
    EXPECT_TRUE(frames[i].intact);
    payloads.insert(payloads.end(), frames[i].payload.begin(), frames[i].payload.end());
  }
  ASSERT_EQ(payloads.size() + reference.packets.back().size, reference.bytes.size());
  EXPECT_TRUE(std::equal(payloads.begin(), payloads.end(), reference.bytes.begin()));
}

bool SomeCarryDecodeTimes(const ReferenceStream& reference) {
  return std::any_of(reference.packets.begin(), reference.packets.end(),
                     [](const ReferencePacket& packet) { return packet.dts != packet.pts; });
}

class TsGoldenTest : public testing::TestWithParam<MediaSample> {
 protected:
  ScratchDirectory scratch_;
  const std::filesystem::path file_ = FileOf(GetParam());
  const std::vector<std::uint8_t> stream_ = ReadWholeFile(file_);
};

TEST_P(TsGoldenTest, VideoMatchesTheReferenceReader) {
  const ReferenceStream reference = ReadReference(file_, GetParam().video_pid, scratch_);
  ASSERT_TRUE(SomeCarryDecodeTimes(reference));
  const FrameDump dump = Demultiplex(stream_, FeedPacketByPacket);
  ExpectReferenceButItsLastPacket(dump.video, reference);
}

TEST_P(TsGoldenTest, AudioMatchesTheReferenceReader) {
  const FrameDump dump = Demultiplex(stream_, FeedPacketByPacket);
  ASSERT_FALSE(dump.video.empty());
  if (GetParam().audio_pid == 0) {
    EXPECT_TRUE(dump.audio.empty());
  } else {
    ExpectReferenceButItsLastPacket(dump.audio,
                                    ReadReference(file_, GetParam().audio_pid, scratch_));
  }
}

TEST_P(TsGoldenTest, VideoAndAudioGoToTheirOwnQueues) {
  const FrameDump dump = Demultiplex(stream_, FeedPacketByPacket);
  const auto is_video = [](const DumpedFrame& frame) { return frame.is_video; };
  ASSERT_FALSE(dump.video.empty());
  EXPECT_TRUE(std::all_of(dump.video.begin(), dump.video.end(), is_video));
  EXPECT_TRUE(std::none_of(dump.audio.begin(), dump.audio.end(), is_video));
}

// The newest frames have no final play time yet. A frame gets it when a later frame with a larger
// PTS has been queued, which with two B-frames in a row takes at most four frames.
TEST_P(TsGoldenTest, FinalPlayTimesNeverDecrease) {
  const FrameDump dump = Demultiplex(stream_, FeedPacketByPacket);
  constexpr std::size_t kNotFinal = 4;
  ASSERT_GT(dump.video.size(), kNotFinal);
  for (const auto* frames : {&dump.video, &dump.audio}) {
    for (std::size_t i = 1; i + kNotFinal < frames->size(); ++i) {
      EXPECT_GE((*frames)[i].play, (*frames)[i - 1].play) << "frame " << i;
    }
  }
}

TEST_P(TsGoldenTest, BlocksOfAnySizeGiveTheSameDump) {
  const std::string expected = DumpText(Demultiplex(stream_, FeedPacketByPacket));
  ASSERT_EQ(expected.rfind("video 0: pts=", 0), 0U);
  for (const std::size_t size : {std::size_t{1}, kTsPacketSize - 1, kTsPacketSize,
                                 kTsPacketSize + 1, std::size_t{1000}, std::size_t{16384}}) {
    SCOPED_TRACE("blocks of " + std::to_string(size));
    const auto feed = [size](Bytes all) { FeedInPieces(all, [size] { return size; }); };
    EXPECT_EQ(DumpText(Demultiplex(stream_, feed)), expected);
  }
}

TEST_P(TsGoldenTest, BlocksOfChangingSizeGiveTheSameDump) {
  const std::string expected = DumpText(Demultiplex(stream_, FeedPacketByPacket));
  for (const unsigned seed : {1U, 2U, 3U}) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::minstd_rand random(seed);
    const auto feed = [&random](Bytes all) {
      FeedInPieces(all, [&random] { return std::size_t{1} + random() % 5000; });
    };
    EXPECT_EQ(DumpText(Demultiplex(stream_, feed)), expected);
  }
}

// The probe then scans the whole stream before the first frame is queued.
TEST_P(TsGoldenTest, OneCallForAllGivesTheSameDump) {
  const std::string expected = DumpText(Demultiplex(stream_, FeedPacketByPacket));
  EXPECT_EQ(DumpText(Demultiplex(stream_, FeedInOneCall)), expected);
}

INSTANTIATE_TEST_SUITE_P(Samples, TsGoldenTest, testing::ValuesIn(MediaSamples()),
                         [](const auto& suite) { return suite.param.name; });

// The video PIDs that a context uses over time, packet by packet, without consecutive duplicates.
std::vector<std::uint16_t> VideoPidsOverTime(Bytes stream) {
  ts_context context;
  std::vector<std::uint16_t> pids;
  for (std::size_t at = 0; at + kTsPacketSize <= stream.size(); at += kTsPacketSize) {
    const std::uint8_t* packet = stream.data() + at;
    if (context.handler == nullptr) ts_probe(context, ts_parse_packets, packet, 1);
    if (context.handler == nullptr) continue;
    if (pids.empty()) pids.push_back(context.video_pid);
    context.handler(&context, packet, 1);
    if (context.video_pid != pids.back()) pids.push_back(context.video_pid);
    EXPECT_EQ(context.AudioPid(), 0x101) << "at packet " << at / kTsPacketSize;
  }
  return pids;
}

TEST(TsTwoProgramsTest, VideoSwitchesAtEveryPmtAndAudioStaysWithTheFirstProgram) {
  const std::vector<std::uint8_t> stream = ReadWholeFile(FileOf(TwoProgramsSample()));
  const TsDemuxLock lock;
  ProcessTsDemuxer().Reset();
  ResetFrameQueues();

  const std::vector<std::uint16_t> pids = VideoPidsOverTime(stream);

  constexpr std::size_t kPmtsAtLeast = 20;  // of each program, in four seconds
  EXPECT_GE(pids.size(), 2 * kPmtsAtLeast);
  for (std::size_t i = 0; i < pids.size(); ++i) {
    EXPECT_EQ(pids[i], i % 2 == 0 ? 0x100 : 0x102) << "change " << i;
  }
}

}  // namespace
}  // namespace stream
