#include "host/shared/text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>

namespace host {
namespace {

TEST(TextTest, FixedTextRoundsToTheGivenDigits) {
  EXPECT_EQ(FixedText(12.3456, 3), "12.346");
  EXPECT_EQ(FixedText(-0.5, 1), "-0.5");
  EXPECT_EQ(FixedText(1e9, 0), "1000000000");
}

TEST(TextTest, FixedTextOfTheLargestNumberIsWhole) {
  EXPECT_EQ(FixedText(std::numeric_limits<double>::max(), 3).size(), 309U + 4);
}

TEST(TextTest, ExactTextReadsBackAsTheSameFloat) {
  for (const float value : {10.033333F, 0.84F, 123456.789F, 1e-7F, 3e9F}) {
    EXPECT_EQ(std::strtof(ExactText(value).c_str(), nullptr), value);
    EXPECT_EQ(ExactText(value).find('e'), std::string::npos) << ExactText(value);
  }
}

TEST(TextTest, HexTextHasEightDigits) {
  EXPECT_EQ(HexText(0), "00000000");
  EXPECT_EQ(HexText(0xAB12), "0000ab12");
  EXPECT_EQ(HexText(0xFFFFFFFF), "ffffffff");
}

TEST(TextTest, ControlBytesBecomeVisible) {
  EXPECT_EQ(PrintableText("a\r\n\tb\x1b[2J\x7f"), "a\\r\\n\\tb\\x1b[2J\\x7f");
  EXPECT_EQ(PrintableText(std::string("\0", 1)), "\\x00");
}

TEST(TextTest, Utf8IsKeptAndOtherHighBytesBecomeVisible) {
  EXPECT_EQ(PrintableText("\xc3\xa9 \xe4\xb8\xad \xf0\x9f\x8e\xac"),
            "\xc3\xa9 \xe4\xb8\xad \xf0\x9f\x8e\xac");
  EXPECT_EQ(PrintableText("\xff\xc3(\xe4\xb8"), "\\xff\\xc3(\\xe4\\xb8");
}

TEST(TextTest, ControlCharactersOfTwoBytesBecomeVisible) {
  EXPECT_EQ(PrintableText("a\xc2\x9b"
                          "2J"),
            "a\\xc2\\x9b2J");
  EXPECT_EQ(PrintableText("\xc2\x80 \xc2\x9f"), "\\xc2\\x80 \\xc2\\x9f");
  EXPECT_EQ(PrintableText("\xc2\xa0\xc2\xbf"), "\xc2\xa0\xc2\xbf");
}

TEST(TextTest, OverlongEncodingsBecomeVisible) {
  EXPECT_EQ(PrintableText("\xc0\x9b \xc1\xbf"), "\\xc0\\x9b \\xc1\\xbf");
  EXPECT_EQ(PrintableText("\xe0\x80\x9b"), "\\xe0\\x80\\x9b");
  EXPECT_EQ(PrintableText("\xe0\x9f\xbf"), "\\xe0\\x9f\\xbf");
  EXPECT_EQ(PrintableText("\xf0\x80\x80\x9b"), "\\xf0\\x80\\x80\\x9b");
  EXPECT_EQ(PrintableText("\xf0\x8f\xbf\xbf"), "\\xf0\\x8f\\xbf\\xbf");
  EXPECT_EQ(PrintableText("\xe0\xa0\x80\xf0\x90\x80\x80"), "\xe0\xa0\x80\xf0\x90\x80\x80");
}

TEST(TextTest, SurrogatesBecomeVisible) {
  EXPECT_EQ(PrintableText("\xed\xa0\x80"), "\\xed\\xa0\\x80");
  EXPECT_EQ(PrintableText("\xed\xbf\xbf"), "\\xed\\xbf\\xbf");
  EXPECT_EQ(PrintableText("\xed\x9f\xbf\xee\x80\x80"), "\xed\x9f\xbf\xee\x80\x80");
}

TEST(TextTest, CodePointsAboveTheLastOneBecomeVisible) {
  EXPECT_EQ(PrintableText("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
  EXPECT_EQ(PrintableText("\xf5\x80\x80\x80"), "\\xf5\\x80\\x80\\x80");
  EXPECT_EQ(PrintableText("\xf4\x8f\xbf\xbf"), "\xf4\x8f\xbf\xbf");
}

TEST(TextTest, IncompleteSequencesBecomeVisible) {
  EXPECT_EQ(PrintableText("\xe4\xb8(\xf0\x9f\x8e("), "\\xe4\\xb8(\\xf0\\x9f\\x8e(");
}

TEST(TextTest, LongTextIsCutAndCounted) {
  const std::string text = PrintableText(std::string(16384, 'x'));
  EXPECT_EQ(text, std::string(400, 'x') + "... (16384 bytes)");
}

}  // namespace
}  // namespace host
