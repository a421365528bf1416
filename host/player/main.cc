// stream_player: plays an address in a window, with picture and sound (player_options.h says how).
#include <cstdio>
#include <exception>
#include <memory>
#include <string>

#include "argument_path.h"
#include "av_memory.h"
#include "clock.h"
#include "event_loop.h"
#include "frame_receiver.h"
#include "interrupt.h"
#include "library_downloader.h"
#include "play_control.h"
#include "play_counts.h"
#include "player_options.h"
#include "presenter.h"
#include "report.h"
#include "sdl_system.h"
#include "sound_output.h"
#include "window.h"

namespace {

void PrintLine(std::FILE* file, const std::string& line) {
  std::fputs((line + '\n').c_str(), file);
  std::fflush(file);
}

int NoDisplay(const std::string& why) {
  PrintLine(stderr, "stream_player: there is no display: " + why);
  return player::kExitNoDisplay;
}

void PrintNoSound(const std::string& sound_error, const player::SoundOutput& output) {
  PrintLine(stderr, "stream_player: there is no sound device, so it plays without sound: " +
                        (sound_error.empty() ? output.why_silent() : sound_error));
}

struct Playing {
  const player::PlayerOptions& options;
  const std::string& sound_error;
  player::Window& window;
  player::PlayCounts& counts;
  host::Report* report;  // may be null
};

void Play(const Playing& playing) {
  const player::PlayerOptions& options = playing.options;
  player::PlayCounts& counts = playing.counts;
  host::Report* const report = playing.report;
  const host::SteadyClock clock;
  player::FrameReceiver receiver(clock, counts, report);
  host::LibraryDownloader downloader(receiver);
  player::SoundOutput output(clock);
  if (!output.why_silent().empty()) PrintNoSound(playing.sound_error, output);
  player::PlayControl control({options.address, options.start_seconds, options.idle_seconds},
                              {downloader, receiver, output, clock, counts, [report] {
                                 if (report != nullptr) report->OpenRun();
                               }});
  if (!control.Begin()) {
    PrintLine(stderr, "stream_player: the address was refused");
    return;
  }
  player::Presenter presenter(playing.window, clock, counts);
  player::EventLoop({playing.window, presenter, control, host::Interrupted}, options.exit_at_end)
      .Run();
  control.End();
}

int Run(const player::PlayerOptions& options) {
  const player::SdlSystem sdl;
  if (!sdl.display_error().empty()) return NoDisplay(sdl.display_error());
  std::string error;
  std::unique_ptr<host::Report> report;
  if (!options.report_file.empty()) {
    report =
        host::OpenReport(host::PathOfArgument(options.report_file), host::Pace::kOfTheHost, error);
    if (report == nullptr) {
      PrintLine(stderr, "stream_player: --report: " + error);
      return player::kExitUsage;
    }
  }
  host::NoteInterrupts();
  player::CountAvErrors();
  const std::unique_ptr<player::Window> window = player::Window::Open(error);
  if (window == nullptr) return NoDisplay(error);
  player::PlayCounts counts;
  Play({options, sdl.sound_error(), *window, counts, report.get()});
  counts.errors += player::AvErrors();
  PrintLine(stdout, player::CountsText(counts));
  if (report != nullptr && !report->Write(options.address)) {
    PrintLine(stderr, "stream_player: the report could not be written");
  }
  return counts.video_frames + counts.audio_frames > 0 ? player::kExitPlayed : player::kExitNothing;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const player::ParsedPlayerOptions parsed = player::ParsePlayerOptions(argc, argv);
    if (parsed.options) return Run(*parsed.options);
    PrintLine(parsed.exit_status == 0 ? stdout : stderr, parsed.text);
    return parsed.exit_status;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "stream_player: %s\n", failure.what());
    return player::kExitNothing;
  }
}
