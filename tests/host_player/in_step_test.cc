// Picture and audio, from the decoders to the window and the device. Each picture is compared with
// the audio that the device plays at the moment when the picture becomes visible.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "host/player/picture_times.h"
#include "tests/host_player/simulated_play.h"

namespace player {
namespace {

using testing::DoubleNear;
using testing::Pointwise;

constexpr double kExact = 1e-6;
constexpr double kSample = 1.0 / kAudioSampleRate;
constexpr double kPictureSeconds = DecodedStream::kPictureSeconds;
constexpr double kChunk = DecodedStream::kChunkSeconds;

// The numbers from `first` up to `end`, without `end`.
std::vector<std::size_t> Range(std::size_t first, std::size_t end) {
  std::vector<std::size_t> numbers;
  for (std::size_t i = first; i < end; ++i) numbers.push_back(i);
  return numbers;
}

std::vector<double> TimesOf(const std::vector<DecodedStream::Item>& pictures) {
  std::vector<double> times;
  for (const DecodedStream::Item& picture : pictures) times.push_back(picture.seconds);
  return times;
}

class InStepTest : public testing::Test {
 protected:
  const Shown& ShownAs(std::size_t index) const { return play_.shown().at(index); }

  void ExpectShown(const std::vector<double>& times) const {
    std::vector<double> shown;
    for (const Shown& picture : play_.shown()) shown.push_back(picture.picture);
    EXPECT_THAT(shown, Pointwise(DoubleNear(kExact), times));
  }

  // Expects the device to play the audio of the picture's time at the moment when the picture
  // becomes visible.
  void ExpectExact(const std::vector<std::size_t>& indexes, double tolerance = kExact) const {
    for (const std::size_t index : indexes) {
      ASSERT_TRUE(ShownAs(index).audio.has_value()) << index;
      EXPECT_NEAR(ShownAs(index).picture, *ShownAs(index).audio, tolerance) << index;
    }
  }

  // Expects the player to have compared these pictures, each with the audio that the device played.
  void ExpectCompared(const std::vector<std::size_t>& indexes) const {
    ASSERT_EQ(play_.compared().size(), indexes.size());
    double apart = 0;
    for (std::size_t i = 0; i < indexes.size(); ++i) {
      const Shown& shown = ShownAs(indexes[i]);
      ASSERT_TRUE(shown.audio.has_value()) << indexes[i];
      EXPECT_NEAR(play_.compared()[i].picture, shown.picture, kExact) << indexes[i];
      EXPECT_NEAR(play_.compared()[i].audio, *shown.audio, kExact) << indexes[i];
      apart = std::max(apart, std::abs(shown.picture - *shown.audio));
    }
    EXPECT_NEAR(play_.counts().apart, apart, kExact);
  }

