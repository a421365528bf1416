// The options that every transfer sets in libcurl.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>

#include "common/http_transfer.h"
#include "tests/support/curl_options.h"

namespace stream {
namespace {

std::size_t AcceptAll(char* /*bytes*/, std::size_t size, std::size_t count, void* /*user*/) {
  return size * count;
}

class TransferOptionsTest : public testing::Test {
 protected:
  const std::atomic<bool> running_{true};
  const Transfer transfer_{"http://host/a.ts", GuardedCallback<AcceptAll>, nullptr, running_};
  const CurlHandle handle_ = SetUpDownload(transfer_, 0);
};

TEST_F(TransferOptionsTest, ConnectTimeoutIsThreeSeconds) {
  EXPECT_EQ(CurlNumbers(handle_.get()).at(CURLOPT_CONNECTTIMEOUT), 3);
}

// Transfers run on worker threads of a host that may use signals itself.
TEST_F(TransferOptionsTest, NoSignalsAreUsed) {
  EXPECT_EQ(CurlNumbers(handle_.get()).at(CURLOPT_NOSIGNAL), 1);
}

TEST_F(TransferOptionsTest, RedirectsAreFollowed) {
  EXPECT_EQ(CurlNumbers(handle_.get()).at(CURLOPT_FOLLOWLOCATION), 1);
}

TEST_F(TransferOptionsTest, ProgressCallbackIsEnabledSoThatAStopReachesASilentTransfer) {
  EXPECT_EQ(CurlNumbers(handle_.get()).at(CURLOPT_NOPROGRESS), 0);
}

TEST_F(TransferOptionsTest, StopDoesNotWaitForANameServer) {
  EXPECT_EQ(CurlNumbers(handle_.get()).at(CURLOPT_QUICK_EXIT), 1);
}

}  // namespace
}  // namespace stream
