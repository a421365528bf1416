#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/flv_parse.h"
#include "tests/support/flv_tags.h"

namespace stream {
namespace {

using flv_test::AvcBody;
using flv_test::AvcHeaderTag;
using flv_test::Bytes;
using flv_test::Join;
using flv_test::kVideo;
using flv_test::NalTag;
using flv_test::Tag;
using flv_test::WithLength;
using flv_test::WithStartCode;

std::vector<Bytes> Payloads(const std::vector<DumpedFrame>& frames) {
  std::vector<Bytes> payloads;
  for (const DumpedFrame& frame : frames) payloads.push_back(frame.payload);
  return payloads;
}

TEST(FlvVideoTest, NalUnitFollowsAStartCode) {
  const ParsedFlv parsed = ParseTags({NalTag(1000, {{0x65, 0xAA, 0xBB}})});
  ASSERT_EQ(parsed.frames.video.size(), 1U);
  const DumpedFrame& frame = parsed.frames.video.front();
  EXPECT_EQ(frame.payload, (Bytes{0, 0, 0, 1, 0x65, 0xAA, 0xBB}));
  EXPECT_EQ(frame.pts, 90'000U);
  EXPECT_EQ(frame.dts, 90'000U);
  EXPECT_EQ(frame.play, 90'000U);
  EXPECT_TRUE(frame.is_video);
  EXPECT_TRUE(frame.intact);
  EXPECT_TRUE(parsed.frames.audio.empty());
}

TEST(FlvVideoTest, EachNalUnitOfATagIsAFrameWithTheTimeOfTheTag) {
  const std::vector<Bytes> nals = {{0x06, 1}, {0x65, 2, 3}, {0x65, 4}};
  const ParsedFlv parsed = ParseTags({NalTag(40, nals)});
  ASSERT_EQ(parsed.frames.video.size(), nals.size());
  for (std::size_t i = 0; i < nals.size(); ++i) {
    EXPECT_EQ(parsed.frames.video[i].payload, WithStartCode(nals[i]));
    EXPECT_EQ(parsed.frames.video[i].pts, 3600U);
    EXPECT_EQ(parsed.frames.video[i].dts, 3600U);
    EXPECT_EQ(parsed.frames.video[i].play, 3600U);
  }
}

TEST(FlvVideoTest, AllOfManySmallNalUnitsAreRead) {
  std::vector<Bytes> nals;
  for (int i = 0; i < 200; ++i) nals.push_back({static_cast<std::uint8_t>(i)});
  const ParsedFlv parsed = ParseTags({NalTag(40, nals), NalTag(80, {{0x65}})});
  ASSERT_EQ(parsed.frames.video.size(), 201U);
  for (std::size_t i = 0; i < nals.size(); ++i) {
    EXPECT_EQ(parsed.frames.video[i].payload, WithStartCode(nals[i]));
  }
}

TEST(FlvVideoTest, CompositionTimeIsIgnored) {
  Bytes body = AvcBody(1, WithLength({0x41}));
  body[2] = 0xFF;
  body[3] = 0x12;
  body[4] = 0x34;
  const ParsedFlv parsed = ParseTags({Tag(kVideo, 40, body)});
  ASSERT_EQ(parsed.frames.video.size(), 1U);
  EXPECT_EQ(parsed.frames.video.front().pts, 3600U);
}

TEST(FlvVideoTest, TimestampPastTwentyFourBitsUsesTheExtensionByte) {
  const ParsedFlv parsed = ParseTags({NalTag(0xFFFFFF, {{0x41}}), NalTag(0x1000000, {{0x41}}),
                                      NalTag(0x12345678, {{0x41}}), NalTag(0xFFFFFFFF, {{0x41}})});
  ASSERT_EQ(parsed.frames.video.size(), 4U);
  EXPECT_EQ(parsed.frames.video[0].pts, 0xFFFFFFULL * 90);
  EXPECT_EQ(parsed.frames.video[1].pts, 0x1000000ULL * 90);
  EXPECT_EQ(parsed.frames.video[2].dts, 0x12345678ULL * 90);
  EXPECT_EQ(parsed.frames.video[3].play, 0xFFFFFFFFULL * 90);
}

TEST(FlvVideoTest, EveryCodecIsReadAsAvc) {
  for (const std::uint8_t first : Bytes{0x00, 0x12, 0x22, 0x17, 0x27, 0x57, 0xFF}) {
    Bytes body = AvcBody(1, WithLength({0x41, 9}));
    body[0] = first;
    EXPECT_EQ(Payloads(ParseTags({Tag(kVideo, 0, body)}).frames.video),
              std::vector<Bytes>{WithStartCode({0x41, 9})})
        << int{first};
  }
}

TEST(FlvVideoTest, EndOfSequenceYieldsNoFrameAndTheStreamContinues) {
  const ParsedFlv parsed = ParseTags({flv_test::EndOfSequenceTag(80), NalTag(120, {{0x41}})});
  ASSERT_EQ(parsed.frames.video.size(), 1U);
  EXPECT_EQ(parsed.frames.video.front().pts, 120U * 90);
  EXPECT_EQ(parsed.console, "headlength:9\n");
}

TEST(FlvVideoTest, OtherPacketTypesAreReadAsNalUnits) {
  for (const std::uint8_t type : Bytes{2, 3, 255}) {
    const Bytes body = AvcBody(type, WithLength({0x41, 5}));
    EXPECT_EQ(ParseTags({Tag(kVideo, 0, body)}).frames.video.size(), 1U) << int{type};
  }
}

TEST(FlvVideoTest, EmptyNalUnitYieldsABareStartCode) {
  EXPECT_EQ(Payloads(ParseTags({NalTag(0, {{}, {0x41}})}).frames.video),
            (std::vector<Bytes>{{0, 0, 0, 1}, {0, 0, 0, 1, 0x41}}));
}

TEST(FlvVideoTest, SequenceHeaderYieldsBothParameterSetsAndPrintsTheirSizes) {
  const Bytes sps = {0x67, 0x64, 0, 0x1F};
  const Bytes pps = {0x68, 0xEB};
  const ParsedFlv parsed = ParseTags({AvcHeaderTag(40, {sps}, {pps})});
  EXPECT_EQ(Payloads(parsed.frames.video),
            (std::vector<Bytes>{WithStartCode(sps), WithStartCode(pps)}));
  EXPECT_EQ(parsed.console, "headlength:9\nsssize:4\nppsize:2\n");
  for (const DumpedFrame& frame : parsed.frames.video) EXPECT_EQ(frame.dts, 3600U);
}

TEST(FlvVideoTest, FurtherPpsAndTheBytesAfterThemAreSkipped) {
  const Bytes record = Join({flv_test::AvcRecord({{0x67, 1}}, {{0x68, 2}, {0x68, 3, 4}}),
                             {0xFD, 0xF8, 0xF8, 0}});  // as in the High profile
  const ParsedFlv parsed = ParseTags({Tag(kVideo, 0, AvcBody(0, record)), NalTag(40, {{0x65, 7}})});
  EXPECT_EQ(Payloads(parsed.frames.video),
            (std::vector<Bytes>{WithStartCode({0x67, 1}), WithStartCode({0x68, 2}),
                                WithStartCode({0x65, 7})}));
}

// The SPS count is ignored: the bytes after the first SPS are read as a PPS count and a PPS length.
TEST(FlvVideoTest, SecondSpsIsReadAsAPpsCountAndLengthAndItsBytes) {
  const Bytes first = {0x67, 1, 2};
  const Bytes second = {0x67, 3};  // 00 02 67 03: count 0, length 0x0267, then 03 ...
  const Bytes record = Join({flv_test::AvcRecord({first, second}, {{0x68, 4}}), Bytes(800, 0xEE)});
  const ParsedFlv parsed = ParseTags({Tag(kVideo, 0, AvcBody(0, record)), NalTag(40, {{0x65, 7}})});
  ASSERT_EQ(parsed.frames.video.size(), 3U);
  EXPECT_EQ(parsed.frames.video[0].payload, WithStartCode(first));
  Bytes taken = {3, 1, 0, 2, 0x68, 4};
  taken.resize(0x0267, 0xEE);
  EXPECT_EQ(parsed.frames.video[1].payload, WithStartCode(taken));
  EXPECT_EQ(parsed.frames.video[2].payload, WithStartCode({0x65, 7}));
  EXPECT_EQ(parsed.console, "headlength:9\nsssize:3\nppsize:615\n");
}

TEST(FlvVideoTest, SequenceHeaderInMidStreamYieldsItsParameterSetsAgain) {
  const ParsedFlv parsed =
      ParseTags({AvcHeaderTag(0, {{0x67, 1}}, {{0x68, 1}}), NalTag(0, {{0x65}}),
                 AvcHeaderTag(40, {{0x67, 2}}, {{0x68, 2}}), NalTag(40, {{0x65}})});
  ASSERT_EQ(parsed.frames.video.size(), 6U);
  EXPECT_EQ(parsed.frames.video[3].payload, WithStartCode({0x67, 2}));
}

TEST(FlvVideoTest, NalLengthsAlwaysHaveFourBytes) {
  Bytes record = flv_test::AvcRecord({{0x67, 1}}, {{0x68, 2}});
  record[4] = 0xFC;  // declares lengths of one byte
  const ParsedFlv parsed = ParseTags({Tag(kVideo, 0, AvcBody(0, record)), NalTag(40, {{0x65, 7}})});
  ASSERT_EQ(parsed.frames.video.size(), 3U);
  EXPECT_EQ(parsed.frames.video[2].payload, WithStartCode({0x65, 7}));
}

TEST(FlvVideoTest, LongestNalUnitOfATagIsDeliveredWhole) {
  const Bytes nal(0xFFFFFF - 5 - 4, 0x41);
  const ParsedFlv parsed = ParseTags({NalTag(0, {nal})});
  ASSERT_EQ(parsed.frames.video.size(), 1U);
  EXPECT_TRUE(parsed.frames.video.front().payload == WithStartCode(nal));
}

}  // namespace
}  // namespace stream
