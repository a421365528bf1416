// stream_host: plays an address through the library and prints what it receives (see options.h).
#include <cstdio>
#include <exception>
#include <memory>
#include <string>

#include "argument_path.h"
#include "clock.h"
#include "dump.h"
#include "interrupt.h"
#include "library_downloader.h"
#include "options.h"
#include "play_run.h"
#include "report.h"
#include "screen.h"
#include "stats_player.h"
#include "summary.h"
#include "terminal.h"

namespace {

void PrintLine(std::FILE* file, const std::string& line) {
  std::fputs((line + '\n').c_str(), file);
}

// The output files of a run; either may be null.
struct Files {
  std::unique_ptr<host::Dump> dump;
  std::unique_ptr<host::Report> report;
};

host::Summary Play(const host::Options& options, host::Clock& clock, host::Screen& screen,
                   const Files& files) {
  host::StatsPlayer player(clock, screen, files.dump.get(), files.report.get());
  host::Summary summary;
  summary.options = options;
  {
    host::LibraryDownloader downloader(player);
    host::PlayRunner runner(options, {downloader, player, clock, screen, host::Interrupted});
    summary.runs = runner.PlayAll();
    summary.elapsed_ms = clock.NowMs();
  }  // the library has been destroyed and logs nothing more
  if (files.dump != nullptr) summary.dump_complete = files.dump->Close();
  if (files.report != nullptr) summary.report_written = files.report->Write(options.address);
  return summary;
}

void Print(const host::Summary& summary, host::Screen& screen) {
  if (!summary.dump_complete.value_or(true)) {
    PrintLine(stderr, "stream_host: the dump is not complete: a file could not be written");
  }
  if (!summary.report_written.value_or(true)) {
    PrintLine(stderr, "stream_host: the report could not be written");
  }
  if (!summary.options.json) {
    for (const std::string& line : host::SummaryLines(summary)) screen.Line(line);
  }
  screen.Line(host::ExitLine(summary));
  if (summary.options.json) screen.Line(host::SummaryJson(summary));
}

// Returns false and prints one line if a requested file cannot be opened.
bool OpenFiles(const host::Options& options, const host::Clock& clock, Files& files) {
  std::string error;
  if (!options.report_file.empty()) {
    files.report = host::OpenReport(host::PathOfArgument(options.report_file),
                                    host::Pace::kOfTheStream, clock, error);
    if (files.report == nullptr) error = "--report: " + error;
  }
  if (error.empty() && !options.dump_directory.empty()) {
    files.dump = host::Dump::Open(host::PathOfArgument(options.dump_directory), error);
    if (files.dump == nullptr) error = "--dump: " + error;
  }
  if (!error.empty()) PrintLine(stderr, "stream_host: " + error);
  return error.empty();
}

int Run(const host::Options& options) {
  host::SteadyClock clock;
  Files files;
  if (!OpenFiles(options, clock, files)) return host::kExitUsage;
  host::InstallInterruptHandlers();
  host::Screen screen(stdout, {host::StandardOutputIsTerminal(), options.quiet});
  const host::Summary summary = Play(options, clock, screen, files);
  Print(summary, screen);
  return host::ExitStatusOf(summary);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const host::ParsedCommandLine parsed = host::ParseCommandLine(argc, argv);
    if (parsed.options) return Run(*parsed.options);
    PrintLine(parsed.exit_status == 0 ? stdout : stderr, parsed.text);
    return parsed.exit_status;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "stream_host: %s\n", failure.what());
    return host::kExitNoFrames;
  }
}
