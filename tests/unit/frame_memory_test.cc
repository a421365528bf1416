#include "common/frame_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <limits>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include "common/separate_blocks.h"

namespace stream {
namespace {

struct Payload {
  std::uint8_t* bytes;
  std::size_t size;
  std::uint8_t fill;
};

Payload Make(std::size_t size, std::uint8_t fill, PayloadKind kind = PayloadKind::kVideo) {
  const Payload payload{AllocatePayload(size, kind), size, fill};
  if (payload.bytes != nullptr) std::fill_n(payload.bytes, size, fill);
  return payload;
}

bool IsUnharmed(const Payload& payload) {
  return std::all_of(payload.bytes, payload.bytes + payload.size,
                     [&payload](std::uint8_t byte) { return byte == payload.fill; });
}

// Typical sizes of audio and video frames, and sizes around the largest payload that shares its
// chunk with others.
constexpr std::size_t kSizes[] = {0,      1,         15,        16,        17,        400,
                                  20'000, 1'048'575, 1'048'576, 1'048'577, 3'000'000, 9'000'000};

TEST(FrameMemoryTest, PayloadOfAnySizeIsAllocatedAndAligned) {
  for (const std::size_t size : kSizes) {
    const Payload payload = Make(size, 7);
    ASSERT_NE(payload.bytes, nullptr) << size;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(payload.bytes) % alignof(std::max_align_t), 0U)
        << size;
    FreePayload(payload.bytes);
  }
}

TEST(FrameMemoryTest, FreeOfNullDoesNothing) { FreePayload(nullptr); }

TEST(FrameMemoryTest, PayloadsFreedBeforeTheNextAllocationShareOneAddress) {
  if (kSeparateBlocks) GTEST_SKIP() << "each payload is a block of its own";
  const Payload first = Make(4'000, 1);
  FreePayload(first.bytes);
  for (int i = 0; i < 2'000; ++i) {  // more than a chunk holds
    const Payload next = Make(4'000, 2);
    ASSERT_EQ(next.bytes, first.bytes) << i;
    FreePayload(next.bytes);
  }
}

TEST(FrameMemoryTest, SizeBeyondAllMemoryIsRefused) {
  if (kSeparateBlocks) GTEST_SKIP() << "the sanitizer's heap ends the process instead";
  constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
  for (const std::size_t size : {kMost, kMost - 16, kMost - 4'096, kMost / 2}) {
    EXPECT_EQ(AllocatePayload(size, PayloadKind::kAudio), nullptr) << size;
  }
}

TEST(FrameMemoryTest, PayloadKnowsItsKindWhateverItsSize) {
  for (const std::size_t size : kSizes) {
    for (const PayloadKind kind : {PayloadKind::kVideo, PayloadKind::kAudio}) {
      const Payload payload = Make(size, 7, kind);
      EXPECT_EQ(KindOfPayload(payload.bytes), kind) << size;
      FreePayload(payload.bytes);
    }
  }
}

TEST(FrameMemoryTest, EmptyPayloadsBetweenSmallOnesKeepTheirKindAndAreFreed) {
  std::vector<std::uint8_t*> payloads;
  for (int i = 0; i < 300'000; ++i) {  // more than a chunk holds
    payloads.push_back(AllocatePayload(i % 2 == 0 ? 16 : 0, PayloadKind::kAudio));
    ASSERT_NE(payloads.back(), nullptr);
    ASSERT_EQ(KindOfPayload(payloads.back()), PayloadKind::kAudio);
  }
  for (std::uint8_t* const payload : payloads) FreePayload(payload);
}

TEST(FrameMemoryTest, PayloadsAllocatedAndFreedInAnyOrderKeepTheirBytes) {
  std::mt19937 random(1);
  std::vector<Payload> alive;
  for (int i = 0; i < 20'000; ++i) {
    if (alive.size() > 200 || (!alive.empty() && random() % 3 == 0)) {
      std::swap(alive[random() % alive.size()], alive.back());
      ASSERT_TRUE(IsUnharmed(alive.back())) << i;
      FreePayload(alive.back().bytes);
      alive.pop_back();
    }
    const std::size_t largest = i % 50 == 0 ? 200'000 : 4'000;
    alive.push_back(Make(random() % largest, static_cast<std::uint8_t>(i)));
    ASSERT_NE(alive.back().bytes, nullptr);
  }
  for (const Payload& payload : alive) {
    EXPECT_TRUE(IsUnharmed(payload));
    FreePayload(payload.bytes);
  }
}

TEST(FrameMemoryTest, PayloadsFreedByAnotherThreadKeepTheirBytes) {
  constexpr int kCount = 20'000;
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<Payload> waiting;
  int harmed = 0;
  std::thread consumer([&] {
    for (int i = 0; i < kCount; ++i) {
      std::unique_lock lock(mutex);
      changed.wait(lock, [&] { return !waiting.empty(); });
      const Payload payload = waiting.front();
      waiting.pop_front();
      lock.unlock();
      if (!IsUnharmed(payload)) ++harmed;
      FreePayload(payload.bytes);
    }
  });
  for (int i = 0; i < kCount; ++i) {
    const Payload payload = Make(static_cast<std::size_t>(i % 5'000), static_cast<std::uint8_t>(i));
    const std::lock_guard lock(mutex);
    waiting.push_back(payload);
    changed.notify_one();
  }
  consumer.join();
  EXPECT_EQ(harmed, 0);
}

// Payloads of both kinds wait for delivery and are freed in order within their kind. After each
// step the held memory may exceed the waiting bytes by at most 16 MiB, including spare memory and
// bookkeeping.
class FrameMemoryBacklogTest : public testing::Test {
 protected:
  static constexpr std::size_t kMaxBeyond = std::size_t{16} << 20;
  static constexpr std::size_t kVideoSize = 100'000;
  static constexpr std::size_t kAudioSize = 400;
  static constexpr int kFrames = 2'000;  // 200 MB of video

  ~FrameMemoryBacklogTest() override {
    Drain(PayloadKind::kVideo);
    Drain(PayloadKind::kAudio);
  }

  void Push(PayloadKind kind, std::size_t size) {
    WaitingOf(kind).push_back(Make(size, static_cast<std::uint8_t>(pushed_++), kind));
    ASSERT_NE(WaitingOf(kind).back().bytes, nullptr);
    waiting_bytes_ += size;
    Check();
  }
  void PushVideo() { Push(PayloadKind::kVideo, kVideoSize); }
  void PushAudio() { Push(PayloadKind::kAudio, kAudioSize); }

  void Pop(PayloadKind kind) {
    const Payload payload = WaitingOf(kind).front();
    WaitingOf(kind).pop_front();
    EXPECT_TRUE(payload.size == 0 || (payload.bytes[0] == payload.fill &&
                                      payload.bytes[payload.size - 1] == payload.fill));
    FreePayload(payload.bytes);
    waiting_bytes_ -= payload.size;
    Check();
  }
  void PopVideo() { Pop(PayloadKind::kVideo); }
  void PopAudio() { Pop(PayloadKind::kAudio); }

  void Drain(PayloadKind kind) {
    while (!WaitingOf(kind).empty()) Pop(kind);
  }

  std::deque<Payload>& WaitingOf(PayloadKind kind) {
    return kind == PayloadKind::kVideo ? video_ : audio_;
  }
  std::size_t Beyond() const { return HeldPayloadMemory() - waiting_bytes_; }

 private:
  void Check() const {
    ASSERT_GE(HeldPayloadMemory(), waiting_bytes_);
    ASSERT_LE(Beyond(), kMaxBeyond);
  }

  std::deque<Payload> video_;
  std::deque<Payload> audio_;
  std::size_t waiting_bytes_ = 0;
  int pushed_ = 0;
};

TEST_F(FrameMemoryBacklogTest, VideoFreedWhileAudioWaitsHoldsNoMemory) {
  for (int i = 0; i < kFrames; ++i) {
    PushAudio();
    PushVideo();
    PopVideo();
    PushAudio();
  }
}

TEST_F(FrameMemoryBacklogTest, AudioFreedWhileVideoWaitsHoldsNoMemory) {
  for (int i = 0; i < kFrames; ++i) {
    PushVideo();
    for (int k = 0; k < 40; ++k) {
      PushAudio();
      PopAudio();
    }
  }
}

TEST_F(FrameMemoryBacklogTest, VideoFreedBeforeTheAudioBetweenItHoldsNoMemory) {
  for (int i = 0; i < kFrames; ++i) {
    PushVideo();
    PushAudio();
  }
  Drain(PayloadKind::kVideo);
  EXPECT_EQ(WaitingOf(PayloadKind::kAudio).size(), kFrames);
}

TEST_F(FrameMemoryBacklogTest, AudioFreedBeforeTheVideoBetweenItHoldsNoMemory) {
  for (int i = 0; i < kFrames; ++i) {
    PushVideo();
    for (int k = 0; k < 100; ++k) PushAudio();
  }
  Drain(PayloadKind::kAudio);
  EXPECT_EQ(WaitingOf(PayloadKind::kVideo).size(), kFrames);
}

TEST_F(FrameMemoryBacklogTest, KindsThatBlockInTurnHoldNoMemory) {
  for (int i = 0; i < 2 * kFrames; ++i) {
    PushVideo();
    PushAudio();
    const bool audio_blocks = i / 300 % 2 == 0;
    if (audio_blocks) {
      while (WaitingOf(PayloadKind::kVideo).size() > 3) PopVideo();
    } else {
      while (WaitingOf(PayloadKind::kAudio).size() > 100) PopAudio();
    }
  }
}

TEST_F(FrameMemoryBacklogTest, TinyAndLargePayloadsOfOneKindHoldNoMemoryOnceFreed) {
  std::mt19937 random(3);  // NOLINT: the same run every time
  const auto size = [&random] {
    const std::size_t largest = random() % 8 == 0 ? 2'500'000 : 60;
    return random() % largest;
  };
  for (int i = 0; i < kFrames; ++i) {
    Push(PayloadKind::kVideo, size());
    Push(PayloadKind::kAudio, random() % 30);
    if (i > 10) PopVideo();
  }
}

// Each payload needs more than half of a chunk, so no two share one.
TEST_F(FrameMemoryBacklogTest, PayloadsThatShareNoChunkHoldOnlyTheirOwnMemory) {
  for (const std::size_t size : {1'048'576U, 1'040'000U, 700'000U, 1'048'577U}) {
    for (int i = 0; i < 150; ++i) Push(PayloadKind::kVideo, size);
    Drain(PayloadKind::kVideo);
  }
}

TEST_F(FrameMemoryBacklogTest, LittleMemoryIsKeptOnceAllPayloadsAreFreed) {
  for (int i = 0; i < kFrames; ++i) {
    PushVideo();
    PushAudio();
  }
  Drain(PayloadKind::kAudio);
  Drain(PayloadKind::kVideo);
  EXPECT_LE(HeldPayloadMemory(), std::size_t{4} << 20);
}

}  // namespace
}  // namespace stream
