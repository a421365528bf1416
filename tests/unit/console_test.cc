#include "common/console.h"

#include <gtest/gtest.h>

#include <string>

namespace stream {
namespace {

TEST(ConsoleTest, TextIsWrittenUnchanged) {
  testing::internal::CaptureStdout();
  ConsoleText("QUEUEED1:3");
  ConsoleText(std::string("\0%d\n", 4));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), std::string("QUEUEED1:3\0%d\n", 14));
}

TEST(ConsoleTest, LineEndsWithALineBreak) {
  testing::internal::CaptureStdout();
  ConsoleLine("m3u8 video clear.");
  ConsoleLine("");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "m3u8 video clear.\n\n");
}

}  // namespace
}  // namespace stream
