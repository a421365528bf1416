// Plays real MP4 files with the track reader and over HTTP, and compares the frames with ffprobe
// and ffmpeg.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "tests/golden/made_once.h"
#include "tests/golden/media_tools.h"
#include "tests/golden/mp4_reference.h"
#include "tests/support/mp4_play.h"
#include "tests/support/mp4_tasks.h"

namespace stream {
namespace {

using mp4_boxes::Box;
using mp4_boxes::FullBox;
using mp4_boxes::U32;
using mp4_boxes::U64;
using mp4_test::Append;
using mp4_test::Bytes;
using mp4_test::Join;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// --- Samples ---

constexpr char kPicture[] = " -f lavfi -i testsrc2=size=160x120:rate=25:duration=2";
constexpr char kOtherPicture[] = " -f lavfi -i testsrc=size=80x60:rate=30:duration=2";
constexpr char kTone[] = " -f lavfi -i sine=frequency=440:sample_rate=48000:duration=2";
constexpr char kH264[] = " -c:v libx264 -preset ultrafast -g 25 -pix_fmt yuv420p";
constexpr char kH265[] =
    " -c:v libx265 -preset ultrafast -x265-params log-level=error:pools=1 -pix_fmt yuv420p";
constexpr char kAac[] = " -c:a aac -b:a 96k -ac 2";

struct Mp4GoldenSample {
  std::string name;
  std::string arguments;
  std::function<Bytes(const Bytes&)> change = {};  // of the file, for what ffmpeg cannot make
};

void PrintTo(const Mp4GoldenSample& sample, std::ostream* out) { *out << sample.name; }

Bytes Piece(const Bytes& bytes, std::size_t at, std::size_t size) {
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
  return {begin, begin + static_cast<std::ptrdiff_t>(size)};
}

std::uint32_t Number(const Bytes& bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value << 8 | bytes[at + i];
  return value;
}

std::string Type(const Bytes& bytes, std::size_t at) {
  const Bytes type = Piece(bytes, at + 4, 4);
  return {type.begin(), type.end()};
}

// The table of chunk offsets, with 64 bits per offset.
Bytes LargeOffsetBox(const Bytes& body) {
  Bytes entries = U32(Number(body, 4));
  for (std::size_t at = 8; at + 4 <= body.size(); at += 4) Append(entries, U64(Number(body, at)));
  return FullBox("co64", 0, entries);
}

// Rewrites all boxes with chunk offsets of 64 bits. The index grows, so it must be after the data.
Bytes WithLargeOffsets(const Bytes& boxes) {
  Bytes out;
  for (std::size_t at = 0; at < boxes.size(); at += Number(boxes, at)) {
    const std::string type = Type(boxes, at);
    const Bytes body = Piece(boxes, at + 8, Number(boxes, at) - 8);
    if (type == "stco") {
      Append(out, LargeOffsetBox(body));
    } else if (type == "moov" || type == "trak" || type == "mdia" || type == "minf" ||
               type == "stbl") {
      Append(out, Box(type, WithLargeOffsets(body)));
    } else {
      Append(out, Box(type, body));
    }
  }
  return out;
}

// ffmpeg writes an empty box before the data, which leaves space for a size of 64 bits.
Bytes WithLargeDataBox(const Bytes& boxes) {
  Bytes out = boxes;
  std::size_t at = 0;
  while (Type(boxes, at) != "free") at += Number(boxes, at);
  const Bytes head = Join({U32(1), mp4_boxes::Text("mdat"), U64(Number(boxes, at + 8) + 8U)});
  std::copy(head.begin(), head.end(), out.begin() + static_cast<std::ptrdiff_t>(at));
  return out;
}

// Returns the file unchanged, but checks that ffmpeg wrote headers of 64 bits, which it does only
// when it has to.
Bytes WithWideHeaders(const Bytes& file) {
  for (const std::string type : {"tkhd", "mdhd"}) {
    const auto found = std::search(file.begin(), file.end(), type.begin(), type.end());
    EXPECT_TRUE(file.end() - found > 4 && found[4] == 1) << type;
  }
  return file;
}

std::vector<Mp4GoldenSample> Samples() {
  const std::string both = std::string(kPicture) + kTone + " -map 0:v -map 1:a" + kH264 + kAac;
  const std::string both_b = both + " -bf 2 -x264-params b-adapt=0";
  return {
      {"IndexLastWithBFrames", both_b},
      {"IndexFirstWithBFrames", both_b + " -movflags +faststart"},
      {"WithoutBFrames", both + " -bf 0"},
      {"Audio44100", both_b + " -ar 44100"},
      {"Audio22050", both_b + " -ar 22050"},
      {"Audio96000", both_b + " -ar 96000"},
      {"Audio8000", both_b + " -ar 8000 -b:a 16k"},
      {"NegativeOffsets", both_b + " -movflags negative_cts_offsets"},
      {"DelayedByAnEditList",
       std::string(kPicture) + " -itsoffset 0.7" + kTone + " -map 0:v -map 1:a" + kH264 + kAac},
      {"SeveralSlices", both + " -bf 2 -x264-params b-adapt=0:slices=4"},
      {"Version1Boxes", both_b + " -video_track_timescale 1100000000 -movie_timescale 2147483647",
       WithWideHeaders},
      {"LargeOffsets", both_b, WithLargeOffsets},
      {"LargeDataBox", both_b, WithLargeDataBox},
      {"TwoVideoTracks", std::string(kPicture) + kOtherPicture + kTone +
                             " -map 0:v -map 1:v -map 2:a" + kH264 + kAac}};
}

// The file of the sample. It is shared; only a sample with a change gets a file of its own in
// `scratch`.
std::filesystem::path MakeMp4(const Mp4GoldenSample& sample, const ScratchDirectory& scratch) {
  const std::string command = "ffmpeg -nostdin -v error -y" + sample.arguments +
                              " -threads 1 -flags +bitexact -fflags +bitexact -f mp4 ";
  const auto made = MadeOnce("sample.mp4", command, [&](const auto& file) {
    RunTool(command + Quoted(file), scratch.File("nothing"));
  });
  if (!sample.change) return made;
  auto file = scratch.File("sample.mp4");
  mp4_boxes::WriteFile(file.string(), sample.change(ReadWholeFile(made)));
  return file;
}

// --- Comparison ---

bool IsParameterSet(const Bytes& unit) {
  const unsigned type = unit.front() & 0x1FU;
  return type == 7 || type == 8;
}

// The NAL units of frames. Each frame begins with a start code, and the first frame also has the
// parameter sets.
std::vector<Bytes> UnitsOf(const std::vector<DumpedFrame>& frames) {
  std::vector<Bytes> units;
  for (const DumpedFrame& frame : frames) {
    for (Bytes& unit : SplitAtStartCodes(frame.payload)) units.push_back(std::move(unit));
  }
  return units;
}

// ffmpeg repeats the parameter sets in every key frame, after some of its other headers.
void ExpectSameUnits(std::vector<Bytes> units, std::vector<Bytes> expected) {
  std::vector<Bytes> sets;
  std::copy_if(expected.begin(), expected.end(), std::back_inserter(sets), IsParameterSet);
  ASSERT_GE(sets.size(), 2U);
  ASSERT_GE(units.size(), 2U);
  EXPECT_EQ(units[0], sets[0]);
  EXPECT_EQ(units[1], sets[1]);
  units.erase(units.begin(), units.begin() + 2);
  std::erase_if(expected, IsParameterSet);
  EXPECT_TRUE(units == expected) << units.size() << " units, not " << expected.size();
}

// Frames with the same time belong to one sample.
struct SampleOfFrames {
  std::uint64_t dts;
  std::size_t size;  // with four-byte lengths instead of the start codes
};

std::vector<SampleOfFrames> SamplesOf(const std::vector<DumpedFrame>& frames) {
  std::vector<SampleOfFrames> samples;
  for (const DumpedFrame& frame : frames) {
    EXPECT_EQ(frame.pts, frame.dts);
    EXPECT_EQ(frame.play, frame.dts);
    if (samples.empty() || samples.back().dts != frame.dts) samples.push_back({frame.dts, 0});
    samples.back().size += frame.payload.size();
  }
  return samples;
}

class Mp4GoldenTest : public Mp4Tasks, public testing::WithParamInterface<Mp4GoldenSample> {
 protected:
  std::filesystem::path Make() { return MakeMp4(GetParam(), scratch_); }

