// Hosts that set a locale: numbers are written and read as in the C locale.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <locale>
#include <sstream>
#include <string>

#include "common/format_text.h"
#include "common/http_transfer.h"
#include "common/start_position.h"
#include "hls/m3u8_downloader.h"
#include "hls/playlist/m3u8_playlist.h"

namespace stream {
namespace {

constexpr char kGerman[] = "de_DE.UTF-8";

// Number formatting of C++ streams in a German locale.
class GermanNumbers final : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

// Creates a German locale in the test's directory and sets it for C, and an equivalent one for C++,
// until the end of the test.
class LocaleTest : public testing::Test {
 protected:
  void SetUp() override {
    const std::filesystem::path locales = std::filesystem::current_path() / "locales";
    std::filesystem::remove_all(locales);
    std::filesystem::create_directory(locales);
    const std::string made = (locales / kGerman).string();
    // NOLINTNEXTLINE(cert-env33-c,concurrency-mt-unsafe): the command is fixed, no thread runs
    ASSERT_EQ(std::system(("localedef -i de_DE -f UTF-8 '" + made + "'").c_str()), 0)
        << "the test needs localedef and the sources of locales";
    setenv("LOCPATH", locales.c_str(), 1);                // NOLINT(concurrency-mt-unsafe)
    ASSERT_NE(std::setlocale(LC_ALL, kGerman), nullptr);  // NOLINT(concurrency-mt-unsafe)
    std::locale::global(std::locale(std::locale::classic(), new GermanNumbers));
    ASSERT_EQ(FormatText("%.1f", 0.5), "0,5") << "the locale has no effect";
    std::ostringstream grouped;
    grouped << 1'234;
    ASSERT_EQ(grouped.str(), "1.234") << "the locale has no effect";
  }
  void TearDown() override {
    std::locale::global(std::locale::classic());
    std::setlocale(LC_ALL, "C");  // NOLINT(concurrency-mt-unsafe)
    unsetenv("LOCPATH");          // NOLINT(concurrency-mt-unsafe)
  }
};

TEST_F(LocaleTest, StartPositionLinesDoNotChange) {
  EXPECT_EQ(StartPositionLine("TS", 3725.5F, 2), "PLAY TS StartPostion:01:02:05.500 Q:0.002000s");
  EXPECT_EQ(StartPositionLine("MP4", 3725.5F, 1'234'567),
            "PLAY MP4 StartPostion:01:02:05.500 Q:1234.567000s");
  EXPECT_EQ(StartPositionLine("M3U8", 3725.5F), "PLAY M3U8 StartPostion:01:02:05.500");
}

TEST_F(LocaleTest, WholeNumbersAreNotGrouped) {
  EXPECT_EQ(RangeFrom(1'048'576), "1048576-");
  std::tm time{};
  time.tm_year = 126;
  time.tm_mday = 2;
  EXPECT_EQ(DateText(time),
            "2026\xC4\xEA"
            "1\xD4\xC2"
            "2\xC8\xD5 0:0:0");
}

TEST_F(LocaleTest, PlaylistNumbersAreReadAsInTheCLocale) {
  M3u8Header header;
  std::int64_t sequence = 0;
  M3u8Table entries;
  ASSERT_TRUE(ParseM3u8(header, "http://host/list.m3u8",
                        "#EXTM3U\n#EXT-X-MEDIA-SEQUENCE:1234\n#EXTINF:9.75,\na.ts\n", sequence,
                        entries));
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries.begin()->second.duration, 9.75F);
}

}  // namespace
}  // namespace stream
