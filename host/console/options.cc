#include "options.h"

#include <CLI/CLI.hpp>
#include <cmath>

#include "text.h"

namespace host {
namespace {

constexpr const char* kDescription =
    "Plays ADDRESS (http, https or file://) through the stream_downloader library and tells what "
    "came.";

constexpr const char* kFooter =
    R"(A run ends when nothing has come for --idle-exit seconds, at --stop-after, or at
Ctrl-C, which also leaves out the repeats. EndDownload is always called and timed.

--start first plays until a frame came, since a position can only be given to a
pipeline that exists. The dump and the counts hold what came after that. Repeats
are given the position again.

--dump writes video.es, audio.es, frames.csv and events.csv. The runs of --repeat
are appended to each other; times count from the start of the program.

Exit status: 0 when at least one frame came, 1 when none did, 2 for wrong usage.)";

// Thirty years: far beyond any stream, and a float still holds it.
constexpr double kMaxSeconds = 1e9;
constexpr int kMaxRepeat = 1'000'000;  // keeps the reports of the runs within memory

std::string CheckSeconds(const std::string& text, bool zero_allowed) {
  double seconds = 0;
  if (!CLI::detail::lexical_cast(text, seconds) || !std::isfinite(seconds)) {
    return "'" + text + "' is not a number of seconds";
  }
  if (seconds < 0 || (seconds == 0 && !zero_allowed)) {
    return zero_allowed ? "must not be negative" : "must be more than 0";
  }
  return seconds > kMaxSeconds ? "must not be more than " + FixedText(kMaxSeconds, 0) : "";
}

std::string CheckRepeat(const std::string& text) {
  int count = 0;
  if (!CLI::detail::lexical_cast(text, count)) return "'" + text + "' is not a whole number";
  if (count < 0) return "must not be negative";
  return count > kMaxRepeat ? "must not be more than " + std::to_string(kMaxRepeat) : "";
}

const CLI::Validator kSecondsFromZero([](std::string& text) { return CheckSeconds(text, true); },
                                      "", "seconds");
const CLI::Validator kSecondsAboveZero([](std::string& text) { return CheckSeconds(text, false); },
                                       "", "seconds above zero");
const CLI::Validator kRepeat([](std::string& text) { return CheckRepeat(text); }, "", "repeat");
const CLI::Validator kNotEmpty(
    [](std::string& text) { return std::string(text.empty() ? "must not be empty" : ""); }, "",
    "not empty");

void Describe(CLI::App& app, Options& options) {
  app.footer(kFooter);
  app.add_option("ADDRESS", options.address, "what to play")
      ->required()
      ->check(kNotEmpty)
      ->type_name("");
  app.add_option("--start", options.start_seconds, "seek to this position")
      ->check(kSecondsFromZero)
      ->type_name("SECONDS");
  app.add_option("--dump", options.dump_directory, "write all that comes into this directory")
      ->check(kNotEmpty)
      ->type_name("DIR");
  app.add_option("--idle-exit", options.idle_exit_seconds,
                 "end a run when nothing came for so long (default 3)")
      ->check(kSecondsAboveZero)
      ->type_name("SECONDS");
  app.add_option("--stop-after", options.stop_after_seconds,
                 "end each run so long after its beginning")
      ->check(kSecondsFromZero)
      ->type_name("SECONDS");
  app.add_option("--repeat", options.repeat, "start the same address again N times")
      ->check(kRepeat)
      ->type_name("N");
  app.add_flag("--json", options.json, "print the summary as one JSON object on the last line");
  app.add_flag("--quiet", options.quiet, "print the summary only");
}

std::string WithoutLineBreaksAtEnd(const std::string& text) {
  return text.substr(0, text.find_last_not_of('\n') + 1);
}

ParsedCommandLine Refused(const CLI::ParseError& error) {
  return {std::nullopt,
          "stream_host: " + PrintableText(error.what()) + " (stream_host --help tells the usage)",
          kExitUsage};
}

}  // namespace

ParsedCommandLine ParseCommandLine(int argc, const char* const* argv) {
  Options options;
  CLI::App app(kDescription, "stream_host");
  Describe(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return {std::nullopt, WithoutLineBreaksAtEnd(app.help()), 0};
  } catch (const CLI::ParseError& error) {
    return Refused(error);
  }
  return {options, "", 0};
}

}  // namespace host
