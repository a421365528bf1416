// stream_host: plays an address through the library and tells what came (options.h says how).
#include <cstdio>
#include <exception>
#include <memory>
#include <string>

#include "argument_path.h"
#include "clock.h"
#include "downloader.h"
#include "dump.h"
#include "host_player.h"
#include "interrupt.h"
#include "options.h"
#include "play_run.h"
#include "screen.h"
#include "stream_downloader.h"
#include "summary.h"
#include "terminal.h"

namespace {

class LibraryDownloader final : public host::Downloader {
 public:
  explicit LibraryDownloader(CStreamPlayerImp& player) : facade_(&player) {}

  bool Begin(const std::string& address) override { return facade_.BeginDownload(address); }
  bool End() override { return facade_.EndDownload(); }
  bool SetStart(float seconds) override { return facade_.SetStartPostion(seconds); }

 private:
  CStreamDownloader facade_;
};

void PrintLine(std::FILE* file, const std::string& line) {
  std::fputs((line + '\n').c_str(), file);
}

host::Summary Play(const host::Options& options, host::Screen& screen, host::Dump* dump) {
  host::SteadyClock clock;
  host::HostPlayer player(clock, screen, dump);
  host::Summary summary;
  summary.options = options;
  {
    LibraryDownloader downloader(player);
    host::PlayRunner runner(options, {downloader, player, clock, screen, host::Interrupted});
    summary.runs = runner.PlayAll();
    summary.elapsed_ms = clock.NowMs();
  }  // from here on the library logs nothing more
  if (dump != nullptr) summary.dump_complete = dump->Close();
  return summary;
}

void Print(const host::Summary& summary, host::Screen& screen) {
  if (!summary.dump_complete.value_or(true)) {
    PrintLine(stderr, "stream_host: the dump is not complete: a file could not be written");
  }
  if (!summary.options.json) {
    for (const std::string& line : host::SummaryLines(summary)) screen.Line(line);
  }
  screen.Line(host::ExitLine(summary));
  if (summary.options.json) screen.Line(host::SummaryJson(summary));
}

int Run(const host::Options& options) {
  std::unique_ptr<host::Dump> dump;
  if (!options.dump_directory.empty()) {
    std::string error;
    dump = host::Dump::Open(host::PathOfArgument(options.dump_directory), error);
    if (dump == nullptr) {
      PrintLine(stderr, "stream_host: --dump: " + error);
      return host::kExitUsage;
    }
  }
  host::NoteInterrupts();
  host::Screen screen(stdout, {host::StandardOutputIsTerminal(), options.quiet});
  const host::Summary summary = Play(options, screen, dump.get());
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
