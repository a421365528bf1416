// The main function of the test programs that are linked with the component. It resets the
// component before each test, so that the order of the tests does not matter.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/component_state.h"

using namespace stream;

namespace {

class ResetBeforeEachTest final : public testing::EmptyTestEventListener {
 public:
  void OnTestStart(const testing::TestInfo& /*test*/) override { ResetComponent(); }
};

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  // Threads of earlier tests may still exist, so a plain fork is not safe.
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  testing::UnitTest::GetInstance()->listeners().Append(new ResetBeforeEachTest);
  return RUN_ALL_TESTS();
}