  void ExpectVideo(const std::filesystem::path& file, const std::vector<DumpedFrame>& frames) {
    const auto packets = ReadMp4Packets(file, "v:0", scratch_);
    const auto units = UnitsOf(frames);
    ASSERT_THAT(packets, SizeIs(50));
    ExpectSameUnits(units, ReadMp4Units(file, "v:0", scratch_));
    auto samples = SamplesOf(frames);
    ASSERT_EQ(samples.size(), packets.size());
    samples[0].size -= units[0].size() + units[1].size() + 8;
    for (std::size_t i = 0; i < samples.size(); ++i) {
      EXPECT_EQ(samples[i].dts, packets[i].dts_ms * 90) << "sample " << i;
      EXPECT_EQ(samples[i].size, packets[i].size) << "sample " << i;
    }
  }

  void ExpectAudio(const std::filesystem::path& file, const std::vector<DumpedFrame>& frames) {
    const auto packets = ReadMp4Packets(file, "a:0", scratch_);
    ASSERT_EQ(frames.size(), packets.size());
    Bytes stream;
    for (std::size_t i = 0; i < frames.size(); ++i) {
      EXPECT_EQ(frames[i].dts, packets[i].dts_ms * 90) << "frame " << i;
      EXPECT_EQ(frames[i].payload.size(), packets[i].size + 7) << "frame " << i;
      Append(stream, frames[i].payload);
    }
    EXPECT_TRUE(stream == ReadMp4Stream(file, "a:0", "-f adts", scratch_));
  }

