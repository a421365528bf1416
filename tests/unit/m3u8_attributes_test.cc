#include "hls/m3u8_attributes.h"

#include <gtest/gtest.h>

#include <string>

namespace {

M3u8Attributes Parsed(const std::string& text) { return ParseAttributeList(text, ",", "="); }

TEST(ParseAttributeListTest, PairsAreTrimmedAndOrderedByKey) {
  EXPECT_EQ(Parsed(" b = 2 ,\ta=1\r\n"), M3u8Attributes({{"a", "1"}, {"b", "2"}}));
}

TEST(ParseAttributeListTest, QuotedValueIsCutAtItsComma) {
  EXPECT_EQ(Parsed("CODECS=\"avc1,mp4a\",B=1"),
            M3u8Attributes({{"", ""}, {"B", "1"}, {"CODECS", "\"avc1"}}));
}

TEST(ParseAttributeListTest, RepeatedKeyKeepsItsFirstValue) {
  EXPECT_EQ(Parsed("a=1, a =2,a"), M3u8Attributes({{"", ""}, {"a", "1"}}));
}

TEST(ParseAttributeListTest, ValueHoldsAllThatFollowsTheFirstSeparator) {
  EXPECT_EQ(Parsed("a=b=c"), M3u8Attributes({{"a", "b=c"}}));
}

TEST(ParseAttributeListTest, PieceWithoutSeparatorYieldsAnEmptyPair) {
  EXPECT_EQ(Parsed(""), M3u8Attributes({{"", ""}}));
  EXPECT_EQ(Parsed("word"), M3u8Attributes({{"", ""}}));
  EXPECT_EQ(Parsed(",a=1,"), M3u8Attributes({{"", ""}, {"a", "1"}}));
}

TEST(ParseAttributeListTest, EmptyKeyMayHaveAValue) {
  EXPECT_EQ(Parsed("=1,word"), M3u8Attributes({{"", "1"}}));
  EXPECT_EQ(Parsed("word,=1"), M3u8Attributes({{"", ""}}));
}

TEST(ParseAttributeListTest, SeparatorsMayBeLongerThanOneCharacter) {
  EXPECT_EQ(ParseAttributeList("a:=1;;b:=2;", ";;", ":="),
            M3u8Attributes({{"a", "1"}, {"b", "2;"}}));
}

TEST(ParseAttributeListTest, EmptyListSeparatorCutsNothing) {
  EXPECT_EQ(ParseAttributeList("a=1,b=2", "", "="), M3u8Attributes({{"a", "1,b=2"}}));
}

TEST(AttributeValueTest, MissingKeyIsEmpty) {
  const M3u8Attributes attributes = Parsed("a=1");
  EXPECT_EQ(AttributeValue(attributes, "a"), "1");
  EXPECT_EQ(AttributeValue(attributes, "A"), "");
}

}  // namespace
