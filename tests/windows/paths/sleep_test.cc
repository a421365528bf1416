#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "platform/sleep.h"

namespace stream {
namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

Milliseconds TimeOfASleep(unsigned milliseconds) {
  const auto before = std::chrono::steady_clock::now();
  platform::SleepMilliseconds(milliseconds);
  return std::chrono::steady_clock::now() - before;
}

// The median, because other programs may delay single sleeps.
Milliseconds MedianOfSleeps(unsigned milliseconds, int count) {
  std::vector<Milliseconds> times;
  for (int i = 0; i < count; ++i) times.push_back(TimeOfASleep(milliseconds));
  const auto middle = times.begin() + count / 2;
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

// With the default tick of the system it could take up to 15.6 ms.
TEST(WindowsSleepTest, SleepOfOneMillisecondTakesAboutOne) {
  const double median = MedianOfSleeps(1, 201).count();
  EXPECT_GE(median, 0.9);
  EXPECT_LT(median, 4);
}

TEST(WindowsSleepTest, SleepOfTenMillisecondsTakesAboutTen) {
  const double median = MedianOfSleeps(10, 21).count();
  EXPECT_GE(median, 9.9);
  EXPECT_LT(median, 14);
}

}  // namespace
}  // namespace stream
