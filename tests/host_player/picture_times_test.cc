#include "host/player/picture_times.h"

#include <gtest/gtest.h>

#include <vector>

namespace player {
namespace {

// Decode order I P B B P; the decoder outputs I B B P P.
const std::vector<std::uint64_t> kOrder = {0, 2, 3, 1, 4};
constexpr std::uint64_t kStep = 3600;
constexpr std::uint64_t kSecond = 90'000;

std::vector<std::uint64_t> TimesOf(PictureTimes& times, int depth) {
  for (std::uint64_t i = 0; i < kOrder.size(); ++i) times.Sent(i * kStep, i * kStep);
  std::vector<std::uint64_t> shown;
  for (const std::uint64_t index : kOrder) {
    shown.push_back(times.TimeOf(index * kStep, index == 0, depth) / kStep);
  }
  return shown;
}

// `count` times, one step apart.
std::vector<std::uint64_t> Steady(std::uint64_t first, std::size_t count,
                                  std::uint64_t step = kStep) {
  std::vector<std::uint64_t> times;
  for (std::size_t i = 0; i < count; ++i) times.push_back(first + i * step);
  return times;
}

std::vector<std::uint64_t> Joined(std::vector<std::uint64_t> times,
                                  const std::vector<std::uint64_t>& more) {
  times.insert(times.end(), more.begin(), more.end());
  return times;
}

std::vector<std::uint64_t> Later(std::vector<std::uint64_t> times, std::uint64_t distance) {
  for (std::uint64_t& time : times) time += distance;
  return times;
}

// Sends groups of pictures with these decode times through a decoder that holds back two pictures.
// Each group begins with a key picture and is output in kOrder. Returns the times at which the
// pictures are shown, in output order.
std::vector<std::uint64_t> ShownOf(PictureTimes& times, const std::vector<std::uint64_t>& sent) {
  constexpr std::size_t kDepth = 2;
  std::vector<std::uint64_t> shown;
  const auto show = [&] {
    const std::size_t index = shown.size() % kOrder.size();
    const std::size_t own = shown.size() - index + kOrder[index];
    shown.push_back(times.TimeOf(sent[own], index == 0, kDepth));
  };
  for (std::size_t i = 0; i < sent.size(); ++i) {
    times.Sent(sent[i], sent[i]);
    if (i >= kDepth) show();
  }
  while (shown.size() < sent.size()) show();
  return shown;
}

void ExpectEachLaterByTwoSteps(const std::vector<std::uint64_t>& sent, std::uint64_t step = kStep) {
  PictureTimes times(true);
  EXPECT_EQ(ShownOf(times, sent), Later(sent, 2 * step));
}

TEST(PictureTimesTest, DecodeTimesAreAssignedInOrder) {
  PictureTimes times(false);
  EXPECT_EQ(TimesOf(times, 2), (std::vector<std::uint64_t>{0, 1, 2, 3, 4}));
}

TEST(PictureTimesTest, PicturesAreDelayedByTheDepth) {
  PictureTimes times(true);
  EXPECT_EQ(TimesOf(times, 2), (std::vector<std::uint64_t>{2, 3, 4, 5, 6}));
}

TEST(PictureTimesTest, StreamInOrderKeepsItsTimes) {
  PictureTimes times(true);
  EXPECT_EQ(TimesOf(times, 0), kOrder);
}

TEST(PictureTimesTest, PresentationTimesAreNotChanged) {
  PictureTimes times(true);
  times.Sent(2 * kStep, 0);
  times.Sent(5 * kStep, kStep);
  times.Sent(3 * kStep, 2 * kStep);
  EXPECT_EQ(times.TimeOf(2 * kStep, true, 2), 2 * kStep);
  EXPECT_EQ(times.TimeOf(3 * kStep, false, 2), 3 * kStep);
  EXPECT_EQ(times.TimeOf(5 * kStep, false, 2), 5 * kStep);
}

TEST(PictureTimesTest, EvenPaceIsKeptOverManyPictures) {
  ExpectEachLaterByTwoSteps(Steady(0, 300));
}

TEST(PictureTimesTest, SlowStreamIsDelayedByItsOwnSteps) {
  constexpr std::uint64_t kSlow = 2 * kSecond;
  ExpectEachLaterByTwoSteps(Steady(0, 20, kSlow), kSlow);
}

TEST(PictureTimesTest, GapAtAKeyPictureDoesNotDelayLaterPictures) {
  ExpectEachLaterByTwoSteps(Joined(Steady(0, 100), Steady(34 * kSecond, 50)));
}

TEST(PictureTimesTest, GapBetweenKeyPicturesDoesNotDelayLaterPictures) {
  ExpectEachLaterByTwoSteps(Joined(Steady(0, 102), Steady(34 * kSecond, 48)));
}

TEST(PictureTimesTest, JumpOfAnHourDoesNotDelayLaterPictures) {
  ExpectEachLaterByTwoSteps(Joined(Steady(0, 100), Steady(3600 * kSecond, 50)));
}

TEST(PictureTimesTest, JumpAfterTheFirstPictureDoesNotDelayIt) {
  ExpectEachLaterByTwoSteps(Joined(Steady(0, 1), Steady(3600 * kSecond, 49)));
}

TEST(PictureTimesTest, PictureBeforeTheOnlyJumpSoFarIsNotDelayed) {
  PictureTimes times(true);
  times.Sent(0, 0);
  times.Sent(30 * kSecond, 30 * kSecond);
  EXPECT_EQ(times.TimeOf(0, true, 1), 0U);
}

TEST(PictureTimesTest, JumpBackAtAKeyPictureKeepsTheTimeOfEachPicture) {
  ExpectEachLaterByTwoSteps(Joined(Steady(60 * kSecond, 100), Steady(0, 50)));
}

TEST(PictureTimesTest, JumpBackBetweenKeyPicturesKeepsTheTimeOfEachPicture) {
  ExpectEachLaterByTwoSteps(Joined(Steady(60 * kSecond, 103), Steady(0, 47)));
}

TEST(PictureTimesTest, JumpForwardAndBackKeepsTheTimeOfEachPicture) {
  ExpectEachLaterByTwoSteps(
      Joined(Steady(0, 50), Joined(Steady(3600 * kSecond, 1), Steady(51 * kStep, 49))));
}

TEST(PictureTimesTest, NewPaceIsKnownAFewPicturesAfterAJump) {
  constexpr std::uint64_t kFast = kStep / 2;
  PictureTimes times(true);
  const std::vector<std::uint64_t> sent = Joined(Steady(0, 100), Steady(34 * kSecond, 50, kFast));
  const std::vector<std::uint64_t> shown = ShownOf(times, sent);
  for (std::size_t i = 110; i < sent.size(); ++i) EXPECT_EQ(shown[i], sent[i] + 2 * kFast) << i;
}

TEST(PictureTimesTest, TimesThatGoBackByLessThanASecondAreSorted) {
  PictureTimes times(false);
  const std::vector<std::uint64_t> sent = {0, 4 * kStep, 2 * kStep, 1 * kStep, 3 * kStep};
  EXPECT_EQ(ShownOf(times, sent), Steady(0, 5));
}

TEST(PictureTimesTest, PictureThatIsNeverOutputIsDroppedAtTheNextKeyPicture) {
  PictureTimes times(false);
  for (std::uint64_t i = 0; i < 6; ++i) times.Sent(i * kStep, i * kStep);
  EXPECT_EQ(times.TimeOf(0, true, 2), 0U);
  // Pictures 1 to 3 are never output.
  EXPECT_EQ(times.TimeOf(4 * kStep, true, 2), 4 * kStep);
  EXPECT_EQ(times.TimeOf(5 * kStep, false, 2), 5 * kStep);
}

}  // namespace
}  // namespace player
