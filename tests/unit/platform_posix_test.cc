#include <gtest/gtest.h>

#include <string>

#include "common/platform.h"
#include "common/temp_files.h"

namespace {

TEST(PlatformPosixTest, TextHasNoCodePageAndComesBackAsItIs) {
  EXPECT_EQ(AnsiToUtf8("/tmp/\xC3\xA9\xFF.mp4"), "/tmp/\xC3\xA9\xFF.mp4");
}

TEST(PlatformPosixTest, WidePathKeepsEveryByte) {
  const std::string narrow = platform::ModuleFileName();
  const std::wstring wide = platform::ModuleFileNameWide();
  EXPECT_EQ(std::string(wide.begin(), wide.end()), narrow);
}

}  // namespace
