#include "platform/host/argument_path.h"

#include <gtest/gtest.h>

namespace host {
namespace {

TEST(ArgumentPathTest, AsciiArgumentIsThePathWithThisText) {
  EXPECT_EQ(PathOfArgument("dumps/of today"), std::filesystem::path("dumps") / "of today");
}

}  // namespace
}  // namespace host
