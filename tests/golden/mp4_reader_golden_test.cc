// Compares the MP4 reader with ffprobe, on files that ffmpeg makes: the same samples at the same
// offsets with the same times.
#include <gtest/gtest.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "tests/golden/made_once.h"
#include "tests/golden/media_tools.h"
#include "tests/support/mp4_reading.h"

namespace stream {
namespace {

namespace fs = std::filesystem;

struct Mp4Sample {
  std::string name;
  std::string arguments;  // of ffmpeg, from the inputs on
  std::string suffix = ".mp4";
};

void PrintTo(const Mp4Sample& sample, std::ostream* out) { *out << sample.name; }

const std::string kVideo = "-f lavfi -i testsrc2=size=320x180:rate=25:duration=4 ";
const std::string kAudio = "-f lavfi -i sine=frequency=440:sample_rate=48000:duration=4 ";
const std::string kH264 = "-c:v libx264 -preset veryfast -g 25 -bf 2 -pix_fmt yuv420p ";
// For a single channel ffmpeg would still write two into the file.
const std::string kAac = "-c:a aac -b:a 96k -ac 2 ";

std::string AacAt(const std::string& rate) {
  return "-f lavfi -i sine=frequency=440:sample_rate=" + rate + ":duration=4 " + kAac;
}

std::vector<Mp4Sample> Samples() {
  const std::string both = kVideo + kAudio + kH264 + kAac;
  return {{"IndexLast", both},
          {"IndexFirst", both + "-movflags +faststart"},
          {"NegativeCompositionOffsets", both + "-movflags +negative_cts_offsets"},
          {"WithoutReordering", kVideo + kAudio + kH264 + "-bf 0 " + kAac},
          {"EditList", both + "-ss 1.3 -movflags +faststart"},
          {"H265", kVideo + kAudio + "-c:v libx265 -preset ultrafast -x265-params log-level=0 " +
                       "-tag:v hvc1 " + kAac},
          {"QuickTime", both, ".mov"},
          {"Mp3", kVideo + kAudio + kH264 + "-c:a libmp3lame -ac 2"},
          {"TwoVideoTracks", kVideo + kVideo + "-map 0 -map 1 " + kH264},
          {"AudioAlone44100", AacAt("44100")},
          {"AudioAlone22050", AacAt("22050")},
          {"AudioAlone96000", AacAt("96000")}};
}

// A shared file. The suffix of its name selects the format.
fs::path MakeMp4(const std::string& name, const std::string& arguments) {
  const std::string command = "ffmpeg -v error -y " + arguments + ' ';
  return MadeOnce(name, command, [&](const fs::path& file) {
    RunTool(command + Quoted(file), file.string() + ".log");
  });
}

struct Packet {
  MP4Timestamp pts = 0;
  std::uint64_t size = 0;
  std::uint64_t place = 0;
  bool key = false;

  bool operator==(const Packet&) const = default;
};

void PrintTo(const Packet& packet, std::ostream* out) {
  *out << "pts " << packet.pts << ", " << packet.size << " bytes at " << packet.place
       << (packet.key ? ", key" : "");
}

class Mp4ReaderGoldenTest : public testing::TestWithParam<Mp4Sample> {
 protected:
  void SetUp() override {
    path_ = MakeMp4("sample" + GetParam().suffix, GetParam().arguments);
    bytes_ = ReadWholeFile(path_);
    file_.reset(MP4Read(path_.c_str()));
    ASSERT_TRUE(file_);
  }

  // Ignores edit lists, as the reader does.
  nlohmann::json Probe(const std::string& what) const {
    RunTool("ffprobe -v error -ignore_editlist 1 " + what + " -of json " + Quoted(path_),
            scratch_.File("probe"));
    const std::vector<std::uint8_t> text = ReadWholeFile(scratch_.File("probe"));
    return nlohmann::json::parse(text.begin(), text.end());
  }

