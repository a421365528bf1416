// An MP4 task of an older start must not begin the stream of a newer one.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <future>
#include <mutex>
#include <thread>

#include "common/frame_memory.h"
#include "common/frame_queue.h"
#include "mp4/mp4_sample.h"
#include "mp4/mp4_state.h"
#include "tests/support/mp4_movies.h"

namespace stream {
namespace {

using mp4_test::Bytes;
using mp4_test::LengthPrefixed;
using mp4_test::Nal;

class Mp4OlderStartTest : public testing::Test {
 protected:
  Mp4OlderStartTest() { g_mp4Running = true; }
  ~Mp4OlderStartTest() override { g_mp4Running = false; }

  static void Emit(const Bytes& bytes) {
    Mp4Sample sample;
    sample.bytes.reset(static_cast<std::uint8_t*>(std::malloc(bytes.size())));
    std::memcpy(sample.bytes.get(), bytes.data(), bytes.size());
    sample.size = static_cast<std::uint32_t>(bytes.size());
    EmitMp4Video(sample, {});
  }

  // Begins a stream and emits `unit` on another thread. While that thread copies the unit, resets
  // the queue as a new start does. Returns false if the copy finished first.
  static bool StartDuringACopyOf(const Bytes& unit) {
    ResetFrameQueues();
    Emit(LengthPrefixed({Nal(5)}));
    const std::size_t held = HeldPayloadMemory();
    const std::future<void> emitted =
        std::async(std::launch::async, [bytes = LengthPrefixed({unit})] { Emit(bytes); });
    // The emitting thread checks whether the stream has begun before it allocates the memory.
    while (HeldPayloadMemory() < held + unit.size()) std::this_thread::yield();
    bool in_time = false;
    {
      const std::lock_guard lock(g_frameQueueMutex);
      in_time = g_videoQueue->pushed == 1;
      const FrameNodePtr first(PopFrame(g_videoQueue));
      g_videoQueue->pushed = 0;
    }
    emitted.wait();
    return in_time;
  }
};

TEST_F(Mp4OlderStartTest, UnitOfAnOlderStartDoesNotBeginTheStreamOfTheNext) {
  constexpr std::size_t kLargeEnoughToBeInTime = 16 << 20;
  const Bytes unit = Nal(1, kLargeEnoughToBeInTime);
  int attempts = 100;
  while (!StartDuringACopyOf(unit)) ASSERT_GT(--attempts, 0);
  EXPECT_EQ(PopVideoFrame(), nullptr) << "a stream must not begin with this unit";
  EXPECT_FALSE(Mp4VideoHasBegun());
}

}  // namespace
}  // namespace stream
