#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
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

// Sets the time zone of this process, which is the test's own.
std::tm LocalTimeIn(const char* zone, std::time_t time) {
  setenv("TZ", zone, 1);  // NOLINT(concurrency-mt-unsafe): no other thread runs
  tzset();
  return platform::LocalTime(time);
}

TEST(PlatformPosixTest, LocalTimeIsThatOfTheTimeZone) {
  const std::tm east = LocalTimeIn("EAST-8", 1'704'067'199);  // 2023-12-31 23:59:59 UTC
  EXPECT_EQ(east.tm_year, 124);
  EXPECT_EQ(east.tm_mon, 0);
  EXPECT_EQ(east.tm_mday, 1);
  EXPECT_EQ(east.tm_hour, 7);
  EXPECT_EQ(east.tm_min, 59);
  EXPECT_EQ(east.tm_sec, 59);
  EXPECT_EQ(LocalTimeIn("UTC0", 1'704'067'199).tm_mday, 31);
}

}  // namespace
