#include "flv/flv_reader.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "tests/support/flv_memory_source.h"

namespace stream {
namespace {

class FlvReaderTest : public testing::Test {
 protected:
  // Makes a reader over these bytes.
  FlvReader& Over(std::vector<std::uint8_t> bytes) {
    bytes_ = std::move(bytes);
    source_.emplace(bytes_);
    return reader_.emplace(*source_);
  }

 private:
  std::vector<std::uint8_t> bytes_;
  std::optional<FlvMemorySource> source_;
  std::optional<FlvReader> reader_;
};

TEST_F(FlvReaderTest, NumbersAreBigEndian) {
  FlvReader& reader = Over({0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0xFF, 0x08, 0x09, 0x0A});
  std::uint8_t eight = 0;
  std::uint16_t sixteen = 0;
  std::uint32_t twenty_four = 0;
  std::uint32_t thirty_two = 0;
  EXPECT_TRUE(reader.Read8(eight) && reader.Read16(sixteen) && reader.Read24(twenty_four) &&
              reader.Read32(thirty_two));
  EXPECT_EQ(eight, 0x01);
  EXPECT_EQ(sixteen, 0x0203);
  EXPECT_EQ(twenty_four, 0x040506U);
  EXPECT_EQ(thirty_two, 0xFF08090AU);
  EXPECT_EQ(reader.Position(), 10U);
}

TEST_F(FlvReaderTest, FourthByteOfATimestampIsTheMostSignificant) {
  std::uint32_t timestamp = 0;
  EXPECT_TRUE(Over({0x34, 0x56, 0x78, 0x12}).ReadTimestamp(timestamp));
  EXPECT_EQ(timestamp, 0x12345678U);
}

TEST_F(FlvReaderTest, LargestNumbersKeepAllTheirBits) {
  FlvReader& reader = Over(std::vector<std::uint8_t>(11, 0xFF));
  std::uint32_t twenty_four = 0;
  std::uint32_t thirty_two = 0;
  std::uint32_t timestamp = 0;
  EXPECT_TRUE(reader.Read24(twenty_four) && reader.Read32(thirty_two) &&
              reader.ReadTimestamp(timestamp));
  EXPECT_EQ(twenty_four, 0xFFFFFFU);
  EXPECT_EQ(thirty_two, 0xFFFFFFFFU);
  EXPECT_EQ(timestamp, 0xFFFFFFFFU);
}

TEST_F(FlvReaderTest, NumberWithAMissingByteIsUnchanged) {
  std::uint8_t eight = 8;
  EXPECT_FALSE(Over({}).Read8(eight));
  EXPECT_EQ(eight, 8);
  std::uint16_t sixteen = 16;
  EXPECT_FALSE(Over({1}).Read16(sixteen));
  EXPECT_EQ(sixteen, 16);
  std::uint32_t number = 32;
  EXPECT_FALSE(Over({1, 2}).Read24(number));
  EXPECT_FALSE(Over({1, 2, 3}).Read32(number));
  EXPECT_FALSE(Over({1, 2, 3}).ReadTimestamp(number));
  EXPECT_EQ(number, 32U);
}

TEST_F(FlvReaderTest, IncompleteBytesAreNotConsumed) {
  FlvReader& reader = Over({1, 2, 3});
  std::array<std::uint8_t, 4> bytes = {9, 9, 9, 9};
  EXPECT_FALSE(reader.ReadBytes(bytes.data(), 4));
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 4>{9, 9, 9, 9}));
  EXPECT_TRUE(reader.ReadBytes(bytes.data(), 3));
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 4>{1, 2, 3, 9}));
}

TEST_F(FlvReaderTest, PositionCountsMissingBytesToo) {
  FlvReader& reader = Over({1, 2});
  std::uint32_t number = 0;
  EXPECT_FALSE(reader.Read32(number));
  EXPECT_EQ(reader.Position(), 4U);
  EXPECT_FALSE(reader.Skip(10));
  EXPECT_EQ(reader.Position(), 14U);
}

TEST_F(FlvReaderTest, SkipDropsBytes) {
  FlvReader& reader = Over({1, 2, 3, 4});
  EXPECT_TRUE(reader.Skip(3));
  std::uint8_t last = 0;
  EXPECT_TRUE(reader.Read8(last));
  EXPECT_EQ(last, 4);
  EXPECT_EQ(reader.Position(), 4U);
}

TEST_F(FlvReaderTest, SkipBeyondTheEndConsumesNothing) {
  FlvReader& reader = Over({1, 2});
  EXPECT_FALSE(reader.Skip(3));
  EXPECT_EQ(reader.Position(), 3U);
  std::uint8_t next = 9;
  EXPECT_TRUE(reader.Read8(next));
  EXPECT_EQ(next, 1);
}

TEST_F(FlvReaderTest, SkipOfZeroOrLessConsumesNothing) {
  FlvReader& reader = Over({1});
  EXPECT_TRUE(reader.Skip(0));
  EXPECT_EQ(reader.Position(), 0U);
  EXPECT_TRUE(reader.Skip(-5));
  EXPECT_EQ(reader.Position(), 0xFFFFFFFBU);
  std::uint8_t first = 0;
  EXPECT_TRUE(reader.Read8(first));
  EXPECT_EQ(first, 1);
}

TEST_F(FlvReaderTest, ZeroBytesCanAlwaysBeRead) {
  FlvReader& reader = Over({});
  EXPECT_TRUE(reader.ReadBytes(nullptr, 0));
  EXPECT_EQ(reader.Position(), 0U);
}

TEST_F(FlvReaderTest, WaitForBytesConsumesNothing) {
  FlvReader& reader = Over({1, 2});
  EXPECT_TRUE(reader.WaitForBytes(0));
  EXPECT_TRUE(reader.WaitForBytes(2));
  EXPECT_FALSE(reader.WaitForBytes(3));
  EXPECT_FALSE(reader.WaitForBytes(0xFFFFFFFF));
  EXPECT_EQ(reader.Position(), 0U);
}

}  // namespace
}  // namespace stream
