#include "common/http_transfer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <ctime>
#include <functional>
#include <string>

#include "common/clock.h"
#include "tests/support/test_server.h"

namespace stream {
namespace {

TEST(RangeTest, OffsetsBecomeOpenEndedRanges) {
  EXPECT_EQ(RangeFrom(0), "0-");
  EXPECT_EQ(RangeFrom(1'048'576), "1048576-");
}

TEST(RangeTest, OffsetPast2GiBIsWrittenAsASigned32BitNumber) {
  EXPECT_EQ(RangeFrom(0x7FFFFFFF), "2147483647-");
  EXPECT_EQ(RangeFrom(0x80000000), "-2147483648-");
}

TEST(HtmlPageTest, OnlyTheLowerCaseTagAtTheStartCounts) {
  EXPECT_TRUE(IsHtmlPage("<html>", 6));
  EXPECT_TRUE(IsHtmlPage("<html><body>", 12));
  EXPECT_FALSE(IsHtmlPage("<HTML>", 6));
  EXPECT_FALSE(IsHtmlPage(" <html>", 7));
  EXPECT_FALSE(IsHtmlPage("<html lang=en>", 14));
  EXPECT_FALSE(IsHtmlPage("<html>", 5));  // only five bytes received
  EXPECT_FALSE(IsHtmlPage(nullptr, 0));
}

// --- The end of a transfer after its run flag is cleared ---

// The system's clock, which a watched transfer reads in each progress callback that does not abort
// it. The first of these reads clears the run flag. From the third read after that on, a day seems
// to have passed, so a transfer that ignores its flag ends by its silence limit.
class ClearingClock final : public Clock {
 public:
  explicit ClearingClock(std::atomic<bool>& running) : running_(running) { UseClock(this); }
  ~ClearingClock() { UseClock(nullptr); }
  ClearingClock(const ClearingClock&) = delete;
  ClearingClock& operator=(const ClearingClock&) = delete;

  TimePoint Now() override {
    constexpr int kBeforeTheTransfer = 1;
    if (reads_ == kBeforeTheTransfer) {
      running_ = false;
    } else if (reads_ > kBeforeTheTransfer) {
      ++reads_after_the_stop_;
    }
    ++reads_;
    const auto elapsed = std::chrono::hours(reads_after_the_stop_ > 2 ? 24 : 0);
    return std::chrono::steady_clock::now() + elapsed;
  }
  std::time_t WallTime() override { return 0; }
  void Sleep(Duration /*duration*/) override {}
  bool WaitFor(std::condition_variable& /*condition*/, Mutex& /*mutex*/, Duration /*limit*/,
               const std::function<bool()>& met) override {
    return met();
  }
  void Wait(std::condition_variable& condition, Mutex& mutex,
            const std::function<bool()>& met) override {
    WaitOn(condition, mutex, met);
  }

  int Reads() const { return reads_; }
  int ReadsAfterTheStop() const { return reads_after_the_stop_; }

 private:
  std::atomic<bool>& running_;
  int reads_ = 0;
  int reads_after_the_stop_ = 0;
};

// A write callback that does not check the run flag. The fourth chunk clears the flag.
struct FlagIgnoringReceiver {
  static constexpr std::size_t kLargestChunk = CURL_MAX_WRITE_SIZE;
  // Far more than libcurl receives between two progress callbacks. A transfer that ignores its flag
  // is ended at this limit.
  static constexpr std::size_t kMuch = 64 << 20;

  std::atomic<bool> running{true};
  int chunks = 0;
  std::size_t bytes_after_the_stop = 0;

  static FlagIgnoringReceiver* current;

  static std::size_t OnBytes(char* /*bytes*/, std::size_t size, std::size_t count, void* /*user*/) {
    FlagIgnoringReceiver& self = *current;
    if (!self.running.load()) self.bytes_after_the_stop += size * count;
    if (++self.chunks == 4) self.running = false;
    return self.bytes_after_the_stop > kMuch ? 0 : size * count;
  }
};
FlagIgnoringReceiver* FlagIgnoringReceiver::current = nullptr;

class TransferStopTest : public testing::Test {
 protected:
  static std::size_t AcceptAll(char* /*bytes*/, std::size_t size, std::size_t count,
                               void* /*user*/) {
    return size * count;
  }

  static CURLcode Perform(const Transfer& transfer) {
    const CurlHandle handle = MakeCurlHandle();
    SetUpTransfer(handle.get(), transfer);
    return PerformTransfer(handle.get(), transfer);
  }

  TestServer server_;
};

TEST_F(TransferStopTest, WatchedTransferEndsAtTheNextProgressCallbackThoughTheServerIsSilent) {
  std::atomic<bool> running{true};
  ClearingClock clock(running);
  const Transfer transfer{server_.Url("/silent/a"), AcceptAll, nullptr, running,
                          std::chrono::hours(1)};
  EXPECT_EQ(Perform(transfer), CURLE_ABORTED_BY_CALLBACK);
  EXPECT_EQ(clock.Reads(), 2) << "one before the transfer, one in a progress callback";
  EXPECT_EQ(clock.ReadsAfterTheStop(), 0);
}

TEST_F(TransferStopTest, EndlessTransferEndsThoughItsCallbackAcceptsEverything) {
  server_.Serve(std::string(1 << 20, 'x'));
  FlagIgnoringReceiver receiver;
  FlagIgnoringReceiver::current = &receiver;
  const Transfer transfer{server_.Url("/endless/a"), FlagIgnoringReceiver::OnBytes, nullptr,
                          receiver.running};
  EXPECT_EQ(Perform(transfer), CURLE_ABORTED_BY_CALLBACK);
  EXPECT_LT(receiver.bytes_after_the_stop, FlagIgnoringReceiver::kMuch);
}

TEST_F(TransferStopTest, TransferStoppedInMidBodyEndsThoughTheServerStalls) {
  server_.Serve(std::string(8 * FlagIgnoringReceiver::kLargestChunk, 'x'));
  FlagIgnoringReceiver receiver;
  FlagIgnoringReceiver::current = &receiver;
  const Transfer transfer{server_.Url("/stall/a"), FlagIgnoringReceiver::OnBytes, nullptr,
                          receiver.running};
  EXPECT_EQ(Perform(transfer), CURLE_ABORTED_BY_CALLBACK);
  EXPECT_GE(receiver.chunks, 4);
}

TEST_F(TransferStopTest, TransferStoppedBeforeItBeginsEndsThoughTheServerIsSilent) {
  const std::atomic<bool> stopped{false};
  EXPECT_EQ(Perform({server_.Url("/silent/a"), AcceptAll, nullptr, stopped}),
            CURLE_ABORTED_BY_CALLBACK);
}

}  // namespace
}  // namespace stream
