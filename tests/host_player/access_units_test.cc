#include "host/player/access_units.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace player {
namespace {

using Payload = std::vector<std::uint8_t>;

// Joins NAL units, each after a long start code.
Payload Stream(std::initializer_list<Payload> units) {
  Payload stream;
  for (const Payload& unit : units) {
    stream.insert(stream.end(), {0, 0, 0, 1});
    stream.insert(stream.end(), unit.begin(), unit.end());
  }
  return stream;
}

// H.264: parameter sets, a delimiter, and the first and a later slice of a key picture and of
// another picture.
const Payload kSps = {0x67, 0x64};
const Payload kPps = {0x68, 0xEE};
const Payload kDelimiter = {0x09, 0xF0};
const Payload kKey = {0x65, 0x88};
const Payload kKeyLater = {0x65, 0x11};
const Payload kPicture = {0x41, 0x9A};
const Payload kPictureLater = {0x41, 0x11};
// H.265.
const Payload kVps265 = {0x40, 0x01, 0x0C};
const Payload kSps265 = {0x42, 0x01, 0x01};
const Payload kKey265 = {0x26, 0x01, 0xAF};
const Payload kPicture265 = {0x02, 0x01, 0xD0};

MediaUnit Frame(std::initializer_list<Payload> units, std::uint64_t time) {
  return {Stream(units), time, time};
}

TEST(AccessUnitsTest, UnitsOfOneTimeBecomeOneAccessUnit) {
  AccessUnitGatherer gatherer;
  EXPECT_TRUE(gatherer.Add(Frame({kSps}, 0)).empty());
  EXPECT_TRUE(gatherer.Add(Frame({kPps}, 0)).empty());
  EXPECT_TRUE(gatherer.Add(Frame({kKey}, 0)).empty());
  EXPECT_TRUE(gatherer.Add(Frame({kKeyLater}, 0)).empty());
  const auto complete = gatherer.Add(Frame({kPicture}, 3600));
  ASSERT_EQ(complete.size(), 1U);
  EXPECT_EQ(complete[0].data, Stream({kSps, kPps, kKey, kKeyLater}));
  EXPECT_EQ(complete[0].pts, 0U);
  const auto last = gatherer.Finish();
  ASSERT_EQ(last.size(), 1U);
  EXPECT_EQ(last[0].data, Stream({kPicture}));
  EXPECT_EQ(last[0].pts, 3600U);
  EXPECT_TRUE(gatherer.Finish().empty());
}

TEST(AccessUnitsTest, ParameterSetsOfAnEarlierTimeGoWithTheirPicture) {
  AccessUnitGatherer gatherer;
  gatherer.Add(Frame({kSps}, 0));
  gatherer.Add(Frame({kPps}, 0));
  gatherer.Add(Frame({kKey}, 9000));
  const auto unit = gatherer.Finish();
  ASSERT_EQ(unit.size(), 1U);
  EXPECT_EQ(unit[0].data, Stream({kSps, kPps, kKey}));
  EXPECT_EQ(unit[0].pts, 9000U);
}

TEST(AccessUnitsTest, TwoPicturesInOneFrameAreTwoAccessUnits) {
  AccessUnitGatherer gatherer;
  const auto complete = gatherer.Add(Frame({kSps, kPps, kKey, kKeyLater, kPicture}, 100));
  ASSERT_EQ(complete.size(), 1U);
  EXPECT_EQ(complete[0].data, Stream({kSps, kPps, kKey, kKeyLater}));
  EXPECT_EQ(gatherer.Finish()[0].data, Stream({kPicture}));
}

TEST(AccessUnitsTest, TwoPicturesOfOneTimeAreTwoAccessUnits) {
  AccessUnitGatherer gatherer;
  gatherer.Add(Frame({kSps, kPps, kKey}, 100));
  EXPECT_EQ(gatherer.Add(Frame({kDelimiter, kPicture}, 100)).size(), 1U);
  EXPECT_EQ(gatherer.Add(Frame({kPictureLater}, 100)).size(), 0U);
  EXPECT_EQ(gatherer.Finish()[0].data, Stream({kDelimiter, kPicture, kPictureLater}));
}

TEST(AccessUnitsTest, RestOfAUnitBeforeAStartCodeIsKept) {
  AccessUnitGatherer gatherer;
  gatherer.Add(Frame({kSps, kPps, kKey}, 100));
  MediaUnit rest = Frame({kPicture}, 200);
  rest.data.insert(rest.data.begin(), {7, 8, 9});
  const auto complete = gatherer.Add(rest);
  ASSERT_EQ(complete.size(), 1U);
  Payload expected = Stream({kSps, kPps, kKey});
  expected.insert(expected.end(), {7, 8, 9});
  EXPECT_EQ(complete[0].data, expected);
}

TEST(AccessUnitsTest, FramesBeforeTheFirstEntryPointAreDroppedAndCounted) {
  AccessUnitGatherer gatherer;
  for (std::uint64_t time = 1; time <= 3; ++time) {
    EXPECT_TRUE(gatherer.Add(Frame({kPicture}, time)).empty());
  }
  EXPECT_TRUE(gatherer.Add(Frame({kSps, kPps, kKey}, 4)).empty());
  EXPECT_EQ(gatherer.Finish().size(), 1U);
  EXPECT_EQ(gatherer.skipped_units(), 3U);
}

TEST(AccessUnitsTest, AfterAnEndTheNextEntryPointIsAwaited) {
  AccessUnitGatherer gatherer;
  gatherer.Add(Frame({kSps, kPps, kKey}, 1));
  EXPECT_EQ(gatherer.Finish().size(), 1U);
  gatherer.SkipToEntryPoint();
  gatherer.Add(Frame({kPicture}, 2));
  EXPECT_TRUE(gatherer.Finish().empty());
  EXPECT_EQ(gatherer.skipped_units(), 1U);
}

TEST(AccessUnitsTest, CodecIsRecognisedByParameterSets) {
  AccessUnitGatherer h264;
  EXPECT_FALSE(h264.codec().has_value());
  h264.Add(Frame({kDelimiter, kSps, kPps, kKey}, 0));
  EXPECT_EQ(h264.codec(), VideoCodec::kH264);
  AccessUnitGatherer h265;
  h265.Add(Frame({{0x46, 0x01, 0x50}, kVps265, kSps265, kKey265}, 0));
  EXPECT_EQ(h265.codec(), VideoCodec::kH265);
}

TEST(AccessUnitsTest, H265PicturesAreSeparated) {
  AccessUnitGatherer gatherer;
  const auto complete = gatherer.Add(Frame({kVps265, kSps265, kKey265, kPicture265}, 0));
  ASSERT_EQ(complete.size(), 1U);
  EXPECT_EQ(complete[0].data, Stream({kVps265, kSps265, kKey265}));
  EXPECT_EQ(gatherer.Finish()[0].data, Stream({kPicture265}));
}

TEST(AccessUnitsTest, StreamOfAnotherCodecIsNotKept) {
  AccessUnitGatherer gatherer;
  for (std::uint64_t time = 1; time <= 100; ++time) {
    EXPECT_TRUE(gatherer.Add({Stream({{0xB3, 0x28}}), time, time}).empty());
  }
  EXPECT_TRUE(gatherer.Finish().empty());
  EXPECT_EQ(gatherer.skipped_units(), 100U);
}

TEST(AccessUnitsTest, EndlessUnitIsTruncated) {
  AccessUnitGatherer gatherer;
  gatherer.Add(Frame({kSps, kPps, kKey}, 0));
  constexpr std::size_t kChunk = std::size_t{1} << 20;
  const MediaUnit more{std::vector<std::uint8_t>(kChunk, 7), 0, 0};
  for (std::size_t given = 0; given <= AccessUnitGatherer::kMaxBytes; given += kChunk) {
    EXPECT_TRUE(gatherer.Add(more).empty());
  }
  const auto complete = gatherer.Finish();
  ASSERT_EQ(complete.size(), 1U);
  EXPECT_EQ(complete[0].data.size(), AccessUnitGatherer::kMaxBytes);
}

TEST(AccessUnitsTest, FrameWithoutStartCodeGivesNoUnit) {
  AccessUnitGatherer gatherer;
  EXPECT_TRUE(gatherer.Add({{}, 0, 0}).empty());
  EXPECT_TRUE(gatherer.Add({{0, 0}, 1, 1}).empty());
  EXPECT_TRUE(gatherer.Add({{0, 0, 1}, 2, 2}).empty());
  EXPECT_TRUE(gatherer.Add({{1, 2, 3, 4, 5}, 3, 3}).empty());
  EXPECT_TRUE(gatherer.Finish().empty());
}

TEST(NalUnitsTest, StartCodesOfEitherLengthAreFound) {
  const Payload stream = {0, 0, 1, 0x67, 5, 0, 0, 0, 1, 0x68, 6};
  const auto units = SplitNalUnits(stream);
  ASSERT_EQ(units.size(), 2U);
  EXPECT_EQ(Payload(units[0].payload.begin(), units[0].payload.end()), (Payload{0x67, 5}));
  EXPECT_EQ(Payload(units[1].payload.begin(), units[1].payload.end()), (Payload{0x68, 6}));
  EXPECT_EQ(units[0].begin, 0U);
  EXPECT_EQ(units[1].begin, 5U);
}

}  // namespace
}  // namespace player
