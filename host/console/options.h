// The command line of stream_host.
#ifndef HOST_CONSOLE_OPTIONS_H_
#define HOST_CONSOLE_OPTIONS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace host {

enum ExitStatus : int {
  kExitFrames = 0,    // at least one frame was received
  kExitNoFrames = 1,  // no frame was received
  kExitUsage = 2,     // wrong usage, including a dump directory or report that cannot be written
};

struct Options {
  std::string address;
  std::optional<double> start_seconds;
  std::string dump_directory;  // empty: no dump
  std::string report_file;     // empty: no report
  double idle_exit_seconds = 3;
  std::optional<double> stop_after_seconds;
  // Ends a run after this many frames, video and audio together. One count per run; the last count
  // also applies to all later runs. Empty: frames do not end a run.
  std::vector<std::uint64_t> expected_frames;
  std::string expected_line;  // a message or result beginning with this ends a run; empty: none
  int repeat = 0;             // number of runs after the first
  bool json = false;
  bool quiet = false;
};

// Either options, or a text to print and an exit status: the help (0), or one line that names the
// error (kExitUsage). The text has no trailing line break.
struct ParsedCommandLine {
  std::optional<Options> options;
  std::string text;
  int exit_status = 0;
};

ParsedCommandLine ParseCommandLine(int argc, const char* const* argv);

}  // namespace host

#endif  // HOST_CONSOLE_OPTIONS_H_
