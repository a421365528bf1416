// The command line of stream_host.
#ifndef HOST_CONSOLE_OPTIONS_H_
#define HOST_CONSOLE_OPTIONS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace host {

enum ExitStatus : int {
  kExitFrames = 0,    // at least one frame came
  kExitNoFrames = 1,  // none did
  kExitUsage = 2,     // wrong usage, a dump directory or a report that cannot be written included
};

struct Options {
  std::string address;
  std::optional<double> start_seconds;
  std::string dump_directory;  // empty: no dump
  std::string report_file;     // empty: no report
  double idle_exit_seconds = 3;
  std::optional<double> stop_after_seconds;
  // Frames that end a run, those of both kinds together: a count for each run, of which the last
  // one holds for all later runs too. Empty: a run does not end so.
  std::vector<std::uint64_t> expected_frames;
  std::string expected_line;  // how a message or result that ends a run begins; empty: none does
  int repeat = 0;             // runs after the first one
  bool json = false;
  bool quiet = false;
};

// Either options, or a text to print and a status to exit with: the help (0), or one line that says
// what is wrong (kExitUsage). The text ends without a line break.
struct ParsedCommandLine {
  std::optional<Options> options;
  std::string text;
  int exit_status = 0;
};

ParsedCommandLine ParseCommandLine(int argc, const char* const* argv);

}  // namespace host

#endif  // HOST_CONSOLE_OPTIONS_H_
