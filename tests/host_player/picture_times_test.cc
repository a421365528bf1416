#include "host/player/picture_times.h"

#include <gtest/gtest.h>

#include <vector>

namespace player {
namespace {

// Decode order I P B B P, as it leaves the decoder: I B B P P.
const std::vector<std::uint64_t> kOrder = {0, 2, 3, 1, 4};
constexpr std::uint64_t kStep = 3600;

std::vector<std::uint64_t> TimesOf(PictureTimes& times, int depth) {
  for (std::uint64_t i = 0; i < kOrder.size(); ++i) times.Sent(i * kStep, i * kStep);
  std::vector<std::uint64_t> shown;
  for (const std::uint64_t place : kOrder) {
    shown.push_back(times.TimeOf(place * kStep, place == 0, depth) / kStep);
  }
  return shown;
}

TEST(PictureTimesTest, DecodingTimesAreGivenInOrder) {
  PictureTimes times(false);
  EXPECT_EQ(TimesOf(times, 2), (std::vector<std::uint64_t>{0, 1, 2, 3, 4}));
}

TEST(PictureTimesTest, PicturesShownLaterAreLateByTheDepth) {
  PictureTimes times(true);
  EXPECT_EQ(TimesOf(times, 2), (std::vector<std::uint64_t>{2, 3, 4, 5, 6}));
}

TEST(PictureTimesTest, StreamInOrderKeepsItsTimes) {
  PictureTimes times(true);
  EXPECT_EQ(TimesOf(times, 0), kOrder);
}

TEST(PictureTimesTest, PresentationTimesAreTakenAsTheyAre) {
  PictureTimes times(true);
  times.Sent(2 * kStep, 0);
  times.Sent(5 * kStep, kStep);
  times.Sent(3 * kStep, 2 * kStep);
  EXPECT_EQ(times.TimeOf(2 * kStep, true, 2), 2 * kStep);
  EXPECT_EQ(times.TimeOf(3 * kStep, false, 2), 3 * kStep);
  EXPECT_EQ(times.TimeOf(5 * kStep, false, 2), 5 * kStep);
}

TEST(PictureTimesTest, PictureThatNeverCameIsForgottenAtTheNextKeyPicture) {
  PictureTimes times(false);
  for (std::uint64_t i = 0; i < 6; ++i) times.Sent(i * kStep, i * kStep);
  EXPECT_EQ(times.TimeOf(0, true, 2), 0U);
  // 1 to 3 never come out.
  EXPECT_EQ(times.TimeOf(4 * kStep, true, 2), 4 * kStep);
  EXPECT_EQ(times.TimeOf(5 * kStep, false, 2), 5 * kStep);
}

}  // namespace
}  // namespace player