  std::vector<Packet> Expected(std::size_t stream) const {
    const nlohmann::json document =
        Probe("-show_packets -select_streams " + std::to_string(stream) +
              " -show_entries packet=pts,size,pos,flags");
    std::vector<Packet> packets;
    for (const nlohmann::json& packet : document.at("packets")) {
      packets.push_back({packet.at("pts").get<MP4Timestamp>(),
                         std::stoull(packet.at("size").get<std::string>()),
                         std::stoull(packet.at("pos").get<std::string>()),
                         packet.at("flags").get<std::string>()[0] == 'K'});
    }
    return packets;
  }

  // Also checks the bytes of each sample.
  std::vector<Packet> Found(MP4TrackId track) const {
    std::vector<Packet> packets;
    MP4Timestamp start = 0;
    for (const ReadMp4Sample& sample : ReadMp4Track(file_, track)) {
      const auto id = static_cast<MP4SampleId>(packets.size() + 1);
      const std::uint64_t place = MP4GetSampleFileOffset(file_.get(), track, id);
      const auto offset = static_cast<std::int32_t>(sample.composition);
      const auto in_file = bytes_.begin() + static_cast<std::ptrdiff_t>(place);
      EXPECT_TRUE(std::equal(sample.data.begin(), sample.data.end(), in_file)) << id;
      EXPECT_EQ(sample.start, start) << id;
      EXPECT_EQ(MP4GetSampleTime(file_.get(), track, id), start) << id;
      start += sample.duration;
      packets.push_back({sample.start + static_cast<MP4Timestamp>(std::int64_t{offset}),
                         sample.data.size(), place, sample.sync});
    }
    return packets;
  }

  const ScratchDirectory scratch_;
  fs::path path_;
  std::vector<std::uint8_t> bytes_;
  Mp4FileHandle file_;
};

TEST_P(Mp4ReaderGoldenTest, TracksMatchFfprobe) {
  const nlohmann::json streams = Probe("-show_streams").at("streams");
  ASSERT_EQ(MP4GetNumberOfTracks(file_.get()), streams.size());
  std::uint16_t index = 0;
  for (const nlohmann::json& stream : streams) {
    const MP4TrackId track = MP4FindTrackId(file_.get(), index++);
    EXPECT_EQ(MP4GetTrackMediaDataName(file_.get(), track), stream.at("codec_tag_string"));
    EXPECT_EQ("1/" + std::to_string(MP4GetTrackTimeScale(file_.get(), track)),
              stream.at("time_base"));
    const bool is_sound = stream.at("codec_type") == "audio";
    EXPECT_STREQ(MP4GetTrackType(file_.get(), track), is_sound ? "soun" : "vide");
    EXPECT_EQ(MP4GetTrackAudioChannels(file_.get(), track),
              is_sound ? stream.at("channels").get<int>() : -1);
    EXPECT_EQ(MP4GetTrackAudioMpeg4Type(file_.get(), track),
              stream.at("codec_name") == "aac" ? 2 : 0);
  }
}

TEST_P(Mp4ReaderGoldenTest, SamplesMatchFfprobe) {
  const std::uint32_t tracks = MP4GetNumberOfTracks(file_.get());
  for (std::uint16_t i = 0; i < tracks; ++i) {
    const std::vector<Packet> expected = Expected(i);
    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(Found(MP4FindTrackId(file_.get(), i)), expected) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Files, Mp4ReaderGoldenTest, testing::ValuesIn(Samples()),
                         [](const auto& tested) { return tested.param.name; });

// The reader parses only the index at the top level of the file.
TEST(Mp4ReaderFragmentsTest, FragmentedFileHasTracksAndNoSamples) {
  const fs::path path = MakeMp4(
      "fragments.mp4", kVideo + kAudio + kH264 + kAac + "-movflags +frag_keyframe+empty_moov");
  const Mp4FileHandle file(MP4Read(path.c_str()));
  ASSERT_TRUE(file);
  EXPECT_EQ(MP4GetNumberOfTracks(file.get()), 2U);
  EXPECT_FALSE(ReadMp4(file, 1, 1));
  EXPECT_FALSE(ReadMp4(file, 2, 1));
}

}  // namespace
}  // namespace stream
