#include "hls/m3u8_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::string AfterTrimming(std::string text, std::string_view set = kM3u8Blanks) {
  TrimChars(text, set);
  return text;
}

TEST(TrimCharsTest, CharactersOfTheSetGoAtBothEndsAndStayInside) {
  EXPECT_EQ(AfterTrimming(" \t\r\n a b\tc \r\n"), "a b\tc");
  EXPECT_EQ(AfterTrimming("xyaxyb", "yx"), "axyb");
}

TEST(TrimCharsTest, TextOfNothingElseBecomesEmpty) {
  EXPECT_EQ(AfterTrimming(" \r\n"), "");
  EXPECT_EQ(AfterTrimming(""), "");
}

TEST(TrimCharsTest, EmptySetTrimsNothing) { EXPECT_EQ(AfterTrimming(" a ", ""), " a "); }

TEST(TrimCharsTest, OtherBlanksStay) { EXPECT_EQ(AfterTrimming("\v a\f "), "\v a\f"); }

TEST(ForEachPieceTest, ThereIsOnePieceMoreThanSeparators) {
  std::vector<std::string> pieces;
  ForEachPiece("a,,b,", ",", [&](std::string_view piece) { pieces.emplace_back(piece); });
  EXPECT_EQ(pieces, std::vector<std::string>({"a", "", "b", ""}));
}

}  // namespace
