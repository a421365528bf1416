#include "host/player/sound_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "tests/support/wait_until.h"

namespace player {
namespace {

constexpr double kMs = 0.001;

AudioPiece PieceAt(double seconds, double length, float value = 0.5F) {
  const auto frames = static_cast<std::size_t>(length * kSoundRate);
  return {std::vector<float>(frames * kSoundChannels, value), seconds};
}

class SoundBufferTest : public testing::Test {
 protected:
  // How many frames at the beginning are silent. Expects the frames after them to be filled.
  std::size_t SilentFrames(double heard_at, std::size_t frames = 960) {
    std::vector<float> out(frames * kSoundChannels, 9.0F);
    sound_.Fill(out, heard_at);
    const auto loud = std::find_if(out.begin(), out.end(), [](float v) { return v != 0.0F; });
    EXPECT_TRUE(std::none_of(loud, out.end(), [](float v) { return v == 9.0F; }));
    return static_cast<std::size_t>(loud - out.begin()) / kSoundChannels;
  }

  PlayClock clock_;
  SoundBuffer sound_{clock_};
};

TEST_F(SoundBufferTest, NothingSoundsBeforeTheClockRuns) {
  sound_.Push(PieceAt(1, 0.1));
  EXPECT_EQ(SilentFrames(100), 960U);
  clock_.Start(1, 100);
  clock_.SetPaused(true, 100);
  EXPECT_EQ(SilentFrames(100), 960U);
  EXPECT_DOUBLE_EQ(*sound_.NextSeconds(), 1);
}

TEST_F(SoundBufferTest, DueSoundIsHeardAndSetsTheClock) {
  clock_.Start(1, 99.98);
  sound_.Push(PieceAt(1, 0.1));
  EXPECT_EQ(SilentFrames(100), 0U);
  EXPECT_DOUBLE_EQ(*clock_.HeardAt(100), 1);
  EXPECT_DOUBLE_EQ(*clock_.At(100), 1);
  EXPECT_NEAR(*sound_.NextSeconds(), 1.02, kMs);
}

TEST_F(SoundBufferTest, EarlySoundWaitsInSilence) {
  clock_.Start(1, 100);
  sound_.Push(PieceAt(1.03, 0.1));
  EXPECT_EQ(SilentFrames(100), 960U);
  EXPECT_NEAR(static_cast<double>(SilentFrames(100.02)), 0.01 * kSoundRate, 50);
  EXPECT_NEAR(*clock_.HeardAt(100.031), 1.031, kMs);
}

TEST_F(SoundBufferTest, GapInTheSoundIsSilentForItsLength) {
  clock_.Start(1, 100);
  sound_.Push(PieceAt(1, 0.02));
  sound_.Push(PieceAt(1.05, 0.02));
  EXPECT_EQ(SilentFrames(100), 0U);
  EXPECT_EQ(SilentFrames(100.02), 960U);
  EXPECT_NEAR(static_cast<double>(SilentFrames(100.04)), 0.01 * kSoundRate, 60);
}

TEST_F(SoundBufferTest, RoundedTimesAreNoGap) {
  clock_.Start(1, 100);
  sound_.Push(PieceAt(1, 0.02));
  sound_.Push(PieceAt(1.022, 0.02));
  EXPECT_EQ(SilentFrames(100, 1920), 0U);
}

TEST_F(SoundBufferTest, EmptyBufferIsSilentAndTheClockRunsAlone) {
  clock_.Start(1, 100);
  sound_.Push(PieceAt(1, 0.02));
  SilentFrames(100);
  EXPECT_TRUE(sound_.IsEmpty());
  EXPECT_EQ(SilentFrames(100.02), 960U);
  EXPECT_FALSE(clock_.HeardAt(100.02).has_value());
  EXPECT_NEAR(*clock_.At(101), 2, kMs);
}

TEST_F(SoundBufferTest, JumpInAPortionIsHeardInItsMiddle) {
  clock_.Start(1, 100);
  sound_.Push(PieceAt(1, 0.01));
  sound_.Push(PieceAt(101, 0.01));
  EXPECT_EQ(SilentFrames(100), 0U);
  EXPECT_NEAR(*clock_.HeardAt(100.005), 1.005, 1e-9);
  EXPECT_NEAR(*clock_.HeardAt(100.015), 101.005, 1e-9);
}

TEST_F(SoundBufferTest, SoundThatEndsInAPortionIsHeardUntilItsEnd) {
  clock_.Start(1, 100);
  sound_.Push(PieceAt(1, 0.01));
  EXPECT_EQ(SilentFrames(100), 0U);
  EXPECT_TRUE(clock_.HeardAt(100.009).has_value());
  EXPECT_FALSE(clock_.HeardAt(100.011).has_value());
}

TEST_F(SoundBufferTest, LateSoundIsNotCut) {
  clock_.Start(1, 100);
  sound_.Push(PieceAt(0.5, 0.1));
  EXPECT_EQ(SilentFrames(100), 0U);
  EXPECT_DOUBLE_EQ(*clock_.At(100), 0.5);
}

TEST_F(SoundBufferTest, FullBufferBlocksTheProducer) {
  clock_.Start(0, 100);
  ASSERT_TRUE(sound_.Push(PieceAt(0, 0.5)));
  std::atomic<bool> over{false};
  std::thread giver([&] {
    sound_.Push(PieceAt(0.5, 0.5));
    over = true;
  });
  EXPECT_EQ(SilentFrames(100), 0U);
  EXPECT_TRUE(WaitUntil([&] { return over.load(); }));
  giver.join();
}

TEST_F(SoundBufferTest, CloseReleasesTheProducer) {
  ASSERT_TRUE(sound_.Push(PieceAt(0, 0.5)));
  std::atomic<int> taken{-1};
  std::thread giver([&] { taken = sound_.Push(PieceAt(0.5, 0.5)) ? 1 : 0; });
  sound_.Close();
  EXPECT_TRUE(WaitUntil([&] { return taken.load() == 0; }));
  giver.join();
  EXPECT_TRUE(sound_.IsEmpty());
}

}  // namespace
}  // namespace player
