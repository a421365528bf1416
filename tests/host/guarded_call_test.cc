#include "host/shared/guarded_call.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace host {
namespace {

class GuardedCallTest : public testing::Test {
 protected:
  GuardedCallTest() { ReportNextFailure(); }
};

TEST_F(GuardedCallTest, CallWithoutAnExceptionRunsAndNothingIsReported) {
  int runs = 0;
  testing::internal::CaptureStderr();
  EXPECT_TRUE(GuardedCall([&] { ++runs; }));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(runs, 1);
}

TEST_F(GuardedCallTest, FirstExceptionIsReportedInOneLineAndTheNextIsNot) {
  testing::internal::CaptureStderr();
  EXPECT_FALSE(GuardedCall([] { throw std::runtime_error("the disk is full"); }));
  EXPECT_FALSE(GuardedCall([] { throw std::bad_alloc(); }));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "a call from the library failed: the disk is full\n");
}

TEST_F(GuardedCallTest, ExceptionOfAnotherTypeIsReportedToo) {
  testing::internal::CaptureStderr();
  EXPECT_FALSE(GuardedCall([] { throw 1; }));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "a call from the library failed: no reason given\n");
}

}  // namespace
}  // namespace host
