// The command line of stream_player.
#ifndef HOST_PLAYER_PLAYER_OPTIONS_H_
#define HOST_PLAYER_PLAYER_OPTIONS_H_

#include <optional>
#include <string>

namespace player {

enum ExitStatus : int {
  kExitPlayed = 0,   // at least one frame came
  kExitNothing = 1,  // none did
  kExitUsage = 2,    // wrong usage, a report that cannot be begun included
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

// Either options, or a text to print and a status to exit with: the help (0), or one line that says
// what is wrong (kExitUsage). The text ends without a line break.
struct ParsedPlayerOptions {
  std::optional<PlayerOptions> options;
  std::string text;
  int exit_status = 0;
};

ParsedPlayerOptions ParsePlayerOptions(int argc, const char* const* argv);

}  // namespace player

#endif  // HOST_PLAYER_PLAYER_OPTIONS_H_
