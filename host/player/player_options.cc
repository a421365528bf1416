#include "player_options.h"

#include <CLI/CLI.hpp>

#include "option_checks.h"

namespace player {
namespace {

constexpr const char* kDescription =
    "Plays ADDRESS (http, https or file://) in a window, with picture and sound, through the "
    "stream_downloader library.";

constexpr const char* kFooter =
    R"(Keys: space pauses and goes on, left and right move ten seconds, f is full screen,
q and Escape end. At the end of the stream the last picture stays until then.
Moving and --start leave FLV as it is, since it always plays from its beginning.
HLS goes to the segment in which the time lies, and shows pictures from the
second key picture on.

--report writes one HTML page that needs no network. It holds what came since the
last move.

The last line that is printed counts what was received, decoded and shown, and
tells how far picture and sound were apart at most.

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
