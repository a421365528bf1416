#include "common/http_transfer.h"

#include <gtest/gtest.h>

namespace {

TEST(RangeTest, OffsetsGiveOpenEndedRanges) {
  EXPECT_EQ(RangeFrom(0), "0-");
  EXPECT_EQ(RangeFrom(1'048'576), "1048576-");
}

TEST(RangeTest, OffsetPast2GiBIsWrittenAsASigned32BitNumber) {
  EXPECT_EQ(RangeFrom(0x7FFFFFFF), "2147483647-");
  EXPECT_EQ(RangeFrom(0x80000000), "-2147483648-");
}

TEST(HtmlPageTest, OnlyTheLowerCaseTagAtTheStartCounts) {
  EXPECT_TRUE(IsHtmlPage("<html>", 6));
  EXPECT_TRUE(IsHtmlPage("<html><body>", 12));
  EXPECT_FALSE(IsHtmlPage("<HTML>", 6));
  EXPECT_FALSE(IsHtmlPage(" <html>", 7));
  EXPECT_FALSE(IsHtmlPage("<html lang=en>", 14));
  EXPECT_FALSE(IsHtmlPage("<html>", 5));  // only five bytes have come
  EXPECT_FALSE(IsHtmlPage(nullptr, 0));
}

}  // namespace
