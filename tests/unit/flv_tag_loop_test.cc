#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "common/frame_queue.h"
#include "flv/flv_tag_parser.h"
#include "tests/support/flv_memory_source.h"
#include "tests/support/flv_parse.h"
#include "tests/support/flv_tags.h"

namespace stream {
namespace {

using flv_test::AacTag;
using flv_test::AvcBody;
using flv_test::BigEndian;
using flv_test::Bytes;
using flv_test::Header;
using flv_test::Join;
using flv_test::kAudio;
using flv_test::kScript;
using flv_test::kVideo;
using flv_test::NalTag;
using flv_test::Tag;
using flv_test::TagOfSize;
using flv_test::WithLength;

// The number of video frames delivered for this tag and a valid tag after it, which holds one
// frame.
std::size_t FramesOfTagAndAGoodOne(const Bytes& tag) {
  return ParseTags({tag, NalTag(40, {{0x65, 1, 2, 3}})}).frames.video.size();
}

TEST(FlvTagLoopTest, ScriptDataYieldsNoFrameAndNoLine) {
  const ParsedFlv parsed = ParseTags({flv_test::ScriptTag(Bytes(300, 2)), NalTag(0, {{0x65}})});
  EXPECT_EQ(parsed.frames.video.size(), 1U);
  EXPECT_TRUE(parsed.frames.audio.empty());
  EXPECT_EQ(parsed.console, "headlength:9\n");
}

TEST(FlvTagLoopTest, TagsOfOtherTypesAreSkipped) {
  for (const std::uint8_t type : Bytes{0, 1, 7, 10, 15, 40, 41, 255}) {
    EXPECT_EQ(FramesOfTagAndAGoodOne(Tag(type, 0, {0x17, 1, 0, 0, 0})), 1U) << int{type};
  }
}

TEST(FlvTagLoopTest, BackPointersAndStreamIdsAreIgnored) {
  Bytes tag = NalTag(0, {{0x65}});
  for (const std::size_t at : {0U, 1U, 2U, 3U, 12U, 13U, 14U}) tag[at] = 0xFF;
  EXPECT_EQ(FramesOfTagAndAGoodOne(tag), 2U);
}

TEST(FlvTagLoopTest, TagWithoutABodyEndsTheLoop) {
  for (const std::uint8_t type : Bytes{kAudio, kVideo, kScript}) {
    EXPECT_EQ(FramesOfTagAndAGoodOne(Tag(type, 0, {})), 0U) << int{type};
  }
}

TEST(FlvTagLoopTest, UnreadRestOfABodyIsSkipped) {
  const Bytes aac = Tag(kAudio, 0, {0xAF, 5, 1, 2, 3, 4, 5, 6});
  EXPECT_EQ(FramesOfTagAndAGoodOne(aac), 1U);
}

TEST(FlvTagLoopTest, TagTooShortForItsNalUnitYieldsNoFrameAndEndsTheLoop) {
  const Bytes body = AvcBody(1, WithLength({0x41, 1, 2, 3}));
  for (std::size_t missing = 1; missing <= 4; ++missing) {
    const Bytes lying = TagOfSize(body.size() - missing, kVideo, 0, body);
    EXPECT_EQ(FramesOfTagAndAGoodOne(lying), 0U) << missing;
  }
}

TEST(FlvTagLoopTest, NalUnitThatExtendsBeyondItsTagIsNoFrameAndEndsTheLoop) {
  const Bytes units = Join({WithLength({0x65, 9}), BigEndian(10, 4), {0x41, 1, 2}});
  const ParsedFlv parsed =
      ParseTags({Tag(kVideo, 0, AvcBody(1, units)), NalTag(40, {{0x65, 1, 2, 3}})});
  ASSERT_EQ(parsed.frames.video.size(), 1U) << "only the NAL unit before it";
  EXPECT_EQ(parsed.frames.video.front().payload, (Bytes{0, 0, 0, 1, 0x65, 9}));
}

TEST(FlvTagLoopTest, LengthFieldThatExtendsBeyondItsTagEndsTheLoop) {
  for (std::size_t bytes = 1; bytes < 4; ++bytes) {
    const Bytes units = Join({WithLength({0x65, 9}), Bytes(bytes)});
    EXPECT_EQ(FramesOfTagAndAGoodOne(Tag(kVideo, 0, AvcBody(1, units))), 1U) << bytes;
  }
}

TEST(FlvTagLoopTest, ParameterSetThatExtendsBeyondItsTagIsNoFrameAndEndsTheLoop) {
  const Bytes record = flv_test::AvcRecord({{0x67, 1, 2, 3}}, {{0x68, 4, 5}});
  const Bytes after = NalTag(40, {Bytes(100, 0x65)});
  const auto parse = [&](std::size_t size) {
    const Bytes cut(record.begin(), record.begin() + static_cast<std::ptrdiff_t>(size));
    return ParseTags({Tag(kVideo, 0, AvcBody(0, cut)), after});
  };
  const std::size_t sps_end = 6 + 2 + 4;
  for (std::size_t size = 0; size < record.size(); ++size) {
    SCOPED_TRACE(size);
    const ParsedFlv parsed = parse(size);
    EXPECT_EQ(parsed.frames.video.size(), size < sps_end ? 0U : 1U);
    const bool tells_sps = size >= 6 + 2;
    const bool tells_pps = size >= sps_end + 1 + 2;
    EXPECT_EQ(parsed.console, std::string("headlength:9\n") + (tells_sps ? "sssize:4\n" : "") +
                                  (tells_pps ? "ppsize:3\n" : ""));
  }
  EXPECT_EQ(parse(record.size()).frames.video.size(), 3U);
}

TEST(FlvTagLoopTest, VideoTagTooShortForItsFixedFieldsEndsTheLoop) {
  for (std::size_t size = 1; size < 5; ++size) {
    Bytes body = AvcBody(1, {});
    body.resize(size);
    EXPECT_EQ(FramesOfTagAndAGoodOne(Tag(kVideo, 0, body)), 0U) << size;
  }
}

TEST(FlvTagLoopTest, AacTagTooShortForItsPacketTypeYieldsNoFrameAndEndsTheLoop) {
  for (const std::uint8_t next :
       Bytes{0, 1, 2}) {  // the byte after the tag, at the position of the packet type
    Bytes after = NalTag(40, {{0x65, 1, 2, 3}});
    after.front() = next;
    const ParsedFlv parsed = ParseTags({Tag(kAudio, 0, {0xAF}), after});
    EXPECT_TRUE(parsed.frames.video.empty()) << int{next};
    EXPECT_TRUE(parsed.frames.audio.empty()) << int{next};
  }
  EXPECT_EQ(FramesOfTagAndAGoodOne(TagOfSize(1, kAudio, 0, {0xAF, 1, 9})), 0U);
}

TEST(FlvTagLoopTest, AacHeaderTooShortForAConfigurationIsSkipped) {
  for (const Bytes& body : {Bytes{0xAF, 0}, Bytes{0xAF, 0, 0x12}}) {
    const ParsedFlv parsed = ParseFlv(Join({Header(), Tag(kAudio, 0, body), AacTag(20, {1, 2}),
                                            NalTag(40, {{0x65, 1}}), flv_test::LastBackPointer()}),
                                      flv_test::kStereo48);
    EXPECT_EQ(parsed.audio_config, flv_test::kStereo48);
    ASSERT_EQ(parsed.frames.audio.size(), 1U);
    EXPECT_EQ(parsed.frames.audio.front().payload.size(), 7U + 2);
    EXPECT_EQ(parsed.frames.video.size(), 1U);
  }
}

TEST(FlvTagLoopTest, AacTagOfTwoBytesYieldsABareAdtsHeader) {
  const ParsedFlv parsed = ParseTags({Tag(kAudio, 0, {0xAF, 1}), NalTag(40, {{0x65}})});
  ASSERT_EQ(parsed.frames.audio.size(), 1U);
  EXPECT_EQ(parsed.frames.audio.front().payload.size(), 7U);
  EXPECT_EQ(parsed.frames.video.size(), 1U);
}

TEST(FlvTagLoopTest, OtherAudioOfOneByteYieldsABareAdtsHeader) {
  const ParsedFlv parsed = ParseTags({Tag(kAudio, 0, {0x2F}), NalTag(40, {{0x65}})});
  ASSERT_EQ(parsed.frames.audio.size(), 1U);
  EXPECT_EQ(parsed.frames.audio.front().payload.size(), 7U);
  EXPECT_THAT(parsed.console, testing::HasSubstr("write autio data:0\n"));
  EXPECT_EQ(parsed.frames.video.size(), 1U);
}

TEST(FlvTagLoopTest, TagLongerThanTheStreamYieldsNoFrame) {
  EXPECT_EQ(FramesOfTagAndAGoodOne(TagOfSize(0xFFFFFF, kScript, 0, {1, 2, 3})), 0U);
  const ParsedFlv audio = ParseTags({TagOfSize(0xFFFFFF, kAudio, 0, {0xAF, 1, 1, 2, 3})});
  EXPECT_TRUE(audio.frames.audio.empty());
  const ParsedFlv other = ParseTags({TagOfSize(0xFFFFFF, kAudio, 0, {0x2F, 1, 2, 3})});
  EXPECT_TRUE(other.frames.audio.empty());
  EXPECT_EQ(other.console, "headlength:9\nwrite autio data:16777214\n");
}

TEST(FlvTagLoopTest, CompleteNalUnitsOfATagLongerThanTheStreamAreDelivered) {
  const Bytes units = Join({WithLength({0x41, 1}), WithLength({0x41, 2}), BigEndian(500, 4)});
  const ParsedFlv parsed = ParseTags({TagOfSize(0xFFFFFF, kVideo, 0, AvcBody(1, units))});
  EXPECT_EQ(parsed.frames.video.size(), 2U);
}

TEST(FlvTagLoopTest, HostileNalLengthsEndTheParserWithoutAFrame) {
  for (const std::uint32_t length : {0x1000U, 0xFFFFFFU, 0x1000000U, 0x7FFFFFFFU, 0x80000000U,
                                     0xFFFFFFFBU, 0xFFFFFFFCU, 0xFFFFFFFFU}) {
    const Bytes body = AvcBody(1, Join({BigEndian(length, 4), {0x41, 1, 2}}));
    EXPECT_EQ(FramesOfTagAndAGoodOne(Tag(kVideo, 0, body)), 0U) << length;
  }
}

TEST(FlvTagLoopTest, HostileParameterSetLengthsEndTheParserWithoutAFrame) {
  const Bytes start = {1, 0x64, 0, 0x1F, 0xFF, 0xE1};
  const Bytes sps = Join({start, BigEndian(0xFFFF, 2), {0x67, 1}});
  EXPECT_EQ(FramesOfTagAndAGoodOne(Tag(kVideo, 0, AvcBody(0, sps))), 0U);
  const Bytes pps = Join({start, BigEndian(2, 2), {0x67, 1, 1}, BigEndian(0xFFFF, 2), {0x68}});
  const ParsedFlv parsed = ParseTags({Tag(kVideo, 0, AvcBody(0, pps)), NalTag(40, {{0x65}})});
  EXPECT_EQ(parsed.frames.video.size(), 1U) << "only the SPS";
  EXPECT_EQ(parsed.console, "headlength:9\nsssize:2\nppsize:65535\n");
}

TEST(FlvTagLoopTest, GarbageAfterValidTagsEndsTheLoopAndKeepsTheirFrames) {
  for (const std::uint8_t byte : Bytes{0x00, 0x08, 0x09, 0x12, 0xFF}) {
    const ParsedFlv parsed = ParseTags({NalTag(0, {{0x65, 1}}), AacTag(0, {7}), Bytes(2000, byte)});
    ASSERT_GE(parsed.frames.video.size(), 1U) << int{byte};
    EXPECT_EQ(parsed.frames.video[0].payload, (Bytes{0, 0, 0, 1, 0x65, 1})) << int{byte};
    EXPECT_GE(parsed.frames.audio.size(), 1U) << int{byte};
  }
}

// A stream that is replaced by a newer one while more than 100 bytes are read at once.
class ReplacedSource final : public FlvSource {
 public:
  explicit ReplacedSource(const Bytes& bytes) : source_(bytes) {}

