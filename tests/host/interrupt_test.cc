#include "host/shared/interrupt.h"

#include <gtest/gtest.h>

#include <csignal>

namespace host {
namespace {

class InterruptTest : public testing::TestWithParam<int> {};

TEST_P(InterruptTest, SignalIsRecordedAndDoesNotEndTheProcess) {
  InstallInterruptHandlers();
  ASSERT_FALSE(Interrupted());
  ASSERT_EQ(std::raise(GetParam()), 0);
  EXPECT_TRUE(Interrupted());
}

INSTANTIATE_TEST_SUITE_P(Signals, InterruptTest, testing::Values(SIGINT, SIGTERM));

}  // namespace
}  // namespace host