  // Buffered times are presentation times.
  void ExpectBufferedTimes(const std::filesystem::path& file) {
    const auto packets = ReadMp4Packets(file, "v:0", scratch_);
    const auto told = player_.Snapshot().buffered_times;
    ASSERT_EQ(told.size(), packets.size());
    for (std::size_t i = 0; i < told.size(); ++i) {
      // Time and offset are each truncated to whole milliseconds.
      EXPECT_NEAR(told[i], static_cast<float>(packets[i].pts_ms) / 1000, 0.0015F) << "sample " << i;
    }
  }

  ScratchDirectory scratch_;
};

TEST_P(Mp4GoldenTest, FramesMatchTheReferenceReader) {
  const auto file = Make();
  const FrameDump dump = Pass(Whole(file.string()));
  ExpectVideo(file, dump.video);
  ExpectAudio(file, dump.audio);
  ExpectBufferedTimes(file);
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY MP4 H264:http://host/a.mp4"));
}

INSTANTIATE_TEST_SUITE_P(Samples, Mp4GoldenTest, testing::ValuesIn(Samples()),
                         [](const auto& suite) { return suite.param.name; });

// --- Samples with other tracks or codecs ---

class Mp4OddSampleTest : public Mp4Tasks {
 protected:
  FrameDump PassOverSample(const std::string& arguments) {
    file_ = MakeMp4({"", arguments}, scratch_);
    return Pass(Whole(file_.string()));
  }

