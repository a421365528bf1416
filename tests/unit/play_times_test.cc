#include "ts/play_times.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <vector>

namespace stream {
namespace {

// A queue whose frames get their play times from an interpolator.
class PlayTimesTest : public testing::Test {
 protected:
  ~PlayTimesTest() override {
    while (Pop()) {
    }
  }

  void Push(std::uint64_t pts) {
    FrameRecord frame;
    const std::uint8_t byte = 0;
    ASSERT_EQ(CreateFrameNode(frame, pts, pts, &byte, 1, true, true), 0);
    frame.playTime = interpolator_.InitialPlayTime(pts);
    ASSERT_EQ(PushFrame(frame, &queue_), 0);
    interpolator_.FramePushed(queue_);
  }
  FrameNodePtr Pop() { return FrameNodePtr(PopFrame(&queue_)); }

  std::vector<std::uint64_t> QueuedPlayTimes() const {
    std::vector<std::uint64_t> times;
    for (const FrameNode* node = queue_.head; node != nullptr; node = node->next) {
      times.push_back(node->playTime);
    }
    return times;
  }

  FrameQueue queue_;
  PlayTimeInterpolator interpolator_;
};

using Times = std::vector<std::uint64_t>;

TEST_F(PlayTimesTest, FirstFrameIsTheBase) {
  Push(90'000);
  EXPECT_EQ(QueuedPlayTimes(), Times{0});
}

TEST_F(PlayTimesTest, NewestFrameHasItsDistanceFromTheBase) {
  Push(90'000);
  Push(93'600);
  EXPECT_EQ(QueuedPlayTimes().back(), 3600U);
  Push(91'800);
  EXPECT_EQ(QueuedPlayTimes().back(), 1800U);
}

TEST_F(PlayTimesTest, DistanceOfAFrameBeforeTheBaseIsPositive) {
  Push(90'000);
  Push(88'000);
  EXPECT_EQ(QueuedPlayTimes().back(), 2000U);
}

TEST_F(PlayTimesTest, FramesInOrderAreInterpolatedOneAnchorLate) {
  for (std::uint64_t i = 0; i < 4; ++i) Push(90'000 + i * 3600);
  // There are two nodes from each anchor to the newest frame, so a step is half the distance
  // between the anchors.
  EXPECT_EQ(QueuedPlayTimes(), (Times{0, 1800, 5400, 10'800}));
}

TEST_F(PlayTimesTest, FramesOutOfOrderShareTheDistanceOfTheirAnchors) {
  Push(90'000);   // anchor
  Push(100'800);  // anchor: step 0 for the first frame
  Push(93'600);
  Push(97'200);
  Push(111'600);  // anchor: four nodes from the previous one, distance 10800, step 2700
  EXPECT_EQ(QueuedPlayTimes(), (Times{0, 2700, 5400, 8100, 21'600}));
}

TEST_F(PlayTimesTest, RemovedFramesDoNotChangeTheValuesOfTheRest) {
  Push(90'000);
  Push(100'800);
  Push(93'600);
  for (int i = 0; i < 2; ++i) EXPECT_NE(Pop(), nullptr);  // the anchor is removed too
  Push(97'200);
  Push(111'600);
  EXPECT_EQ(QueuedPlayTimes(), (Times{5400, 8100, 21'600}));
}

TEST_F(PlayTimesTest, EmptiedQueueDoesNotDisturbTheInterpolation) {
  Push(90'000);
  Push(100'800);
  while (Pop()) {
  }
  Push(111'600);
  Push(122'400);
  EXPECT_EQ(QueuedPlayTimes(), (Times{10'800 + 5400, 32'400}));
}

TEST_F(PlayTimesTest, BaseOfZeroIsReplacedByTheNextAnchor) {
  Push(0);
  EXPECT_EQ(interpolator_.InitialPlayTime(500), 0U);
  Push(90'000);
  EXPECT_EQ(interpolator_.InitialPlayTime(93'600), 3600U);
}

TEST_F(PlayTimesTest, SumThatWrapsBelowZeroBecomesZero) {
  Push(0);
  Push(90'000);
  Push(93'600);  // t starts at 0 - 90000, which rounds up to 2^64 in single precision
  EXPECT_EQ(QueuedPlayTimes(), (Times{0, 0, 3600}));
}

// A reference model: the same rules over all frames ever pushed, none of them removed.
class PlainInterpolation {
 public:
  void Push(std::uint64_t pts) {
    const std::uint64_t initial = base_ == 0 ? 0 : std::max(pts, base_) - std::min(pts, base_);
    nodes_.push_back({pts, initial});
    const std::size_t newest = nodes_.size() - 1;
    if (anchor_ >= 0 && pts <= Pts(anchor_)) return;
    if (anchor_ >= 0) Assign(newest);
    prev_ = anchor_;
    anchor_ = static_cast<std::ptrdiff_t>(newest);
    if (prev_ < 0 || base_ == 0) base_ = pts;
  }
  std::uint64_t PlayTime(std::size_t index) const { return nodes_[index].second; }
  std::size_t Size() const { return nodes_.size(); }

 private:
  std::uint64_t Pts(std::ptrdiff_t index) const {
    return nodes_[static_cast<std::size_t>(index)].first;
  }
  void Assign(std::size_t newest) {
    const auto anchor = static_cast<std::size_t>(anchor_);
    const std::uint64_t n = newest - anchor + 1;
    const std::uint64_t whole_step = (Pts(anchor_) - (prev_ >= 0 ? Pts(prev_) : base_)) / n;
    const auto step = static_cast<float>(whole_step);
    std::uint64_t t = prev_ >= 0 ? Pts(prev_) - base_ : 0;
    for (std::size_t i = anchor; i < newest; ++i) {
      t = static_cast<std::uint64_t>(static_cast<float>(t) + step);
      nodes_[i].second = t;
    }
  }

  std::vector<std::pair<std::uint64_t, std::uint64_t>> nodes_;  // PTS and play time
  std::ptrdiff_t anchor_ = -1;
  std::ptrdiff_t prev_ = -1;
  std::uint64_t base_ = 0;
};

TEST_F(PlayTimesTest, RandomPushesAndPopsMatchTheReferenceModel) {
  std::mt19937 random(7);  // NOLINT: the same run every time
  PlainInterpolation plain;
  std::size_t popped = 0;
  std::uint64_t time = 126'000;
  for (int i = 0; i < 3000; ++i) {
    time += 1 + random() % 3600;
    const std::uint64_t pts = time - (random() % 3 == 0 ? random() % 7200 : 0);
    Push(pts);
    plain.Push(pts);
    while (queue_.count > 0 && random() % 2 == 0) {
      EXPECT_NE(Pop(), nullptr);
      ++popped;
    }
    const Times queued = QueuedPlayTimes();
    ASSERT_EQ(queued.size(), plain.Size() - popped);
    for (std::size_t k = 0; k < queued.size(); ++k) {
      ASSERT_EQ(queued[k], plain.PlayTime(popped + k)) << "after push " << i;
    }
  }
}

}  // namespace
}  // namespace stream
