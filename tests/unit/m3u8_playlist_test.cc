#include "hls/playlist/m3u8_playlist.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/support/m3u8_playlists.h"

namespace stream {
namespace {

using m3u8_test::kBase;
using m3u8_test::kUntouchedSequence;

// A text, parsed with a new header and table.
struct Parsed {
  M3u8Header header;
  std::int64_t sequence = kUntouchedSequence;
  M3u8Table entries;
  bool result = false;

  explicit Parsed(const std::string& text, const std::string& base = kBase) {
    result = ParseM3u8(header, base, text, sequence, entries);
  }

  std::vector<std::int64_t> Numbers() const {
    std::vector<std::int64_t> numbers;
    for (const auto& [key, entry] : entries) numbers.push_back(entry.number);
    return numbers;
  }

  std::vector<std::string> Uris() const {
    std::vector<std::string> uris;
    for (const auto& [key, entry] : entries) uris.push_back(entry.uri);
    return uris;
  }
};

using Uris = std::vector<std::string>;

TEST(ParseM3u8Test, SegmentBetweenCarriageReturnsIsEntryZero) {
  const Parsed parsed("#EXTM3U\r\n#EXTINF:10.0,\r\nseg0.ts\r\n", "http://host:81/a/b/list.m3u8");
  EXPECT_TRUE(parsed.result);
  ASSERT_EQ(parsed.entries.size(), 1U);
  ASSERT_EQ(parsed.entries.count(0), 1U);
  EXPECT_EQ(parsed.entries.at(0).uri, "http://host:81/a/b/seg0.ts");
  EXPECT_EQ(parsed.entries.at(0).duration, 10.0F);
}

TEST(ParseM3u8Test, SegmentOfDurationZeroIsDropped) {
  const Parsed parsed("#EXTM3U\n#EXTINF:0,\nseg0.ts\n#EXTINF:1,\nseg1.ts\n");
  EXPECT_EQ(parsed.Uris(), Uris({"http://host/a/b/seg1.ts"}));
  EXPECT_EQ(parsed.entries.count(0), 1U);  // the dropped segment has no index
}

TEST(ParseM3u8Test, AbsolutePathIsResolvedAgainstSchemeHostAndPort) {
  const Parsed parsed("#EXTM3U\n#EXTINF:1,\n/x/seg.ts\n", "https://host:8080/p/list.m3u8");
  EXPECT_EQ(parsed.Uris(), Uris({"https://host:8080/x/seg.ts"}));
}

TEST(ParseM3u8Test, FirstOfTwoVariantsWithEqualBandwidthIsKept) {
  const Parsed parsed(
      "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=5\nfirst.m3u8\n"
      "#EXT-X-STREAM-INF:BANDWIDTH=5\nsecond.m3u8\n");
  EXPECT_EQ(parsed.Uris(), Uris({"http://host/a/b/first.m3u8"}));
}

TEST(ParseM3u8Test, VariantsAreVisitedInAscendingBandwidth) {
  const Parsed parsed(
      "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=800000\nhigh.m3u8\n"
      "#EXT-X-STREAM-INF:BANDWIDTH=200000\nlow.m3u8\n");
  EXPECT_EQ(parsed.Uris(), Uris({"http://host/a/b/low.m3u8", "http://host/a/b/high.m3u8"}));
  EXPECT_EQ(parsed.entries.begin()->first, 200000);
}

TEST(ParseM3u8Test, AllowCacheNoClearsIt) {
  M3u8Header header;
  header.allowCache = true;
  std::int64_t sequence = 0;
  M3u8Table entries;
  ParseM3u8(header, kBase, "#EXT-X-ALLOW-CACHE:NO", sequence, entries);
  EXPECT_FALSE(header.allowCache);
}

TEST(ParseM3u8Test, AllowCacheYesSetsIt) {
  EXPECT_TRUE(Parsed("#EXT-X-ALLOW-CACHE:YES").header.allowCache);
  EXPECT_FALSE(
      Parsed("#EXT-X-ALLOW-CACHE: YES").header.allowCache);  // the parser searches for ":YES"
}

TEST(ParseM3u8Test, TextWithoutEndIsLive) {
  EXPECT_TRUE(Parsed("#EXTM3U\n#EXTINF:1,\nseg.ts\n").header.isLive);
  EXPECT_FALSE(Parsed("#EXTM3U\n#EXTINF:1,\nseg.ts\n#EXT-X-ENDLIST\n").header.isLive);
}

TEST(ParseM3u8Test, LineOfOneCharacterIsSkipped) {
  // "x" is not an address and "#" is not a tag, so the variant stays pending.
  const Parsed parsed("#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=5\nx\n#\nv.m3u8\n");
  EXPECT_EQ(parsed.Uris(), Uris({"http://host/a/b/v.m3u8"}));
}

TEST(ParseM3u8Test, TagLineOfTwoCharactersEndsAPendingVariant) {
  const Parsed parsed("#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=5\n##\nv.m3u8\n");
  EXPECT_EQ(parsed.Uris(), Uris());
  EXPECT_FALSE(parsed.header.streamInfPending);
}

TEST(ParseM3u8Test, HeaderFollowedByBlanksCounts) {
  EXPECT_TRUE(Parsed("#EXTM3U \t \r\n").result);
  EXPECT_TRUE(Parsed("  #EXTM3U").result);
}

TEST(ParseM3u8Test, HeaderFollowedByAnythingElseDoesNotCount) {
  EXPECT_FALSE(Parsed("#EXTM3U8\n").result);
  EXPECT_FALSE(Parsed("#EXTM3U #\n").result);
}

TEST(ParseM3u8Test, VariantStaysPendingAfterItsAddress) {
  const Parsed parsed("#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=5\nv.m3u8");
  EXPECT_TRUE(parsed.header.streamInfPending);
}

TEST(ParseM3u8Test, EntriesAreStoredWithoutAHeader) {
  const Parsed parsed("#EXT-X-VERSION:3\n#EXT-X-MEDIA-SEQUENCE:9\n#EXTINF:1,\nseg.ts\n");
  EXPECT_FALSE(parsed.result);
  EXPECT_EQ(parsed.header.version, 3);
  EXPECT_EQ(parsed.sequence, 9);
  EXPECT_EQ(parsed.Uris(), Uris({"http://host/a/b/seg.ts"}));
}

TEST(ParseM3u8Test, MissingOrInvalidMediaSequenceIsNotWritten) {
  EXPECT_EQ(Parsed("#EXTM3U\n").sequence, kUntouchedSequence);
  EXPECT_EQ(Parsed("#EXTM3U\n#EXT-X-MEDIA-SEQUENCE:x\n").sequence, kUntouchedSequence);
}

TEST(ParseM3u8Test, ReusedHeaderKeepsFieldsMissingInTheSecondText) {
  Parsed parsed(
      "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:7\n#EXT-X-ALLOW-CACHE:YES\n"
      "#EXTINF:2,\nseg.ts\n#EXT-X-ENDLIST\n#EXT-X-STREAM-INF:BANDWIDTH=1\n");
  EXPECT_TRUE(ParseM3u8(parsed.header, kBase, "<html>", parsed.sequence, parsed.entries));
  EXPECT_EQ(parsed.header.version, 3);
  EXPECT_EQ(parsed.header.targetDuration, 7);
  EXPECT_TRUE(parsed.header.allowCache);
  EXPECT_TRUE(parsed.header.isLive);
  EXPECT_EQ(parsed.header.totalDuration, 0.0F);
  EXPECT_FALSE(parsed.header.streamInfPending);
}

TEST(ParseM3u8Test, EntriesOfAnEarlierTextTakePrecedence) {
  Parsed parsed("#EXTM3U\n#EXTINF:2,\nold0.ts\n");
  ParseM3u8(parsed.header, kBase, "#EXTINF:2,\nnew0.ts\n#EXTINF:2,\nnew1.ts\n", parsed.sequence,
            parsed.entries);
  EXPECT_EQ(parsed.Uris(), Uris({"http://host/a/b/old0.ts", "http://host/a/b/new1.ts"}));
}

TEST(ParseM3u8Test, OnlyTheTableOutlivesAText) {
  M3u8Header header;
  std::int64_t sequence = 0;
  M3u8Table entries;
  ParseM3u8(header, kBase, "#EXT-X-STREAM-INF:BANDWIDTH=9\n#EXTINF:2,\n", sequence, entries);
  ParseM3u8(header, kBase, "stray.ts\n#EXTINF:3,\nseg.ts\n", sequence, entries);
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries.at(0).uri, "http://host/a/b/seg.ts");
  EXPECT_EQ(entries.at(0).bandwidth, 0);
  EXPECT_EQ(header.totalDuration, 3.0F);
}

TEST(ParseM3u8Test, NanDurationAnnouncesASegment) {
  const Parsed parsed("#EXTM3U\n#EXTINF:nan,\nseg.ts\nstray.ts\n");
  ASSERT_EQ(parsed.Uris(), Uris({"http://host/a/b/seg.ts"}));
  EXPECT_TRUE(std::isnan(parsed.entries.at(0).duration));
  EXPECT_TRUE(std::isnan(parsed.header.totalDuration));
}

TEST(ParseM3u8Test, NegativeDurationAnnouncesASegmentAndIsSubtracted) {
  const Parsed parsed("#EXTM3U\n#EXTINF:5,\na.ts\n#EXTINF:-2,\nb.ts\n");
  ASSERT_EQ(parsed.entries.size(), 2U);
  EXPECT_EQ(parsed.entries.at(1).duration, -2.0F);
  EXPECT_EQ(parsed.header.totalDuration, 3.0F);
}

TEST(ParseM3u8Test, HundredThousandSegmentsKeepTheirOrder) {
  constexpr int kSegments = 100'000;
  std::string text = "#EXTM3U\n";
  for (int i = 0; i < kSegments; ++i) text += "#EXTINF:1,\nseg" + std::to_string(i) + ".ts\n";
  const Parsed parsed(text);
  ASSERT_EQ(parsed.entries.size(), std::size_t{kSegments});
  for (const auto& [key, entry] : parsed.entries) {
    ASSERT_EQ(entry.uri, "http://host/a/b/seg" + std::to_string(key) + ".ts");
  }
  EXPECT_EQ(parsed.header.totalDuration, 100'000.0F);
}

// A parser that is not linear in the length of a line would not finish these.
TEST(ParseM3u8Test, LinesOfMegabytesAreParsed) {
  constexpr std::size_t kMegabytes = 4 << 20;
  const std::string digits(kMegabytes, '7');
  const std::string commas(kMegabytes, ',');
  const Parsed parsed("#EXTM3U\n" + std::string(kMegabytes, ' ') + "\n#EXT-X-VERSION:" + digits +
                      "\n#EXTINF:0." + digits + "\n" + digits + "\n#EXT-X-STREAM-INF:" + commas +
                      "BANDWIDTH=5\nv.m3u8\n");
  EXPECT_EQ(parsed.header.version, 2147483647);
  ASSERT_EQ(parsed.entries.size(), 2U);
  EXPECT_FLOAT_EQ(parsed.entries.at(0).duration, 7.0F / 9.0F);
  EXPECT_EQ(parsed.entries.at(0).uri, "http://host/a/b/" + digits);
  EXPECT_EQ(parsed.entries.at(5).uri, "http://host/a/b/v.m3u8");
}

// Storing every attribute would take hundreds of megabytes, and seconds in which no stop is
// noticed.
TEST(ParseM3u8Test, BandwidthAfterMillionsOfOtherAttributesIsFound) {
  constexpr int kMany = 2'000'000;
  std::string text = "#EXTM3U\n#EXT-X-STREAM-INF:";
  for (int i = 0; i < kMany; ++i) text += std::to_string(i) + "=,";
  const Parsed parsed(text + "BANDWIDTH=5,BANDWIDTH=6\nv.m3u8\n");
  ASSERT_EQ(parsed.entries.size(), 1U);
  EXPECT_EQ(parsed.entries.at(5).uri, "http://host/a/b/v.m3u8");
}

// A playlist of `count` segments with relative addresses, and one with a short absolute address.
std::string SegmentsAndAShortOne(int count) {
  std::string text = "#EXTM3U\n";
  for (int i = 0; i < count; ++i) text += "#EXTINF:1\nab\n";
  return text + "#EXTINF:1\nhttp://short/ab\n#EXT-X-ENDLIST\n";
}

TEST(ParseM3u8Test, AddressesBeyondTheLimitOfTheirTotalSizeAreSkipped) {
  constexpr std::size_t kMebibyte = 1 << 20;
  constexpr int kFitting = 256;
  const std::string base = "http://host/" + std::string(kMebibyte - 16, 'x') + "/";
  const Parsed full(SegmentsAndAShortOne(kFitting + 1), base);
  EXPECT_TRUE(full.result);
  EXPECT_FALSE(full.header.isLive);
  EXPECT_EQ(full.header.totalDuration, kFitting + 2.0F);
  ASSERT_EQ(full.entries.size(), std::size_t{kFitting});
  EXPECT_EQ(full.entries.rbegin()->second.uri, base + "ab");
  EXPECT_EQ(full.entries.rbegin()->second.uri.size(), kMebibyte - 1);
}

using Numbers = std::vector<std::int64_t>;

TEST(M3u8NumberTest, SegmentsCountFromTheMediaSequence) {
  const Parsed parsed("#EXTM3U\n#EXT-X-MEDIA-SEQUENCE:41\n#EXTINF:1,\na.ts\n#EXTINF:1,\nb.ts\n");
  EXPECT_EQ(parsed.Numbers(), Numbers({41, 42}));
}

TEST(M3u8NumberTest, DroppedSegmentOfDurationZeroHasANumber) {
  const Parsed parsed(
      "#EXTM3U\n#EXT-X-MEDIA-SEQUENCE:41\n#EXTINF:0,\na.ts\n#EXTINF:1,\nb.ts\n"
      "#EXTINF:0,\n#EXT-X-BYTERANGE:5\nc.ts\n#EXTINF:1,\nd.ts\n");
  EXPECT_EQ(parsed.Numbers(), Numbers({42, 44}));
  EXPECT_EQ(parsed.entries.count(1), 1U) << "the keys of the table do not count it";
}

TEST(M3u8NumberTest, LineWithoutADurationHasNoNumber) {
  const Parsed parsed(
      "#EXTM3U\n#EXT-X-MEDIA-SEQUENCE:41\nstray.ts\n#EXTINF:0,\na.ts\nstray.ts\n"
      "#EXTINF:1,\nb.ts\nstray.ts\n#EXTINF:1,\nc.ts\n");
  EXPECT_EQ(parsed.Numbers(), Numbers({42, 43}));
}

TEST(M3u8NumberTest, NoNumbersWithoutAMediaSequence) {
  EXPECT_EQ(Parsed("#EXTM3U\n#EXTINF:1,\na.ts\n").Numbers(), Numbers({kNoSequenceNumber}));
  EXPECT_EQ(Parsed("#EXTM3U\n#EXT-X-MEDIA-SEQUENCE:x\n#EXTINF:1,\na.ts\n").Numbers(),
            Numbers({kNoSequenceNumber}));
}

TEST(M3u8NumberTest, SegmentsCountFromTheLastMediaSequenceBeforeThem) {
  const Parsed parsed(
      "#EXTINF:1,\nrest.ts\n#EXTM3U\n#EXT-X-MEDIA-SEQUENCE:7\n#EXTINF:1,\na.ts\n"
      "#EXTM3U\n#EXT-X-MEDIA-SEQUENCE:6\n#EXTINF:1,\nb.ts\n");
  EXPECT_EQ(parsed.Numbers(), Numbers({kNoSequenceNumber, 7, 6}));
}

TEST(M3u8NumberTest, VariantHasNoNumberAndIsNotCounted) {
  const Parsed parsed(
      "#EXTM3U\n#EXT-X-MEDIA-SEQUENCE:7\n#EXT-X-STREAM-INF:BANDWIDTH=500\nlow.m3u8\n"
      "#EXTINF:1,\na.ts\n");
  EXPECT_EQ(parsed.entries.at(500).number, kNoSequenceNumber);
  EXPECT_EQ(parsed.entries.at(0).number, 7);
}

TEST(M3u8NumberTest, NoNumberFollowsTheLargest) {
  const Parsed parsed(
      "#EXTM3U\n#EXT-X-MEDIA-SEQUENCE:9223372036854775807\n#EXTINF:1,\na.ts\n#EXTINF:1,\nb.ts\n"
      "#EXTINF:1,\nc.ts\n");
  EXPECT_EQ(parsed.Numbers(), Numbers({9223372036854775807, kNoSequenceNumber, kNoSequenceNumber}));
}

}  // namespace
}  // namespace stream
