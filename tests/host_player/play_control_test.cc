#include "host/player/play_control.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/host/simulated_clock.h"
#include "tests/host_player/fake_downloader.h"
#include "tests/host_player/frame_at.h"
#include "tests/host_player/simulated_audio_device.h"

namespace player {
namespace {

using testing::ElementsAre;

class PlayControlTest : public testing::Test {
 protected:
  static constexpr double kIdleSeconds = 2;

  PlayControl Make(std::optional<double> start_seconds = {}) {
    return {{"a.ts", start_seconds, kIdleSeconds},
            {downloader_, receiver_, output_, clock_, counts_, [this] { ++starts_; }}};
  }

  // Starts the stream, so that there is something to move in. The frame is empty, so there is
  // nothing to decode.
  void ReceiveFirstFrame() { receiver_.OnVideoFrame(FrameAt(90'000, "")); }

  // Whether the stream counts as ended after this much silence.
  bool HasEndedAfter(PlayControl& control, double seconds) {
    clock_.Advance(seconds * 1000);
    control.Tick();
    return control.HasEnded();
  }

  host::SimulatedClock clock_;
  PlayCounts counts_;
  FrameReceiver receiver_{clock_, counts_};
  FakeDownloader downloader_;
  SimulatedAudioDevice device_{clock_};
  AudioOutput output_{device_};
  int starts_ = 0;
};

TEST_F(PlayControlTest, MoveEndsTheDownloadSetsThePositionAndBeginsAgain) {
  {
    PlayControl control = Make();
    ASSERT_TRUE(control.Begin());
    ReceiveFirstFrame();
    control.SeekBy(10);
    EXPECT_EQ(starts_, 2);
  }
  EXPECT_THAT(downloader_.calls,
              ElementsAre("begin a.ts", "end", "start at 10", "begin a.ts", "end"));
}

TEST_F(PlayControlTest, MoveBackStopsAtTheBeginning) {
  PlayControl control = Make();
  ASSERT_TRUE(control.Begin());
  ReceiveFirstFrame();
  control.SeekBy(10);
  control.SeekBy(-30);
  EXPECT_EQ(downloader_.calls[5], "start at 0");
}

TEST_F(PlayControlTest, StartPositionWaitsForTheFirstFrame) {
  PlayControl control = Make(5);
  ASSERT_TRUE(control.Begin());
  control.Tick();
  EXPECT_THAT(downloader_.calls, ElementsAre("begin a.ts"));
  ReceiveFirstFrame();
  control.Tick();
  control.Tick();
  EXPECT_THAT(downloader_.calls, ElementsAre("begin a.ts", "end", "start at 5", "begin a.ts"));
}

TEST_F(PlayControlTest, StreamWithoutAFrameEndsAfterTheIdleTime) {
  for (const std::optional<double> start_seconds : {std::optional<double>(), {5.0}}) {
    PlayControl control = Make(start_seconds);
    ASSERT_TRUE(control.Begin());
    EXPECT_FALSE(HasEndedAfter(control, kIdleSeconds - 0.001));
    EXPECT_TRUE(HasEndedAfter(control, 0.002));
    EXPECT_EQ(control.Facts().state, PlayState::kEnded);
  }
}

TEST_F(PlayControlTest, PauseLastsThroughAMove) {
  PlayControl control = Make();
  ASSERT_TRUE(control.Begin());
  ReceiveFirstFrame();
  control.TogglePause();
  control.SeekBy(10);
  EXPECT_TRUE(control.playback()->clock().IsPaused());
  EXPECT_EQ(control.Facts().state, PlayState::kPaused);
  control.TogglePause();
  EXPECT_FALSE(control.playback()->clock().IsPaused());
}

TEST_F(PlayControlTest, NothingMovesBeforeTheFirstFrame) {
  PlayControl control = Make();
  ASSERT_TRUE(control.Begin());
  control.SeekBy(10);
  EXPECT_THAT(downloader_.calls, ElementsAre("begin a.ts"));
}

TEST_F(PlayControlTest, NothingMovesInFlv) {
  PlayControl control = Make(5);
  ASSERT_TRUE(control.Begin());
  receiver_.OnMessage("PLAY FLV:x");
  ReceiveFirstFrame();
  control.Tick();
  control.SeekBy(10);
  EXPECT_THAT(downloader_.calls, ElementsAre("begin a.ts"));
}

TEST_F(PlayControlTest, ShortSilenceAfterAMoveIsNotTheEnd) {
  PlayControl control = Make();
  ASSERT_TRUE(control.Begin());
  ReceiveFirstFrame();
  control.SeekBy(10);
  EXPECT_FALSE(HasEndedAfter(control, 20 * kIdleSeconds - 0.001));
  EXPECT_TRUE(HasEndedAfter(control, 0.002));
}

TEST_F(PlayControlTest, BufferedTimeBeforeAMoveIsCleared) {
  PlayControl control = Make();
  ASSERT_TRUE(control.Begin());
  ReceiveFirstFrame();
  receiver_.OnVideoFrame(FrameAt(90'000 * 31, "v"));
  receiver_.OnBufferedTime(30);
  EXPECT_EQ(control.Facts().buffered, 30);
  control.SeekBy(-10);
  EXPECT_FALSE(control.Facts().buffered.has_value());
}

TEST_F(PlayControlTest, RefusedAddressIsReported) {
  downloader_.refuses = true;
  PlayControl control = Make();
  EXPECT_FALSE(control.Begin());
}

}  // namespace
}  // namespace player
