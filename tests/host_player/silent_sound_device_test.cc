#include "host/player/silent_sound_device.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "tests/host/simulated_clock.h"
#include "tests/support/wait_until.h"

namespace player {
namespace {

using testing::DoubleEq;
using testing::ElementsAre;

TEST(SilentSoundDeviceTest, PortionIsTakenEveryTwentyMilliseconds) {
  host::SimulatedClock clock;
  SilentSoundDevice device(clock);
  std::vector<double> heard_at;  // read after the stop
  std::atomic<int> taken{0};
  device.Start([&](std::span<float> portion, double at) {
    EXPECT_EQ(portion.size(), 2U * kSoundPortion);
    heard_at.push_back(at);
    ++taken;
  });
  EXPECT_TRUE(WaitUntil([&] { return taken == 1; }));
  clock.Advance(20);
  EXPECT_TRUE(WaitUntil([&] { return taken == 2; }));
  clock.Advance(19);
  clock.Advance(1);
  EXPECT_TRUE(WaitUntil([&] { return taken == 3; }));
  device.Stop();
  // A portion that was taken too early would have another time.
  EXPECT_THAT(heard_at, ElementsAre(DoubleEq(0.02), DoubleEq(0.04), DoubleEq(0.06)));
}

TEST(SilentSoundDeviceTest, MissedPortionsAreTakenLater) {
  host::SimulatedClock clock;
  SilentSoundDevice device(clock);
  std::atomic<int> taken{0};
  device.Start([&](std::span<float>, double) { ++taken; });
  EXPECT_TRUE(WaitUntil([&] { return taken == 1; }));
  clock.Advance(100);
  EXPECT_TRUE(WaitUntil([&] { return taken == 6; }));
  device.Stop();
  EXPECT_EQ(taken, 6);
}

TEST(SilentSoundDeviceTest, StopWithoutAStartAndASecondStopDoNothing) {
  host::SimulatedClock clock;
  SilentSoundDevice device(clock);
  device.Stop();
  device.Stop();
}

}  // namespace
}  // namespace player
