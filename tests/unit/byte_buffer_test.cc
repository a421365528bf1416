#include "common/byte_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace stream {
namespace {

constexpr std::uint32_t kMax = std::numeric_limits<std::uint32_t>::max();

// Appends `n` zeros.
void Fill(CByteBuffer& buffer, std::uint32_t n) {
  const std::vector<std::uint8_t> bytes(n);
  ASSERT_EQ(buffer.Append(bytes.data(), n), kBufferOk);
}

// Makes a buffer of 4096 bytes that has `unread` unread bytes at `read_pos`.
void FillAndConsume(CByteBuffer& buffer, std::uint32_t read_pos, std::uint32_t unread) {
  ASSERT_EQ(buffer.Initialize(), kBufferOk);
  ASSERT_EQ(buffer.Reserve(4096), kBufferOk);
  std::memset(buffer.WritePtr(), 0x5A, 4096);
  ASSERT_EQ(buffer.MoveEnd(read_pos + unread), kBufferOk);
  ASSERT_EQ(buffer.MoveStart(read_pos), kBufferOk);
  ASSERT_EQ(buffer.Capacity(), 4096U);
}

TEST(ByteBufferTest, NewBufferIsEmpty) {
  const CByteBuffer buffer;
  EXPECT_EQ(buffer.Capacity(), 0U);
  EXPECT_EQ(buffer.Size(), 0U);
  EXPECT_EQ(buffer.ReadPtr(), nullptr);
}

TEST(ByteBufferTest, InitializeAllocatesAnEmptyArrayOf4096Bytes) {
  CByteBuffer buffer;
  EXPECT_EQ(buffer.Initialize(), kBufferOk);
  EXPECT_EQ(buffer.Capacity(), 4096U);
  EXPECT_EQ(buffer.Size(), 0U);
}

TEST(ByteBufferTest, SecondInitializeChangesNothing) {
  CByteBuffer buffer;
  ASSERT_EQ(buffer.Initialize(), kBufferOk);
  Fill(buffer, 5000);
  const std::uint32_t capacity = buffer.Capacity();
  EXPECT_EQ(buffer.Initialize(), kBufferOk);
  EXPECT_EQ(buffer.Capacity(), capacity);
  EXPECT_EQ(buffer.Size(), 5000U);
}

TEST(ByteBufferTest, ReserveThatFitsCompacts) {
  CByteBuffer buffer;
  FillAndConsume(buffer, 3996, 100);
  EXPECT_EQ(buffer.Reserve(3000), kBufferOk);
  EXPECT_EQ(buffer.ReadPos(), 0U);
  EXPECT_EQ(buffer.WritePos(), 100U);
  EXPECT_EQ(buffer.Capacity(), 4096U);
  EXPECT_EQ(buffer.PendingShift(), 100U);
  EXPECT_EQ(*buffer.ReadPtr(), 0x5A);
}

TEST(ByteBufferTest, ReserveThatJustFitsCompactsWithoutGrowth) {
  CByteBuffer buffer;
  FillAndConsume(buffer, 3996, 100);
  EXPECT_EQ(buffer.Reserve(3996), kBufferOk);
  EXPECT_EQ(buffer.Capacity(), 4096U);
}

TEST(ByteBufferTest, ReserveThatDoesNotFitGrowsByTheNeededSizeAnd4096) {
  CByteBuffer buffer;
  FillAndConsume(buffer, 0, 100);
  EXPECT_EQ(buffer.Reserve(4000), kBufferOk);
  EXPECT_EQ(buffer.Capacity(), 8196U);
  EXPECT_EQ(buffer.ReadPos(), 0U);
  EXPECT_EQ(buffer.WritePos(), 100U);
  EXPECT_EQ(buffer.PendingShift(), 100U);
}

TEST(ByteBufferTest, ContinuePtrRunsAheadOnlyBetweenReserveAndMoveEnd) {
  CByteBuffer buffer;
  FillAndConsume(buffer, 0, 100);
  ASSERT_EQ(buffer.Reserve(10), kBufferOk);
  EXPECT_EQ(buffer.ContinuePtr(), buffer.ReadPtr() + 100);
  ASSERT_EQ(buffer.MoveEnd(10), kBufferOk);
  EXPECT_EQ(buffer.ContinuePtr(), buffer.ReadPtr());
}

TEST(ByteBufferTest, MoveStartPastTheWritePositionIsRefused) {
  CByteBuffer buffer;
  FillAndConsume(buffer, 0, 100);
  EXPECT_EQ(buffer.MoveStart(101), kBufferImpossible);
  EXPECT_EQ(buffer.MoveStart(kMax), kBufferImpossible);
  EXPECT_EQ(buffer.ReadPos(), 0U);
  EXPECT_EQ(buffer.MoveStart(100), kBufferOk);
}

TEST(ByteBufferTest, MoveEndPastTheCapacityIsRefused) {
  CByteBuffer buffer;
  FillAndConsume(buffer, 0, 100);
  EXPECT_EQ(buffer.MoveEnd(3997), kBufferImpossible);
  EXPECT_EQ(buffer.MoveEnd(kMax), kBufferImpossible);
  EXPECT_EQ(buffer.WritePos(), 100U);
  EXPECT_EQ(buffer.MoveEnd(3996), kBufferOk);
}

TEST(ByteBufferTest, ZeroBytesChangeNothing) {
  CByteBuffer buffer;
  FillAndConsume(buffer, 50, 100);
  EXPECT_EQ(buffer.Reserve(0), kBufferOk);
  EXPECT_EQ(buffer.MoveEnd(0), kBufferOk);
  EXPECT_EQ(buffer.MoveStart(0), kBufferOk);
  EXPECT_EQ(buffer.ReadPos(), 50U);
  EXPECT_EQ(buffer.WritePos(), 150U);
  EXPECT_EQ(buffer.PendingShift(), 0U);
}

TEST(ByteBufferTest, ReserveThatOverflowsIsRefusedAndChangesNothing) {
  CByteBuffer buffer;
  FillAndConsume(buffer, 50, 100);
  EXPECT_EQ(buffer.Reserve(kMax), kBufferImpossible);
  EXPECT_EQ(buffer.Reserve(kMax - 4095), kBufferImpossible);
  EXPECT_EQ(buffer.ReadPos(), 50U);
  EXPECT_EQ(buffer.Capacity(), 4096U);
}

// It would fit if the consumed bytes did not count.
TEST(ByteBufferTest, ReserveThatOverflowsWithTheWholeCapacityIsRefused) {
  CByteBuffer buffer;
  Fill(buffer, 20'000);
  ASSERT_EQ(buffer.MoveStart(20'000), kBufferOk);
  const std::uint32_t capacity = buffer.Capacity();
  ASSERT_GT(capacity, 20'000U);
  EXPECT_EQ(buffer.Reserve(kMax - capacity + 1), kBufferImpossible);
  EXPECT_EQ(buffer.Capacity(), capacity);
  EXPECT_EQ(buffer.ReadPos(), 20'000U);
}

TEST(ByteBufferTest, GrowthWhoseSlackOverflowsIsRefused) {
  CByteBuffer buffer;
  FillAndConsume(buffer, 0, 4000);
  EXPECT_EQ(buffer.Reserve(kMax - 4096), kBufferImpossible);  // the sum fits only without the slack
  EXPECT_EQ(buffer.Capacity(), 4096U);
  EXPECT_EQ(buffer.Size(), 4000U);
}

TEST(ByteBufferTest, SwapExchangesArraysAndPositionsWithoutACopy) {
  CByteBuffer one;
  CByteBuffer other;
  FillAndConsume(one, 4000, 50);
  Fill(other, 9000);
  ASSERT_EQ(other.Reserve(7), kBufferOk);
  const std::uint8_t* const one_bytes = one.ReadPtr();
  const std::uint8_t* const other_bytes = other.ReadPtr();
  const std::uint32_t other_capacity = other.Capacity();

  one.Swap(other);

  EXPECT_EQ(other.ReadPtr(), one_bytes);
  EXPECT_EQ(other.ReadPos(), 4000U);
  EXPECT_EQ(other.WritePos(), 4050U);
  EXPECT_EQ(other.Capacity(), 4096U);
  EXPECT_EQ(other.PendingShift(), 0U);
  EXPECT_EQ(one.ReadPtr(), other_bytes);
  EXPECT_EQ(one.Size(), 9000U);
  EXPECT_EQ(one.Capacity(), other_capacity);
  EXPECT_EQ(one.PendingShift(), 9000U);
}

TEST(ByteBufferTest, SwappedBuffersGrowIndependently) {
  CByteBuffer one;
  CByteBuffer other;
  Fill(one, 100);
  one.Swap(other);
  Fill(one, 5);  // would fit into the block that was swapped away
  Fill(other, 5);
  Fill(one, 100'000);
  Fill(other, 200'000);
  EXPECT_EQ(one.Size(), 100'005U);
  EXPECT_EQ(other.Size(), 200'105U);
}

TEST(ByteBufferTest, ResetDiscardsTheContentsAndKeepsTheArray) {
  CByteBuffer buffer;
  FillAndConsume(buffer, 50, 100);
  ASSERT_EQ(buffer.Reserve(10), kBufferOk);
  buffer.Reset();
  EXPECT_EQ(buffer.Size(), 0U);
  EXPECT_EQ(buffer.ReadPos(), 0U);
  EXPECT_EQ(buffer.PendingShift(), 0U);
  EXPECT_EQ(buffer.Capacity(), 4096U);
}

// The reference design for the buffer's members: one array, compacted at every Reserve.
struct PlainBuffer {
  std::vector<std::uint8_t> unread;
  std::uint32_t capacity = 4096;
  std::uint32_t read_pos = 0;
  std::uint32_t pending_shift = 0;

  void Reserve(std::uint32_t n) {
    if (n == 0) return;
    const auto size = static_cast<std::uint32_t>(unread.size());
    if (n > capacity - size) capacity = n + size + 4096;
    read_pos = 0;
    pending_shift = size;
  }
};

TEST(ByteBufferTest, RandomUseMatchesTheReferenceDesign) {
  std::mt19937 random(20261121);  // NOLINT: the same run every time
  CByteBuffer buffer;
  PlainBuffer plain;
  ASSERT_EQ(buffer.Initialize(), kBufferOk);
  for (int step = 0; step < 20000; ++step) {
    const auto n = static_cast<std::uint32_t>(random() % (step % 100 == 0 ? 60000 : 700));
    if (random() % 2 == 0) {
      std::vector<std::uint8_t> bytes(n);
      for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
      ASSERT_EQ(buffer.Append(bytes.data(), n), kBufferOk);
      plain.Reserve(n);
      plain.unread.insert(plain.unread.end(), bytes.begin(), bytes.end());
      if (n != 0) plain.pending_shift = 0;
    } else {
      const std::uint32_t consumed = std::min<std::uint32_t>(n, buffer.Size());
      ASSERT_EQ(buffer.MoveStart(consumed), kBufferOk);
      plain.unread.erase(plain.unread.begin(), plain.unread.begin() + consumed);
      plain.read_pos += consumed;
    }
    ASSERT_EQ(buffer.Capacity(), plain.capacity);
    ASSERT_EQ(buffer.ReadPos(), plain.read_pos);
    ASSERT_EQ(buffer.PendingShift(), plain.pending_shift);
    ASSERT_EQ(buffer.Size(), plain.unread.size());
    ASSERT_TRUE(plain.unread.empty() ||
                std::memcmp(buffer.ReadPtr(), plain.unread.data(), plain.unread.size()) == 0);
  }
}

// In a large block the memory of consumed bytes is released. Bytes that are stored there later must
// be intact.
TEST(ByteBufferTest, MovingLargeBacklogKeepsItsBytes) {
  constexpr std::uint32_t kBacklog = 20'000'000;
  constexpr std::uint32_t kStep = 256;  // bytes per read, of which the first number is checked
  std::vector<std::uint32_t> chunk(250'048);
  const auto chunk_size = static_cast<std::uint32_t>(chunk.size() * sizeof(std::uint32_t));
  ASSERT_EQ(chunk_size % kStep, 0U);
  CByteBuffer buffer;
  ASSERT_EQ(buffer.Initialize(), kBufferOk);
  std::uint32_t written = 0;
  std::uint32_t read = 0;
  for (int i = 0; i < 150; ++i) {
    for (std::uint32_t& number : chunk) number = written++;
    ASSERT_EQ(buffer.Append(chunk.data(), chunk_size), kBufferOk);
    const bool is_drained = i % 50 == 49;
    while (buffer.Size() > (is_drained ? 0 : kBacklog)) {
      std::uint32_t number = 0;
      std::memcpy(&number, buffer.ReadPtr(), sizeof(number));
      ASSERT_EQ(number, read) << i;
      ASSERT_EQ(buffer.MoveStart(kStep), kBufferOk);
      read += kStep / sizeof(number);
    }
  }
}

}  // namespace
}  // namespace stream
