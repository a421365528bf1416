#include "host/player/play_clock.h"

#include <gtest/gtest.h>

namespace player {
namespace {

TEST(PlayClockTest, NothingIsDueBeforeTheStart) {
  PlayClock clock;
  EXPECT_FALSE(clock.At(5).has_value());
  EXPECT_FALSE(clock.HeardAt(5).has_value());
  EXPECT_FALSE(clock.IsRunning());
}

TEST(PlayClockTest, TimeAdvancesWithoutAudio) {
  PlayClock clock;
  clock.Start(10, 100);
  EXPECT_DOUBLE_EQ(*clock.At(100), 10);
  EXPECT_DOUBLE_EQ(*clock.At(103.5), 13.5);
}

TEST(PlayClockTest, FirstAudioSetsTheTime) {
  PlayClock clock;
  clock.Start(10, 100);
  clock.Hear(10, 100.04);
  EXPECT_DOUBLE_EQ(*clock.At(100.04), 10);
  EXPECT_NEAR(*clock.HeardAt(100.05), 10.01, 1e-9);
}

TEST(PlayClockTest, UnevenAudioTimesAreSmoothed) {
  PlayClock clock;
  clock.Start(10, 100);
  clock.Hear(10, 100);
  clock.Hear(10.02, 100.03);  // 10 ms late
  EXPECT_NEAR(*clock.At(100.03), 10.029, 1e-9);
  EXPECT_NEAR(*clock.HeardAt(100.03), 10.02, 1e-9);
}

TEST(PlayClockTest, LargeDistanceIsAdoptedAtOnce) {
  PlayClock clock;
  clock.Start(10, 100);
  clock.Hear(10, 100);
  clock.Hear(20, 100.02);
  EXPECT_DOUBLE_EQ(*clock.At(100.02), 20);
}

TEST(PlayClockTest, JumpTakesEffectWhenItIsHeard) {
  PlayClock clock;
  clock.Start(10, 100);
  clock.Hear(10, 100);
  const std::uint64_t before = clock.TimeAt(100)->segment;
  clock.Hear(110, 100.04, PlayClock::Order::kJumps);
  EXPECT_DOUBLE_EQ(*clock.At(100.03), 10.03);
  EXPECT_NEAR(*clock.HeardAt(100.03), 10.03, 1e-9);
  EXPECT_EQ(clock.AudioAt(100.03)->segment, before);
  EXPECT_DOUBLE_EQ(*clock.At(100.04), 110);
  EXPECT_NEAR(*clock.HeardAt(100.05), 110.01, 1e-9);
  EXPECT_NE(clock.AudioAt(100.04)->segment, before);
  EXPECT_EQ(clock.AudioAt(100.04)->segment, clock.TimeAt(100.04)->segment);
}

TEST(PlayClockTest, JumpBackOfASecondStartsASegment) {
  PlayClock clock;
  clock.Start(10, 100);
  clock.Hear(10, 100);
  clock.Hear(9, 100.02, PlayClock::Order::kJumps);
  EXPECT_NE(clock.TimeAt(100.02)->segment, clock.TimeAt(100)->segment);
}

TEST(PlayClockTest, LateDeviceStartsNoSegment) {
  PlayClock clock;
  clock.Start(10, 100);
  clock.Hear(10, 100);
  const std::uint64_t before = clock.TimeAt(100)->segment;
  clock.Hear(10.02, 100.52);
  EXPECT_EQ(clock.TimeAt(100.52)->segment, before);
  EXPECT_DOUBLE_EQ(*clock.At(100.52), 10.02);
}

TEST(PlayClockTest, JumpLostInAPauseIsRecovered) {
  PlayClock clock;
  clock.Start(10, 100);
  clock.Hear(10, 100);
  clock.Hear(110, 100.04, PlayClock::Order::kJumps);
  clock.SetPaused(true, 100.01);
  clock.SetPaused(false, 101);
  clock.Hear(110.02, 101.02);
  EXPECT_DOUBLE_EQ(*clock.At(101.02), 110.02);
  EXPECT_EQ(clock.AudioAt(101.02)->segment, clock.TimeAt(101.02)->segment);
}

TEST(PlayClockTest, TimeContinuesWhenTheAudioRunsOut) {
  PlayClock clock;
  clock.Start(10, 100);
  clock.Hear(10, 100);
  clock.MarkSilence(100.02);
  EXPECT_DOUBLE_EQ(*clock.At(102), 12);
  EXPECT_FALSE(clock.HeardAt(102).has_value());
}

TEST(PlayClockTest, LateAudioMovesTheTimeBack) {
  PlayClock clock;
  clock.Start(10, 100);
  clock.Hear(10, 100);
  clock.MarkSilence(100.02);
  clock.Hear(10.02, 102);
  EXPECT_DOUBLE_EQ(*clock.At(102), 10.02);
}

TEST(PlayClockTest, PauseStopsTheTime) {
  PlayClock clock;
  clock.Start(10, 100);
  clock.SetPaused(true, 101);
  EXPECT_TRUE(clock.IsPaused());
  EXPECT_DOUBLE_EQ(*clock.At(150), 11);
  clock.SetPaused(false, 150);
  EXPECT_DOUBLE_EQ(*clock.At(151), 12);
}

TEST(PlayClockTest, TimeStaysStoppedUntilNeitherStarvedNorPaused) {
  PlayClock clock;
  clock.Start(10, 100);
  clock.SetStarved(true, 101);
  clock.SetPaused(true, 102);
  clock.SetStarved(false, 103);
  EXPECT_DOUBLE_EQ(*clock.At(110), 11);
  clock.SetPaused(false, 110);
  EXPECT_DOUBLE_EQ(*clock.At(111), 12);
}

TEST(PlayClockTest, AudioHeardDuringAPauseDoesNotMoveTheTime) {
  PlayClock clock;
  clock.Start(10, 100);
  clock.SetPaused(true, 101);
  clock.Hear(50, 101.5);
  EXPECT_DOUBLE_EQ(*clock.At(102), 11);
}

}  // namespace
}  // namespace player
