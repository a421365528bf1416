#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/adts.h"
#include "tests/support/flv_parse.h"
#include "tests/support/flv_tags.h"

namespace stream {
namespace {

using flv_test::AacHeaderTag;
using flv_test::AacTag;
using flv_test::Bytes;
using flv_test::Join;
using flv_test::kAudio;
using flv_test::kStereo48;
using flv_test::Tag;

// The frame after its ADTS header.
Bytes WithAdts(const Bytes& frame, std::uint16_t config) {
  const AdtsHeader header =
      MakeAdtsHeader(FieldsOfAudioSpecificConfig(config), static_cast<std::uint32_t>(frame.size()));
  return Join({Bytes(header.begin(), header.end()), frame});
}

// The length field of an ADTS header.
std::uint32_t FrameLength(const Bytes& adts) {
  return (adts[3] & 3U) << 11 | std::uint32_t{adts[4]} << 3 | adts[5] >> 5;
}

TEST(FlvAudioTest, AacFrameFollowsAnAdtsHeader) {
  const ParsedFlv parsed = ParseTags({AacHeaderTag(kStereo48), AacTag(1000, {0x21, 0x10, 0x04})});
  ASSERT_EQ(parsed.frames.audio.size(), 1U);
  const DumpedFrame& frame = parsed.frames.audio.front();
  EXPECT_EQ(frame.payload, (Bytes{0xFF, 0xF1, 0x4C, 0x80, 0x01, 0x5F, 0xFC, 0x21, 0x10, 0x04}));
  EXPECT_EQ(frame.pts, 90'000U);
  EXPECT_EQ(frame.dts, 90'000U);
  EXPECT_EQ(frame.play, 90'000U);
  EXPECT_TRUE(frame.intact);
  EXPECT_TRUE(parsed.frames.video.empty());
  EXPECT_EQ(parsed.console, "headlength:9\n");
}

TEST(FlvAudioTest, BodyOfNBytesYieldsALengthFieldOfNPlusFive) {
  for (const std::size_t n : {2U, 3U, 8U, 100U, 2000U}) {
    const ParsedFlv parsed = ParseTags({AacTag(0, Bytes(n - 2, 0x21))});
    ASSERT_EQ(parsed.frames.audio.size(), 1U);
    const Bytes& payload = parsed.frames.audio.front().payload;
    EXPECT_EQ(payload.size(), n - 2 + 7);
    EXPECT_EQ(FrameLength(payload), n + 5);
  }
}

TEST(FlvAudioTest, AudioFrameIsMarkedAsVideo) {
  const ParsedFlv parsed = ParseTags({AacTag(0, {1}), Tag(kAudio, 0, {0x2F, 1})});
  ASSERT_EQ(parsed.frames.audio.size(), 2U);
  EXPECT_TRUE(parsed.frames.audio[0].is_video);
  EXPECT_TRUE(parsed.frames.audio[1].is_video);
}

TEST(FlvAudioTest, SequenceHeaderYieldsNoFrameAndAppliesToLaterFrames) {
  const ParsedFlv parsed = ParseTags({AacTag(0, {1}), AacHeaderTag(0x1588), AacTag(1, {2}),
                                      AacHeaderTag(0x1210), AacTag(2, {3}), AacTag(3, {4})});
  ASSERT_EQ(parsed.frames.audio.size(), 4U);
  EXPECT_EQ(parsed.frames.audio[0].payload, WithAdts({1}, 0));
  EXPECT_EQ(parsed.frames.audio[1].payload, WithAdts({2}, 0x1588));
  EXPECT_EQ(parsed.frames.audio[2].payload, WithAdts({3}, 0x1210));
  EXPECT_EQ(parsed.frames.audio[3].payload, WithAdts({4}, 0x1210));
  EXPECT_EQ(parsed.audio_config, 0x1210);
}

TEST(FlvAudioTest, ConfigurationOfAnEarlierStreamAppliesUntilTheNextOne) {
  const ParsedFlv parsed =
      ParseTags({AacTag(0, {1}), AacHeaderTag(0x1210), AacTag(1, {2})}, kStereo48);
  ASSERT_EQ(parsed.frames.audio.size(), 2U);
  EXPECT_EQ(parsed.frames.audio[0].payload, WithAdts({1}, kStereo48));
  EXPECT_EQ(parsed.frames.audio[1].payload, WithAdts({2}, 0x1210));
}

TEST(FlvAudioTest, BytesAfterTheTwoBytesOfAConfigurationAreSkipped) {
  const Bytes body = {0xAF, 0,    0x13, 0x90, 0x56,
                      0xE5, 0x9D, 0x48, 0x80};  // a configuration with SBR
  const ParsedFlv parsed = ParseTags({Tag(kAudio, 0, body), AacTag(40, {1, 2})});
  ASSERT_EQ(parsed.frames.audio.size(), 1U);
  EXPECT_EQ(parsed.frames.audio.front().payload, WithAdts({1, 2}, 0x1390));
}

TEST(FlvAudioTest, OtherAacPacketTypesYieldNothing) {
  const ParsedFlv parsed = ParseTags(
      {Tag(kAudio, 0, {0xAF, 2, 0x12, 0x10, 7}), Tag(kAudio, 0, {0xAF, 255}), AacTag(40, {1})});
  ASSERT_EQ(parsed.frames.audio.size(), 1U);
  EXPECT_EQ(parsed.audio_config, 0);
}

TEST(FlvAudioTest, LowNibbleOfTheFirstByteIsIgnored) {
  for (const int low : {0, 2, 15}) {
    const ParsedFlv parsed =
        ParseTags({Tag(kAudio, 0, {static_cast<std::uint8_t>(0xA0 + low), 1, 9})});
    ASSERT_EQ(parsed.frames.audio.size(), 1U) << low;
    EXPECT_EQ(parsed.frames.audio.front().payload, WithAdts({9}, 0)) << low;
  }
}

TEST(FlvAudioTest, OtherCodecAlsoGetsAnAdtsHeaderAndAMisspelledLine) {
  const Bytes mp3(417, 0x55);
  const ParsedFlv parsed =
      ParseTags({Tag(kAudio, 26, Join({{0x2F}, mp3})), Tag(kAudio, 52, {0x3F, 1, 2})}, kStereo48);
  ASSERT_EQ(parsed.frames.audio.size(), 2U);
  EXPECT_EQ(parsed.frames.audio[0].payload, WithAdts(mp3, kStereo48));
  EXPECT_EQ(parsed.frames.audio[0].payload.size(), 418U - 1 + 7);
  EXPECT_EQ(parsed.frames.audio[0].pts, 26U * 90);
  EXPECT_EQ(parsed.frames.audio[1].payload, WithAdts({1, 2}, kStereo48));
  EXPECT_EQ(parsed.console, "headlength:9\nwrite autio data:417\nwrite autio data:2\n");
}

TEST(FlvAudioTest, FrameTooLongForTheLengthFieldIsCompleteAndItsLengthIsTruncated) {
  const Bytes frame(8192 - 7 + 5, 0x21);
  const ParsedFlv parsed = ParseTags({AacTag(0, frame)});
  ASSERT_EQ(parsed.frames.audio.size(), 1U);
  const Bytes& payload = parsed.frames.audio.front().payload;
  EXPECT_EQ(payload.size(), frame.size() + 7);
  EXPECT_EQ(FrameLength(payload), 5U);
}

TEST(FlvAudioTest, AudioAndVideoFramesKeepTheirOrder) {
  const ParsedFlv parsed = ParseFlv(flv_test::MakeStream(20));
  ASSERT_EQ(parsed.frames.audio.size(), 20U);
  ASSERT_EQ(parsed.frames.video.size(), 22U);
  for (std::size_t i = 0; i < 20; ++i) {
    EXPECT_EQ(parsed.frames.audio[i].dts, i * 3600);
    EXPECT_EQ(parsed.frames.audio[i].payload.back(), i);
    EXPECT_EQ(parsed.frames.video[i + 2].dts, i * 3600);
    EXPECT_EQ(parsed.frames.video[i + 2].payload.back(), i);
  }
}

}  // namespace
}  // namespace stream
