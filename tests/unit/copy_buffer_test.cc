#include "common/copy_buffer.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <limits>

namespace stream {
namespace {

TEST(CopyBufferTest, GrowsToExactlyTheNeededSize) {
  CopyBuffer buffer;
  const std::array<std::uint8_t, 5> bytes = {1, 2, 3, 4, 5};
  ASSERT_TRUE(buffer.Append(bytes.data(), 3));
  EXPECT_EQ(buffer.Capacity(), 3);
  ASSERT_TRUE(buffer.Append(bytes.data() + 3, 2));
  EXPECT_EQ(buffer.Capacity(), 5);
  EXPECT_EQ(buffer.Length(), 5);
  EXPECT_EQ(std::memcmp(buffer.Data(), bytes.data(), bytes.size()), 0);
}

TEST(CopyBufferTest, ResetKeepsTheBlockAndReleaseFreesIt) {
  CopyBuffer buffer;
  const std::array<std::uint8_t, 5> bytes{};
  ASSERT_TRUE(buffer.Append(bytes.data(), 5));
  const std::uint8_t* block = buffer.Data();
  buffer.Reset();
  EXPECT_EQ(buffer.Length(), 0);
  ASSERT_TRUE(buffer.Append(bytes.data(), 4));
  EXPECT_EQ(buffer.Data(), block);
  EXPECT_EQ(buffer.Capacity(), 5);
  buffer.Release();
  EXPECT_EQ(buffer.Data(), nullptr);
  EXPECT_EQ(buffer.Capacity(), 0);
}

TEST(CopyBufferTest, LengthPast31BitsIsRefused) {
  CopyBuffer buffer;
  const std::uint8_t byte = 1;
  ASSERT_TRUE(buffer.Append(&byte, 1));
  EXPECT_FALSE(buffer.Append(&byte, std::numeric_limits<std::int32_t>::max()));
  EXPECT_EQ(buffer.Length(), 1);
}

TEST(CopyBufferTest, AppendOfZeroBytesSucceeds) {
  CopyBuffer buffer;
  EXPECT_TRUE(buffer.Append(nullptr, 0));
  EXPECT_EQ(buffer.Length(), 0);
}

}  // namespace
}  // namespace stream
