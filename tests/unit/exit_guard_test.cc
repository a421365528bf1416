#include "common/exit_guard.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace {

constexpr int kAsExpected = 0;
constexpr int kOtherwise = 1;

// What another thread does is given a chance to happen.
constexpr std::chrono::milliseconds kChance{100};

std::atomic<bool> g_has_left{false};

bool (*g_check)() = nullptr;

// Exit handlers run in the reverse order of their registration: this one runs `check` after the
// guard's handler.
void CheckAfterTheGuard(bool (*check)()) {
  g_check = check;
  std::atexit([] { std::_Exit(g_check() ? kAsExpected : kOtherwise); });
  GuardExit();
}

void AwaitExit() {
  while (!ProcessIsExiting()) std::this_thread::yield();
}

// Starts a thread that is inside libcurl until the process exits, and for a while then.
void StartThreadThatLeavesLate() {
  static std::atomic<bool> inside{false};
  std::thread([] {
    const LibcurlUse use;
    inside = true;
    AwaitExit();
    std::this_thread::sleep_for(kChance);
    g_has_left = true;
  }).detach();
  while (!inside) std::this_thread::yield();
}

void StartThreadThatNeverLeaves() {
  static std::atomic<bool> inside{false};
  std::thread([] {
    const LibcurlUse use;
    inside = true;
    for (;;) std::this_thread::sleep_for(kChance);
  }).detach();
  while (!inside) std::this_thread::yield();
}

class ExitGuardTest : public testing::Test {
 protected:
  ExitGuardTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ExitGuardTest, LibcurlIsOpenBeforeTheExit) {
  GuardExit();
  EXPECT_TRUE(LibcurlUse());
  EXPECT_FALSE(ProcessIsExiting());
}

TEST_F(ExitGuardTest, ExitWaitsForAThreadInsideLibcurl) {
  const auto exit_with_a_thread_inside = [] {
    CheckAfterTheGuard([] { return g_has_left.load(); });
    StartThreadThatLeavesLate();
    std::exit(kOtherwise);
  };
  EXPECT_EXIT(exit_with_a_thread_inside(), testing::ExitedWithCode(kAsExpected), "");
}

TEST_F(ExitGuardTest, ExitGivesUpOnAThreadThatStaysInsideLibcurl) {
  const auto exit_with_a_stuck_thread = [] {
    GuardExit();
    StartThreadThatNeverLeaves();
    std::exit(kAsExpected);
  };
  EXPECT_EXIT(exit_with_a_stuck_thread(), testing::ExitedWithCode(kAsExpected), "");
}

TEST_F(ExitGuardTest, NobodyEntersLibcurlOnceTheProcessExits) {
  const auto exit_and_enter = [] {
    CheckAfterTheGuard([] { return ProcessIsExiting() && !LibcurlUse(); });
    std::exit(kOtherwise);
  };
  EXPECT_EXIT(exit_and_enter(), testing::ExitedWithCode(kAsExpected), "");
}

}  // namespace
