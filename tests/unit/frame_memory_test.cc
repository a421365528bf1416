#include "common/frame_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace {

struct Payload {
  std::uint8_t* bytes;
  std::size_t size;
  std::uint8_t fill;
};

Payload Make(std::size_t size, std::uint8_t fill) {
  const Payload payload{AllocatePayload(size), size, fill};
  if (payload.bytes != nullptr) std::fill_n(payload.bytes, size, fill);
  return payload;
}

bool IsUnharmed(const Payload& payload) {
  return std::all_of(payload.bytes, payload.bytes + payload.size,
                     [&payload](std::uint8_t byte) { return byte == payload.fill; });
}

// Sizes of audio frames, of pictures, and around the largest that shares its chunk with others.
constexpr std::size_t kSizes[] = {0,      1,       15,      16,      17,       400,
                                  20'000, 131'071, 131'072, 131'073, 3'000'000};

TEST(FrameMemoryTest, PayloadOfAnySizeIsThereAndAligned) {
  for (const std::size_t size : kSizes) {
    const Payload payload = Make(size, 7);
    ASSERT_NE(payload.bytes, nullptr) << size;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(payload.bytes) % alignof(std::max_align_t), 0U)
        << size;
    FreePayload(payload.bytes);
  }
}

TEST(FrameMemoryTest, NullIsNothing) { FreePayload(nullptr); }

TEST(FrameMemoryTest, PayloadsThatComeAndGoInAnyOrderKeepTheirBytes) {
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

TEST(FrameMemoryTest, PayloadsReleasedByAnotherThreadKeepTheirBytes) {
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

}  // namespace
