#include "player_options.h"

#include <CLI/CLI.hpp>

#include "option_checks.h"

namespace player {
namespace {

constexpr const char* kDescription =
    "Plays ADDRESS (http, https or file://) in a window, with picture and sound, through the "
    "stream_downloader library.";

constexpr const char* kFooter =
    R"(Keys: space pauses and resumes, left and right seek by ten seconds, f toggles
full screen, q and Escape quit. At the end of the stream the last picture stays
until then. FLV always plays from its beginning: it ignores seeks and --start. HLS
seeks to the segment that contains the position, and shows pictures from the second
key frame on.

--report writes one HTML page that needs no network. It covers what was received
since the last seek.

The last printed line counts what was received, decoded and shown, and reports how
far picture and sound were apart at most.

Exit status: 0 if at least one frame was received, 1 if none was, 2 for wrong usage,
3 when there is no display.)";

void Describe(CLI::App& app, PlayerOptions& options) {
  app.footer(kFooter);
  app.add_option("ADDRESS", options.address, "what to play")
      ->required()
      ->check(host::NotEmpty())
      ->type_name("");
  app.add_option("--start", options.start_seconds, "begin at this position")
      ->check(host::SecondsFromZero())
      ->type_name("SECONDS");
  app.add_option("--report", options.report_file, "write a page with charts of the run")
      ->check(host::NotEmpty())
      ->type_name("FILE");
  app.add_option("--sync-log", options.sync_log_file,
                 "write how far picture and sound were apart, picture by picture, as CSV")
      ->check(host::NotEmpty())
      ->type_name("FILE");
  app.add_option("--idle", options.idle_seconds,
                 "end when nothing was received for so long (default 10)")
      ->check(host::SecondsAboveZero())
      ->type_name("SECONDS");
  app.add_flag("--exit", options.exit_at_end, "end the program at the end of the stream");
}

}  // namespace

ParsedPlayerOptions ParsePlayerOptions(int argc, const char* const* argv) {
  PlayerOptions options;
  CLI::App app(kDescription, "stream_player");
  Describe(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return {std::nullopt, host::HelpText(app), 0};
  } catch (const CLI::ParseError& error) {
    return {std::nullopt, host::RefusalText(error, "stream_player"), kExitUsage};
  }
  return {options, "", 0};
}

}  // namespace player
