#include "host/player/picture_timing.h"

#include <gtest/gtest.h>

namespace player {
namespace {

using Deed = PictureVerdict::Deed;

// At the host's time 100, where sound is heard.
PictureFacts Facts(double time, double due, std::optional<double> next = {}) {
  return {time, next, due, true, 100};
}

TEST(PictureTimingTest, PictureAheadIsWaitedFor) {
  PictureTiming timing;
  const PictureVerdict verdict = timing.Judge(Facts(5.03, 5));
  EXPECT_EQ(verdict.deed, Deed::kWait);
  EXPECT_NEAR(verdict.wait.value_or(0), 0.03, 1e-9);
}

TEST(PictureTimingTest, PictureThatIsDueIsShown) {
  PictureTiming timing;
  EXPECT_EQ(timing.Judge(Facts(5.001, 5)).deed, Deed::kShow);
  EXPECT_EQ(timing.Judge(Facts(5, 5.015, 5.02)).deed, Deed::kShow);
}

TEST(PictureTimingTest, LatePictureIsPassedOverWhenTheNextIsNearer) {
  PictureTiming timing;
  EXPECT_EQ(timing.Judge(Facts(5, 5.03, 5.04)).deed, Deed::kPassOver);
  EXPECT_EQ(timing.Judge(Facts(5, 5.03, 5.10)).deed, Deed::kShow);
}

TEST(PictureTimingTest, LatePictureIsShownWhenThereIsNoOther) {
  PictureTiming timing;
  EXPECT_EQ(timing.Judge(Facts(5, 6)).deed, Deed::kShow);
}

TEST(PictureTimingTest, OtherCountOfTimeWithoutSoundSetsTheClock) {
  PictureTiming timing;
  PictureFacts facts = Facts(105, 5);
  facts.is_heard = false;
  EXPECT_EQ(timing.Judge(facts).deed, Deed::kSetClock);
  facts.time = 0;
  facts.due = 90;
  EXPECT_EQ(timing.Judge(facts).deed, Deed::kSetClock);
}

TEST(PictureTimingTest, OtherCountOfTimeWaitsForTheSoundToGetThere) {
  PictureTiming timing;
  PictureFacts facts = Facts(105, 5);
  EXPECT_EQ(timing.Judge(facts).deed, Deed::kWait);
  facts.now += 0.5;
  facts.due = 104.99;  // the sound got there
  const PictureVerdict verdict = timing.Judge(facts);
  EXPECT_EQ(verdict.deed, Deed::kWait);
  EXPECT_NEAR(verdict.wait.value_or(0), 0.01, 1e-9);
}

TEST(PictureTimingTest, SoundThatNeverGetsThereIsNotWaitedForForEver) {
  PictureTiming timing;
  PictureFacts facts = Facts(105, 5);
  EXPECT_EQ(timing.Judge(facts).deed, Deed::kWait);
  facts.now += 3.5;
  facts.due += 3.5;
  EXPECT_EQ(timing.Judge(facts).deed, Deed::kShow);
  // From here on at the speed of the stream.
  facts.time += 0.04;
  const PictureVerdict verdict = timing.Judge(facts);
  EXPECT_EQ(verdict.deed, Deed::kWait);
  EXPECT_NEAR(verdict.wait.value_or(0), 0.04, 1e-9);
}

}  // namespace
}  // namespace player
