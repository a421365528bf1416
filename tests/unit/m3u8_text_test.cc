#include "hls/playlist/m3u8_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace stream {
namespace {

std::string AfterTrimming(std::string_view text, std::string_view set = kM3u8Blanks) {
  TrimChars(text, set);
  return std::string(text);
}

TEST(TrimCharsTest, CharactersOfTheSetAreTrimmedAtBothEndsOnly) {
  EXPECT_EQ(AfterTrimming(" \t\r\n a b\tc \r\n"), "a b\tc");
  EXPECT_EQ(AfterTrimming("xyaxyb", "yx"), "axyb");
}

TEST(TrimCharsTest, TextOfOnlySuchCharactersBecomesEmpty) {
  EXPECT_EQ(AfterTrimming(" \r\n"), "");
  EXPECT_EQ(AfterTrimming(""), "");
}

TEST(TrimCharsTest, EmptySetTrimsNothing) { EXPECT_EQ(AfterTrimming(" a ", ""), " a "); }

TEST(TrimCharsTest, OtherBlanksAreKept) { EXPECT_EQ(AfterTrimming("\v a\f "), "\v a\f"); }

TEST(ForEachPieceTest, PiecesAreOneMoreThanSeparators) {
  std::vector<std::string> pieces;
  ForEachPiece("a,,b,", ",", [&](std::string_view piece) { pieces.emplace_back(piece); });
  EXPECT_EQ(pieces, std::vector<std::string>({"a", "", "b", ""}));
}

}  // namespace
}  // namespace stream
