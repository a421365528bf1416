#include "common/exit_guard.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <thread>

#include "common/http_transfer.h"
#include "tests/support/simulated_clock.h"
#include "tests/support/test_server.h"

namespace stream {
namespace {

constexpr int kAsExpected = 0;
constexpr int kOtherwise = 1;

std::atomic<bool> g_has_left{false};

bool (*g_check)() = nullptr;

// Exit handlers run in the reverse order of their registration, so `check` runs after the guard's
// handler.
void CheckAfterTheGuard(bool (*check)()) {
  g_check = check;
  std::atexit([] { std::_Exit(g_check() ? kAsExpected : kOtherwise); });
  GuardExit();
}

// The clock of a process that exits. It is never destroyed.
SimulatedClock& ExitClock() {
  static SimulatedClock& clock = *new SimulatedClock;
  return clock;
}

// Starts a thread that is inside libcurl while `stay` runs. Returns once it is inside.
template <typename Stay>
void StartThreadInsideLibcurl(Stay stay) {
  static std::atomic<bool> inside{false};
  ExitClock();
  std::thread([stay] {
    const LibcurlUse use;
    inside = true;
    stay();
  }).detach();
  while (!inside) std::this_thread::yield();
}

// Starts a thread that downloads from a server that sends no reply. The objects it uses are never
// destroyed.
struct SilentDownload {
  static SilentDownload& Start() {
    static SilentDownload& download = *new SilentDownload;
    return download;
  }

  TestServer server;
  std::atomic<bool> running{true};
  std::atomic<bool> has_ended{false};

 private:
  SilentDownload() {
    std::thread([this] {
      const Transfer transfer{server.Url("/silent/a"), nullptr, nullptr, running};
      const CurlHandle handle = MakeCurlHandle();
      SetUpTransfer(handle.get(), transfer);
      PerformTransfer(handle.get(), transfer);
      has_ended = true;
    }).detach();
  }
};

class ExitGuardTest : public testing::Test {
 protected:
  ExitGuardTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ExitGuardTest, LibcurlIsAvailableBeforeTheExit) {
  GuardExit();
  EXPECT_TRUE(LibcurlUse());
  EXPECT_FALSE(ProcessIsExiting());
}

// The thread leaves libcurl only once the exit waits for it.
TEST_F(ExitGuardTest, ExitWaitsForAThreadInsideLibcurl) {
  const auto exit_with_a_thread_inside = [] {
    CheckAfterTheGuard([] { return g_has_left.load(); });
    StartThreadInsideLibcurl([] { g_has_left = ExitClock().WaitForWaiters(1); });
    std::exit(kOtherwise);
  };
  EXPECT_EXIT(exit_with_a_thread_inside(), testing::ExitedWithCode(kAsExpected), "");
}

// The thread advances the time and does not leave libcurl. If a check fails, it ends the process
// with another exit status.
TEST_F(ExitGuardTest, ExitStopsWaitingForAThreadInsideLibcurlAfter1200Milliseconds) {
  const auto exit_with_a_stuck_thread = [] {
    GuardExit();
    StartThreadInsideLibcurl([] {
      SimulatedClock& clock = ExitClock();
      if (!clock.WaitForWaiters(1)) std::_Exit(kOtherwise);
      clock.Advance(Clock::Duration(1199));
      if (clock.Waiting() != 1) std::_Exit(kOtherwise);
      clock.Advance(Clock::Duration(1));
      for (;;) std::this_thread::yield();
    });
    std::exit(kAsExpected);
  };
  EXPECT_EXIT(exit_with_a_stuck_thread(), testing::ExitedWithCode(kAsExpected), "");
}

TEST_F(ExitGuardTest, NoThreadEntersLibcurlDuringTheExit) {
  const auto exit_and_enter = [] {
    CheckAfterTheGuard([] { return ProcessIsExiting() && !LibcurlUse(); });
    std::exit(kOtherwise);
  };
  EXPECT_EXIT(exit_and_enter(), testing::ExitedWithCode(kAsExpected), "");
}

// If the thread continued, it would report the end of its transfer to a player that may be
// destroyed already.
TEST_F(ExitGuardTest, ThreadOfATransferThatTheExitEndedDoesNotContinue) {
  const auto exit_during_a_download = [] {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    ExitClock();
    CheckAfterTheGuard([] {
      const SilentDownload& download = SilentDownload::Start();
      const auto stays = [&download] {
        while (ExitClock().Waiting() == 0 && !download.has_ended) std::this_thread::yield();
        return !download.has_ended;
      };
      for (int checks = 0; checks < 3 && stays(); ++checks) ExitClock().Advance(Clock::Duration(1));
      return stays();
    });
    if (!SilentDownload::Start().server.WaitForRequests(1)) std::_Exit(kOtherwise);
    std::exit(kOtherwise);
  };
  EXPECT_EXIT(exit_during_a_download(), testing::ExitedWithCode(kAsExpected), "");
}

}  // namespace
}  // namespace stream
