#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>

#include "common/temp_files.h"
#include "platform/files.h"
#include "platform/local_time.h"
#include "platform/paths.h"

namespace stream {
namespace {

TEST(PlatformPosixTest, TextHasNoCodePageAndIsUnchanged) {
  EXPECT_EQ(AnsiToUtf8("/tmp/\xC3\xA9\xFF.mp4"), "/tmp/\xC3\xA9\xFF.mp4");
}

TEST(PlatformPosixTest, WidePathKeepsEveryByte) {
  const std::string narrow = platform::ModuleFileName();
  const std::wstring wide = platform::ModuleFileNameWide();
  EXPECT_EQ(std::string(wide.begin(), wide.end()), narrow);
}

// Sets the time zone of the test's process.
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

// --- The user's cache ---

class UserCacheTest : public testing::Test {
 protected:
  // Sets the environment of the test's process.
  static std::string CacheOf(const char* cache, const char* home) {
    Set("XDG_CACHE_HOME", cache);
    Set("HOME", home);
    return platform::UserCacheDirectory();
  }

 private:
  static void Set(const char* name, const char* value) {
    if (value == nullptr) {
      unsetenv(name);  // NOLINT(concurrency-mt-unsafe): no other thread runs
    } else {
      setenv(name, value, 1);  // NOLINT(concurrency-mt-unsafe)
    }
  }
};

TEST_F(UserCacheTest, CacheVariableHasPriority) {
  EXPECT_EQ(CacheOf("/fast/cache", "/home/u"), "/fast/cache/");
  EXPECT_EQ(platform::UserCacheDirectoryWide(), L"/fast/cache/");
}

TEST_F(UserCacheTest, HomeIsUsedIfTheVariableIsUnsetOrEmptyOrRelative) {
  for (const char* const cache : {static_cast<const char*>(nullptr), "", "cache", "./cache"}) {
    EXPECT_EQ(CacheOf(cache, "/home/u"), "/home/u/.cache/");
  }
}

TEST_F(UserCacheTest, NoCacheWithoutAHome) {
  EXPECT_EQ(CacheOf(nullptr, nullptr), "");
  EXPECT_EQ(CacheOf("", ""), "");
  EXPECT_EQ(CacheOf("cache", "u"), "");
}

TEST(PlatformPosixTest, PrivateDirectoryIsAccessibleToItsUserOnly) {
  const std::filesystem::path path = std::filesystem::current_path() / "private";
  std::filesystem::remove(path);
  EXPECT_TRUE(platform::MakePrivateDirectory(path.wstring()));
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms::owner_all);
  EXPECT_FALSE(platform::MakePrivateDirectory(path.wstring())) << "it exists";
  platform::RemoveEmptyDirectory(path.wstring());
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(PlatformPosixTest, ExistingFileThatIsNotRegularIsSpecial) {
  const std::filesystem::path directory = testing::TempDir() + "special_files";
  std::filesystem::remove_all(directory);
  std::filesystem::create_directory(directory);
  const std::string file = directory / "file";
  const std::string fifo = directory / "fifo";
  std::ofstream(file) << "bytes";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  std::filesystem::create_symlink(file, directory / "link to file");
  std::filesystem::create_symlink(fifo, directory / "link to fifo");
  EXPECT_FALSE(platform::IsSpecialFile(file));
  EXPECT_FALSE(platform::IsSpecialFile(directory / "link to file"));
  EXPECT_FALSE(platform::IsSpecialFile(directory / "missing"));
  EXPECT_FALSE(platform::IsSpecialFile(""));
  EXPECT_TRUE(platform::IsSpecialFile(fifo));
  EXPECT_TRUE(platform::IsSpecialFile(directory / "link to fifo"));
  EXPECT_TRUE(platform::IsSpecialFile(directory));
  EXPECT_TRUE(platform::IsSpecialFile("/dev/null"));
  std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace stream
