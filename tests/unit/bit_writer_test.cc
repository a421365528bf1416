#include "common/bit_writer.h"

#include <gtest/gtest.h>

#include <array>

namespace stream {
namespace {

TEST(BitWriterTest, FirstBitIsTheMostSignificantOfTheFirstByte) {
  std::array<std::uint8_t, 2> bytes{};
  BitWriter(bytes).Write(1, 1);
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 2>{0x80, 0}));
}

TEST(BitWriterTest, EachNumberFollowsThePreviousOne) {
  std::array<std::uint8_t, 2> bytes{};
  BitWriter writer(bytes);
  writer.Write(3, 0b101);
  writer.Write(2, 0);
  writer.Write(4, 0b1001);
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 2>{0b10100100, 0b10000000}));
}

TEST(BitWriterTest, NumberSpansThreeBytes) {
  std::array<std::uint8_t, 3> bytes{};
  BitWriter writer(bytes);
  writer.Write(7, 0);
  writer.Write(16, 0xFFFF);
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 3>{0x01, 0xFF, 0xFE}));
}

TEST(BitWriterTest, OnlyTheLowBitsAreWritten) {
  std::array<std::uint8_t, 2> bytes{};
  BitWriter(bytes).Write(3, 0xFFFA);  // its low bits are 010
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 2>{0b01000000, 0}));
}

TEST(BitWriterTest, ZeroBitsDoNotMoveThePosition) {
  std::array<std::uint8_t, 1> bytes{};
  BitWriter writer(bytes);
  writer.Write(0, 0xFFFF);
  writer.Write(1, 1);
  EXPECT_EQ(bytes[0], 0x80);
}

TEST(BitWriterTest, BitsAlreadySetStaySet) {
  std::array<std::uint8_t, 1> bytes = {0b10010001};
  BitWriter(bytes).Write(8, 0b01010000);
  EXPECT_EQ(bytes[0], 0b11010001);
}

TEST(BitWriterTest, BytesAfterTheNumberAreUnchanged) {
  std::array<std::uint8_t, 4> bytes = {0, 0, 0, 0xA5};
  BitWriter writer(bytes);
  writer.Write(8, 0x12);
  writer.Write(16, 0x3456);
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 4>{0x12, 0x34, 0x56, 0xA5}));
}

TEST(BitWriterTest, BitsAfterTheEndAreDropped) {
  std::array<std::uint8_t, 3> bytes{};
  BitWriter writer(std::span<std::uint8_t>(bytes).first(2));
  writer.Write(12, 0);
  writer.Write(16, 0xFFFF);
  writer.Write(16, 0xFFFF);
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 3>{0, 0x0F, 0}));
}

TEST(BitWriterTest, EveryPositionAndCountMatchesANaiveWriter) {
  for (unsigned position = 0; position < 16; ++position) {
    for (unsigned count = 1; count <= 16; ++count) {
      std::array<std::uint8_t, 4> bytes{};
      BitWriter writer(bytes);
      writer.Write(position, 0);
      writer.Write(count, 0xB6D5);
      const std::uint32_t low_bits = 0xB6D5U & ((1U << count) - 1);
      const std::uint32_t expected = low_bits << (32 - position - count);
      const std::uint32_t found = std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
                                  std::uint32_t{bytes[2]} << 8 | bytes[3];
      EXPECT_EQ(found, expected) << count << " bits at " << position;
    }
  }
}

}  // namespace
}  // namespace stream
