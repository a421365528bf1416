#include "common/address.h"

#include <gtest/gtest.h>

#include <string>

namespace stream {
namespace {

TEST(CleanUrlTest, PlainAddressIsUnchanged) {
  EXPECT_EQ(CleanUrl("http://host/a b.ts?x=1~"), "http://host/a b.ts?x=1~");
}

TEST(CleanUrlTest, CarriageReturnAndLineFeedEndTheAddress) {
  EXPECT_EQ(CleanUrl("http://host/a.flv\r\n"), "http://host/a.flv");
}

TEST(CleanUrlTest, RestAfterAControlByteIsDiscarded) {
  EXPECT_EQ(CleanUrl(std::string("http://h\0/a.ts", 14)), "http://h");
  EXPECT_EQ(CleanUrl("http://h\x7F/a.ts"), "http://h");
}

TEST(CleanUrlTest, LeadingControlByteLeavesNothing) { EXPECT_EQ(CleanUrl("\nhttp://h"), ""); }

TEST(CleanUrlTest, PairOfHighBytesFoldsIntoTheirSum) {
  EXPECT_EQ(CleanUrl("http://h/\xC3\xA9.ts"), "http://h/\x6C.ts");
}

TEST(CleanUrlTest, HighByteWithoutAPartnerEndsTheAddress) {
  // 0xE4 + 0xB8 is 0x19C, so the pair becomes 0x9C. 0xAD is followed by a letter.
  EXPECT_EQ(CleanUrl("http://h/\xE4\xB8\xADx.ts"), "http://h/\x9C");
}

TEST(CleanUrlTest, HighByteAtTheEndIsDropped) { EXPECT_EQ(CleanUrl("http://h/\xC3"), "http://h/"); }

TEST(FileUrlTest, SchemeCountsOnlyAtTheStart) {
  EXPECT_TRUE(IsFileUrl("file:///tmp/a.ts"));
  EXPECT_FALSE(IsFileUrl("x-file:///tmp/a.ts"));
  EXPECT_FALSE(IsFileUrl("FILE:///tmp/a.ts"));
}

TEST(FileUrlTest, PathStartsAfterTheFirstSevenCharacters) {
  EXPECT_EQ(FileUrlPath("file:///tmp/a.ts"), "/tmp/a.ts");
  EXPECT_EQ(FileUrlPath("file://C:\\a b.ts"), "C:\\a b.ts");
}

}  // namespace
}  // namespace stream
