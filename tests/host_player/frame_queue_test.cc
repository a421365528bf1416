#include "host/player/frame_queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "tests/support/wait_until.h"

namespace player {
namespace {

MediaUnit UnitAt(double seconds, std::size_t size = 10) {
  const auto ticks = static_cast<std::uint64_t>(seconds * kTicksPerSecond);
  return {std::vector<std::uint8_t>(size), ticks, ticks};
}

// A thread that pushes a unit, and whether its push has returned.
class Pusher {
 public:
  Pusher(FrameQueue& queue, Kind kind, MediaUnit unit)
      : thread_([this, &queue, kind, unit = std::move(unit)] {
          accepted_ = queue.Push(kind, unit);
          finished_ = true;
        }) {}
  ~Pusher() { thread_.join(); }
  Pusher(const Pusher&) = delete;
  Pusher& operator=(const Pusher&) = delete;

  bool finished() const { return finished_.load(); }
  bool accepted() const { return accepted_.load(); }

 private:
  std::atomic<bool> finished_{false};
  std::atomic<bool> accepted_{false};
  std::thread thread_;
};

class FrameQueueTest : public testing::Test {
 protected:
  // Fills both lanes completely.
  void FillBoth() {
    for (const Kind kind : {Kind::kAudio, Kind::kVideo}) {
      ASSERT_TRUE(queue_.Push(kind, UnitAt(0)));
    }
    for (const Kind kind : {Kind::kAudio, Kind::kVideo}) {
      ASSERT_TRUE(queue_.Push(kind, UnitAt(2)));
      ASSERT_TRUE(queue_.IsFull(kind));
    }
  }

  // The oldest unit, without waiting for one.
  std::optional<MediaUnit> Pop(Kind kind) {
    queue_.SetEnded(true);
    return queue_.Pop(kind, true);
  }