  ScratchDirectory scratch_;
  std::filesystem::path file_;
};

TEST_F(Mp4OddSampleTest, Mp3IsDeliveredWithAdtsHeaders) {
  const FrameDump dump = PassOverSample(std::string(kPicture) + kTone + " -map 0:v -map 1:a" +
                                        kH264 + " -c:a libmp3lame -ar 44100 -ac 2");
  Bytes stream;
  for (const DumpedFrame& frame : dump.audio) {
    const Bytes body = Piece(frame.payload, 7, frame.payload.size() - 7);
    EXPECT_EQ(frame.payload, mp4_test::WithAdtsHeader(body, 4, 2));
    Append(stream, body);
  }
  EXPECT_TRUE(stream == ReadMp4Stream(file_, "a:0", "-f data", scratch_));
  EXPECT_THAT(dump.audio, SizeIs(ReadMp4Packets(file_, "a:0", scratch_).size()));
}

TEST_F(Mp4OddSampleTest, VideoAloneIsDeliveredWhole) {
  const FrameDump dump = PassOverSample(std::string(kPicture) + kH264);
  ExpectSameUnits(UnitsOf(dump.video), ReadMp4Units(file_, "v:0", scratch_));
  EXPECT_THAT(dump.audio, IsEmpty());
}

TEST_F(Mp4OddSampleTest, AudioAloneGivesNoFrame) {
  EXPECT_EQ(DumpText(PassOverSample(std::string(kTone) + kAac)), "");
  EXPECT_THAT(player_.Snapshot().messages, IsEmpty());
}

TEST_F(Mp4OddSampleTest, H265IsReportedAndRefused) {
  EXPECT_EQ(DumpText(PassOverSample(std::string(kPicture) + kTone + " -map 0:v -map 1:a" + kH265 +
                                    " -tag:v hvc1" + kAac)),
            "");
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY MP4 H265:http://host/a.mp4"));
}

TEST_F(Mp4OddSampleTest, H265NamedHev1IsReportedAsHev1) {
  EXPECT_EQ(DumpText(PassOverSample(std::string(kPicture) + kH265 + " -tag:v hev1")), "");
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY MP4 hev1:http://host/a.mp4"));
}

TEST_F(Mp4OddSampleTest, Mpeg4VideoIsReportedAndRefused) {
  EXPECT_EQ(DumpText(PassOverSample(std::string(kPicture) + " -c:v mpeg4")), "");
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY MP4 mp4v:http://host/a.mp4"));
}

TEST_F(Mp4OddSampleTest, FragmentedFileGivesNoFrame) {
  EXPECT_EQ(DumpText(PassOverSample(std::string(kPicture) + kTone + " -map 0:v -map 1:a" + kH264 +
                                    kAac + " -movflags frag_keyframe+empty_moov")),
            "");
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY MP4 H264:http://host/a.mp4"));
}

// --- Channels ---

struct ChannelSample {
  int channels;
  std::string layout;  // as ffprobe calls it
};

void PrintTo(const ChannelSample& sample, std::ostream* out) { *out << sample.layout; }

// AAC with different numbers of channels. ffmpeg always writes two into the sample entry.
class Mp4ChannelsTest : public Mp4PlayFixture, public testing::WithParamInterface<ChannelSample> {
 protected:
  std::filesystem::path Make() {
    const std::string channels = std::to_string(GetParam().channels);
    auto file = MakeMp4({"", std::string(kPicture) + kTone + " -map 0:v -map 1:a" + kH264 +
                                 " -c:a aac -b:a 192k -ac " + channels},
                        scratch_);
    EXPECT_EQ(MP4GetTrackAudioChannels(Mp4FileHandle(MP4Read(file.c_str())).get(), 2), 2);
    return file;
  }

