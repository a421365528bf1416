#include "host/player/player_options.h"

#include <gmock/gmock.h>

#include <vector>

namespace player {
namespace {

using testing::HasSubstr;

ParsedPlayerOptions Parse(const std::vector<const char*>& arguments) {
  std::vector<const char*> line = {"stream_player"};
  line.insert(line.end(), arguments.begin(), arguments.end());
  return ParsePlayerOptions(static_cast<int>(line.size()), line.data());
}

TEST(PlayerOptionsTest, AddressAloneGivesTheDefaults) {
  const ParsedPlayerOptions parsed = Parse({"http://h/a.ts"});
  ASSERT_TRUE(parsed.options.has_value());
  EXPECT_EQ(parsed.options->address, "http://h/a.ts");
  EXPECT_FALSE(parsed.options->start_seconds.has_value());
  EXPECT_EQ(parsed.options->report_file, "");
  EXPECT_EQ(parsed.options->sync_log_file, "");
  EXPECT_EQ(parsed.options->idle_seconds, 10);
  EXPECT_FALSE(parsed.options->exit_at_end);
}

TEST(PlayerOptionsTest, EveryOptionIsParsed) {
  const ParsedPlayerOptions parsed = Parse({"a", "--start", "7.5", "--report", "r.html",
                                            "--sync-log", "s.csv", "--idle", "1", "--exit"});
  ASSERT_TRUE(parsed.options.has_value());
  EXPECT_EQ(parsed.options->start_seconds, 7.5);
  EXPECT_EQ(parsed.options->report_file, "r.html");
  EXPECT_EQ(parsed.options->sync_log_file, "s.csv");
  EXPECT_EQ(parsed.options->idle_seconds, 1);
  EXPECT_TRUE(parsed.options->exit_at_end);
}

TEST(PlayerOptionsTest, WrongUsageIsOneLine) {
  for (const std::vector<const char*>& wrong :
       std::vector<std::vector<const char*>>{{},
                                             {""},
                                             {"a", "--start", "-1"},
                                             {"a", "--start", "x"},
                                             {"a", "--idle", "0"},
                                             {"a", "--sync-log", ""},
                                             {"a", "b"}}) {
    const ParsedPlayerOptions parsed = Parse(wrong);
    EXPECT_FALSE(parsed.options.has_value());
    EXPECT_EQ(parsed.exit_status, kExitUsage);
    EXPECT_THAT(parsed.text, HasSubstr("stream_player --help"));
    EXPECT_EQ(parsed.text.find('\n'), std::string::npos) << parsed.text;
  }
}

TEST(PlayerOptionsTest, HelpListsTheKeys) {
  const ParsedPlayerOptions parsed = Parse({"--help"});
  EXPECT_FALSE(parsed.options.has_value());
  EXPECT_EQ(parsed.exit_status, 0);
  EXPECT_THAT(parsed.text, HasSubstr("full screen"));
}

}  // namespace
}  // namespace player
