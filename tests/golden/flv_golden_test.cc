// Parses real FLV files and compares the frames with ffprobe and ffmpeg.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <span>
#include <string>

#include "tests/golden/frame_dump.h"
#include "tests/golden/media_samples.h"
#include "tests/golden/media_tools.h"
#include "tests/golden/reference_reader.h"
#include "tests/support/flv_parse.h"

namespace stream {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kAdtsSize = 7;
constexpr std::uint64_t kTicksPerMillisecond = 90;
constexpr int kSps = 7;
constexpr int kPps = 8;

int TypeOf(const Bytes& nal) { return nal.empty() ? -1 : nal.front() & 0x1F; }

// The NAL units of an Annex B stream with start codes of three or four bytes.
std::vector<Bytes> SplitNalUnits(const Bytes& stream) {
  static constexpr std::uint8_t kStart[] = {0, 0, 1};
  const auto next = [&stream](auto from) {
    return std::search(from, stream.end(), std::begin(kStart), std::end(kStart));
  };
  std::vector<Bytes> nals;
  for (auto at = next(stream.begin()); at != stream.end();) {
    const auto begin = at + 3;
    at = next(begin);
    auto end = at;
    while (end != begin && *(end - 1) == 0) --end;  // the first byte of a long start code
    nals.emplace_back(begin, end);
  }
  return nals;
}

// ffmpeg repeats the parameter sets of the sequence header before every key frame. A copy of a
// transport stream has them there itself.
std::vector<Bytes> WithoutParameterSets(std::vector<Bytes> nals) {
  std::erase_if(nals, [](const Bytes& nal) { return TypeOf(nal) == kSps || TypeOf(nal) == kPps; });
  return nals;
}

Bytes FirstOfType(const std::vector<Bytes>& nals, int type) {
  for (const Bytes& nal : nals) {
    if (TypeOf(nal) == type) return nal;
  }
  return {};
}

class FlvGoldenTest : public testing::TestWithParam<FlvSample> {
 protected:
  FlvGoldenTest() : file_(FileOf(GetParam())) {
    const ParsedFlv parsed = ParseFlv(ReadWholeFile(file_));
    dump_ = parsed.frames;
    console_ = parsed.console;
  }

  // The NAL unit of each frame. Every frame begins with a start code of four bytes.
  std::vector<Bytes> VideoNalUnits() const {
    std::vector<Bytes> nals;
    for (const DumpedFrame& frame : dump_.video) {
      EXPECT_TRUE(frame.payload.size() > 4 && frame.payload[2] == 0 && frame.payload[3] == 1);
      nals.emplace_back(frame.payload.begin() + 4, frame.payload.end());
    }
    return nals;
  }

  // The errors that ffmpeg prints when it decodes `stream` as an AAC file.
  std::string ErrorsOfDecoding(const Bytes& stream) const {
    const std::filesystem::path aac = scratch_.File("frames.aac");
    std::ofstream(aac, std::ios::binary)
        .write(reinterpret_cast<const char*>(stream.data()),
               static_cast<std::streamsize>(stream.size()));
    const std::filesystem::path errors = scratch_.File("errors");
    RunTool("ffmpeg -v error -xerror -i " + Quoted(aac) + " -f null - 2>&1", errors);
    const Bytes text = ReadWholeFile(errors);
    return {text.begin(), text.end()};
  }

