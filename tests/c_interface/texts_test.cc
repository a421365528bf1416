// The texts of results, and the version.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>

#include "c_interface/stream_downloader_c.h"

namespace {

constexpr int kLast = SD_NOTHING_STARTED;
constexpr int kFirst = SD_ERROR_OTHER;

TEST(CInterfaceResultTextTest, EveryValueHasItsOwnText) {
  std::set<std::string> texts;
  for (int result = kFirst; result <= kLast; ++result) texts.insert(sd_result_text(result));
  EXPECT_EQ(texts.size(), static_cast<std::size_t>(kLast - kFirst + 1));
  EXPECT_FALSE(texts.contains("unknown result"));
  EXPECT_FALSE(texts.contains(""));
}

TEST(CInterfaceResultTextTest, UnknownValueHasATextToo) {
  for (const int result : {kFirst - 1, kLast + 1, 4711, std::numeric_limits<int>::min(),
                           std::numeric_limits<int>::max()}) {
    EXPECT_STREQ(sd_result_text(result), "unknown result") << result;
  }
}

// Hosts are compiled with these numbers.
TEST(CInterfaceResultTextTest, ValuesAreFixed) {
  EXPECT_EQ(SD_OK, 0);
  EXPECT_EQ(SD_NOT_PLAYING, 1);
  EXPECT_EQ(SD_NOTHING_STARTED, 2);
  EXPECT_EQ(SD_ERROR_EMPTY_ADDRESS, -1);
  EXPECT_EQ(SD_ERROR_UNKNOWN_SCHEME, -2);
  EXPECT_EQ(SD_ERROR_NULL_DOWNLOADER, -3);
  EXPECT_EQ(SD_ERROR_NULL_ADDRESS, -4);
  EXPECT_EQ(SD_ERROR_NULL_CALLBACKS, -5);
  EXPECT_EQ(SD_ERROR_NULL_OUT, -6);
  EXPECT_EQ(SD_ERROR_CALLBACKS_SIZE, -7);
  EXPECT_EQ(SD_ERROR_IN_CALLBACK, -8);
  EXPECT_EQ(SD_ERROR_OUT_OF_MEMORY, -9);
  EXPECT_EQ(SD_ERROR_OTHER, -10);
  EXPECT_EQ(sizeof(sd_result), sizeof(int));
}

TEST(CInterfaceVersionTest, HeaderAndLibraryAgree) {
  EXPECT_STREQ(sd_version(), SD_VERSION);
  EXPECT_EQ(sd_version_number(), static_cast<std::uint32_t>(SD_VERSION_NUMBER));
}

TEST(CInterfaceVersionTest, NumberMatchesTheText) {
  int major = 0;
  int minor = 0;
  int patch = 0;
  ASSERT_EQ(std::sscanf(sd_version(), "%d.%d.%d", &major, &minor, &patch), 3);
  EXPECT_EQ(sd_version_number(),
            static_cast<std::uint32_t>(major * 1'000'000 + minor * 1'000 + patch));
}

}  // namespace