  SimulatedPlay play_;
};

TEST_F(InStepTest, PictureAndAudioStartTogether) {
  const DecodedStream stream = DecodedStream().Pictures(1.4, 100).Audio(1.4, 190);
  play_.Run(stream);
  ExpectShown(TimesOf(stream.pictures));
  // The first picture is shown at once. The first audio is heard once the device has played its
  // silence.
  EXPECT_EQ(ShownAs(0).at, 0);
  EXPECT_FALSE(ShownAs(0).audio.has_value());
  ExpectExact(Range(1, 100));
  ExpectCompared(Range(1, 100));
}

TEST_F(InStepTest, AudioThatBeginsLaterIsInStepWithThePictures) {
  play_.Run(DecodedStream().Pictures(1.4, 50).Audio(1.91, 80));
  EXPECT_FALSE(ShownAs(12).audio.has_value());
  ExpectExact(Range(13, 50), 2 * kSample);
  ExpectCompared(Range(13, 50));
}

TEST_F(InStepTest, PicturesThatBeginLaterAreInStepWithTheAudio) {
  play_.Run(DecodedStream().Pictures(1.91, 50).Audio(1.4, 120));
  ASSERT_EQ(play_.shown().size(), 50U);
  ExpectExact(Range(0, 50));
  ExpectCompared(Range(0, 50));
}

// Decode order I P B B P; the decoder outputs I B B P P. Only the decode times are known, as in
// FLV.
TEST_F(InStepTest, ReorderedPicturesAreInStep) {
  constexpr std::uint64_t kStep = 3600;
  constexpr std::uint64_t kFirst = 126'000;
  const std::vector<std::uint64_t> order = {0, 2, 3, 1, 4};
  PictureTimes times(true);
  DecodedStream stream;
  for (std::uint64_t group = 0; group < 20; ++group) {
    const std::uint64_t first = kFirst + group * order.size() * kStep;
    for (std::uint64_t i = 0; i < order.size(); ++i)
      times.Sent(first + i * kStep, first + i * kStep);
    for (const std::uint64_t index : order) {
      const std::uint64_t time = times.TimeOf(first + index * kStep, index == 0, 2);
      stream.pictures.push_back({SecondsOf(time), 0});
    }
  }
  play_.Run(stream.Audio(1.4, 250));
  // Shown in the output order of the decoder, evenly spaced, two pictures later than the decode
  // times.
  ExpectShown(TimesOf(DecodedStream().Pictures(1.4 + 2 * kPictureSeconds, 100).pictures));
  ExpectExact(Range(0, 100));
}

TEST_F(InStepTest, JumpForwardKeepsPicturesAndAudioInStep) {
  const DecodedStream stream =
      DecodedStream().Pictures(1.4, 25).Pictures(101.4, 25).Audio(1.4, 47).Audio(101.4, 50);
  play_.Run(stream);
  ExpectShown(TimesOf(stream.pictures));
  ExpectExact(Range(1, 25));
  // The first picture after the jump waits for the audio, and is shown within one turn of the loop.
  EXPECT_GE(*ShownAs(25).audio, 101.4 - kExact);
  EXPECT_LE(*ShownAs(25).audio, 101.41 + kExact);
  ExpectExact(Range(26, 50));
  ExpectCompared(Range(1, 50));
}

TEST_F(InStepTest, JumpBackKeepsPicturesAndAudioInStep) {
  const DecodedStream stream =
      DecodedStream().Pictures(101.4, 25).Pictures(1.4, 25).Audio(101.4, 47).Audio(1.4, 50);
  play_.Run(stream);
  ExpectShown(TimesOf(stream.pictures));
  ExpectExact(Range(1, 25));
  EXPECT_GE(*ShownAs(25).audio, 1.4 - kExact);
  EXPECT_LE(*ShownAs(25).audio, 1.41 + kExact);
  ExpectExact(Range(26, 50));
  ExpectCompared(Range(1, 50));
}

// The device already has audio from after the jump, and still plays audio from before it.
TEST_F(InStepTest, LastPictureBeforeAJumpIsShownWithTheAudioBeforeIt) {
  const DecodedStream stream =
      DecodedStream().Pictures(1.422, 10).Pictures(101.4, 25).Audio(1.4, 18).Audio(101.4, 50);
  play_.Run(stream);
  ExpectShown(TimesOf(stream.pictures));
  ExpectExact({9});
  EXPECT_NEAR(*ShownAs(9).audio, 1.4 + 18 * kChunk - 0.002, kExact);
  ExpectExact(Range(11, 35));
}

// Two pictures are left when the audio has jumped; by then the first picture after the jump is
// late.
TEST_F(InStepTest, AudioThatJumpsFirstDoesNotDelayThePictures) {
  play_.Run(DecodedStream().Pictures(1.4, 20).Pictures(101.4, 50).Audio(1.4, 33).Audio(101.4, 100));
  EXPECT_EQ(play_.counts().late_pictures, 1U);
  ExpectExact(Range(1, 18));
  for (const std::size_t index : {18U, 19U}) {
    EXPECT_NEAR(ShownAs(index).at - ShownAs(index - 1).at, kPictureSeconds, kExact) << index;
  }
  EXPECT_NEAR(ShownAs(20).picture, 101.44, kExact);
  EXPECT_NEAR(*ShownAs(20).audio, 101.456, kExact);
  ExpectExact(Range(21, 69));
  std::vector<std::size_t> compared = Range(1, 18);
  for (const std::size_t index : Range(20, 69)) compared.push_back(index);
  ExpectCompared(compared);
}

TEST_F(InStepTest, PictureFromBeforeAJumpIsNotComparedWithAudioFromAfterIt) {
  for (const double after : {101.4, -98.6}) {
    SimulatedPlay play;
    const double before = after > 0 ? 1.4 : 101.4;
    const double second = after > 0 ? after : 1.4;
    play.ShowSlowly(9, 100);
    play.Run(DecodedStream()
                 .Pictures(before, 10)
                 .Pictures(second, 25)
                 .Audio(before, 20)
                 .Audio(second, 60));
    const Shown& seen_late = play.shown().at(9);
    EXPECT_GT(std::abs(seen_late.picture - seen_late.audio.value()), 90);
    for (const auto& [picture, audio] : play.compared()) {
      EXPECT_NE(picture, seen_late.picture);
      EXPECT_LE(std::abs(picture - audio), 0.05);
    }
    // Not compared: this picture, and the first one, which was shown before any audio.
    EXPECT_EQ(play.compared().size(), play.shown().size() - 2);
  }
}

TEST_F(InStepTest, PicturesThatNeverReachTheTimesOfTheAudioAreNotCompared) {
  play_.Run(DecodedStream().Pictures(0, 150).Audio(50, 250));
  EXPECT_EQ(play_.counts().shown, 150U);
  EXPECT_FALSE(play_.counts().compared);
}

TEST_F(InStepTest, StallStopsBothAndTheyContinueInStep) {
  constexpr double kStallMs = 2000;
  const DecodedStream stream = DecodedStream()
                                   .Pictures(1.4, 10)
                                   .Pictures(1.8, 15, kStallMs)
                                   .Audio(1.4, 18)
                                   .Audio(1.4 + 18 * kChunk, 40, kStallMs);
  play_.Run(stream);
  ExpectShown(TimesOf(stream.pictures));
  EXPECT_LT(ShownAs(9).at, 0.5);
  EXPECT_GE(ShownAs(10).at, 2);
  EXPECT_LT(ShownAs(10).at, 2.1);
  ExpectExact(Range(1, 25));
  ExpectCompared(Range(1, 25));
}

TEST_F(InStepTest, PauseStopsBothAndTheyContinueInStep) {
  const DecodedStream stream = DecodedStream().Pictures(1.4, 50).Audio(1.4, 100);
  play_.CommandAt(0.211, Command::kPause);
  play_.CommandAt(60.005, Command::kPause);
  play_.Run(stream);
  ExpectShown(TimesOf(stream.pictures));
  EXPECT_NEAR(ShownAs(4).at, 0.2, kExact);
  EXPECT_GT(ShownAs(5).at, 60.005);
  ExpectExact(Range(1, 50));
  ExpectCompared(Range(1, 50));
}

TEST_F(InStepTest, SeekPlaysPicturesAndAudioOfTheNewPosition) {
  play_.CommandAt(0.211, Command::kForward);
  double sought = 0;
  play_.Run([&sought](double start_seconds) {
    sought = start_seconds;
    return DecodedStream().Pictures(1.4 + start_seconds, 25).Audio(1.4 + start_seconds, 50);
  });
  EXPECT_NEAR(sought, 10.17, 0.001);
  ASSERT_EQ(play_.shown().size(), 5U + 25);
  EXPECT_NEAR(ShownAs(5).picture, 1.4 + sought, kExact);
  ExpectExact(Range(1, 5));
  ExpectExact(Range(6, 30));
  std::vector<std::size_t> compared = Range(1, 5);
  for (const std::size_t index : Range(6, 30)) compared.push_back(index);
  ExpectCompared(compared);
}

TEST_F(InStepTest, PicturesAfterTheAudioHasEndedKeepTheirPace) {
  const DecodedStream stream = DecodedStream().Pictures(1.4, 50).Audio(1.4, 18);
  play_.Run(stream);
  ExpectShown(TimesOf(stream.pictures));
  ExpectExact(Range(1, 10));
  ExpectCompared(Range(1, 10));
  for (const std::size_t index : Range(10, 50)) {
    EXPECT_FALSE(ShownAs(index).audio.has_value()) << index;
    EXPECT_NEAR(ShownAs(index).at - ShownAs(index - 1).at, kPictureSeconds, kExact) << index;
  }
}

TEST_F(InStepTest, LatePicturesAreSkippedUntilOneIsInStep) {
  play_.ShowSlowly(5, 130);
  play_.Run(DecodedStream().Pictures(1.4, 50).Audio(1.4, 100));
  EXPECT_EQ(play_.counts().late_pictures, 2U);
  EXPECT_EQ(play_.counts().shown, 48U);
  EXPECT_NEAR(ShownAs(5).picture, 1.6, kExact);
  EXPECT_NEAR(*ShownAs(5).audio, 1.73, kExact);
  EXPECT_NEAR(ShownAs(6).picture, 1.72, kExact);
  EXPECT_NEAR(*ShownAs(6).audio, 1.73, kExact);
  ExpectExact(Range(7, 48));
  ExpectCompared(Range(1, 48));
}

TEST_F(InStepTest, UnevenDeviceKeepsPicturesWithinHalfAPictureOfTheAudio) {
  play_.device().DelayRequests({0, 7, 3, 12, 1});
  play_.Run(DecodedStream().Pictures(1.4, 100).Audio(1.4, 200));
  EXPECT_EQ(play_.shown().size(), 100U);
  ExpectExact(Range(1, 100), kPictureSeconds / 2);
}

}  // namespace
}  // namespace player
