#include "hls/playlist/m3u8_playlist.h"

#include <gtest/gtest.h>

namespace stream {
namespace {

constexpr char kListUri[] = "https://host:8080/p/q/list.m3u8";

TEST(ResolveM3u8UriTest, AddressWithHttpSchemeIsUnchanged) {
  EXPECT_EQ(ResolveM3u8Uri(kListUri, "http://other/a.ts"), "http://other/a.ts");
  EXPECT_EQ(ResolveM3u8Uri(kListUri, "https://other/a.ts"), "https://other/a.ts");
}

TEST(ResolveM3u8UriTest, OtherSchemesAreRelative) {
  EXPECT_EQ(ResolveM3u8Uri(kListUri, "file:///a.ts"), "https://host:8080/p/q/file:///a.ts");
  EXPECT_EQ(ResolveM3u8Uri(kListUri, "HTTPS://a/b"), "https://host:8080/p/q/HTTPS://a/b");
}

TEST(ResolveM3u8UriTest, AbsolutePathFollowsTheHost) {
  EXPECT_EQ(ResolveM3u8Uri(kListUri, "/x/seg.ts"), "https://host:8080/x/seg.ts");
  EXPECT_EQ(ResolveM3u8Uri("http://h/p/list.m3u8", "/x.ts"), "http://h/x.ts");
}

TEST(ResolveM3u8UriTest, AddressThatStartsWithTwoSlashesIsAPath) {
  EXPECT_EQ(ResolveM3u8Uri(kListUri, "//cdn/x.ts"), "https://host:8080//cdn/x.ts");
}

TEST(ResolveM3u8UriTest, AbsolutePathFollowsABaseWithoutAPath) {
  EXPECT_EQ(ResolveM3u8Uri("http://host", "/x.ts"), "http://host/x.ts");
  EXPECT_EQ(ResolveM3u8Uri("a/b", "/x.ts"), "a/b/x.ts");
  EXPECT_EQ(ResolveM3u8Uri("", "/x.ts"), "/x.ts");
}

TEST(ResolveM3u8UriTest, SlashBeforeTheEighthPositionDoesNotEndTheHost) {
  EXPECT_EQ(ResolveM3u8Uri("http:///p/q", "/x.ts"), "http:///p/x.ts");
  EXPECT_EQ(ResolveM3u8Uri("https:///p/q", "/x.ts"), "https:///x.ts");
}

TEST(ResolveM3u8UriTest, RelativePathFollowsTheLastSlash) {
  EXPECT_EQ(ResolveM3u8Uri(kListUri, "seg.ts"), "https://host:8080/p/q/seg.ts");
  EXPECT_EQ(ResolveM3u8Uri("http://host", "seg.ts"), "http://seg.ts");
}

TEST(ResolveM3u8UriTest, RelativePathIsUnchangedIfTheBaseHasNoSlash) {
  EXPECT_EQ(ResolveM3u8Uri("list.m3u8", "seg.ts"), "seg.ts");
}

TEST(ResolveM3u8UriTest, DotsAreNotCollapsed) {
  EXPECT_EQ(ResolveM3u8Uri(kListUri, "./../a.ts"), "https://host:8080/p/q/./../a.ts");
}

TEST(ResolveM3u8UriTest, QueryOfTheBaseIsDroppedUnlessItContainsASlash) {
  EXPECT_EQ(ResolveM3u8Uri("http://h/p/l.m3u8?t=1", "a.ts"), "http://h/p/a.ts");
  EXPECT_EQ(ResolveM3u8Uri("http://h/p/l.m3u8?t=1/2", "a.ts"), "http://h/p/l.m3u8?t=1/a.ts");
}

}  // namespace
}  // namespace stream
