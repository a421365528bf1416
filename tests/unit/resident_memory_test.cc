// Built only for Linux without a sanitizer. There the resident memory can be read and contains only
// the component's memory.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "common/byte_buffer.h"
#include "common/copy_buffer.h"
#include "common/frame_queue.h"
#include "tests/support/process_memory.h"

namespace stream {
namespace {

constexpr std::size_t kMaxBeyond = std::size_t{16} << 20;

// 200 MB of video in all.
constexpr int kFrames = 2'000;
constexpr std::int32_t kVideoSize = 100'000;
constexpr std::int32_t kAudioSize = 400;

void Push(std::int32_t size, bool is_video, FrameQueue& queue) {
  static const std::vector<std::uint8_t> payload(kVideoSize, 0x47);
  FrameRecord frame;
  ASSERT_EQ(CreateFrameNode(frame, 0, 0, payload.data(), size, is_video, true), 0);
  ASSERT_EQ(PushFrame(frame, &queue), 0);
}

void Drain(FrameQueue& queue) {
  while (const FrameNodePtr node{PopFrame(&queue)}) {
  }
}

TEST(ResidentMemoryTest, DeliveredVideoIsNotResidentWhileAudioWaits) {
  FrameQueue video;
  FrameQueue audio;
  const std::size_t before = ResidentSize();
  for (int i = 0; i < kFrames; ++i) {
    Push(kAudioSize, false, audio);
    Push(kVideoSize, true, video);
    const FrameNodePtr node{PopFrame(&video)};
    ASSERT_LE(ResidentSize(), before + audio.heldBytes + kMaxBeyond) << i;
  }
  Drain(audio);
}

TEST(ResidentMemoryTest, VideoDrainedFirstIsNotResident) {
  FrameQueue video;
  FrameQueue audio;
  const std::size_t before = ResidentSize();
  for (int i = 0; i < kFrames; ++i) {
    Push(kVideoSize, true, video);
    Push(kAudioSize, false, audio);
  }
  EXPECT_GT(ResidentSize(), before + video.heldBytes / 2) << "the frames are not measured";
  EXPECT_LE(ResidentSize(), before + video.heldBytes + audio.heldBytes + kMaxBeyond);
  Drain(video);
  EXPECT_LE(ResidentSize(), before + audio.heldBytes + kMaxBeyond);
  Drain(audio);
}

void Append(CByteBuffer& buffer, std::size_t size) {
  static const std::vector<std::uint8_t> chunk(16'384, 0x47);
  for (std::size_t done = 0; done < size; done += chunk.size()) {
    ASSERT_EQ(buffer.Append(chunk.data(), static_cast<std::uint32_t>(chunk.size())), kBufferOk);
  }
}

TEST(ResidentMemoryTest, ConsumedPartOfALargeBacklogIsNotResident) {
  constexpr std::size_t kBacklog = 200'000'000;
  CByteBuffer buffer;
  ASSERT_EQ(buffer.Initialize(), kBufferOk);
  const std::size_t before = ResidentSize();
  Append(buffer, kBacklog);
  EXPECT_GT(ResidentSize(), before + kBacklog / 2) << "the backlog is not measured";
  while (buffer.Size() >= 188) {
    ASSERT_EQ(buffer.MoveStart(188), kBufferOk);
    if (buffer.Size() % 1000 == 0) {
      ASSERT_LE(ResidentSize(), before + buffer.Size() + kMaxBeyond);
    }
  }
  EXPECT_LE(ResidentSize(), before + kMaxBeyond);
}

// The backlog was twice as large before. At times its unread bytes are moved to the start of the
// block.
TEST(ResidentMemoryTest, BacklogOfConstantSizeHoldsNoMoreMemoryThanThat) {
  constexpr std::uint32_t kStep = 1 << 20;
  constexpr std::uint32_t kBacklog = 50 * kStep;
  CByteBuffer buffer;
  ASSERT_EQ(buffer.Initialize(), kBufferOk);
  const std::size_t before = ResidentSize();
  Append(buffer, 2 * kBacklog);
  ASSERT_EQ(buffer.MoveStart(kBacklog), kBufferOk);
  for (int i = 0; i < 300; ++i) {
    ASSERT_EQ(buffer.MoveStart(kStep), kBufferOk);
    Append(buffer, kStep);
    ASSERT_EQ(buffer.Size(), kBacklog);
    ASSERT_LE(ResidentSize(), before + kBacklog + kMaxBeyond) << i;
  }
  buffer.Reset();
  EXPECT_LE(ResidentSize(), before + kMaxBeyond);
}

TEST(ResidentMemoryTest, BufferReusedAfterALargeBacklogHoldsOnlyItsUnreadBytes) {
  constexpr std::uint32_t kStep = 1 << 20;
  CByteBuffer buffer;
  ASSERT_EQ(buffer.Initialize(), kBufferOk);
  const std::size_t before = ResidentSize();
  Append(buffer, 100 * kStep);
  ASSERT_EQ(buffer.MoveStart(100 * kStep), kBufferOk);
  buffer.Reset();
  for (int i = 0; i < 60; ++i) {
    Append(buffer, kStep);
    ASSERT_EQ(buffer.MoveStart(kStep), kBufferOk);
    ASSERT_LE(ResidentSize(), before + kMaxBeyond) << i;
  }
}

TEST(ResidentMemoryTest, ConsumedPartOfABufferSwappedForAHalfConsumedOneIsNotResident) {
  constexpr std::uint32_t kStep = 1 << 20;
  CByteBuffer half;
  CByteBuffer whole;
  ASSERT_EQ(half.Initialize(), kBufferOk);
  const std::size_t before = ResidentSize();
  Append(half, 200 * kStep);
  ASSERT_EQ(half.MoveStart(100 * kStep), kBufferOk);
  Append(whole, 200 * kStep);
  half.Swap(whole);
  ASSERT_EQ(half.MoveStart(100 * kStep), kBufferOk);
  ASSERT_EQ(half.Size(), 100 * kStep);
  ASSERT_EQ(whole.Size(), 100 * kStep);
  EXPECT_LE(ResidentSize(), before + 200 * kStep + kMaxBeyond);
}

// The heap may place a small block after a large one and then keep the large one when it is freed.
TEST(ResidentMemoryTest, ReleasedCopyBufferIsNotResident) {
  constexpr std::int32_t kSize = 30'000'000;
  const std::vector<std::uint8_t> bytes(kSize, 0x47);
  const std::size_t before = ResidentSize();
  std::vector<std::vector<std::uint8_t>> small;
  for (int i = 0; i < 3; ++i) {
    CopyBuffer buffer;
    ASSERT_TRUE(buffer.Append(bytes.data(), kSize));
    small.emplace_back(100'000);
    buffer.Release();
  }
  EXPECT_LE(ResidentSize(), before + kMaxBeyond);
}

}  // namespace
}  // namespace stream
