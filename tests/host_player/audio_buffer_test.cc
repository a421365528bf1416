#include "host/player/audio_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "tests/support/wait_until.h"

namespace player {
namespace {

constexpr double kMs = 0.001;

AudioChunk ChunkAt(double seconds, double length, float value = 0.5F) {
  const auto frames = static_cast<std::size_t>(length * kAudioSampleRate);
  return {std::vector<float>(frames * kAudioChannels, value), seconds};
}

class AudioBufferTest : public testing::Test {
 protected:
  // How many frames at the beginning are silent. Expects the frames after them to be filled.
  std::size_t SilentFrames(double heard_at, std::size_t frames = 960) {
    std::vector<float> out(frames * kAudioChannels, 9.0F);
    buffer_.Fill(out, heard_at);
    const auto loud = std::find_if(out.begin(), out.end(), [](float v) { return v != 0.0F; });
    EXPECT_TRUE(std::none_of(loud, out.end(), [](float v) { return v == 9.0F; }));
    return static_cast<std::size_t>(loud - out.begin()) / kAudioChannels;
  }

  PlayClock clock_;
  AudioBuffer buffer_{clock_};
};

TEST_F(AudioBufferTest, NothingIsHeardBeforeTheClockRuns) {
  buffer_.Push(ChunkAt(1, 0.1));
  EXPECT_EQ(SilentFrames(100), 960U);
  clock_.Start(1, 100);
  clock_.SetPaused(true, 100);
  EXPECT_EQ(SilentFrames(100), 960U);
  EXPECT_DOUBLE_EQ(*buffer_.NextSeconds(), 1);
}

TEST_F(AudioBufferTest, DueAudioIsHeardAndSetsTheClock) {
  clock_.Start(1, 99.98);
  buffer_.Push(ChunkAt(1, 0.1));
  EXPECT_EQ(SilentFrames(100), 0U);
  EXPECT_DOUBLE_EQ(*clock_.HeardAt(100), 1);
  EXPECT_DOUBLE_EQ(*clock_.At(100), 1);
  EXPECT_NEAR(*buffer_.NextSeconds(), 1.02, kMs);
}

TEST_F(AudioBufferTest, EarlyAudioWaitsInSilence) {
  clock_.Start(1, 100);
  buffer_.Push(ChunkAt(1.03, 0.1));
  EXPECT_EQ(SilentFrames(100), 960U);
  EXPECT_NEAR(static_cast<double>(SilentFrames(100.02)), 0.01 * kAudioSampleRate, 50);
  EXPECT_NEAR(*clock_.HeardAt(100.031), 1.031, kMs);
}

TEST_F(AudioBufferTest, GapInTheAudioIsSilentForItsLength) {
  clock_.Start(1, 100);
  buffer_.Push(ChunkAt(1, 0.02));
  buffer_.Push(ChunkAt(1.05, 0.02));
  EXPECT_EQ(SilentFrames(100), 0U);
  EXPECT_EQ(SilentFrames(100.02), 960U);
  EXPECT_NEAR(static_cast<double>(SilentFrames(100.04)), 0.01 * kAudioSampleRate, 60);
}

TEST_F(AudioBufferTest, RoundedTimesAreNoGap) {
  clock_.Start(1, 100);
  buffer_.Push(ChunkAt(1, 0.02));
  buffer_.Push(ChunkAt(1.022, 0.02));
  EXPECT_EQ(SilentFrames(100, 1920), 0U);
}

TEST_F(AudioBufferTest, EmptyBufferIsSilentAndTheClockRunsAlone) {
  clock_.Start(1, 100);
  buffer_.Push(ChunkAt(1, 0.02));
  SilentFrames(100);
  EXPECT_TRUE(buffer_.IsEmpty());
  EXPECT_EQ(SilentFrames(100.02), 960U);
  EXPECT_FALSE(clock_.HeardAt(100.02).has_value());
  EXPECT_NEAR(*clock_.At(101), 2, kMs);
}

TEST_F(AudioBufferTest, JumpInAPortionIsHeardInItsMiddle) {
  clock_.Start(1, 100);
  buffer_.Push(ChunkAt(1, 0.01));
  buffer_.Push(ChunkAt(101, 0.01));
  EXPECT_EQ(SilentFrames(100), 0U);
  EXPECT_NEAR(*clock_.HeardAt(100.005), 1.005, 1e-9);
  EXPECT_NEAR(*clock_.HeardAt(100.015), 101.005, 1e-9);
}

TEST_F(AudioBufferTest, AudioThatEndsInAPortionIsHeardUntilItsEnd) {
  clock_.Start(1, 100);
  buffer_.Push(ChunkAt(1, 0.01));
  EXPECT_EQ(SilentFrames(100), 0U);
  EXPECT_TRUE(clock_.HeardAt(100.009).has_value());
  EXPECT_FALSE(clock_.HeardAt(100.011).has_value());
}

TEST_F(AudioBufferTest, LateAudioIsNotCut) {
  clock_.Start(1, 100);
  buffer_.Push(ChunkAt(0.5, 0.1));
  EXPECT_EQ(SilentFrames(100), 0U);
  EXPECT_DOUBLE_EQ(*clock_.At(100), 0.5);
}

TEST_F(AudioBufferTest, FullBufferBlocksTheProducer) {
  clock_.Start(0, 100);
  ASSERT_TRUE(buffer_.Push(ChunkAt(0, 0.5)));
  std::atomic<bool> finished{false};
  std::thread producer([&] {
    buffer_.Push(ChunkAt(0.5, 0.5));
    finished = true;
  });
  EXPECT_EQ(SilentFrames(100), 0U);
  EXPECT_TRUE(WaitUntil([&] { return finished.load(); }));
  producer.join();
}

TEST_F(AudioBufferTest, CloseReleasesTheProducer) {
  ASSERT_TRUE(buffer_.Push(ChunkAt(0, 0.5)));
  std::atomic<int> accepted{-1};
  std::thread producer([&] { accepted = buffer_.Push(ChunkAt(0.5, 0.5)) ? 1 : 0; });
  buffer_.Close();
  EXPECT_TRUE(WaitUntil([&] { return accepted.load() == 0; }));
  producer.join();
  EXPECT_TRUE(buffer_.IsEmpty());
}

}  // namespace
}  // namespace player