  FrameQueue queue_{{2, 100'000, 300'000}};
};

TEST_F(FrameQueueTest, UnitsOfEachKindArePoppedInOrder) {
  queue_.Push(Kind::kVideo, UnitAt(0.2));
  queue_.Push(Kind::kAudio, UnitAt(0.1));
  queue_.Push(Kind::kVideo, UnitAt(0.1));
  EXPECT_EQ(Pop(Kind::kVideo)->pts, 18'000U);
  EXPECT_EQ(Pop(Kind::kVideo)->pts, 9'000U);
  EXPECT_EQ(Pop(Kind::kAudio)->pts, 9'000U);
  EXPECT_FALSE(Pop(Kind::kAudio).has_value());
}

TEST_F(FrameQueueTest, FullLaneBlocksTheProducerUntilThereIsSpace) {
  FillBoth();
  const Pusher pusher(queue_, Kind::kVideo, UnitAt(2.1));
  EXPECT_FALSE(Pop(Kind::kVideo)->pts > 0);
  EXPECT_TRUE(WaitUntil([&] { return pusher.finished(); }));
  EXPECT_TRUE(pusher.accepted());
  EXPECT_EQ(Pop(Kind::kVideo)->pts, 180'000U);
  EXPECT_EQ(Pop(Kind::kVideo)->pts, 189'000U);
}

TEST_F(FrameQueueTest, NothingIsPushedWhileTheLaneIsFull) {
  FillBoth();
  const Pusher pusher(queue_, Kind::kVideo, UnitAt(2.1));
  // Units pass through the other lane meanwhile; it does not become empty.
  for (int i = 0; i < 50; ++i) {
    ASSERT_TRUE(Pop(Kind::kAudio).has_value());
    ASSERT_TRUE(queue_.Push(Kind::kAudio, UnitAt(2)));
    ASSERT_FALSE(pusher.finished());
  }
  queue_.Close();
  EXPECT_TRUE(WaitUntil([&] { return pusher.finished(); }));
  EXPECT_FALSE(pusher.accepted());
}

TEST_F(FrameQueueTest, LaneIsFullByBytesToo) {
  queue_.Push(Kind::kVideo, UnitAt(0, 99'000));
  EXPECT_FALSE(queue_.IsFull(Kind::kVideo));
  queue_.Push(Kind::kVideo, UnitAt(0, 1'000));
  EXPECT_TRUE(queue_.IsFull(Kind::kVideo));
}

TEST_F(FrameQueueTest, EmptyUnitsTakeSpaceToo) {
  for (int i = 0; i < 2'000 && !queue_.IsFull(Kind::kVideo); ++i) {
    queue_.Push(Kind::kVideo, UnitAt(0, 0));
  }
  EXPECT_TRUE(queue_.IsFull(Kind::kVideo));
}

TEST_F(FrameQueueTest, TimeThatJumpsBackFillsTheLaneToo) {
  queue_.Push(Kind::kVideo, UnitAt(100));
  queue_.Push(Kind::kVideo, UnitAt(1));
  EXPECT_TRUE(queue_.IsFull(Kind::kVideo));
}

TEST_F(FrameQueueTest, FullLaneAcceptsUnitsWhileTheOtherIsEmpty) {
  FillBoth();
  while (Pop(Kind::kAudio)) {
  }
  ASSERT_TRUE(queue_.Push(Kind::kVideo, UnitAt(3)));
  ASSERT_TRUE(queue_.Push(Kind::kVideo, UnitAt(4)));
  // Audio that follows all this video can then be pushed.
  ASSERT_TRUE(queue_.Push(Kind::kAudio, UnitAt(0.1)));
  EXPECT_TRUE(Pop(Kind::kAudio).has_value());
}

TEST_F(FrameQueueTest, BlockedProducerContinuesWhenTheOtherLaneBecomesEmpty) {
  FillBoth();
  const Pusher pusher(queue_, Kind::kVideo, UnitAt(2.1));
  while (Pop(Kind::kAudio)) {
  }
  EXPECT_TRUE(WaitUntil([&] { return pusher.finished(); }));
  EXPECT_TRUE(pusher.accepted());
}

TEST_F(FrameQueueTest, EmptyLaneDoesNotLiftTheHardLimit) {
  FillBoth();
  while (Pop(Kind::kAudio)) {
  }
  ASSERT_TRUE(queue_.Push(Kind::kVideo, UnitAt(3, 300'000)));
  const Pusher pusher(queue_, Kind::kVideo, UnitAt(4));
  while (!pusher.finished() && Pop(Kind::kVideo)) {
  }
  EXPECT_TRUE(WaitUntil([&] { return pusher.finished(); }));
}

TEST_F(FrameQueueTest, StreamOfOneKindIsLimitedToo) {
  queue_.Push(Kind::kVideo, UnitAt(0));
  queue_.Push(Kind::kVideo, UnitAt(2));
  const Pusher pusher(queue_, Kind::kVideo, UnitAt(3));
  queue_.Close();
  EXPECT_TRUE(WaitUntil([&] { return pusher.finished(); }));
  EXPECT_FALSE(pusher.accepted());
}

TEST_F(FrameQueueTest, CloseReleasesProducersOfBothKindsAndConsumers) {
  FillBoth();
  const Pusher video(queue_, Kind::kVideo, UnitAt(3));
  const Pusher audio(queue_, Kind::kAudio, UnitAt(3));
  queue_.Close();
  EXPECT_TRUE(WaitUntil([&] { return video.finished() && audio.finished(); }));
  EXPECT_FALSE(queue_.Pop(Kind::kVideo, false).has_value());
  EXPECT_FALSE(queue_.Push(Kind::kVideo, UnitAt(0)));
}

TEST_F(FrameQueueTest, EndReleasesAConsumerThatStopsAtTheEnd) {
  std::atomic<bool> finished{false};
  std::thread consumer([&] {
    EXPECT_FALSE(queue_.Pop(Kind::kVideo, true).has_value());
    finished = true;
  });
  queue_.SetEnded(true);
  EXPECT_TRUE(WaitUntil([&] { return finished.load(); }));
  queue_.Close();
  consumer.join();
}

TEST_F(FrameQueueTest, UnitAfterTheEndIsStillPopped) {
  queue_.SetEnded(true);
  std::atomic<std::uint64_t> pts{0};
  std::thread consumer([&] { pts = queue_.Pop(Kind::kVideo, false)->pts; });
  queue_.Push(Kind::kVideo, UnitAt(2));
  EXPECT_TRUE(WaitUntil([&] { return pts.load() == 180'000; }));
  consumer.join();
}

TEST_F(FrameQueueTest, QueueIsIdleOnlyOnceTheLastUnitIsProcessed) {
  EXPECT_TRUE(queue_.IsIdle());
  queue_.Push(Kind::kAudio, UnitAt(0));
  EXPECT_FALSE(queue_.IsIdle());
  Pop(Kind::kAudio);
  EXPECT_FALSE(queue_.IsIdle());
  Pop(Kind::kAudio);
  EXPECT_TRUE(queue_.IsIdle());
}

}  // namespace
}  // namespace player