  // Decodes the frames with ffmpeg and returns the format that ffprobe reports. Throws if a frame
  // cannot be decoded, and fails if ffmpeg prints anything.
  std::string Decoded(const std::vector<DumpedFrame>& frames) {
    Bytes stream;
    for (const DumpedFrame& frame : frames) Append(stream, frame.payload);
    const auto aac = scratch_.File("frames.aac");
    mp4_boxes::WriteFile(aac.string(), stream);
    RunTool("ffmpeg -nostdin -v warning -xerror -err_detect explode -i " + Quoted(aac) +
                " -f s16le -ac " + std::to_string(GetParam().channels) + " -y " +
                Quoted(scratch_.File("pcm")) + " 2>&1",
            scratch_.File("said"));
    EXPECT_EQ(TextOf("said"), "");
    RunTool(
        "ffprobe -v fatal -show_entries stream=channels,channel_layout,sample_rate -of csv=p=0 " +
            Quoted(aac),
        scratch_.File("probe"));
    return TextOf("probe");
  }

  std::string TextOf(const std::string& name) {
    const Bytes bytes = ReadWholeFile(scratch_.File(name));
    return {bytes.begin(), bytes.end()};
  }

  ScratchDirectory scratch_;
};

TEST_P(Mp4ChannelsTest, FramesThatReachThePlayerCanBeDecoded) {
  const auto file = Make();
  server_.Serve(ReadWholeFile(file));
  PlayToTheEnd();
  const FrameDump dump = DumpOf(player_.Snapshot());
  EXPECT_EQ(dump.audio.size(), ReadMp4Packets(file, "a:0", scratch_).size());
  EXPECT_EQ(Decoded(dump.audio),
            "48000," + std::to_string(GetParam().channels) + ',' + GetParam().layout + '\n');
  constexpr std::uintmax_t kSamples = 1024;  // of each channel in a frame, two bytes each
  EXPECT_EQ(std::filesystem::file_size(scratch_.File("pcm")),
            dump.audio.size() * kSamples * 2 * static_cast<unsigned>(GetParam().channels));
}

INSTANTIATE_TEST_SUITE_P(Layouts, Mp4ChannelsTest,
                         testing::Values(ChannelSample{1, "mono"}, ChannelSample{2, "stereo"},
                                         ChannelSample{6, "5.1"}),
                         [](const auto& suite) {
                           return std::to_string(suite.param.channels) + "Channels";
                         });

// --- Over HTTP ---

class Mp4GoldenHttpTest : public Mp4PlayFixture,
                          public testing::WithParamInterface<Mp4GoldenSample> {
 protected:
  // The dump of one pass through the whole file.
  static std::string FromFile(const std::filesystem::path& file) {
    ResetFrameQueues();
    g_mp4Running = true;
    Mp4TrackReader reader{PlayerPort()};
    const std::atomic<float> start_position{0};
    reader.RunPass({RunId{}, "", file.string(), {0, 999'999'999}, 1, start_position});
    g_mp4Running = false;
    return DumpText(PopQueuedFrames());
  }

  ScratchDirectory scratch_;
};

TEST_P(Mp4GoldenHttpTest, BlocksGiveTheDumpOfTheFile) {
  const auto file = MakeMp4(GetParam(), scratch_);
  const std::string expected = FromFile(file);
  ASSERT_EQ(expected.rfind("video 0: pts=0", 0), 0U);
  server_.Serve(ReadWholeFile(file));
  server_.Answer({{.piece = 3000, .pause = std::chrono::milliseconds(1)}});
  EXPECT_EQ(PlayToTheEnd(), expected);
}

TEST_P(Mp4GoldenHttpTest, AllAtOnceGivesTheDumpOfTheFile) {
  const auto file = MakeMp4(GetParam(), scratch_);
  server_.Serve(ReadWholeFile(file));
  EXPECT_EQ(PlayToTheEnd(), FromFile(file));
}

// Index last and index first.
INSTANTIATE_TEST_SUITE_P(Samples, Mp4GoldenHttpTest,
                         testing::Values(Samples().at(0), Samples().at(1)),
                         [](const auto& suite) { return suite.param.name; });

}  // namespace
}  // namespace stream
