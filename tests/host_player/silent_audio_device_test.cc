#include "host/player/silent_audio_device.h"

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

TEST(SilentAudioDeviceTest, PortionIsTakenEveryTwentyMilliseconds) {
  host::SimulatedClock clock;
  SilentAudioDevice device(clock);
  std::vector<double> heard_at;  // read after the stop
  std::atomic<int> requests{0};
  device.Start([&](std::span<float> portion, double at) {
    EXPECT_EQ(portion.size(), 2U * kPortionFrames);
    heard_at.push_back(at);
    ++requests;
  });
  EXPECT_TRUE(WaitUntil([&] { return requests == 1; }));
  clock.Advance(20);
  EXPECT_TRUE(WaitUntil([&] { return requests == 2; }));
  clock.Advance(19);
  clock.Advance(1);
  EXPECT_TRUE(WaitUntil([&] { return requests == 3; }));
  device.Stop();
  // A portion that was requested too early would have another time.
  EXPECT_THAT(heard_at, ElementsAre(DoubleEq(0.02), DoubleEq(0.04), DoubleEq(0.06)));
}

TEST(SilentAudioDeviceTest, MissedPortionsAreTakenLater) {
  host::SimulatedClock clock;
  SilentAudioDevice device(clock);
  std::atomic<int> requests{0};
  device.Start([&](std::span<float>, double) { ++requests; });
  EXPECT_TRUE(WaitUntil([&] { return requests == 1; }));
  clock.Advance(100);
  EXPECT_TRUE(WaitUntil([&] { return requests == 6; }));
  device.Stop();
  EXPECT_EQ(requests, 6);
}

TEST(SilentAudioDeviceTest, StopWithoutAStartAndASecondStopDoNothing) {
  host::SimulatedClock clock;
  SilentAudioDevice device(clock);
  device.Stop();
  device.Stop();
}

}  // namespace
}  // namespace player
