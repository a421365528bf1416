#include "options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <sstream>
#include <system_error>

#include "option_checks.h"

namespace host {
namespace {

constexpr const char* kDescription =
    "Plays ADDRESS (http, https or file://) through the stream_downloader library and reports what "
    "it receives.";

constexpr const char* kFooter =
    R"(A run ends when nothing was received for --idle-exit seconds, at --stop-after, or at
Ctrl-C, which also skips the repeats. EndDownload is always called and timed.

--expect-frames and --expect-line end a run as well, 0.2 seconds after so many frames,
video and audio together, or after such a line; what follows until then is received
and counted too. What is received before the seek of --start does not count. N may be
a list, a number for each run of --repeat: 300,301 expects 301 frames of all runs but
the first.

--start first plays until a frame is received, since a position can only be given to a
pipeline that exists. The dump and the counts hold what is received after that. Repeats
are given the position again.

--dump writes video.es, audio.es, frames.csv and events.csv. The runs of --repeat
are appended to each other; times count from the start of the program.

--report writes one HTML page that needs no network: what is odd, charts and tables.
It holds the last run of --repeat; its times count from the beginning of that run.

Exit status: 0 if at least one frame was received, 1 if none was, 2 for wrong usage.)";

constexpr int kMaxRepeat = 1'000'000;  // bounds the memory of the run reports

std::string CheckRepeat(const std::string& text) {
  int count = 0;
  if (!CLI::detail::lexical_cast(text, count)) return "'" + text + "' is not a whole number";
  if (count < 0) return "must not be negative";
  return count > kMaxRepeat ? "must not be more than " + std::to_string(kMaxRepeat) : "";
}

// Parses a list of counts such as "300,301". Returns nullopt if an item is not a whole number above
// 0.
std::optional<std::vector<std::uint64_t>> CountsOf(const std::string& text) {
  std::vector<std::uint64_t> counts;
  std::istringstream list(text + ',');
  for (std::string part; std::getline(list, part, ',');) {
    std::uint64_t count = 0;
    const char* const end = part.data() + part.size();
    const auto [parsed_to, error] = std::from_chars(part.data(), end, count);
    if (error != std::errc() || parsed_to != end || count == 0) return std::nullopt;
    counts.push_back(count);
  }
  return counts;
}

const CLI::Validator kCounts(
    [](std::string& text) {
      return CountsOf(text) ? std::string()
                            : "'" + text + "' is not a whole number above 0 or a list of them";
    },
    "", "counts");

const CLI::Validator kRepeat([](std::string& text) { return CheckRepeat(text); }, "", "repeat");

void Describe(CLI::App& app, Options& options) {
  app.footer(kFooter);
  app.add_option("ADDRESS", options.address, "what to play")
      ->required()
      ->check(NotEmpty())
      ->type_name("");
  app.add_option("--start", options.start_seconds, "seek to this position")
      ->check(SecondsFromZero())
      ->type_name("SECONDS");
  app.add_option("--dump", options.dump_directory,
                 "write everything that is received into this directory")
      ->check(NotEmpty())
      ->type_name("DIR");
  app.add_option("--report", options.report_file, "write a page with charts of the run")
      ->check(NotEmpty())
      ->type_name("FILE");
  app.add_option("--idle-exit", options.idle_exit_seconds,
                 "end a run when nothing was received for so long (default 3)")
      ->check(SecondsAboveZero())
      ->type_name("SECONDS");
  app.add_option("--stop-after", options.stop_after_seconds,
                 "end each run so long after its beginning")
      ->check(SecondsFromZero())
      ->type_name("SECONDS");
  app.add_option_function<std::string>(
         "--expect-frames",
         [&options](const std::string& text) { options.expected_frames = *CountsOf(text); },
         "end a run once it has received N frames")
      ->check(kCounts)
      ->type_name("N");
  app.add_option("--expect-line", options.expected_line,
                 "end a run once a message or result that begins with TEXT is received")
      ->check(NotEmpty())
      ->type_name("TEXT");
  app.add_option("--repeat", options.repeat, "start the same address again N times")
      ->check(kRepeat)
      ->type_name("N");
  app.add_flag("--json", options.json, "print the summary as one JSON object on the last line");
  app.add_flag("--quiet", options.quiet, "print the summary only");
}

}  // namespace

ParsedCommandLine ParseCommandLine(int argc, const char* const* argv) {
  Options options;
  CLI::App app(kDescription, "stream_host");
  Describe(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return {std::nullopt, HelpText(app), 0};
  } catch (const CLI::ParseError& error) {
    return {std::nullopt, RefusalText(error, "stream_host"), kExitUsage};
  }
  return {options, "", 0};
}

}  // namespace host
