#include "host/player/picture_timing.h"

#include <gtest/gtest.h>

namespace player {
namespace {

using Action = PictureVerdict::Action;

// Facts at the host time 100, while audio is heard.
PictureFacts Facts(double time, double due, std::optional<double> next = {}) {
  return {time, next, due, true, 100};
}

TEST(PictureTimingTest, EarlyPictureWaits) {
  PictureTiming timing;
  const PictureVerdict verdict = timing.Judge(Facts(5.03, 5));
  EXPECT_EQ(verdict.action, Action::kWait);
  EXPECT_NEAR(verdict.wait.value_or(0), 0.03, 1e-9);
}

TEST(PictureTimingTest, DuePictureIsShown) {
  PictureTiming timing;
  EXPECT_EQ(timing.Judge(Facts(5.001, 5)).action, Action::kShow);
  EXPECT_EQ(timing.Judge(Facts(5, 5.015, 5.02)).action, Action::kShow);
}

TEST(PictureTimingTest, LatePictureIsSkippedIfTheNextIsCloser) {
  PictureTiming timing;
  EXPECT_EQ(timing.Judge(Facts(5, 5.03, 5.04)).action, Action::kSkip);
  EXPECT_EQ(timing.Judge(Facts(5, 5.03, 5.10)).action, Action::kShow);
}

TEST(PictureTimingTest, LatePictureIsShownIfThereIsNoOther) {
  PictureTiming timing;
  EXPECT_EQ(timing.Judge(Facts(5, 6)).action, Action::kShow);
}

TEST(PictureTimingTest, TimeJumpWithoutAudioSetsTheClock) {
  PictureTiming timing;
  PictureFacts facts = Facts(105, 5);
  facts.is_heard = false;
  EXPECT_EQ(timing.Judge(facts).action, Action::kSetClock);
  facts.time = 0;
  facts.due = 90;
  EXPECT_EQ(timing.Judge(facts).action, Action::kSetClock);
}

TEST(PictureTimingTest, TimeJumpWaitsForTheAudioToJumpToo) {
  PictureTiming timing;
  PictureFacts facts = Facts(105, 5);
  EXPECT_EQ(timing.Judge(facts).action, Action::kWait);
  facts.now += 0.5;
  facts.due = 104.99;  // the audio has jumped too
  const PictureVerdict verdict = timing.Judge(facts);
  EXPECT_EQ(verdict.action, Action::kWait);
  EXPECT_NEAR(verdict.wait.value_or(0), 0.01, 1e-9);
}

TEST(PictureTimingTest, PictureLeftFromBeforeAJumpOfTheAudioKeepsItsPace) {
  PictureTiming timing;
  EXPECT_EQ(timing.Judge(Facts(5, 5)).action, Action::kShow);
  PictureFacts facts = Facts(5.04, 105);
  facts.now += 0.01;
  const PictureVerdict verdict = timing.Judge(facts);
  EXPECT_EQ(verdict.action, Action::kWait);
  EXPECT_NEAR(verdict.wait.value_or(0), 0.03, 1e-9);
  EXPECT_FALSE(verdict.follows_clock);
  facts.now += 0.03;
  facts.due += 0.03;
  EXPECT_EQ(timing.Judge(facts).action, Action::kShow);
}

TEST(PictureTimingTest, WaitForAudioThatNeverJumpsIsLimited) {
  PictureTiming timing;
  PictureFacts facts = Facts(105, 5);
  EXPECT_EQ(timing.Judge(facts).action, Action::kWait);
  facts.now += 3.5;
  facts.due += 3.5;
  const PictureVerdict own = timing.Judge(facts);
  EXPECT_EQ(own.action, Action::kShow);
  EXPECT_FALSE(own.follows_clock);
  // From here on at the speed of the stream, without the clock.
  facts.time += 0.04;
  const PictureVerdict verdict = timing.Judge(facts);
  EXPECT_EQ(verdict.action, Action::kWait);
  EXPECT_NEAR(verdict.wait.value_or(0), 0.04, 1e-9);
}

}  // namespace
}  // namespace player
