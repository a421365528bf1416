#include "ts/packet_cutter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace stream {
namespace {

using Bytes = std::vector<std::uint8_t>;

// Packets that all differ.
Bytes NumberedPackets(std::size_t packets) {
  Bytes stream(packets * kTsPacketSize);
  for (std::size_t i = 0; i < stream.size(); ++i) {
    stream[i] = static_cast<std::uint8_t>(i % kTsPacketSize + i / kTsPacketSize);
  }
  return stream;
}

// The packets that are cut out of `stream` if it is received from `offset` on in chunks of
// `chunk_size` bytes.
Bytes Cut(const Bytes& stream, std::size_t offset, std::size_t chunk_size) {
  PacketCutter cutter(offset);
  CByteBuffer packets;
  packets.Initialize();
  for (std::size_t at = offset; at < stream.size(); at += chunk_size) {
    const std::size_t size = std::min(chunk_size, stream.size() - at);
    EXPECT_TRUE(cutter.Append(reinterpret_cast<const char*>(stream.data()) + at, size, packets));
    EXPECT_EQ(packets.Size() % kTsPacketSize, 0U) << "a part of a packet was appended";
  }
  return Bytes(packets.ReadPtr(), packets.ReadPtr() + packets.Size());
}

Bytes FromPacket(const Bytes& stream, std::size_t index) {
  return Bytes(stream.begin() + static_cast<std::ptrdiff_t>(index * kTsPacketSize), stream.end());
}

TEST(PacketCutterTest, StreamFromItsStartIsCompleteForEveryChunkSize) {
  const Bytes stream = NumberedPackets(10);
  for (const std::size_t chunk_size : {1U, 2U, 47U, 187U, 188U, 189U, 376U, 1000U, 5000U}) {
    EXPECT_EQ(Cut(stream, 0, chunk_size), stream) << "chunks of " << chunk_size;
  }
}

TEST(PacketCutterTest, ResumeInMidPacketStartsAtTheNextPacketFromEveryOffset) {
  const Bytes stream = NumberedPackets(6);
  for (std::size_t offset = 1; offset <= 2 * kTsPacketSize; ++offset) {
    const std::size_t next = (offset + kTsPacketSize - 1) / kTsPacketSize;
    for (const std::size_t chunk_size : {1U, 61U, 188U, 5000U}) {
      EXPECT_EQ(Cut(stream, offset, chunk_size), FromPacket(stream, next))
          << "from " << offset << " in chunks of " << chunk_size;
    }
  }
}

TEST(PacketCutterTest, IncompleteLastPacketIsHeldBack) {
  const Bytes stream = NumberedPackets(3);
  const Bytes cut(stream.begin(), stream.end() - 1);
  EXPECT_EQ(Cut(cut, 0, 100).size(), 2 * kTsPacketSize);
}

TEST(PacketCutterTest, EmptyChunkChangesNothing) {
  PacketCutter cutter(5);
  CByteBuffer packets;
  EXPECT_TRUE(cutter.Append("", 0, packets));
  EXPECT_EQ(packets.Size(), 0U);
}

TEST(PacketCutterTest, LargestOffsetSkipsAtMostOnePacket) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  PacketCutter cutter(kMost);
  const Bytes stream = NumberedPackets(3);
  CByteBuffer packets;
  packets.Initialize();
  EXPECT_TRUE(cutter.Append(reinterpret_cast<const char*>(stream.data()), stream.size(), packets));
  EXPECT_GE(packets.Size(), 2 * kTsPacketSize);
}

}  // namespace
}  // namespace stream
