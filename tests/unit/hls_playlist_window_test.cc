#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "hls/segment_ledger.h"
#include "hls/window_classifier.h"
#include "tests/support/hls_playlists.h"

namespace stream {
namespace {

using hls_test::LivePlaylist;
using hls_test::SegmentUris;

constexpr char kBase[] = "http://host/";

// The window of a playlist text, one line for each pair.
class WindowTest : public testing::Test {
 protected:
  std::vector<std::string> PairsOf(const std::string& text) {
    M3u8Header header;
    std::int64_t first = kNoSequenceNumber;
    entries_.clear();
    ParseM3u8(header, kBase, text, first, entries_);
    window_ = WindowOf(entries_, first);
    std::vector<std::string> lines;
    for (const NumberedSegment& pair : window_.segments) {
      lines.push_back(std::to_string(pair.number) + " " + std::string(pair.key));
    }
    return lines;
  }

  using Pairs = std::vector<std::string>;

  M3u8Table entries_;
  PlaylistWindow window_;
};

TEST_F(WindowTest, SegmentsHaveNumbersAndKeysWithoutTheQuery) {
  EXPECT_EQ(PairsOf(LivePlaylist(7, {"a.ts?token=1", "b.ts"})),
            Pairs({"7 http://host/a.ts", "8 http://host/b.ts"}));
  EXPECT_EQ(window_.first, 7);
}

TEST_F(WindowTest, EntryThatIsNoSegmentHasANumberAndIsSkipped) {
  EXPECT_EQ(PairsOf(LivePlaylist(7, {"a.aac", "b.ts"})), Pairs({"8 http://host/b.ts"}));
  EXPECT_EQ(window_.first, 7);
}

TEST_F(WindowTest, PlaylistWithoutASequenceHasNoPairs) {
  EXPECT_EQ(PairsOf("#EXTM3U\n" + hls_test::SegmentLines({"a.ts"})), Pairs());
}

TEST_F(WindowTest, RestOfAnEarlierTextIsIgnored) {
  EXPECT_EQ(PairsOf(LivePlaylist(7, {"a.ts", "b.ts"}) + LivePlaylist(8, {"b.ts", "c.ts"})),
            Pairs({"8 http://host/b.ts", "9 http://host/c.ts"}));
  EXPECT_EQ(PairsOf(LivePlaylist(1, {"a.ts"}) + LivePlaylist(8, {"b.ts", "c.ts"})),
            Pairs({"8 http://host/b.ts", "9 http://host/c.ts"}));
  EXPECT_EQ(PairsOf(LivePlaylist(8, {"b.ts", "c.ts"}) + LivePlaylist(1, {"a.ts"})),
            Pairs({"1 http://host/a.ts"}));
  EXPECT_EQ(PairsOf(hls_test::SegmentLines({"a.ts"}) + LivePlaylist(8, {"b.ts"})),
            Pairs({"8 http://host/b.ts"}));
}

TEST_F(WindowTest, OnlyTheNewestSegmentsOfAVeryLongPlaylistAreCompared) {
  constexpr int kMore = 5;
  const int count = static_cast<int>(kMaxCompared) + kMore;
  PairsOf(LivePlaylist(0, SegmentUris(0, count)));
  EXPECT_EQ(window_.segments.size(), kMaxCompared);
  EXPECT_EQ(window_.segments.front().number, kMore);
  EXPECT_EQ(window_.segments.back().number, count - 1);
  EXPECT_EQ(window_.first, 0);
}

}  // namespace
}  // namespace stream
