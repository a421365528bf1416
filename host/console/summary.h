// What stream_host prints at the end: the runs, their totals, and the exit status with its reason.
#ifndef HOST_CONSOLE_SUMMARY_H_
#define HOST_CONSOLE_SUMMARY_H_

#include <optional>
#include <string>
#include <vector>

#include "options.h"
#include "play_run.h"

namespace host {

struct Summary {
  Options options;
  std::vector<RunReport> runs;  // at least one
  double elapsed_ms = 0;
  std::optional<bool> dump_complete;   // nullopt without a dump
  std::optional<bool> report_written;  // nullopt without a report
};

PlayTotals SumOf(const std::vector<RunReport>& runs);

// Of the first run in which a frame was received.
std::optional<double> TimeToFirstFrame(const std::vector<RunReport>& runs);

ExitStatus ExitStatusOf(const Summary& summary);

// One line: the exit status and its reason.
std::string ExitLine(const Summary& summary);

// The lines of the summary, without the exit line.
std::vector<std::string> SummaryLines(const Summary& summary);

// The summary as one JSON object on one line of ASCII. Invalid UTF-8 becomes replacement
// characters.
std::string SummaryJson(const Summary& summary);

}  // namespace host

#endif  // HOST_CONSOLE_SUMMARY_H_
