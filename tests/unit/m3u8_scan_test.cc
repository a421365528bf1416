#include "hls/playlist/m3u8_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <tuple>

namespace stream {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr std::int32_t kOld = -7;

// Whether a number was read, its value, and the rest of the text.
template <typename Number>
using Scanned = std::tuple<bool, Number, std::string>;

template <typename Number>
Scanned<Number> Scan(bool (*scan)(std::string_view&, Number&), std::string_view text) {
  auto value = static_cast<Number>(kOld);
  const bool read = scan(text, value);
  return {read, value, std::string(text)};
}

Scanned<std::int32_t> Int32(std::string_view text) { return Scan(ScanInt32, text); }
Scanned<std::int64_t> Int64(std::string_view text) { return Scan(ScanInt64, text); }
Scanned<float> Float(std::string_view text) { return Scan(ScanFloat, text); }

template <typename Number>
Scanned<Number> Read(Number value, const std::string& rest = "") {
  return {true, value, rest};
}

template <typename Number = std::int32_t>
Scanned<Number> Failed(const std::string& text) {
  return {false, static_cast<Number>(kOld), text};
}

TEST(ScanInt32Test, DigitsAreReadUpToTheFirstOtherCharacter) {
  EXPECT_EQ(Int32("720p"), Read(720, "p"));
  EXPECT_EQ(Int32("3.5"), Read(3, ".5"));
  EXPECT_EQ(Int32("0x10"), Read(0, "x10"));
  EXPECT_EQ(Int32("007"), Read(7));
}

TEST(ScanInt32Test, LeadingBlanksAndASignAreRead) {
  EXPECT_EQ(Int32(" \t\r\n\v\f+12"), Read(12));
  EXPECT_EQ(Int32(" -12"), Read(-12));
}

TEST(ScanInt32Test, TextWithoutANumberChangesNothing) {
  for (const char* text : {"", " ", "x1", "+", "-", "+-1", "-+1", "--1", "++1", "- 1"}) {
    EXPECT_EQ(Int32(text), Failed(text)) << text;
  }
}

TEST(ScanInt32Test, NumberOutOfRangeIsClampedAndReadCompletely) {
  EXPECT_EQ(Int32("2147483647"), Read(2147483647));
  EXPECT_EQ(Int32("2147483648x"), Read(2147483647, "x"));
  EXPECT_EQ(Int32("-2147483648"), Read(std::numeric_limits<std::int32_t>::min()));
  EXPECT_EQ(Int32("-99999999999999999999x"), Read(std::numeric_limits<std::int32_t>::min(), "x"));
}

TEST(ScanInt64Test, NumberOutOfRangeIsClampedAndReadCompletely) {
  constexpr auto kMax = std::numeric_limits<std::int64_t>::max();
  constexpr auto kMin = std::numeric_limits<std::int64_t>::min();
  EXPECT_EQ(Int64("4294967296"), Read(std::int64_t{4294967296}));
  EXPECT_EQ(Int64("9223372036854775807"), Read(kMax));
  EXPECT_EQ(Int64("+9223372036854775808,"), Read(kMax, ","));
  EXPECT_EQ(Int64("-9223372036854775809,"), Read(kMin, ","));
}

TEST(ScanFloatTest, DecimalNumbersAreRead) {
  EXPECT_EQ(Float("10.0,title"), Read(10.0F, ",title"));
  EXPECT_EQ(Float("\v\f\r +.5"), Read(0.5F));
  EXPECT_EQ(Float("-5."), Read(-5.0F));
  EXPECT_EQ(Float("1E-2x"), Read(0.01F, "x"));
  EXPECT_EQ(Float("9.976633"), Read(9.976633F));
}

TEST(ScanFloatTest, CommaIsNotADecimalPoint) { EXPECT_EQ(Float("1,5"), Read(1.0F, ",5")); }

TEST(ScanFloatTest, ExponentWithoutDigitsIsNotPartOfTheNumber) {
  EXPECT_EQ(Float("1e,"), Read(1.0F, "e,"));
  EXPECT_EQ(Float("1e+ 5"), Read(1.0F, "e+ 5"));
}

TEST(ScanFloatTest, HexadecimalNumbersAreRead) {
  EXPECT_EQ(Float("0x10,"), Read(16.0F, ","));
  EXPECT_EQ(Float("-0X1.8P1"), Read(-3.0F));
}

TEST(ScanFloatTest, WordsForInfinityAndNaNAreRead) {
  EXPECT_EQ(Float("inf,"), Read(kInfinity, ","));
  EXPECT_EQ(Float("-INFINITY"), Read(-kInfinity));
  float value = 0;
  std::string_view text = "NaN";
  EXPECT_TRUE(ScanFloat(text, value));
  EXPECT_TRUE(std::isnan(value));
}

TEST(ScanFloatTest, TextWithoutANumberChangesNothing) {
  for (const char* text : {"", " ", ",", ".", ".e1", "+-1", "--1", "-+1", "+ 1", "0x", "0xg",
                           "0x-1", "0xinf", "in", "infini", "infix", "na", "seven"}) {
    EXPECT_EQ(Float(text), Failed<float>(text)) << text;
  }
}

TEST(ScanFloatTest, TooLargeNumberBecomesInfinity) {
  EXPECT_EQ(Float("3.5e38"), Read(kInfinity));
  EXPECT_EQ(Float("-1e99,"), Read(-kInfinity, ","));
  EXPECT_EQ(Float("1e99999999999999999999"), Read(kInfinity));
  EXPECT_EQ(Float("0x1p128"), Read(kInfinity));
  EXPECT_EQ(Float(std::string(50, '9')), Read(kInfinity));
  EXPECT_EQ(Float("0." + std::string(20, '0') + "1e70"), Read(kInfinity));
}

TEST(ScanFloatTest, TooSmallNumberBecomesZero) {
  EXPECT_EQ(Float("1e-99,"), Read(0.0F, ","));
  EXPECT_EQ(Float("1e-99999999999999999999"), Read(0.0F));
  EXPECT_EQ(Float("0x1p-200"), Read(0.0F));
  EXPECT_EQ(Float("0." + std::string(60, '0') + "1"), Read(0.0F));
  EXPECT_EQ(Float(std::string(20, '9') + "e-90"), Read(0.0F));
}

TEST(ScanFloatTest, SmallestNumberIsRead) {
  EXPECT_EQ(Float("1.4e-45"), Read(std::numeric_limits<float>::denorm_min()));
}

TEST(ToInt32Test, TextWithoutANumberIsZero) {
  EXPECT_EQ(ToInt32(""), 0);
  EXPECT_EQ(ToInt32("x5"), 0);
  EXPECT_EQ(ToInt32(" 5x"), 5);
  EXPECT_EQ(ToInt32("99999999999"), 2147483647);
}

}  // namespace
}  // namespace stream
