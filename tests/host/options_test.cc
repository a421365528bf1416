#include "host/console/options.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <vector>

namespace host {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

ParsedCommandLine Parse(const std::vector<const char*>& arguments) {
  std::vector<const char*> line = {"stream_host"};
  for (const char* argument : arguments) line.push_back(argument);
  return ParseCommandLine(static_cast<int>(line.size()), line.data());
}

void ExpectRefused(const std::vector<const char*>& arguments, const std::string& why) {
  const ParsedCommandLine parsed = Parse(arguments);
  EXPECT_FALSE(parsed.options.has_value()) << why;
  EXPECT_EQ(parsed.exit_status, 2) << why;
  EXPECT_THAT(parsed.text, HasSubstr(why));
  EXPECT_EQ(parsed.text.find('\n'), std::string::npos) << parsed.text;
}

TEST(OptionsTest, AddressAloneGivesTheDefaults) {
  const ParsedCommandLine parsed = Parse({"http://h/a.ts"});
  ASSERT_TRUE(parsed.options.has_value());
  EXPECT_EQ(parsed.options->address, "http://h/a.ts");
  EXPECT_FALSE(parsed.options->start_seconds.has_value());
  EXPECT_EQ(parsed.options->dump_directory, "");
  EXPECT_EQ(parsed.options->report_file, "");
  EXPECT_EQ(parsed.options->idle_exit_seconds, 3);
  EXPECT_FALSE(parsed.options->stop_after_seconds.has_value());
  EXPECT_THAT(parsed.options->expected_frames, IsEmpty());
  EXPECT_EQ(parsed.options->expected_line, "");
  EXPECT_EQ(parsed.options->repeat, 0);
  EXPECT_FALSE(parsed.options->json);
  EXPECT_FALSE(parsed.options->quiet);
}

TEST(OptionsTest, EveryOptionIsParsed) {
  const ParsedCommandLine parsed =
      Parse({"a", "--start", "1.5", "--dump", "d", "--report", "r", "--idle-exit", "0.25",
             "--stop-after", "0", "--expect-frames", "300", "--expect-line", "PLAY:MP4 ",
             "--repeat", "2", "--json", "--quiet"});
  ASSERT_TRUE(parsed.options.has_value()) << parsed.text;
  EXPECT_EQ(parsed.options->start_seconds, 1.5);
  EXPECT_EQ(parsed.options->dump_directory, "d");
  EXPECT_EQ(parsed.options->report_file, "r");
  EXPECT_EQ(parsed.options->idle_exit_seconds, 0.25);
  EXPECT_EQ(parsed.options->stop_after_seconds, 0);
  EXPECT_THAT(parsed.options->expected_frames, ElementsAre(300));
  EXPECT_EQ(parsed.options->expected_line, "PLAY:MP4 ");
  EXPECT_EQ(parsed.options->repeat, 2);
  EXPECT_TRUE(parsed.options->json);
  EXPECT_TRUE(parsed.options->quiet);
}

TEST(OptionsTest, ExpectedFramesMayBeACountForEachRun) {
  const ParsedCommandLine parsed = Parse({"--expect-frames", "300,1,18446744073709551615", "a"});
  ASSERT_TRUE(parsed.options.has_value()) << parsed.text;
  EXPECT_EQ(parsed.options->address, "a");
  EXPECT_THAT(parsed.options->expected_frames, ElementsAre(300, 1, UINT64_MAX));
}

TEST(OptionsTest, OptionsMayPrecedeTheAddress) {
  const ParsedCommandLine parsed = Parse({"--json", "--start=0", "a"});
  ASSERT_TRUE(parsed.options.has_value()) << parsed.text;
  EXPECT_EQ(parsed.options->address, "a");
  EXPECT_EQ(parsed.options->start_seconds, 0);
}

TEST(OptionsTest, HelpListsAllOptionsAndExitsWithZero) {
  const ParsedCommandLine parsed = Parse({"--help"});
  EXPECT_FALSE(parsed.options.has_value());
  EXPECT_EQ(parsed.exit_status, 0);
  for (const char* option : {"ADDRESS", "--start SECONDS", "--dump DIR", "--report FILE",
                             "--idle-exit SECONDS", "--stop-after SECONDS", "--expect-frames N",
                             "--expect-line TEXT", "--repeat N", "--json", "--quiet"}) {
    EXPECT_THAT(parsed.text, HasSubstr(option));
  }
}

TEST(OptionsTest, NoAddressIsRefused) {
  ExpectRefused({}, "ADDRESS is required");
  ExpectRefused({""}, "ADDRESS: must not be empty");
}

TEST(OptionsTest, SecondAddressIsRefused) { ExpectRefused({"a", "b"}, "not expected: b"); }

TEST(OptionsTest, UnknownOptionIsRefused) { ExpectRefused({"a", "--loud"}, "--loud"); }

TEST(OptionsTest, MissingValueIsRefused) {
  for (const char* option : {"--start", "--dump", "--report", "--idle-exit", "--stop-after",
                             "--expect-frames", "--expect-line", "--repeat"}) {
    ExpectRefused({"a", option}, option);
  }
}

TEST(OptionsTest, SecondsThatAreNoNumberAreRefused) {
  for (const char* option : {"--start", "--idle-exit", "--stop-after"}) {
    for (const char* value : {"x", "", "5x", "nan", "inf", "1e400"}) {
      ExpectRefused({"a", option, value}, std::string(option) + ": '" + value + "' is not");
    }
  }
}

TEST(OptionsTest, NegativeSecondsAreRefused) {
  ExpectRefused({"a", "--start", "-0.1"}, "--start: must not be negative");
  ExpectRefused({"a", "--stop-after=-1"}, "--stop-after: must not be negative");
  ExpectRefused({"a", "--idle-exit", "-1"}, "--idle-exit: must be more than 0");
}

TEST(OptionsTest, IdleExitOfZeroIsRefused) {
  ExpectRefused({"a", "--idle-exit", "0"}, "--idle-exit: must be more than 0");
}

TEST(OptionsTest, TooManySecondsAreRefused) {
  ExpectRefused({"a", "--start", "1e10"}, "--start: must not be more than 1000000000");
}

TEST(OptionsTest, RepeatThatIsNoCountIsRefused) {
  for (const char* value : {"x", "", "1.5", "99999999999"}) {
    ExpectRefused({"a", "--repeat", value}, "--repeat: '");
  }
  ExpectRefused({"a", "--repeat", "-1"}, "--repeat: must not be negative");
  ExpectRefused({"a", "--repeat", "1000001"}, "--repeat: must not be more than 1000000");
}

TEST(OptionsTest, ExpectedFramesThatAreNoCountsAreRefused) {
  for (const char* value : {"0", "3,0", "x", "", "1.5", "-1", "+1", " 1", "1,", ",1", "1,,2", "1,x",
                            "18446744073709551616"}) {
    ExpectRefused({"a", "--expect-frames", value},
                  std::string("--expect-frames: '") + value + "' is not a whole number");
  }
}

TEST(OptionsTest, EmptyExpectedLineIsRefused) {
  ExpectRefused({"a", "--expect-line", ""}, "--expect-line: must not be empty");
}

TEST(OptionsTest, EmptyDumpDirectoryIsRefused) {
  ExpectRefused({"a", "--dump", ""}, "--dump: must not be empty");
  ExpectRefused({"a", "--report", ""}, "--report: must not be empty");
}

TEST(OptionsTest, LineBreakInAValueDoesNotBreakTheErrorLine) {
  ExpectRefused({"a", "--start", "x\ny"}, "'x\\ny'");
}

}  // namespace
}  // namespace host