  bool Runs() const override { return runs_; }
  bool WaitForBytes(std::uint32_t count) override { return source_.WaitForBytes(count); }
  bool Read(std::uint8_t* bytes, std::uint32_t count) override {
    if (count > 100) runs_ = false;
    return source_.Read(bytes, count);
  }
  bool Skip(std::uint32_t count) override { return source_.Skip(count); }

 private:
  FlvMemorySource source_;
  bool runs_ = true;
};

TEST(FlvTagLoopTest, FrameOfAReplacedStreamIsNotQueuedAndEndsTheLoop) {
  const Bytes stream = Join({Header(), NalTag(0, {{0x65, 1}}), NalTag(40, {Bytes(200, 0x41)}),
                             NalTag(80, {{0x41, 2}}), flv_test::LastBackPointer()});
  ResetFrameQueues();
  ReplacedSource source(stream);
  std::atomic<std::uint16_t> audio_config{0};
  FlvTagParser parser(source, audio_config);
  testing::internal::CaptureStdout();
  EXPECT_TRUE(parser.ReadHeader());
  testing::internal::GetCapturedStdout();
  EXPECT_TRUE(parser.ReadTag());
  EXPECT_FALSE(parser.ReadTag());
  EXPECT_EQ(g_videoQueue->count, 1U);
}

}  // namespace
}  // namespace stream
