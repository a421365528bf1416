#include "hls/playlist/m3u8_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stream {
namespace {

using testing::ElementsAre;

M3u8Attributes Attributes(const std::string& text) { return ParseAttributeList(text, ",", "="); }

TEST(ParseAttributeListTest, PairsAreTrimmedAndOrderedByKey) {
  EXPECT_EQ(Attributes(" b = 2 ,\ta=1\r\n"), M3u8Attributes({{"a", "1"}, {"b", "2"}}));
}

TEST(ParseAttributeListTest, QuotedValueIsCutAtItsComma) {
  EXPECT_EQ(Attributes("CODECS=\"avc1,mp4a\",B=1"),
            M3u8Attributes({{"", ""}, {"B", "1"}, {"CODECS", "\"avc1"}}));
}

TEST(ParseAttributeListTest, RepeatedKeyKeepsItsFirstValue) {
  EXPECT_EQ(Attributes("a=1, a =2,a"), M3u8Attributes({{"", ""}, {"a", "1"}}));
}

TEST(ParseAttributeListTest, ValueIsAllThatFollowsTheFirstSeparator) {
  EXPECT_EQ(Attributes("a=b=c"), M3u8Attributes({{"a", "b=c"}}));
}

TEST(ParseAttributeListTest, PieceWithoutSeparatorYieldsAnEmptyPair) {
  EXPECT_EQ(Attributes(""), M3u8Attributes({{"", ""}}));
  EXPECT_EQ(Attributes("word"), M3u8Attributes({{"", ""}}));
  EXPECT_EQ(Attributes(",a=1,"), M3u8Attributes({{"", ""}, {"a", "1"}}));
}

TEST(ParseAttributeListTest, EmptyKeyMayHaveAValue) {
  EXPECT_EQ(Attributes("=1,word"), M3u8Attributes({{"", "1"}}));
  EXPECT_EQ(Attributes("word,=1"), M3u8Attributes({{"", ""}}));
}

TEST(ParseAttributeListTest, SeparatorsMayBeLongerThanOneCharacter) {
  EXPECT_EQ(ParseAttributeList("a:=1;;b:=2;", ";;", ":="),
            M3u8Attributes({{"a", "1"}, {"b", "2;"}}));
}

TEST(ParseAttributeListTest, EmptyListSeparatorSplitsNothing) {
  EXPECT_EQ(ParseAttributeList("a=1,b=2", "", "="), M3u8Attributes({{"a", "1,b=2"}}));
}

// The values found for "a" and "b".
std::vector<std::optional<std::string_view>> Found(std::string_view text) {
  std::array<WantedAttribute, 2> wanted = {{{"a"}, {"b"}}};
  FindAttributes(text, ",", "=", wanted);
  return {wanted[0].value, wanted[1].value};
}

TEST(FindAttributesTest, ValuesAreTrimmedWhateverTheirOrder) {
  EXPECT_THAT(Found("c=3, b = 2 ,\ta=1\r\n"), ElementsAre("1", "2"));
}

TEST(FindAttributesTest, MissingKeyHasNoValue) {
  EXPECT_THAT(Found("a=1,A=2,ab=3"), ElementsAre("1", std::nullopt));
  EXPECT_THAT(Found(""), ElementsAre(std::nullopt, std::nullopt));
}

TEST(FindAttributesTest, RepeatedKeyKeepsItsFirstValueEvenIfEmpty) {
  EXPECT_THAT(Found("a=1,a=2,b=,b=3"), ElementsAre("1", ""));
}

TEST(FindAttributesTest, PieceWithoutSeparatorIsNotAKey) {
  EXPECT_THAT(Found("a,b=1"), ElementsAre(std::nullopt, "1"));
}

}  // namespace
}  // namespace stream
