// The command line of stream_player.
#ifndef HOST_PLAYER_PLAYER_OPTIONS_H_
#define HOST_PLAYER_PLAYER_OPTIONS_H_

#include <optional>
#include <string>

namespace player {

enum ExitStatus : int {
  kExitPlayed = 0,   // at least one frame was received
  kExitNothing = 1,  // no frame was received
  kExitUsage = 2,    // wrong usage, including a report or sync log that cannot be written
  kExitNoDisplay = 3,
};

struct PlayerOptions {
  std::string address;
  std::optional<double> start_seconds;
  std::string report_file;    // empty: no report
  std::string sync_log_file;  // empty: none
  double idle_seconds = 10;
  bool exit_at_end = false;
};

// Either options, or a text to print and an exit status: the help (0), or one line that names the
// error (kExitUsage). The text has no trailing line break.
struct ParsedPlayerOptions {
  std::optional<PlayerOptions> options;
  std::string text;
  int exit_status = 0;
};

ParsedPlayerOptions ParsePlayerOptions(int argc, const char* const* argv);

}  // namespace player

#endif  // HOST_PLAYER_PLAYER_OPTIONS_H_