  ScratchDirectory scratch_;
  std::filesystem::path file_;
  FrameDump dump_;
  std::string console_;
};

// Every frame carries the time of its tag. The packet sizes show which frames belong to a tag.
void ExpectTimesOf(const std::vector<ReferencePacket>& packets, std::span<const DumpedFrame> frames,
                   std::size_t added_to_a_packet) {
  ASSERT_FALSE(packets.empty());
  std::size_t at = 0;
  for (const ReferencePacket& packet : packets) {
    std::size_t size = 0;
    while (size < packet.size + added_to_a_packet) {
      ASSERT_LT(at, frames.size());
      size += frames[at].payload.size();
      EXPECT_EQ(frames[at].dts, packet.dts * kTicksPerMillisecond);
      EXPECT_EQ(frames[at].pts, frames[at].dts);
      EXPECT_EQ(frames[at].play, frames[at].dts);
      ++at;
    }
    EXPECT_EQ(size, packet.size + added_to_a_packet);
  }
  EXPECT_EQ(at, frames.size());
}

TEST_P(FlvGoldenTest, NalUnitsMatchTheReferenceReader) {
  const std::vector<Bytes> nals = VideoNalUnits();
  if (!GetParam().has_video) {
    EXPECT_TRUE(nals.empty());
    return;
  }
  const std::vector<Bytes> reference =
      SplitNalUnits(ReadElementaryStream(file_, "v:0", "h264", scratch_));
  ASSERT_GT(nals.size(), 100U);
  EXPECT_EQ(nals[0], FirstOfType(reference, kSps));
  EXPECT_EQ(nals[1], FirstOfType(reference, kPps));
  const std::vector<Bytes> pictures(nals.begin() + 2, nals.end());
  EXPECT_TRUE(WithoutParameterSets(pictures) == WithoutParameterSets(reference));
}

TEST_P(FlvGoldenTest, VideoTimesMatchTheDecodeTimesOfTheReferenceReader) {
  if (!GetParam().has_video) {
    EXPECT_TRUE(dump_.video.empty());
    return;
  }
  const auto packets = ReadPackets(file_, "v:0", scratch_);
  EXPECT_TRUE(std::any_of(packets.begin(), packets.end(), [](const auto& packet) {
    return packet.pts != packet.dts;
  })) << "no B-frames";
  ASSERT_GT(dump_.video.size(), 2U);
  ExpectTimesOf(packets, std::span(dump_.video).subspan(2), 0);
}

TEST_P(FlvGoldenTest, AudioTimesMatchTheReferenceReader) {
  if (GetParam().audio_format.empty()) {
    EXPECT_TRUE(dump_.audio.empty());
  } else {
    ExpectTimesOf(ReadPackets(file_, "a:0", scratch_), dump_.audio, kAdtsSize);
  }
}

// ffmpeg writes AAC into a file in the same form: with a header before each frame.
TEST_P(FlvGoldenTest, AudioMatchesTheReferenceReaderAndAacDecodesWithoutErrors) {
  const std::string& format = GetParam().audio_format;
  if (format.empty()) {
    EXPECT_TRUE(dump_.audio.empty());
    return;
  }
  const bool is_aac = format == "adts";
  Bytes stream;
  for (const DumpedFrame& frame : dump_.audio) {
    ASSERT_GT(frame.payload.size(), kAdtsSize);
    const auto begin = frame.payload.begin() + (is_aac ? 0 : kAdtsSize);
    stream.insert(stream.end(), begin, frame.payload.end());
  }
  EXPECT_TRUE(stream == ReadElementaryStream(file_, "a:0", is_aac ? "adts" : "data", scratch_));
  if (is_aac) {
    EXPECT_EQ(ErrorsOfDecoding(stream), "");
  }
}

TEST_P(FlvGoldenTest, ConsoleLogsTheHeaderTheParameterSetsOnceAndOtherAudio) {
  const auto line = [](const char* text, const DumpedFrame& frame, std::size_t header) {
    return text + std::to_string(frame.payload.size() - header) + "\n";
  };
  std::string expected = "headlength:9\n";
  if (GetParam().has_video) {
    ASSERT_GT(dump_.video.size(), 2U);
    expected += line("sssize:", dump_.video[0], 4) + line("ppsize:", dump_.video[1], 4);
  }
  if (GetParam().audio_format == "mp3") {
    for (const DumpedFrame& frame : dump_.audio) {
      expected += line("write autio data:", frame, kAdtsSize);
    }
  }
  EXPECT_EQ(console_, expected);
}

INSTANTIATE_TEST_SUITE_P(Samples, FlvGoldenTest, testing::ValuesIn(FlvSamples()),
                         [](const auto& suite) { return suite.param.name; });

TEST(FlvSamplesTest, CopyOfATransportStreamBeginsWithAnAacHeaderWithoutAConfiguration) {
  for (const FlvSample& sample : FlvSamples()) {
    if (!sample.is_copy) continue;
    const std::filesystem::path file = FileOf(sample);
    const Bytes stream = ReadWholeFile(file);
    static constexpr std::uint8_t kShortHeader[] = {8, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0xAF, 0};
    EXPECT_NE(
        std::search(stream.begin(), stream.end(), std::begin(kShortHeader), std::end(kShortHeader)),
        stream.end());
    return;
  }
  FAIL() << "no such sample";
}

TEST(FlvSamplesTest, LongTimestampsAreOnBothSidesOfTwentyFourBits) {
  for (const FlvSample& sample : FlvSamples()) {
    if (sample.name != "TimestampsPastTwentyFourBits") continue;
    const std::filesystem::path file = FileOf(sample);
    const auto video = ParseFlv(ReadWholeFile(file)).frames.video;
    ASSERT_GT(video.size(), 2U);
    EXPECT_LT(video[2].dts, 0x1000000 * kTicksPerMillisecond);
    EXPECT_GT(video.back().dts, 0x1000000 * kTicksPerMillisecond);
    return;
  }
  FAIL() << "no such sample";
}

}  // namespace
}  // namespace stream
